#include "engine/step_machine.h"

#include <QDir>
#include <QImage>
#include <QScopedValueRollback>

#include "app/log.h"
#include "app/profile_number.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kAfterSendMs = 500;
constexpr qint64 kLongestSilenceMs = 60'000;
constexpr qint64 kStartPagePauseMs = 5'000;
const QString kReady = QStringLiteral("Ready");
const QString kNotConnect = QStringLiteral("Not Connect");
const QString kLoginCode = QStringLiteral("update web_user set qr = ? where id = ?");

}  // namespace

StepMachine::StepMachine(Parts parts) : p_(std::move(parts)) {}

void StepMachine::Timer_KIBO_Timer() {
    GatewayState& s = p_.state;
    const QScopedValueRollback<bool> inTick(s.stepRunning, true);
    s.Outbox_Cnt.caption = QString::number(s.ms_out.rowCount() - 1);
    const PageLook look = p_.page.look();
    const bool givenUp = silentTooLong(look);
    if (look.presence == PageLook::Presence::Silent && !givenUp) {
        idle(QStringLiteral("The page does not answer"));
        return;
    }
    if (look.presence == PageLook::Presence::Gone || givenUp) {
        log::warning("engine", QStringLiteral("the browser has gone"));
        TUTUP_WA();
        s.Timer_KIBO.setEnabled(false);
        s.waurl.text = QStringLiteral("!!");
        s.cmd_OpenWA.enabled = true;
        s.dummyOpened = false;
        s.cb_Profil.enabled = !isYes(p_.settings.Incognito);
    }
    p_.opener.observe(look.chat, look.linkPlanted);
    s.newChatCount = look.newChatControls;
    const bool sent = look.newChatControls == 0 ? publishQr(look) : loggedIn(look);
    if (!sent && look.presence == PageLook::Presence::Here) p_.page.closeStrayTabs();
}

/// A page that answers nothing for a minute, whatever the reason, must be opened anew.
bool StepMachine::silentTooLong(const PageLook& look) {
    if (look.presence != PageLook::Presence::Silent) {
        silentSinceMs_.reset();
        return false;
    }
    const qint64 now = p_.clock.monotonicMs();
    if (!silentSinceMs_) silentSinceMs_ = now;
    if (now - *silentSinceMs_ < kLongestSilenceMs) return false;
    silentSinceMs_.reset();
    return true;
}

void StepMachine::TUTUP_WA() {
    p_.page.end();
}

bool StepMachine::publishQr(const PageLook& look) {
    GatewayState& s = p_.state;
    showStatus(false);
    idle(look.presence == PageLook::Presence::Gone ? QStringLiteral("The browser has gone")
                                                   : QStringLiteral("Waiting for login"));
    const qint64 now = p_.clock.monotonicMs();
    if (look.noPage) {
        idle(QStringLiteral("The page can't be reached, trying again"));
        if (!startPageAskedMs_ || now - *startPageAskedMs_ >= kStartPagePauseMs) {
            startPageAskedMs_ = now;
            p_.page.openStartPage();
        }
    }
    if (look.qrCodes != 1) {
        setLoginCode(QStringLiteral("wait"));
        return false;
    }
    setLoginCode(look.qrData);
    if (isYes(p_.settings.CaptureQR)) {
        const QString file =
            QDir(p_.settings.CaptureImage).filePath(QStringLiteral("qr%1.jpg").arg(profile6(s.cb_Profil.text)));
        if (QImage::fromData(p_.page.qrPicture()).save(file, "JPG")) {
            s.pQR.caption = file;
            s.pQR.visible = true;
            s.timer_QR.setEnabled(true);
        } else {
            log::warning("engine", QStringLiteral("the picture of the QR code could not be written"));
        }
    }
    s.Timer_cekURL.setEnabled(false);
    s.cmd_STOP.enabled = true;
    if (look.qrReloads == 1) p_.page.clickQrReload();
    return false;
}

void StepMachine::setLoginCode(const QString& code) {
    p_.database.execute(kLoginCode, {code, p_.state.cb_Profil.text});
}

