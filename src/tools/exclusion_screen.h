#pragma once

#include "base/dialogs.h"
#include "engine/gateway_state.h"
#include "screens/background_work.h"
#include "screens/screen.h"
#include "store/database.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;

namespace kibo {

/// Numbers and groups that no automatic answer goes to, `frm_autorespon_filter`: a profile's list, typed or pasted.
class ExclusionScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        Database& database;
        const GatewayState& state;
        Dialogs& dialogs;
    };

    explicit ExclusionScreen(Parts parts);

    void open() override;

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    QWidget* buttonRow();
    void addKeys();

    void load();
    void fill(const QStringList& numbers);
    QStringList numbers() const;
    void Command1_Click();
    void Command4_Click();
    void Command6_Click();
    void addRow();
    void removeRows();
    void showButtons();
    void tell(const QString& text);
    void complain(const QString& text);

    Parts p_;
    BackgroundWork work_;
    QStringList stored_;  // what the table held when it was last read or written
    bool known_ = false;  // what the table holds: nothing unknown is replaced by an empty list
    bool leaving_ = false;

    QLineEdit* txtProfil_;
    QTableWidget* grid_;
    QLabel *l_jml_, *status_;
    QPushButton *Command4_, *Command6_, *add_, *remove_;
};

}  // namespace kibo
