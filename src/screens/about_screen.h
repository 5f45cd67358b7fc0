#pragma once

#include <QTimer>
#include <array>

#include "base/controls.h"
#include "base/dialogs.h"
#include "base/settings.h"
#include "screens/background_work.h"
#include "screens/program_facts.h"
#include "screens/screen.h"
#include "store/database.h"

class QFormLayout;
class QLabel;
class QLayout;
class QPushButton;

namespace kibo {

class QueueGrid;

/// `frm_about2`: what this program is, of which versions and libraries it is made, and where it lives.
class AboutScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        const Settings& settings;
        const Database& database;
        Dialogs& dialogs;
        QString programFolder, settingsFile;
    };

    explicit AboutScreen(Parts parts);
    ~AboutScreen() override;

    void open() override;

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    static constexpr std::size_t kLines = 4;

    QLayout* lines();
    QLayout* buttons();
    void Timer1_Timer();
    void Label3_Click();
    void lookForVersions();
    void showFacts();
    void copyReport();
    QList<ProgramFact> facts() const;

    Parts p_;
    BackgroundWork work_;
    QString supportNumber_;  // empty: nobody to chat with
    const QStringList texts_;
    TypedLines typed_;
    QTimer Timer1_;
    QString browser_, driver_;  // versions; empty: not looked for yet
    Grid libraries_;

    std::array<QWidget*, kLines> Label_{};
    QFormLayout* facts_ = nullptr;
    QueueGrid* licences_ = nullptr;
    QPushButton* copy_ = nullptr;
    QLabel* status_ = nullptr;
};

}  // namespace kibo
