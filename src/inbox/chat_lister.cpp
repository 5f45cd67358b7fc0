#include "inbox/chat_lister.h"

#include "base/log.h"
#include "engine/phone_number.h"

namespace kibo {

void ChatLister::len2_Click() {
    const auto chats = page_.listChats();
    if (!chats) return;
    auto rows = std::make_shared<ListRows>();
    for (const ListedChat& chat : *chats) {
        QString number = numberInPicture(chat.picture);
        if (number.isEmpty() && looksLikeNumber(chat.title)) number = digitsIn(chat.title);
        rows->append({number, chat.title});
    }
    log::info("inbox", QStringLiteral("%1 chats are listed").arg(rows->rowCount()));
    state_.ms.setRows(std::move(rows));
}

}  // namespace kibo
