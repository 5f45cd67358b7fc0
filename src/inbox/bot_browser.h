#pragma once

#include <QString>

#include "base/clock.h"
#include "base/settings.h"
#include "browser/browser.h"

namespace kibo {

/// The browser in which the web bot's address is opened: a second one beside that of the chat page, with a folder of
/// its own. It is started at the first use, without a window unless `ShowIE` is "Y", and anew after an hour, since
/// pages of a bot may leave anything behind.
class BotBrowser {
 public:
    static constexpr qint64 kLifeMs = 3'600'000;
    /// After a start that failed the next one is tried this much later.
    static constexpr qint64 kPauseMs = 600'000;
    /// Longest time for one page.
    static constexpr qint64 kPageMs = 15'000;

    /// All must outlive the object.
    BotBrowser(const QString& programFolder, const Settings& settings, Clock& clock);

    /// Opens `address` and waits until its page is there; starts the browser of `profile` first if need be. Fails with
    /// NotFound where the browser can't be started, or lately couldn't, and nothing was asked; with another kind where
    /// the page is not there in time or can't be loaded.
    Result<void> visit(const QString& address, const QString& profile);

    void quit() { browser_.quit(); }

 private:
    Result<void> start(const QString& profile);
    Result<void> load(const QString& address);

    const Settings& settings_;
    Clock& clock_;
    Browser browser_;
    qint64 startedAtMs_ = 0;
    std::optional<qint64> failedAtMs_;
};

}  // namespace kibo
