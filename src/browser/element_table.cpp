#include "browser/element_table.h"

#include <QRegularExpression>
#include <array>
#include <atomic>

namespace kibo {
namespace {

struct Element {
    const char* name;
    const char* builtIn;
};

// The order is the order of loading. The attach inputs are the page's older layout; the shipped element store
// holds today's.
constexpr std::array kElements{
    Element{"XX_InvalidNumber", ""},
    Element{"XX_NewChat", ""},
    Element{"XX_ChatBox", ""},
    Element{"XX_To", ""},
    Element{"XX_PP", ""},
    Element{"XX_QR", ""},
    Element{"XX_QRReload", ""},
    Element{"XX_Info", ""},
    Element{"XX_ReadMessage", ""},
    Element{"XX_Update", ""},
    Element{"XX_SendFileButton", ""},
    Element{"XX_SendButton", ""},
    Element{"XXInfo1", "Phone not connected"},
    Element{"XXInfo2", "Computer not connected"},
    Element{"XXInfo3", "Phone number shared via url is invalid."},
    Element{"XXTyping", "typing"},
    // What the chat list shows before a text that was left in a chat's message box.
    Element{"XXDraft", "Draft:"},
    // The account's own picture; its address may carry the account's number.
    Element{"XX_OwnPicture", "//*[@id='side']/header/div[1]/div/img"},
    Element{"XX_ChatList", "#pane-side"},
    Element{"XX_Conversation", "#main"},
    Element{"XX_HeaderPicture", "//*[@id='main']/header/div[1]/div/img"},
    Element{"XX_MessageRow", "#main [data-id]"},
    // Inside a message of the open chat; the last of them, since the text that is answered may stand above.
    Element{"XX_MessageText", "span.selectable-text"},
    Element{"XX_AttachMenu", "span[data-icon='attach-menu-plus']"},
    Element{"XX_MediaInput", "input[type='file']"},
    Element{"XX_DocumentInput",
            "//*[@id='main']/footer/div[1]/div/span[2]/div/div[1]/div/div/span/div/ul/div/div[2]/li/div/input"},
    Element{"XX_Caption",
            "//*[@id='app']/div/div/div[3]/div[2]/span/div/span/div/div/div[2]/div/div[1]/div[3]/div/div/div[2]/"
            "div[1]/div[1]/p"},
    Element{"XX_SearchBox", "//*[@id='side']/div[1]/div/label/div/div[2]"},
    // The heading above the single messages that a search has found; above it stand chats.
    Element{"XX_MessageResults",
            "//*[@id='pane-side']//*[not(*)][normalize-space(.)='Messages'][not(ancestor::*[@role='row'][.//"
            "span[@title]])]"},
    Element{"XXMessagesText", "Messages"},
    // The word on the button of XX_Update.
    Element{"XXUpdateText", "Refresh"},
    // "WhatsApp is open in another window", and pages in place of the application.
    Element{"XX_UseHere", "//*[@role='dialog']//button[contains(.,'Use here') or contains(.,'Use Here')]"},
    Element{"XXUseHereText", "Use here"},
    Element{"XX_ErrorPage", "#main-frame-error"},
    // Inside a row of the chat list.
    Element{"XX_EntryTitle", ".//span[@title]"},
    // The older layout's rows, for the list of chats on demand; today's are XX_ReadMessage.
    Element{"XX_ListedChat", "._2aBzC"},
    Element{"XX_UnreadBadge", ".//*[@data-testid='icon-unread-count' or contains(@aria-label,'unread')]"},
    // Inside a message of the open chat: what makes it one of a kind, in the order in which it is asked; names of icons
    // and structure, since words are in the page's language. A call is no message. What is answered is not the message.
    Element{"XX_Quoted", ".//*[contains(@data-testid,'quoted') or contains(@class,'quoted')]"},
    Element{"XX_KindCall",
            ".//*[starts-with(@data-icon,'call-') or starts-with(@data-icon,'missed-') or "
            "starts-with(@data-testid,'call-') or starts-with(@data-testid,'missed-')]"},
    Element{"XX_KindDeleted", ".//*[starts-with(@data-icon,'recalled') or starts-with(@data-testid,'recalled')]"},
    Element{"XX_KindPoll", ".//*[starts-with(@data-testid,'poll-') or starts-with(@data-icon,'poll-')]"},
    Element{"XX_KindContact", ".//*[starts-with(@data-testid,'vcard') or starts-with(@data-testid,'contact-card')]"},
    Element{"XX_KindLocation",
            ".//*[starts-with(@data-testid,'location') or starts-with(@data-icon,'location')] | "
            ".//img[contains(@src,'staticmap')]"},
    Element{"XX_KindSticker", ".//img[contains(@class,'sticker')] | .//*[@data-testid='sticker']"},
    Element{"XX_KindVoice",
            ".//*[@data-icon='audio-play' or @data-testid='audio-play' or "
            "@data-icon='ptt-status' or @data-testid='ptt-status']"},
    Element{"XX_KindDocument", ".//*[starts-with(@data-icon,'document-') or starts-with(@data-testid,'document-')]"},
    Element{"XX_KindVideo",
            ".//video | .//*[@data-icon='media-play' or @data-testid='media-play' or "
            "@data-icon='video-pip' or @data-testid='video-pip']"},
    // What isn't fetched yet shows a control in its place.
    Element{"XX_KindPhoto",
            ".//img[starts-with(@src,'blob:')] | .//*[@data-icon='media-download' or @data-testid='media-download']"},
    // Inside a message of the open chat: what it carries, once the page holds it; what fetches or saves it; and what
    // opens its menu, where the last row's words are looked for.
    Element{"XX_MediaPhoto", ".//img[starts-with(@src,'blob:')]"},
    Element{"XX_MediaVideo", ".//video[starts-with(@src,'blob:')] | .//video/source[starts-with(@src,'blob:')]"},
    Element{"XX_MediaVoice", ".//audio[starts-with(@src,'blob:')] | .//audio/source[starts-with(@src,'blob:')]"},
    Element{
        "XX_MediaDownload",
        ".//*[contains('|media-download|audio-download|document-download|download|download-refreshed|ic-download|', "
        "concat('|', @data-icon, '|')) or contains('|media-download|audio-download|document-download|', concat('|', "
        "@data-testid, '|'))]/ancestor-or-self::*[self::button or @role='button' or self::span][1] | "
        ".//*[starts-with(@data-icon,'document-') or starts-with(@data-testid,'document-')]/ancestor::*[self::button "
        "or @role='button'][1] | .//*[self::button or @role='button'][starts-with(@aria-label,'Download') or "
        "starts-with(@title,'Download')]"},
    Element{
        "XX_MessageMenu",
        ".//*[@data-icon='down-context' or @data-icon='ic-chevron-down-menu' or @data-testid='down-context' or "
        "@data-testid='ic-chevron-down-menu']/ancestor-or-self::*[self::button or @role='button' or self::span][1]"},
    Element{"XX_MenuDownload",
            "//*[@role='menuitem' or self::li][not(.//*[@role='menuitem' or @role='button'])] | "
            "//*[@role='menu']//*[@role='button'] {XXDownloadText}"},
    Element{"XXDownloadText", "Download"},
    // Inside a message of the open chat or a row of the chat list: what is drawn beside a message that was sent, by the
    // names of the icons, wherever the page puts them. Its newest ones don't mean what they say: "delivered" is one
    // tick, "read" is two, which are blue only if the message was read.
    Element{"XX_TickClock",
            "(.//@data-icon | .//@data-testid | .//*[local-name()='title']/text())"
            "[contains('|msg-time|status-time|ic-chatlist-clock|wds-ic-pending|', concat('|', ., '|'))]"},
    Element{"XX_TickOne",
            "(.//@data-icon | .//@data-testid | .//*[local-name()='title']/text())"
            "[contains('|msg-check|status-check|wds-ic-check|wds-ic-sent|wds-ic-delivered|', concat('|', ., '|'))]"},
    Element{"XX_TickTwo",
            "(.//@data-icon | .//@data-testid | .//*[local-name()='title']/text())"
            "[contains('|msg-dblcheck|status-dblcheck|wds-ic-dblcheck|wds-ic-read|', concat('|', ., '|'))]"},
    Element{"XX_TickRead",
            "(.//@data-icon | .//@data-testid | .//*[local-name()='title']/text())"
            "[contains('|msg-dblcheck-ack|status-dblcheck-ack|', concat('|', ., '|'))]"},
};

}  // namespace

ElementTable::ElementTable() : ElementTable([](const QString&) { return QString(); }) {}

ElementTable::ElementTable(const LoadElement& loadElement) {
    const QStringList all = names();
    for (const QString& name : all) set(name, loadElement(name));
}

void ElementTable::set(const QString& name, const QString& value) {
    static std::atomic<quint64> newest = 0;
    values_.insert(name, value.isEmpty() ? builtIn(name) : value);
    revision_ = ++newest;
}

QStringList ElementTable::names() {
    QStringList names;
    for (const Element& element : kElements) names.append(QString::fromLatin1(element.name));
    return names;
}

QString ElementTable::builtIn(const QString& name) {
    for (const Element& element : kElements)
        if (name == QLatin1String(element.name)) return QString::fromLatin1(element.builtIn);
    return {};
}

bool ElementTable::isXPath(const QString& locator) {
    const QString start = locator.trimmed();
    return start.startsWith(QLatin1Char('/')) || start.startsWith(QLatin1Char('(')) ||
           start.startsWith(QLatin1String("./")) || start.startsWith(QLatin1String("../"));
}

bool matchesNotice(const QString& wanted, const QString& shown) {
    const QString text = shown.trimmed();
    const QStringList alternatives = wanted.split(QLatin1Char('|'));
    for (const QString& alternative : alternatives) {
        if (alternative.isEmpty()) continue;
        if (!alternative.contains(QLatin1Char('*'))) {
            if (alternative.toUpper() == text.toUpper()) return true;
            continue;
        }
        QStringList pieces = alternative.split(QLatin1Char('*'));
        for (QString& piece : pieces) piece = QRegularExpression::escape(piece);
        const QRegularExpression pattern(
            QRegularExpression::anchoredPattern(pieces.join(QStringLiteral(".*"))),
            QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
        if (pattern.match(text).hasMatch()) return true;
    }
    return false;
}

}  // namespace kibo
