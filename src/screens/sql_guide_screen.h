#pragma once

#include <QTimer>
#include <atomic>
#include <functional>
#include <memory>

#include "base/controls.h"
#include "base/dialogs.h"
#include "screens/background_work.h"
#include "screens/screen.h"
#include "screens/sql_trial.h"

class QComboBox;
class QLabel;
class QLayout;
class QPlainTextEdit;
class QPushButton;
class QVBoxLayout;

namespace kibo {

class QueueGrid;

/// The SQL guide, `frm_howsql`: how other programs queue messages, with statements to try out. These run over a
/// connection of their own, so neither window nor gateway waits for them.
class SqlGuideScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        const Database& database;  ///< says where the store is
        Dialogs& dialogs;
        std::function<void()> refreshOutbox;  ///< where errors are caught
    };

    explicit SqlGuideScreen(Parts parts);
    ~SqlGuideScreen() override;

    void open() override;

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    QLayout* trial();
    QLayout* integration();
    QLayout* buttons();
    QLabel* label(const QString& text, QWidget* buddy = nullptr);
    QPlainTextEdit* editor(const char* name, const QString& text, const QString& spoken);
    QPushButton* button(const char* name, const QString& text, const QString& hint);

    void Combo1_Click();
    void Command1_Click();
    void run(const std::vector<SqlStatement>& statements);
    void ended(const SqlOutcome& outcome, int all);
    void showRows(const SqlOutcome& outcome);
    void copyTrigger();
    void stop();
    void showButtons();
    void tell(const QString& text);

    Parts p_;
    BackgroundWork work_;
    QTimer progress_;
    std::shared_ptr<std::atomic<qint64>> read_ = std::make_shared<std::atomic<qint64>>(0);
    Grid found_;

    QComboBox* Combo1_ = nullptr;
    QPlainTextEdit* Text1_ = nullptr;
    QPlainTextEdit* Text2_ = nullptr;
    QPushButton* Command1_ = nullptr;
    QLabel* status_ = nullptr;
    QVBoxLayout* below_ = nullptr;  // where the rows stand
    QueueGrid* rows_ = nullptr;     // of the last SELECT; none: there was none
};

}  // namespace kibo
