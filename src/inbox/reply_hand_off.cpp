#include "inbox/reply_hand_off.h"

#include "base/log.h"
#include "inbox/url_encoder.h"

namespace kibo {
namespace {

const QString kBotOfProfile = QStringLiteral("SELECT * FROM web_user WHERE id = ?");
const QString kSeparator = QStringLiteral("~~");
constexpr int kRandomDigits = 7;

void logFailure(const char* bot, const Result<void>& done) {
    if (!done)
        log::warning("inbox", QStringLiteral("the %1 was not reached: %2")
                                  .arg(QString::fromLatin1(bot), QString::fromStdString(done.failure().text)));
}

}  // namespace

ReplyHandOff::ReplyHandOff(Settings& settings, Database& database, Ways ways)
    : settings_(settings), database_(database), ways_(std::move(ways)) {}

void ReplyHandOff::fire(const QString& number, const QString& text, const QString& profile) {
    if (isYes(settings_.Multi)) loadBotAddress(profile);
    if (isYes(settings_.UseBotPHP) && !settings_.PHP.isEmpty()) askWebBot(number, text, profile);
    if (isYes(settings_.UseBotEXE)) startLocalBot(number, text, profile);
}

void ReplyHandOff::loadBotAddress(const QString& profile) {
    settings_.UseBotPHP = QStringLiteral("Y");
    const Recordset user = database_.OpenRecordset(kBotOfProfile, {profile});
    if (!user.eof()) settings_.PHP = user.field(QStringLiteral("bot_url"));
}

void ReplyHandOff::askWebBot(const QString& number, const QString& text, const QString& profile) {
    QString address = settings_.PHP + QStringLiteral("?wa_no=") + QString::fromLatin1(urlEncoded(number)) +
                      QStringLiteral("&wa_text=") + QString::fromLatin1(urlEncoded(text));
    if (isYes(settings_.Multi)) address += QStringLiteral("&profil=") + profile;
    // A fraction that is new each time, so that nothing on the way answers from a cache.
    address += QStringLiteral("&xxx=") + QString::number(ways_.random(), 'g', kRandomDigits);

    if (isYes(settings_.UseIE) && ways_.visit) {
        const Result<void> visited = ways_.visit(address, profile);
        if (visited || visited.failure().kind != FailureKind::NotFound) {
            logFailure("web bot", visited);
            return;
        }
        log::warning("inbox", QStringLiteral("the web bot is asked without a browser: %1")
                                  .arg(QString::fromStdString(visited.failure().text)));
    }
    logFailure("web bot", ways_.get(address));
}

void ReplyHandOff::startLocalBot(const QString& number, const QString& text, const QString& profile) {
    QString argument = number + kSeparator + text;
    if (isYes(settings_.Multi)) argument += kSeparator + profile;
    // An argument ends at a zero, wherever it stands.
    logFailure("local bot", ways_.startProgram(settings_.EXE, argument.remove(QChar::Null)));
}

}  // namespace kibo