void StepMachine::showStatus(bool ready) {
    Label& status = p_.state.status;
    const QString caption = ready ? kReady : kNotConnect;
    if (status.caption != caption) log::info("engine", QStringLiteral("status: %1").arg(caption));
    status.caption = caption;
    status.background = ready ? colour::kGreen : colour::kRed;
    status.foreground = ready ? colour::kBlack : colour::kYellow;
}

bool StepMachine::loggedIn(const PageLook& look) {
    GatewayState& s = p_.state;
    s.pQR.visible = false;
    s.timer_QR.setEnabled(false);
    s.cmd_Pause.enabled = true;
    const bool phoneOff = look.hasBanner && (matchesNotice(p_.elements[QStringLiteral("XXInfo1")], look.banner) ||
                                             matchesNotice(p_.elements[QStringLiteral("XXInfo2")], look.banner));
    showStatus(!phoneOff);
    s.cmd_STOP.enabled = true;
    s.cmd_OpenWA.enabled = false;
    s.cb_DummyContact.enabled = true;
    // Nobody waits for this one: the dummy contact is not on WhatsApp, or a notice came late.
    if (look.hasNotice && matchesNotice(p_.elements[QStringLiteral("XXInfo3")], look.notice)) {
        log::warning("engine",
                     QStringLiteral("the page can't open %1").arg(log::maskedNumber(p_.opener.refusedBy(look.notice))));
        p_.page.pressEscape();
    }
    if (!s.dummyOpened) {
        p_.opener.KE_DUMMY(look.ownPicture);
        s.Timer_cekURL.setEnabled(true);
        s.dummyOpened = true;
    }
    return KIRIM_WA(look);
}

bool StepMachine::KIRIM_WA(const PageLook& look) {
    GatewayState& s = p_.state;
    if (!p_.opener.canBuildLinks()) {
        idle(QStringLiteral("ChatAddress in kibo.ini can't be used: it may hold letters, digits and :/.-_?=%~ only"));
        return false;
    }
    if (!p_.opener.linkPlanted()) {
        p_.opener.plantLink(s.txtNo.text);
        return false;
    }
    if (p_.pageInUse && p_.pageInUse()) return false;
    p_.queue.cmd_OutboxRefresh_Click();
    if (s.dboff.visible) {
        idle(QStringLiteral("Database is off"));
        return false;
    }
    const bool settled = p_.recovery.settleInStore();
    if (s.ms_out.rowCount() == 1 && !p_.recovery.needsPage()) {
        idle(QStringLiteral("Queue empty"));
        return false;
    }
    if (!mayTakeMessage()) return false;
    if (!settled) {
        idle(QStringLiteral("Waiting for the database to tell what became of the last message"));
        return false;
    }
    if (p_.recovery.needsPage()) {
        s.wait.visible = true;
        if (!p_.recovery.settleOnPage()) return false;
        finishMessage(look);
        return true;
    }
    if (!loadMessage()) return false;
    dispatch(s.ms_out.text(1, OutboxQueue::Mode));
    finishMessage(look);
    return true;
}

bool StepMachine::mayTakeMessage() {
    GatewayState& s = p_.state;
    if (s.busy || s.waitread.visible) {
        idle(QStringLiteral("Reading the inbox"));
        return false;
    }
    s.wait.visible = false;
    s.wait2.visible = false;
    if (p_.pacing.isBreak()) {
        idle(QStringLiteral("Break %1 / %2").arg(s.DetikBreak.text, p_.settings.Break));
        return false;
    }
    if (p_.pacing.isPaused()) {
        idle(QStringLiteral("Paused"));
        return false;
    }
    s.Outbox_Cnt.caption = QString::number(s.ms_out.rowCount() - 1);
    if (s.status.caption != kReady) {
        idle(QStringLiteral("Phone not connected"));
        return false;
    }
    if ((s.ms_out.rowCount() < 2 && !p_.recovery.needsPage()) || p_.clock.waitingStopped()) return false;
    // A chat asked for earlier that is still opening would come up under this message.
    if (!p_.opener.settled()) {
        idle(QStringLiteral("Waiting for an earlier chat to open"));
        return false;
    }
    return true;
}

