#pragma once

#include <functional>

#include "base/controls.h"
#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "screens/background_work.h"
#include "screens/screen.h"
#include "tools/responder_switch.h"
#include "tools/rule_table.h"
#include "widgets/row_reading.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace kibo {

class QueueGrid;
class RuleChart;

/// The rules of automatic answers, `frm_autorespon`: a profile's rules as a list and as a picture, and the switch that
/// makes received messages go to the answering program.
class RulesScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        Database& database;
        Settings& settings;
        const GatewayState& state;
        Dialogs& dialogs;
        QString settingsFile, programFolder;
        /// Opens the entry screen.
        std::function<void(const Rule& rule)> edit;
    };

    explicit RulesScreen(Parts parts);
    ~RulesScreen() override;

    void open() override;
    /// Reads and shows the rules; `chosen` is marked where it is among them.
    void grid_refresh(qint64 chosen = 0);

 protected:
    void changeEvent(QEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

 private:
    enum class Whose { Profile, All };

    QWidget* searchRow();
    QWidget* buttonRow();
    QPushButton* button(const char* name, const QString& text, const QString& hint, QWidget* row);
    void addMenu();
    void addKeys();

    void showRules(const std::vector<Rule>& rules, qint64 chosen);
    void showChart();
    void search();
    /// The rule of the marked line; nullptr: none is marked.
    const Rule* current() const;
    void mark(qint64 id);

    void addNew();
    void edit();
    void Command7_Click();
    void Command5_Click();
    void Command3_Click();
    void c_bot2_Click(bool on);
    void switchTo(bool on);

    void exportRules(Whose whose);
    void importRules(Whose whose);
    void copyToProfile();
    /// Adds them in a thread of its own, to be broken off by Escape.
    void add(const std::vector<Rule>& rules, const QString& done);
    void showButtons();
    void tell(const QString& text);
    void complain(const QString& title, const QString& text);

    Parts p_;
    ResponderSwitch switch_;
    BackgroundWork work_;
    RowReading reading_;
    Grid lines_;
    std::vector<Rule> rules_;  // of the profile, all of them
    std::vector<Rule> shown_;  // those that the search left, in the order of the lines
    QHash<qint64, QStringList> troubles_;

    QLineEdit *txtProfil_, *Text3_;
    QCheckBox *c_bot2_, *picture_;
    QueueGrid* ms_;
    RuleChart* chart_;
    QLabel *Label3_, *status_;
    QList<QWidget*> needRule_, change_;  // controls that are off without a marked rule, or while work goes on
};

}  // namespace kibo
