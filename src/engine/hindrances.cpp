#include "engine/hindrances.h"

#include <algorithm>

namespace kibo {
namespace {

using Ends = Hindrance::Ends;
using Remedy = Hindrance::Remedy;

/// A cause as a sentence, whether or not it came with a full stop.
QString sentence(QString text) {
    while (text.endsWith(u'.') || text.endsWith(u' ')) text.chop(1);
    return text.isEmpty() ? text : text + u'.';
}

}  // namespace

std::vector<Hindrance> hindrances(const GatewayState& s, const Settings& settings) {
    std::vector<Hindrance> found;
    const auto add = [&found](Ends ends, const QString& text, Remedy remedy = Remedy::None) {
        found.push_back({ends, text, remedy});
    };
    if (!s.journalProblem.isEmpty())
        add(Ends::WhenSomeoneActs,
            QStringLiteral("Nothing is sent: %1 Make room on the disk, or let Kibo write into its folder; then it goes "
                           "on.")
                .arg(sentence(s.journalProblem)),
            Remedy::ProgramFolder);
    if (!s.pageChanged.isEmpty())
        add(Ends::WhenSomeoneActs,
            QStringLiteral("Sending is held: the page has changed, and %1 finds nothing on it any more. Correct it "
                           "under Elements.")
                .arg(s.pageChanged),
            Remedy::Elements);
    if (!s.readingChanged.isEmpty())
        add(Ends::WhenSomeoneActs,
            QStringLiteral("Page changed: %1. The chats can't be read any more; unread ones stay unread, and messages "
                           "are sent all the same. Correct it under Elements.")
                .arg(s.readingChanged),
            Remedy::Elements);
    for (const SettingProblem& problem : settings.problems)
        add(Ends::WhenSomeoneActs, sentence(problem.text) + QStringLiteral(" Correct kibo.ini, then start again."),
            Remedy::ProgramFolder);
    if (s.dboff.visible)
        add(Ends::ByItself,
            QStringLiteral("The database is off: %1 Kibo goes on as soon as it answers.")
                .arg(s.dboff.caption.isEmpty() ? QStringLiteral("it gives no reason.") : sentence(s.dboff.caption)),
            Remedy::TryAgain);
    if (s.standby.visible && !s.standby.caption.isEmpty()) add(Ends::ByItself, sentence(s.standby.caption));
    if (s.pQR.visible)
        add(Ends::WhenSomeoneActs, QStringLiteral("WhatsApp waits for its login: scan the code with the phone."));
    else if (s.cmd_OpenWA.enabled)
        add(isYes(settings.AutoStart) ? Ends::ByItself : Ends::WhenSomeoneActs,
            QStringLiteral("WhatsApp is not open: nothing is sent or read."), Remedy::OpenWhatsApp);
    if (s.pausedByOperator())
        add(Ends::WhenSomeoneActs, QStringLiteral("Paused: nothing is sent until you press Continue."),
            Remedy::Continue);
    if (s.notDelivered)
        add(Ends::ByItself,
            QStringLiteral("Sent, but not delivered: none of the last %1 messages has its second tick, though earlier "
                           "ones got it. Look at the phone: is it online, and does WhatsApp there report anything?")
                .arg(GatewayState::kUndelivered));
    if (!s.refusedOut.isEmpty())
        add(Ends::ByItself,
            sentence(s.refusedOut) + QStringLiteral(" The others go on; it is tried again every five minutes."));
    if (!s.inboxNotice.isEmpty()) add(Ends::ByItself, sentence(s.inboxNotice));
    if (!s.mediaNotice.isEmpty())
        add(Ends::ByItself,
            QStringLiteral(
                "Messages are stored, but their pictures and files are not saved: %1 Saving goes on with the "
                "next message once there is room.")
                .arg(sentence(s.mediaNotice)));
    if (!s.pageNotice.isEmpty()) add(Ends::ByItself, sentence(s.pageNotice));
    std::stable_partition(found.begin(), found.end(),
                          [](const Hindrance& one) { return one.ends == Ends::WhenSomeoneActs; });
    return found;
}

}  // namespace kibo
