#pragma once

#include <QTimer>
#include <functional>
#include <optional>

#include "base/dialogs.h"
#include "browser/element_store.h"
#include "browser/element_table.h"
#include "browser/page_probe.h"
#include "engine/gateway_state.h"
#include "screens/element_form.h"
#include "screens/element_service.h"
#include "screens/screen.h"

class QLabel;

namespace kibo {

/// The element screen, `frm_element`: edits the locators and texts of the page, tries them out on the open page, and
/// exchanges them with the element service.
class ElementScreen : public Screen {
    Q_OBJECT

 public:
    /// What the screen works on; references must outlive it.
    struct Parts {
        ElementTable& elements;
        ElementStore& store;
        PageProbe& page;
        const GatewayState& state;
        Dialogs& dialogs;
        ElementService service;
        QString settingsFile;  ///< named to the operator
        /// Runs a click's work where its errors are caught.
        std::function<void(const std::function<void()>& step)> guarded;
    };

    explicit ElementScreen(Parts parts);

    void open() override;

    /// A test waits for a notice of the page.
    bool pageInUse() const override { return noticeTest_.has_value(); }

 protected:
    void closeEvent(QCloseEvent* event) override;

 private:
    /// Names that are fetched or uploaded one after another, with a turn of the event loop between two.
    struct Transfer {
        QString doing;  ///< "Fetching"
        QStringList names;
        std::function<Result<void>(const QString& name)> step;
        std::function<void(const Transfer&)> finished;
        qsizetype next = 0;
        int done = 0;
        QString problem = {};  ///< why the last one of those that failed did
    };
    /// How one of the texts is tested: the operator brings the situation about, and the page is asked for its notices.
    struct NoticeTest {
        QString name;     ///< of the text
        QString locator;  ///< name of the locator of the notices
        QString request;  ///< what the operator has to do; empty: nothing
        int looks;        ///< how often the page is asked, twice a second
    };

    void buildButtons(QWidget* row);
    /// Something goes on, which the status line tells; clicks are ignored meanwhile.
    bool busy() const { return transfer_ || noticeTest_; }
    void cmd_Fetch_Click();
    void cmd_Save_Click();
    void cmd_Upload_Click();
    void cmd_Report_Click();
    void upload();
    bool serviceIsOff();
    void transfer(Transfer transfer);
    void transferNext();
    void endTransfer();
    void endWork();

    void test(const QString& name);
    /// The queue uses the page; the operator is told.
    bool pageIsBusy();
    void testLocator(const QString& name);
    void testNotice(const NoticeTest& test);
    void awaitNotice(const NoticeTest& test);
    void lookForNotice();
    void endNoticeTest();
    std::optional<Matches> outlined(const QString& name, const QString& locator);
    static std::optional<NoticeTest> noticeTestOf(const QString& name);

    void tell(const QString& text);
    void inform(const QString& title, const QString& text);
    void complain(const QString& title, const QString& text);

    Parts p_;
    ElementForm* form_;
    QLabel* status_;
    ElementForm::Values opened_;  // as shown when the screen was opened or saved
    std::optional<Transfer> transfer_;
    std::optional<NoticeTest> noticeTest_;
    QTimer transferTurn_;
    QTimer nextLook_;
};

}  // namespace kibo
