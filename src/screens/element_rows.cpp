#include "screens/element_rows.h"

#include <QSet>

#include "browser/element_table.h"

namespace kibo {
namespace {

struct Description {
    const char* name;
    const char* text;
};

struct Group {
    const char* title;
    std::vector<Description> rows;
};

const std::vector<Group>& described() {
    static const std::vector<Group> groups{
        {"Login",
         {{"XX_QR", "The login's QR code; its attribute data-ref holds the code"},
          {"XX_QRReload", "Button over an expired QR code"},
          {"XX_NewChat", "Button for a new chat; when it is there, the login is done"},
          {"XX_OwnPicture", "Your own picture; its address may name your number"},
          {"XX_ErrorPage", "What only a page in place of WhatsApp has, as a server's error"}}},
        {"Chats",
         {{"XX_ChatList", "The list of chats at the left"},
          {"XX_SearchBox", "Search box above the list"},
          {"XX_MessageResults", "Heading of found messages in the list"},
          {"XXMessagesText", "Texts of this heading"},
          {"XX_Conversation", "The open chat as a whole"},
          {"XX_To", "Name or number at the top of the open chat"},
          {"XX_PP", "Picture of the open chat's contact"},
          {"XX_HeaderPicture", "The same picture, where its address names the number"},
          {"XX_MessageRow", "Each message of the open chat"},
          {"XX_MessageText", "The text inside such a message, the last one found"},
          {"XX_Quoted", "In such a message: another one that it answers"},
          {"XX_KindCall", "In such a message: it is a call, no message"},
          {"XX_KindDeleted", "The same: its writer has deleted it"},
          {"XX_KindPoll", "The same: a poll"},
          {"XX_KindContact", "The same: a contact"},
          {"XX_KindLocation", "The same: a location"},
          {"XX_KindSticker", "The same: a sticker"},
          {"XX_KindVoice", "The same: a voice message"},
          {"XX_KindDocument", "The same: a document"},
          {"XX_KindVideo", "The same: a video"},
          {"XX_KindPhoto", "The same: a photo"},
          {"XX_TickClock", "Beside a message or in a chat's entry: the clock of one that has not gone yet"},
          {"XX_TickOne", "The same: one tick"},
          {"XX_TickTwo", "The same: two ticks; drawn in blue, they count as read"},
          {"XX_TickRead", "The same: two ticks whose name says that they are blue"}}},
        {"Sending",
         {{"XX_ChatBox", "The box in which a message is typed"},
          {"XX_SendButton", "Send button beside it; there once the box holds a text"}}},
        {"Attachments",
         {{"XX_AttachMenu", "Button that opens the attachment menu"},
          {"XX_MediaInput", "File input for pictures and videos; never visible"},
          {"XX_DocumentInput", "File input for documents; never visible"},
          {"XX_Caption", "Caption box of the preview, once a file is chosen"},
          {"XX_SendFileButton", "Send button of the preview"}}},
        {"Inbox",
         {{"XX_ReadMessage", "Each entry of the chat list, read for unread messages"},
          {"XX_EntryTitle", "Name or number in such an entry"},
          {"XX_ListedChat", "Entries that List chats shows; when none is there, the above"},
          {"XX_UnreadBadge", "Count of unread messages in such an entry"},
          {"XX_MediaPhoto", "In a message that came in: its picture, once the page holds it"},
          {"XX_MediaVideo", "The same: its video"},
          {"XX_MediaVoice", "The same: its voice message"},
          {"XX_MediaDownload", "The same: what fetches or saves its file"},
          {"XX_MessageMenu", "The same: what opens its menu"},
          {"XX_MenuDownload", "The item of this menu that saves the file"},
          {"XXDownloadText", "Texts of this item"},
          {"XXDraft", "Texts before what was left unsent in a chat"},
          {"XXTyping", "Texts shown while the other side types"}}},
        {"Notices",
         {{"XX_Info", "Notice bar above the chat list"},
          {"XXInfo1", "Texts of the bar: the phone is not connected"},
          {"XXInfo2", "Texts of the bar: the computer is not connected"},
          {"XX_Update", "Button of the bar's notice that the page is to be renewed"},
          {"XXUpdateText", "Texts of this button"},
          {"XX_UseHere", "Button that takes the account back from another window"},
          {"XXUseHereText", "Texts of this button"},
          {"XX_InvalidNumber", "Popups, of which XXInfo3 tells the one about a number"},
          {"XXInfo3", "Texts of the popup: the number is not on WhatsApp"}}},
    };
    return groups;
}

QString boxNameOf(const QString& name) {
    // This one box has always been written with a small letter.
    if (name == QStringLiteral("XX_SendButton")) return QStringLiteral("nn_sendButton");
    return QStringLiteral("nn_") + name.mid(name.startsWith(QStringLiteral("XX_")) ? 3 : 2);
}

}  // namespace

std::vector<ElementGroup> elementGroups() {
    const QStringList names = ElementTable::names();
    QSet<QString> left(names.begin(), names.end());
    std::vector<ElementGroup> groups;
    for (const Group& group : described()) {
        ElementGroup shown{QString::fromLatin1(group.title), {}};
        for (const Description& row : group.rows) {
            const QString name = QString::fromLatin1(row.name);
            if (left.remove(name)) shown.rows.push_back({name, boxNameOf(name), QString::fromLatin1(row.text)});
        }
        groups.push_back(std::move(shown));
    }
    if (left.isEmpty()) return groups;
    ElementGroup further{QStringLiteral("Further"), {}};
    for (const QString& name : names)
        if (left.contains(name)) further.rows.push_back({name, boxNameOf(name), {}});
    groups.push_back(std::move(further));
    return groups;
}

}  // namespace kibo
