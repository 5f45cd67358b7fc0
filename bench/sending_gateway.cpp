#include "bench/sending_gateway.h"

#include "bench/measuring.h"

namespace kibo::bench {

SendingGateway::SendingGateway(Clock& clock)
    : chat(clock),
      database_(clock, policy_),
      gateway({state, chat.settings, chat.elements, database_, chat.page, clock, journal_, [] { return 0.0; }}) {
    // Each message to another chat than the one that is open in between.
    state.txt_DUMMY.text = QStringLiteral("6281200009999");
    state.cb_Profil.text = chat.settings.Profil;
    require(database_.OpenDatabase(chat.settings, chat.folder.path()).ok(), "the embedded store can't be opened");
    require(journal_.open(chat.folder.path() + QStringLiteral("/send.journal")).ok(), "no journal");
}

void SendingGateway::queue(const QString& number, const QString& text) {
    const auto added = database_.execute(
        QStringLiteral("insert into outbox (wa_mode, wa_no, wa_text) values (0, ?, ?)"), {number, text});
    require(added == 1, "a message can't be queued");
}

}  // namespace kibo::bench
