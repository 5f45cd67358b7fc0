#pragma once

#include <QString>
#include <functional>

#include "base/settings.h"
#include "engine/text_expansion.h"
#include "store/database.h"

namespace kibo {

/// Hands a stored message to the reply bots: a web script that is asked by HTTP, a program that is started, or both,
/// in this order. What they answer is not looked at: a bot replies by inserting into the queue. A bot that can't be
/// reached costs its time limit and a line in the log.
class ReplyHandOff {
 public:
    /// How the bots are reached.
    struct Ways {
        std::function<Result<void>(const QString& address)> get;
        /// Opens the address in a browser instead; `UseIE` "Y". NotFound where there is no such browser.
        std::function<Result<void>(const QString& address, const QString& profile)> visit;
        std::function<Result<void>(const QString& program, const QString& argument)> startProgram;
        RandomSource random;  ///< fractions from 0 to 1
    };

    /// `settings` is changed in multi-session mode, where the web bot is on and its address is the profile's. All must
    /// outlive the object.
    ReplyHandOff(Settings& settings, Database& database, Ways ways);

    /// `number`: of the sender, or the chat's title.
    void fire(const QString& number, const QString& text, const QString& profile);

 private:
    void loadBotAddress(const QString& profile);
    void askWebBot(const QString& number, const QString& text, const QString& profile);
    void startLocalBot(const QString& number, const QString& text, const QString& profile);

    Settings& settings_;
    Database& database_;
    Ways ways_;
};

}  // namespace kibo
