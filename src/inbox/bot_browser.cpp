#include "inbox/bot_browser.h"

#include "platform/machine.h"

namespace kibo {
namespace {

constexpr int kPollMs = 50;
// The next page is a new window object without the mark.
const QString kLeave = QStringLiteral("window.kiboLeft = true;");
const QString kArrived =
    QStringLiteral("return !window.kiboLeft && document.readyState === 'complete' ? location.protocol : '';");

}  // namespace

BotBrowser::BotBrowser(const QString& programFolder, const Settings& settings, Clock& clock)
    : settings_(settings), clock_(clock), browser_(programFolder + QStringLiteral("/bot-browser"), clock) {}

Result<void> BotBrowser::visit(const QString& address, const QString& profile) {
    const Result<void> started = start(profile);
    if (!started) return Failure{FailureKind::NotFound, started.failure().text};
    return load(address);
}

Result<void> BotBrowser::start(const QString& profile) {
    const qint64 now = clock_.monotonicMs();
    if (browser_.isOpen() && now - startedAtMs_ > kLifeMs) browser_.quit();
    if (browser_.isOpen() && browser_.windowExists()) return {};
    if (failedAtMs_ && now - *failedAtMs_ < kPauseMs)
        return Failure{FailureKind::NotFound, "the bot's browser could not be started lately"};

    Settings own = settings_;
    own.Headless = isYes(settings_.ShowIE) ? QStringLiteral("N") : QStringLiteral("Y");
    own.Incognito = QStringLiteral("N");
    own.StartAddress = QStringLiteral("about:blank");
    startedAtMs_ = now;
    // Its pages are anybody's.
    const bool sandbox = !isYes(settings_.NoSandBox) && platform::canSandboxBrowser();
    Result<void> opened = browser_.open({.settings = own, .profile = profile, .sandbox = sandbox});
    failedAtMs_ = opened ? std::optional<qint64>() : now;
    return opened;
}

Result<void> BotBrowser::load(const QString& address) {
    using namespace webdriver;
    Client& client = browser_.client();
    (void)client.send(ExecuteScript{kLeave});  // a page that can't be marked is one that shows an error
    if (const auto asked = client.send(NavigateTo{address}); !asked) return asked.failure();
    const qint64 latest = clock_.monotonicMs() + kPageMs;
    while (clock_.monotonicMs() < latest && !clock_.waitingStopped()) {
        const auto arrived = client.send(ExecuteScript{kArrived});
        const QString protocol = arrived ? arrived.value().toString() : QString();
        if (protocol == QStringLiteral("chrome-error:"))
            return Failure{FailureKind::Transport, "the bot's address can't be loaded"};
        if (!protocol.isEmpty()) return {};
        clock_.wait(kPollMs);
    }
    return Failure{FailureKind::Transport, "the bot's page was not there in time"};
}

}  // namespace kibo
