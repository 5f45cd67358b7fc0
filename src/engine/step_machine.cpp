#include "engine/step_machine.h"

#include <QDateTime>
#include <QLocale>
#include <QScopedValueRollback>

#include "base/log.h"
#include "engine/phone_number.h"

namespace kibo {
namespace {

constexpr int kAfterSendMs = 500;
constexpr qint64 kRefusedPauseMs = 3'000;
constexpr qint64 kTryJournalMs = 60'000;
const QString kWaitingForStore = QStringLiteral("Waiting for the database to tell what became of the last message");
const QString kWaitingForSecondLook = QStringLiteral("Looking again in a moment whether the last message was sent");
constexpr qint64 kLongestSilenceMs = 60'000;
const QString kReady = QStringLiteral("Ready");
const QString kNotConnect = QStringLiteral("Not Connect");

/// A moment as short as it can be told: the time, with the day when it isn't today.
QString shortTime(const QDateTime& moment, const QDate& today) {
    const bool isToday = moment.date() == today;
    return QLocale::c().toString(moment, isToday ? QStringLiteral("HH:mm") : QStringLiteral("d MMM HH:mm"));
}

}  // namespace

StepMachine::StepMachine(Parts parts) : p_(std::move(parts)) {}

void StepMachine::Timer_KIBO_Timer() {
    GatewayState& s = p_.state;
    const QScopedValueRollback<bool> inTick(s.stepRunning, true);
    s.Outbox_Cnt.caption = QString::number(s.ms_out.rowCount() - 1);
    const PageLook look = p_.page.look(nextLink());
    const bool givenUp = silentTooLong(look);
    if (look.presence == PageLook::Presence::Silent && !givenUp) {
        idle(QStringLiteral("The page does not answer"));
        return;
    }
    if (look.presence == PageLook::Presence::Gone || givenUp) {
        browserHasGone();
    }
    p_.opener.observe(look.chat, look.linkText);
    if (look.presence == PageLook::Presence::Here && p_.takeArrived) p_.takeArrived(look.arrived);
    s.newChatCount = look.newChatControls;
    s.pageNotice = look.hasUpdate ? QStringLiteral("WhatsApp offers an update: press Refresh on its page") : QString();
    const bool chatsShown = look.newChatControls > 0 && look.useHereButtons == 0;
    const bool sent = chatsShown ? loggedIn(look) : waitForLogin(look);
    showForecast();
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

void StepMachine::browserHasGone() {
    GatewayState& s = p_.state;
    log::warning("engine", QStringLiteral("the browser has gone"));
    TUTUP_WA();
    s.Timer_KIBO.setEnabled(false);
    s.waurl.text = QStringLiteral("!!");
    s.cmd_OpenWA.enabled = true;
    s.dummyOpened = false;
    s.cb_Profil.enabled = !isYes(p_.settings.Incognito);
}

bool StepMachine::waitForLogin(const PageLook& look) {
    if (look.qrCodes > 0) p_.state.ownNumber.clear();  // whoever logs in next
    showStatus(false);
    stopMeasuring();
    idle(p_.login.tick(look));
    return false;
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
    p_.login.loggedIn();
    if (const QString number = numberInPicture(look.ownPicture); !number.isEmpty()) s.ownNumber = number;
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
    p_.locators.observe(look, p_.opener.dummyIsOpen());
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
    if (standsBy()) return false;
    p_.queue.cmd_OutboxRefresh_Click();
    if (s.dboff.visible) {
        stopMeasuring();
        idle(QStringLiteral("Database is off"));
        return false;
    }
    const bool settled = p_.recovery.settleInStore();
    tryJournal();
    if (!p_.queue.hasNext() && !p_.recovery.needsPage()) {
        stopMeasuring();
        idle(nothingToSend());
        return false;
    }
    const qint64 begin = p_.clock.monotonicMs();
    if (!mayTakeMessage(look)) return false;
    if (!settled) {
        s.dboff = {true, p_.queue.storeProblem()};
        idle(kWaitingForStore);
        return false;
    }
    if (p_.recovery.needsPage()) {
        s.wait.visible = true;
        const SendRecovery::Look looked = p_.recovery.settleOnPage();
        if (looked != SendRecovery::Look::Done) {
            idle(looked == SendRecovery::Look::NoStore ? kWaitingForStore : kWaitingForSecondLook);
            return false;
        }
        leaveChat(look);
        s.wait.visible = false;
        return true;
    }
    if (storeRefuses()) return false;
    const auto row = loadMessage();
    if (!row) return false;
    dispatch(row->mode);
    finishMessage(look);
    const qint64 end = p_.clock.monotonicMs();
    forecast_.messageTook(end - workingSinceMs_.value_or(begin));
    workingSinceMs_ = end;
    return true;
}

/// As long as it isn't known who has the profile, the queue is shown: that tells what the database says.
bool StepMachine::standsBy() {
    if (!p_.state.standby.visible || p_.state.standby.caption.isEmpty()) return false;
    stopMeasuring();
    idle(QStringLiteral("Standby"));
    return true;
}

QString StepMachine::nothingToSend() {
    if (p_.locators.sendingIsHeld()) return QStringLiteral("Page changed: ") + p_.state.pageChanged;
    if (p_.pacing.isPaused() || p_.pacing.isBreak()) return pausedWords();
    if (!p_.state.readingChanged.isEmpty())
        return QStringLiteral("Page changed: %1, the inbox is not read").arg(p_.state.readingChanged);
    const auto next = p_.queue.nextDue();
    if (!next)
        return p_.queue.refusedCount() > 0 ? QStringLiteral("Trying again in a while") : QStringLiteral("Queue empty");
    return QStringLiteral("Next message at %1").arg(shortTime(*next, p_.clock.now().date()));
}

QString StepMachine::pausedWords() const {
    if (!p_.pacing.isBreak()) return QStringLiteral("Paused");
    return QStringLiteral("Break %1 / %2").arg(p_.state.DetikBreak.text, p_.settings.Break);
}

bool StepMachine::mayTakeMessage(const PageLook& look) {
    GatewayState& s = p_.state;
    if (s.busy || s.waitread.visible) {
        idle(QStringLiteral("Reading the inbox"));
        return false;
    }
    s.wait.visible = false;
    s.wait2.visible = false;
    if (p_.pacing.isBreak() || p_.pacing.isPaused()) {
        stopMeasuring();
        idle(pausedWords());
        return false;
    }
    s.Outbox_Cnt.caption = QString::number(s.ms_out.rowCount() - 1);
    if (s.status.caption != kReady) {
        stopMeasuring();
        idle(QStringLiteral("Phone not connected"));
        return false;
    }
    if (s.standby.visible) return false;
    if ((s.ms_out.rowCount() < 2 && !p_.recovery.needsPage()) || p_.clock.waitingStopped()) return false;
    // A chat asked for earlier that is still opening would come up under this message.
    if (!p_.opener.settled()) {
        idle(QStringLiteral("Waiting for an earlier chat to open"));
        return false;
    }
    if (p_.locators.sendingIsHeld()) {
        stopMeasuring();
        idle(QStringLiteral("Page changed: ") + s.pageChanged);
        if (p_.locators.shallLookAgain()) p_.opener.openDummy(look.ownPicture);
        return false;
    }
    if (p_.locators.doubtful()) {
        idle(QStringLiteral("Waiting for the message box"));
        return false;
    }
    return true;
}

/// A store that can be read but takes no message is as good as off. It is asked again after a while.
bool StepMachine::storeRefuses() {
    if (!refusedAtMs_) return false;
    p_.state.dboff.visible = true;
    if (p_.clock.monotonicMs() - *refusedAtMs_ >= kRefusedPauseMs) return false;
    idle(QStringLiteral("The database takes no message, trying again"));
    return true;
}

/// The next message finds out whether the journal can be written again; where none comes or may go, this does.
void StepMachine::tryJournal() {
    if (p_.state.journalProblem.isEmpty() || p_.clock.monotonicMs() < tryJournalMs_) return;
    tryJournalMs_ = p_.clock.monotonicMs() + kTryJournalMs;
    if (p_.journal.takesAgain()) p_.state.journalProblem.clear();
}

/// What stands in `wa_no` as a number as it is dialled, or as the name that it is.
QString StepMachine::destination(const QString& written) const {
    const QString number = destinationNumber(written, p_.settings.Prefix, p_.settings.CountryCode);
    return isPositiveNumber(number) ? number : written;
}

/// Where the link must point for the message that this tick will most likely send: the grid's first one that was not
/// tried yet. Empty when it is not known or has no number.
QString StepMachine::nextLink() const {
    const GatewayState& s = p_.state;
    const int row = s.ms_out.rowCount() > 1 && s.ms_out.text(1, OutboxQueue::Id) == s.txtid.text ? 2 : 1;
    if (s.ms_out.rowCount() <= row) return {};
    const QString number = destination(s.ms_out.text(row, OutboxQueue::Number));
    return ChatTarget::isByName(s.ms_out.text(row, OutboxQueue::Mode), number) ? QString()
                                                                               : p_.opener.linkAddress(number);
}

/// Copies the next queued row into the message fields and moves it out of the queue; nothing when that can't be done.
std::optional<QueuedRow> StepMachine::loadMessage() {
    GatewayState& s = p_.state;
    s.wait.visible = true;
    const auto row = p_.queue.nextRow();
    if (!row) {  // another program has taken it back meanwhile
        idle(QStringLiteral("Queue changed"));
        return std::nullopt;
    }
    if (p_.files.needFetching(row->media, row->file)) {
        fetchFiles(*row);
        return std::nullopt;
    }
    s.txtid.text = row->id;
    s.txtNo.text = destination(row->number);
    s.txtMedia.text = row->media.trimmed();
    s.txtFile.text = row->file.trimmed();
    QString problem;
    s.txtMsg2.text =
        expandsTexts(p_.settings) ? expandMessageText(row->text, p_.clock.now(), p_.random, &problem) : row->text;
    if (!problem.isEmpty())
        log::warning("engine", QStringLiteral("message %1 keeps its brackets: %2").arg(s.txtid.text, problem));
    const Result<void> noted = p_.journal.taken(*row, nextAttempt());
    s.journalProblem = noted ? QString() : QString::fromStdString(noted.failure().text);
    if (!noted) {
        idle(QStringLiteral("Nothing is sent: %1").arg(s.journalProblem));
        return std::nullopt;
    }
    const OutboxQueue::Taken taken = p_.queue.take(*row);
    if (taken == OutboxQueue::Taken::Unknown) {
        refusedAtMs_ = p_.clock.monotonicMs();
        storeRefuses();
        return std::nullopt;
    }
    refusedAtMs_.reset();
    s.dboff.visible = false;
    switch (taken) {
        case OutboxQueue::Taken::Yes:
            return row;
        case OutboxQueue::Taken::Refused:
            // A store without transactions may keep the copy of a row that it won't let go.
            p_.recovery.settleInStore();
            idle(QStringLiteral("Leaving out message %1").arg(row->id));
            break;
        default:
            p_.journal.ended(row->id);
            idle(QStringLiteral("Queue changed"));
    }
    return std::nullopt;
}

QString StepMachine::nextAttempt() {
    const QString& instance = p_.state.instance;
    return instance.isEmpty() ? QString() : QStringLiteral("%1/%2").arg(instance).arg(++attempts_);
}

/// A download may take minutes, and whatever happens meanwhile finds the message in the queue. What was known of the
/// page, the pause and the row before is out of date then, so the next tick takes the message.
void StepMachine::fetchFiles(const QueuedRow& row) {
    GatewayState& s = p_.state;
    s.step = QStringLiteral("Preparing the files of message %1").arg(row.id);
    if (!workingSinceMs_) workingSinceMs_ = p_.clock.monotonicMs();
    const QScopedValueRollback<bool> fetching(s.fetching, true);
    p_.files.removeFetched();  // of a message that was withdrawn meanwhile
    p_.files.fetch(row.media, row.file);
    s.wait.visible = false;
}

void StepMachine::dispatch(const QString& mode) {
    GatewayState& s = p_.state;
    // Whatever surfaces in the middle of an attempt, the message has left the queue and must end marked.
    struct Attempt {
        MessageSender& sender;
        const SendJournal& journal;
        const QString id;
        ~Attempt() {
            // Broken off around Enter it stays open: its chat is looked into before anything else is sent.
            const SendJournal::Entry* open = journal.entry(id);
            if (!open || open->stage != SendJournal::Stage::Taken || sender.isLeftToRecovery(id)) return;
            try {
                sender.recordFailure(QStringLiteral("the attempt was broken off by an error"));
            } catch (const SurfacedError&) {
                log::error("engine", QStringLiteral("a broken-off message could not be marked as failed"));
            }
        }
    } const attempt{p_.sender, p_.journal, s.txtid.text};

    s.mode9 = mode == QStringLiteral("9");
    static const QStringList kModes{QStringLiteral("0"), QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("9")};
    const bool hasFiles = !s.txtMedia.text.isEmpty() || !s.txtFile.text.isEmpty();
    if (typableText(s.txtMsg2.text).trimmed().isEmpty() && !hasFiles) {
        p_.sender.recordFailure(QStringLiteral("the message is empty"));
    } else if (s.txtNo.text.trimmed().isEmpty()) {
        p_.sender.recordFailure(QStringLiteral("the row names neither a number nor a name"));
    } else if (!kModes.contains(mode)) {
        p_.sender.recordFailure(QStringLiteral("unknown wa_mode %1").arg(mode.left(8)));
    } else if (ChatTarget::isByName(mode, s.txtNo.text)) {
        p_.sender.KIRIM_MODE2();
    } else {
        p_.sender.KIRIM_MODE1();
    }
    if (p_.sender.isLeftToRecovery(s.txtid.text)) p_.recovery.settleInStore();
}

void StepMachine::leaveChat(const PageLook& look) {
    p_.state.step = QStringLiteral("Leaving the chat of message %1").arg(p_.state.txtid.text);
    p_.pacing.WA_WAIT(kAfterSendMs);
    p_.opener.KE_DUMMY(look.ownPicture);
    p_.files.removeFetched();  // by now the page has read them
}

void StepMachine::finishMessage(const PageLook& look) {
    leaveChat(look);
    if (p_.settings.AfterSend.toInt() <= 0) {
        p_.state.wait.visible = false;
        return;
    }
    if (p_.pacing.countMessage()) p_.queue.cmd_OutboxRefresh_Click();
}

/// Sending is held up by something that says nothing about its pace.
void StepMachine::stopMeasuring() {
    workingSinceMs_.reset();
}

void StepMachine::showForecast() {
    GatewayState& s = p_.state;
    s.doneAbout.clear();
    const bool isBreak = p_.pacing.isBreak();
    if (s.status.caption != kReady || p_.locators.sendingIsHeld() || (p_.pacing.isPaused() && !isBreak)) return;
    const double breakS = p_.settings.Break.toDouble();
    const auto milliseconds = [](double seconds) { return static_cast<qint64>(qMax(0.0, seconds) * 1000); };
    const auto left = forecast_.untilDone({
        .waiting = p_.queue.dueCount() - p_.queue.refusedCount(),
        .batchSize = p_.settings.AfterSend.toInt(),
        .sentInBatch = s.HitungKirim.text.toInt(),
        .breakMs = milliseconds(breakS),
        .breakLeftMs = isBreak ? milliseconds(breakS - s.DetikBreak.text.toDouble()) : 0,
    });
    if (!left) return;
    const QDateTime now = p_.clock.now();
    s.doneAbout = QStringLiteral("Done about %1").arg(shortTime(now.addMSecs(*left), now.date()));
}

void StepMachine::idle(const QString& step) {
    p_.state.step = step;
    p_.state.wait.visible = false;
}

}  // namespace kibo
