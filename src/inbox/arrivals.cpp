#include "inbox/arrivals.h"

#include "base/log.h"

namespace kibo {

void Arrivals::take(const QList<ArrivedMessage>& arrived) {
    if (arrived.isEmpty()) {
        taken_.clear();
        p_.opened.allTaken();
        return;
    }
    QStringList done;
    const bool disabled = isYes(p_.settings.DisableRead);
    // What was stored must be known before anything counts as new.
    if (!disabled && !(p_.storedIds.open() && p_.journal.open())) return;
    for (const ArrivedMessage& message : arrived) {
        const bool known = taken_.contains(message.key) || p_.storedIds.contains(message.messageId) ||
                           p_.journal.holds(message.messageId);
        const auto row = disabled || known ? std::nullopt : rows_.of(message);
        if (row) {
            if (!p_.journal.add(*row)) break;  // it stays with the page
            log::info("inbox", QStringLiteral("message of %1 characters from %2 came in while its chat was open")
                                   .arg(row->wa_text.size())
                                   .arg(log::maskedNumber(row->wa_no)));
        }
        done.append(message.key);
    }
    taken_ = {done.begin(), done.end()};
    if (done.size() == arrived.size()) p_.opened.allTaken();
    if (!done.isEmpty()) p_.page.forgetArrived(done);
}

}  // namespace kibo
