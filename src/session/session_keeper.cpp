#include "session/session_keeper.h"

#include <QScopedValueRollback>
#include <algorithm>

#include "base/log.h"

namespace kibo {
namespace {

constexpr qint64 kShortestPauseMs = 5'000;
constexpr qint64 kLongestPauseMs = 300'000;
constexpr qint64 kProofMs = 60'000;
const QString kGone = QStringLiteral("!!");

}  // namespace

void SessionKeeper::cmd_OpenWA_Click() {
    // Starting the browser may let clicks run; the second one must not start another.
    if (opening_) return;
    const QScopedValueRollback<bool> opening(opening_, true);
    GatewayState& s = n_.state;
    const bool tryAgain = s.waurl.text == kGone || isYes(n_.settings.AutoStart);
    s.waurl.text.clear();
    s.step = QStringLiteral("Starting the browser");
    closed_ = false;
    reopenAtMs_.reset();
    readySinceMs_.reset();
    sentBefore_ = s.sentCount;
    if (n_.showState) n_.showState();
    n_.clock.runPendingEvents();
    LaunchOptions options{n_.settings, s.cb_Profil.text, s.HideChrome.checked};
    options.readProfile = n_.readProfile;
    options.armStepMachine = [&s] { s.Timer_KIBO.setEnabled(true); };
    const Result<void> opened = n_.openBrowser(options);
    if (opened) {
        lastProblem_.clear();
        s.cb_Profil.enabled = false;  // the queue belongs to the account that is logged in
        return;
    }
    lastProblem_ = QString::fromStdString(opened.failure().text);
    s.step = lastProblem_;
    log::error("window", QStringLiteral("the browser can't be started: ") + lastProblem_);
    if (!tryAgain) return;
    s.waurl.text = kGone;
    pauseMs_ = std::max(pauseMs_, kShortestPauseMs);
    planNextTry();
}

void SessionKeeper::close() {
    closed_ = true;
    n_.closeBrowser();  // the next tick of the step machine finds the browser gone and tidies up
}

void SessionKeeper::timer_start_Timer() {
    n_.state.timer_start.setEnabled(false);
    if (isYes(n_.settings.AutoStart) && n_.state.cb_Profil.text != QStringLiteral("0")) cmd_OpenWA_Click();
}

void SessionKeeper::keepOpen() {
    GatewayState& s = n_.state;
    if (s.waurl.text != kGone) {
        reopenAtMs_.reset();
        noticeProof();
        return;
    }
    if (closed_) {
        s.waurl.text.clear();
        s.step = QStringLiteral("WhatsApp is not open");
        return;
    }
    if (!reopenAtMs_) {
        if (s.sentCount > sentBefore_) pauseMs_ = 0;
        planNextTry();
    }
    const qint64 leftMs = *reopenAtMs_ - nowMs();
    if (leftMs <= 0) {
        cmd_OpenWA_Click();
        return;
    }
    s.step = QStringLiteral("Opening WhatsApp again in %1 s").arg((leftMs + 999) / 1000);
    if (!lastProblem_.isEmpty()) s.step += QStringLiteral(": ") + lastProblem_;
}

void SessionKeeper::noticeProof() {
    if (n_.state.status.caption != QStringLiteral("Ready")) {
        readySinceMs_.reset();
        return;
    }
    if (!readySinceMs_) readySinceMs_ = nowMs();
    if (n_.state.sentCount > sentBefore_ || nowMs() - *readySinceMs_ >= kProofMs) pauseMs_ = 0;
}

void SessionKeeper::planNextTry() {
    reopenAtMs_ = nowMs() + pauseMs_;
    if (pauseMs_ > 0) log::info("window", QStringLiteral("opening WhatsApp again in %1 s").arg(pauseMs_ / 1000));
    pauseMs_ = std::clamp(2 * pauseMs_, kShortestPauseMs, kLongestPauseMs);
}

}  // namespace kibo
