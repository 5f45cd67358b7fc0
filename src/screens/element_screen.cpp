#include "screens/element_screen.h"

#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSaveFile>
#include <QShortcut>

#include "base/log.h"
#include "widgets/accessibility.h"

namespace kibo {
namespace {

/// Long enough for what the last request changed to be painted.
constexpr int kTransferTurnMs = 10;
constexpr int kLookPauseMs = 500;
/// Until the page says that phone or computer are offline, some seconds go by.
constexpr int kLooksForNotice = 40;

const QString kTesting = QStringLiteral("Test"), kTested = QStringLiteral("Ready");
const QString kReport = QStringLiteral("Page report");
const QString kAccessCode = QStringLiteral("qtrwz");

/// In the order in which the service is asked.
const QStringList& fetchedNames() {
    static const QStringList names{QStringLiteral("XX_QR"),
                                   QStringLiteral("XX_To"),
                                   QStringLiteral("XX_Info"),
                                   QStringLiteral("XX_Update"),
                                   QStringLiteral("XX_ChatBox"),
                                   QStringLiteral("XX_NewChat"),
                                   QStringLiteral("XX_QRReload"),
                                   QStringLiteral("XX_SendButton"),
                                   QStringLiteral("XX_ReadMessage"),
                                   QStringLiteral("XX_InvalidNumber"),
                                   QStringLiteral("XX_SendFileButton")};
    return names;
}

/// Locators are kept without double quotes, so that other programs can put them between such.
QString storable(QString text) {
    return text.replace(QLatin1Char('"'), QLatin1Char('\''));
}

}  // namespace

ElementScreen::ElementScreen(Parts parts) : p_(std::move(parts)), form_(new ElementForm(this)) {
    setObjectName(QStringLiteral("frm_element"));
    setWindowTitle(tr("Elements"));
    resize(1120, 760);
    setMinimumSize(820, 420);
    auto* intro =
        new QLabel(tr("Where things are on WhatsApp's page. Locators that begin with / ( or ./ are XPath, others CSS. "
                      "Test frames what a box finds on the open page."),
                   this);
    intro->setTextFormat(Qt::PlainText);
    intro->setWordWrap(true);
    auto* bottom = new QWidget(this);
    buildButtons(bottom);
    auto* column = new QVBoxLayout(this);
    column->addWidget(intro);
    column->addWidget(form_, 1);
    column->addWidget(bottom);
    for (const QString& name : ElementTable::names())
        if (noticeTestOf(name)) form_->setTestCaption(name, kTested);
    connect(form_, &ElementForm::testAsked, this, [this](const QString& name) { test(name); });
    connect(new QShortcut(QKeySequence(Qt::Key_Escape), this), &QShortcut::activated, this, &QWidget::close);
    transferTurn_.setSingleShot(true);
    transferTurn_.setInterval(kTransferTurnMs);
    connect(&transferTurn_, &QTimer::timeout, this, &ElementScreen::transferNext);
    nextLook_.setSingleShot(true);
    nextLook_.setInterval(kLookPauseMs);
    connect(&nextLook_, &QTimer::timeout, this, &ElementScreen::lookForNotice);
}

void ElementScreen::buildButtons(QWidget* row) {
    auto* line = new QHBoxLayout(row);
    line->setContentsMargins(0, 0, 0, 0);
    status_ = new QLabel(row);
    status_->setObjectName(QStringLiteral("element_status"));
    status_->setTextFormat(Qt::PlainText);
    line->addWidget(status_, 1);
    const auto add = [&](const char* name, const QString& text, const QString& hint) {
        auto* button = new QPushButton(text, row);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(hint);
        button->setMinimumSize(96, 32);
        button->setAutoDefault(true);  // Enter presses it
        line->addWidget(button);
        return button;
    };
    QPushButton* fetch = add("cmd_Fetch", tr("&Fetch"), tr("Fill the boxes with the element service's values"));
    QPushButton* upload = add("cmd_Upload", tr("&Upload…"), tr("Give the boxes' values to the element service"));
    QPushButton* report =
        add("cmd_Report", tr("Page &report"), tr("Write the open page's structure into a file, without its texts"));
    QPushButton* save = add("cmd_Save", tr("&Save"), tr("Store all boxes"));
    QPushButton* close = add("cmd_Close", tr("&Close"), tr("Close this window"));
    QPushButton* help = helpButton(row);
    help->setMinimumSize(close->minimumSize());
    line->addWidget(help);
    connect(fetch, &QPushButton::clicked, this, &ElementScreen::cmd_Fetch_Click);
    connect(upload, &QPushButton::clicked, this, &ElementScreen::cmd_Upload_Click);
    connect(report, &QPushButton::clicked, this, &ElementScreen::cmd_Report_Click);
    connect(save, &QPushButton::clicked, this, [this] { p_.guarded([this] { cmd_Save_Click(); }); });
    connect(close, &QPushButton::clicked, this, &QWidget::close);
}

void ElementScreen::open() {
    if (isHidden()) {
        const QStringList names = ElementTable::names();
        for (const QString& name : names) form_->setText(name, p_.elements[name]);
        opened_ = form_->values();
        form_->clearVerdicts();
        status_->clear();
    }
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void ElementScreen::closeEvent(QCloseEvent* event) {
    if (form_->values() == opened_) {
        endWork();
        event->accept();
        return;
    }
    event->ignore();
    p_.dialogs.show({windowTitle(), QStringLiteral("Close without saving the changes?"), MessageBox::Icon::Question,
                     MessageBox::Buttons::YesNo, true},
                    [this](bool yes) {
                        if (!yes) return;
                        endWork();
                        hide();
                    });
}

void ElementScreen::endWork() {
    endTransfer();
    endNoticeTest();
}

void ElementScreen::cmd_Save_Click() {
    if (busy()) return;
    ElementForm::Values values = form_->values();
    for (auto& [name, text] : values) text = storable(text);
    if (!p_.store.saveAll(values)) {
        complain(QStringLiteral("Save"), QStringLiteral("The element store can't be written, so all is as it was.\n"
                                                        "The log says why."));
        return;
    }
    for (const auto& [name, text] : std::as_const(values)) {
        p_.elements.set(name, text);
        form_->setText(name, text);
    }
    opened_ = values;
    log::info("screens", QStringLiteral("%1 elements saved").arg(values.size()));
    inform(QStringLiteral("Okay.."), QStringLiteral("Element updated..\nPlease Re-Open Kibo"));
}

void ElementScreen::cmd_Fetch_Click() {
    if (busy() || serviceIsOff()) return;
    const auto fetch = [this](const QString& name) -> Result<void> {
        const Result<QString> answer = p_.service.FetchElement(name);
        if (!answer) return answer.failure();
        form_->setText(name, answer.value());
        form_->showVerdict(name, {true, QStringLiteral("fetched")});
        return {};
    };
    const auto finished = [this](const Transfer& all) {
        if (all.done > 0) {
            inform(QStringLiteral("Done.."), QStringLiteral("Element updated.. \nPlease SAVE then CLOSE APP"));
        } else {
            complain(QStringLiteral("Fetch"), QStringLiteral("No element could be fetched: %1").arg(all.problem));
        }
    };
    transfer({QStringLiteral("Fetching"), fetchedNames(), fetch, finished});
}

void ElementScreen::cmd_Upload_Click() {
    if (busy() || serviceIsOff()) return;
    p_.dialogs.ask({QStringLiteral("Upload Update"), QStringLiteral("Password"), {}, true},
                   [this](const std::optional<QString>& code) {
                       if (!code || busy()) return;
                       if (*code == kAccessCode) {
                           upload();
                       } else {
                           tell(QStringLiteral("Nothing was uploaded: this is not the password"));
                       }
                   });
}

void ElementScreen::upload() {
    const auto upload = [this](const QString& name) -> Result<void> {
        const Result<void> taken = p_.service.UploadElement(storable(form_->text(name)), name);
        if (taken) form_->showVerdict(name, {true, QStringLiteral("uploaded")});
        return taken;
    };
    const auto finished = [this](const Transfer& all) {
        if (all.done == all.names.size()) {
            inform(QStringLiteral("Okay.."), QStringLiteral("New Update Element Uploaded.."));
        } else {
            complain(QStringLiteral("Upload"),
                     QStringLiteral("%1 of %2 were uploaded. %3").arg(all.done).arg(all.names.size()).arg(all.problem));
        }
    };
    transfer({QStringLiteral("Uploading"), ElementTable::names(), upload, finished});
}

bool ElementScreen::serviceIsOff() {
    if (!p_.service.isOff()) return false;
    inform(QStringLiteral("Element service"),
           QStringLiteral("No element service is set.\n\nWrite its address into section [kibo] of\n%1\n"
                          "as ElementServer=https://…, then start Kibo again.")
               .arg(QDir::toNativeSeparators(p_.settingsFile)));
    return true;
}

void ElementScreen::transfer(Transfer transfer) {
    transfer_ = std::move(transfer);
    form_->clearVerdicts();
    setCursor(Qt::BusyCursor);
    transferTurn_.start();
}

void ElementScreen::transferNext() {
    Transfer& t = *transfer_;
    const QString name = t.names[t.next++];
    status_->setText(QStringLiteral("%1 %2 (%3 of %4)").arg(t.doing, name).arg(t.next).arg(t.names.size()));
    status_->repaint();
    const Result<void> result = t.step(name);
    if (result) {
        ++t.done;
    } else {
        t.problem = QString::fromStdString(result.failure().text);
        form_->showVerdict(name, {false, t.problem});
        log::warning("screens", QStringLiteral("%1 %2: %3").arg(t.doing, name, t.problem));
        // A service that isn't there for one isn't there for the next either, and each try takes seconds.
        if (result.failure().kind == FailureKind::Transport) t.next = t.names.size();
    }
    if (t.next < t.names.size()) {
        transferTurn_.start();
        return;
    }
    const Transfer ended = t;
    endTransfer();
    tell(QStringLiteral("%1: %2 of %3 done").arg(ended.doing).arg(ended.done).arg(ended.names.size()));
    ended.finished(ended);
}

void ElementScreen::endTransfer() {
    transferTurn_.stop();
    transfer_.reset();
    unsetCursor();
}

std::optional<ElementScreen::NoticeTest> ElementScreen::noticeTestOf(const QString& name) {
    if (name == QStringLiteral("XXInfo1"))
        return NoticeTest{name, QStringLiteral("XX_Info"), QStringLiteral("Please Disconnect Your Phone to test.."),
                          kLooksForNotice};
    if (name == QStringLiteral("XXInfo2"))
        return NoticeTest{name, QStringLiteral("XX_Info"), QStringLiteral("Please Disconnect Your Computer to test.."),
                          kLooksForNotice};
    if (name == QStringLiteral("XXInfo3")) return NoticeTest{name, QStringLiteral("XX_InvalidNumber"), {}, 1};
    return std::nullopt;
}

void ElementScreen::test(const QString& name) {
    if (busy() || pageIsBusy()) return;
    if (auto notice = noticeTestOf(name)) {
        testNotice(*notice);
    } else {
        testLocator(name);
    }
}

void ElementScreen::cmd_Report_Click() {
    if (busy() || pageIsBusy()) return;
    const Result<QString> report = p_.page.report();
    if (!report && report.failure().kind == FailureKind::ConnectionLost) {
        inform(kReport, QStringLiteral("Please Connect first, the report is about the open page."));
        return;
    }
    if (!report) {
        complain(kReport, QString::fromStdString(report.failure().text));
        return;
    }
    const QString path = QFileInfo(p_.settingsFile).dir().filePath(QStringLiteral("page-report.txt"));
    QSaveFile file(path);
    const QByteArray content = report.value().toUtf8() + '\n';
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size() || !file.commit()) {
        complain(kReport,
                 QStringLiteral("%1 can't be written: %2").arg(QDir::toNativeSeparators(path), file.errorString()));
        return;
    }
    log::info("screens", QStringLiteral("page report of %1 bytes written").arg(content.size()));
    inform(kReport, QStringLiteral("Written to %1\nIt holds no text, name or number of the page.")
                        .arg(QDir::toNativeSeparators(path)));
}

bool ElementScreen::pageIsBusy() {
    if (!p_.state.stepRunning && !p_.state.wait.visible && !p_.state.waitread.visible) return false;
    inform(kTesting, QStringLiteral("Kibo is using the page right now. Press Pause in the main window, wait until "
                                    "the message is done, then test again."));
    return true;
}

void ElementScreen::testLocator(const QString& name) {
    const QString text = form_->text(name);
    const QString locator = name.startsWith(QStringLiteral("XX_")) ? text : locatorOfTexts(text);
    if (locator.trimmed().isEmpty()) {
        form_->showVerdict(name, {false, QStringLiteral("the box is empty")});
        return;
    }
    if (const auto matches = outlined(name, locator)) form_->showVerdict(name, locatorVerdict(*matches));
}

void ElementScreen::testNotice(const NoticeTest& test) {
    if (!outlined(test.name, form_->text(test.locator))) return;
    if (test.request.isEmpty()) {
        awaitNotice(test);
        return;
    }
    // Only what is done after the box holds the queue: a box may be left open.
    p_.dialogs.show({kTesting, test.request, MessageBox::Icon::Information}, [this, test](bool ready) {
        if (ready && !busy() && !pageIsBusy()) awaitNotice(test);
    });
}

void ElementScreen::awaitNotice(const NoticeTest& test) {
    form_->setTestCaption(test.name, kTesting);
    // From here on no message begins, so that the page stays as the operator makes it.
    noticeTest_ = test;
    lookForNotice();
}

void ElementScreen::lookForNotice() {
    if (!noticeTest_) return;  // the screen was closed meanwhile
    const QString name = noticeTest_->name;
    const auto shown = outlined(name, form_->text(noticeTest_->locator));
    if (!shown) {
        endNoticeTest();
        return;
    }
    const Verdict verdict = noticeVerdict(form_->text(name), *shown);
    form_->showVerdict(name, verdict);
    if (verdict.found || --noticeTest_->looks == 0) {
        endNoticeTest();
    } else {
        tell(QStringLiteral("Waiting for the notice"));
        nextLook_.start();
    }
}

void ElementScreen::endNoticeTest() {
    if (!noticeTest_) return;
    nextLook_.stop();
    status_->clear();
    form_->setTestCaption(noticeTest_->name, kTested);
    noticeTest_.reset();
}

std::optional<Matches> ElementScreen::outlined(const QString& name, const QString& locator) {
    const Result<Matches> matches = p_.page.outline(storable(locator));
    if (matches) return matches.value();
    if (matches.failure().kind == FailureKind::ConnectionLost) {
        inform(kTesting, QStringLiteral("Please Connect first to test.."));
    } else {
        form_->showVerdict(name, {false, QString::fromStdString(matches.failure().text)});
    }
    return std::nullopt;
}

void ElementScreen::tell(const QString& text) {
    if (status_->text() == text) return;
    status_->setText(text);
    announce(status_);
}

void ElementScreen::inform(const QString& title, const QString& text) {
    p_.dialogs.show({title, text, MessageBox::Icon::Information});
}

void ElementScreen::complain(const QString& title, const QString& text) {
    p_.dialogs.show({title, text, MessageBox::Icon::Critical});
}

}  // namespace kibo
