#pragma once

#include <functional>

#include "base/dialogs.h"
#include "base/settings.h"
#include "engine/gateway_state.h"
#include "screens/screen.h"
#include "tools/rule_table.h"

class QButtonGroup;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QStackedWidget;

namespace kibo {

class FileField;
class MessageEdit;

/// One rule, `frm_autorespon_add`: typed anew or changed.
class RuleScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        Database& database;
        const Settings& settings;
        const GatewayState& state;
        Dialogs& dialogs;
        QString programFolder;
        /// Runs a click's work where its errors are caught.
        std::function<void(const std::function<void()>& step)> guarded;
        /// Hears of the rule that was stored.
        std::function<void(qint64 id)> saved;
    };

    explicit RuleScreen(Parts parts);

    /// For a new rule of the current profile.
    void open() override;
    /// For a rule as it stands there; one without an id is a new one. What is typed and not saved stays, and is shown
    /// instead.
    void openFor(const Rule& rule);

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    QLayout* kinds();
    QWidget* keywordFields();
    QWidget* actionFields();
    QLayout* buttons();
    QLineEdit* line(const char* name, QWidget* parent);
    void addLine(QGridLayout* form, const QString& label, QWidget* field, QWidget* beside = nullptr);
    QPushButton* button(const char* name, const QString& text, const QString& hint);
    QPushButton* fileButton(const char* name, const QString& text, const QString& spoken, const FileBox& box,
                            FileField* field);

    Rule typed() const;
    void fill(const Rule& rule);
    void chooseKind(RuleKind kind);
    void showCovers();
    void Command1_Click();
    void Command3_Click();
    void Command4_Click();
    void leave();
    void bringUp();
    void say(const QString& text);

    Parts p_;
    Rule opened_;  // as the fields show it
    RuleKind kind_ = RuleKind::Text;
    bool leaving_ = false;

    QButtonGroup* kinds_;
    QLineEdit *txtID_, *txtProfil_, *txtkeyword_, *txtPrevID_, *txtPHP_;
    QComboBox* cbLogic_;
    MessageEdit* txtAnswer_;
    FileField *txtMedia_, *txtFile_, *txtEXE_;
    QCheckBox *cRespon_, *cNext_;
    QStackedWidget *keyword_, *actions_;
    QLabel* tutup2_;
    QLabel* status_;
};

}  // namespace kibo