/// Copies the first queued row into the message fields and moves it out of the queue.
bool StepMachine::loadMessage() {
    GatewayState& s = p_.state;
    s.wait.visible = true;
    s.txtid.text = s.ms_out.text(1, OutboxQueue::Id);
    s.txtNo.text = s.ms_out.text(1, OutboxQueue::Number);
    s.txtMedia.text = s.ms_out.text(1, OutboxQueue::Media).trimmed();
    s.txtFile.text = s.ms_out.text(1, OutboxQueue::File).trimmed();
    const auto row = p_.queue.nextRow();
    if (!row) {  // another program has taken it back meanwhile
        idle(QStringLiteral("Queue changed"));
        return false;
    }
    QString problem;
    s.txtMsg2.text = expandMessageText(row->text, p_.clock.now(), p_.random, &problem);
    if (!problem.isEmpty())
        log::warning("engine", QStringLiteral("message %1 keeps its brackets: %2").arg(s.txtid.text, problem));
    const QString number = destinationNumber(s.txtNo.text, p_.settings.Prefix, p_.settings.CountryCode);
    if (isPositiveNumber(number)) s.txtNo.text = number;
    if (const Result<void> noted = p_.journal.taken(*row); !noted) {
        idle(QStringLiteral("Nothing is sent: %1").arg(QString::fromStdString(noted.failure().text)));
        return false;
    }
    const OutboxQueue::Taken taken = p_.queue.take(s.txtid.text);
    if (taken == OutboxQueue::Taken::Yes) return true;
    if (taken == OutboxQueue::Taken::No) p_.journal.ended(s.txtid.text);
    idle(QStringLiteral("The message could not be taken from the queue"));
    return false;
}

void StepMachine::dispatch(const QString& mode) {
    GatewayState& s = p_.state;
    // Whatever surfaces in the middle of an attempt, the message has left the queue and must end marked.
    struct Attempt {
        MessageSender& sender;
        const GatewayState& state;
        const int outcomes = state.sentCount + state.failedCount;
        ~Attempt() {
            if (state.sentCount + state.failedCount > outcomes) return;
            try {
                sender.recordFailure(QStringLiteral("the attempt was broken off by an error"));
            } catch (const SurfacedError&) {
                log::error("engine", QStringLiteral("a broken-off message could not be marked as failed"));
            }
        }
    } const attempt{p_.sender, s};

    s.mode9 = mode == QStringLiteral("9");
    const bool automatic = s.mode9 || mode == QStringLiteral("0");
    const bool byNumber = isPositiveNumber(cleanedNumber(s.txtNo.text));
    const bool hasFiles = !s.txtMedia.text.isEmpty() || !s.txtFile.text.isEmpty();
    if (typableText(s.txtMsg2.text).trimmed().isEmpty() && !hasFiles) {
        p_.sender.recordFailure(QStringLiteral("the message is empty"));
    } else if (s.txtNo.text.trimmed().isEmpty()) {
        p_.sender.recordFailure(QStringLiteral("the row names neither a number nor a name"));
    } else if (mode == QStringLiteral("1") || (automatic && byNumber)) {
        p_.sender.KIRIM_MODE1();
    } else if (mode == QStringLiteral("2") || automatic) {
        p_.sender.KIRIM_MODE2();
    } else {
        p_.sender.recordFailure(QStringLiteral("unknown wa_mode %1").arg(mode.left(8)));
    }
}

void StepMachine::finishMessage(const PageLook& look) {
    p_.state.step = QStringLiteral("Leaving the chat");
    p_.pacing.WA_WAIT(kAfterSendMs);
    p_.opener.KE_DUMMY(look.ownPicture);
    p_.sender.removeFetchedFiles();  // by now the page has read them
    if (p_.settings.AfterSend.toInt() <= 0) {
        p_.state.wait.visible = false;
        return;
    }
    if (p_.pacing.countMessage()) p_.queue.cmd_OutboxRefresh_Click();
}

void StepMachine::idle(const QString& step) {
    p_.state.step = step;
    p_.state.wait.visible = false;
}

}  // namespace kibo
