#include "browser/web_page.h"

#include <QJsonArray>
#include <QUrl>
#include <algorithm>
#include <utility>

#include "base/log.h"
#include "browser/page/page_module.h"
#include "browser/webdriver/error.h"

namespace kibo {
namespace {

using namespace webdriver;

// Key values of W3C WebDriver (https://www.w3.org/TR/webdriver2/#keyboard-actions).
constexpr char16_t kBackspace = 0xE003, kEnter = 0xE007, kShift = 0xE008, kControl = 0xE009, kEscape = 0xE00C;
/// Two for each key pressed.
constexpr qsizetype kKeyActionsAtATime = 200;
constexpr int kOutlineMs = 2000;
/// A new document takes two: the script, and the locators.
constexpr int kMostPreparations = 3;
/// So many conversations and clicks that have passed are told.
constexpr qsizetype kMostPassed = 20;

QStringList strings(const QJsonValue& value) {
    QStringList list;
    const QJsonArray array = value.toArray();
    for (const QJsonValue& item : array) list.append(item.toString());
    return list;
}

QList<ArrivedMessage> arrivedMessages(const QJsonValue& messages) {
    QList<ArrivedMessage> arrived;
    const QJsonArray array = messages.toArray();
    for (const QJsonValue& json : array) {
        const auto text = [&json](const char* name) { return json[QLatin1String(name)].toString(); };
        ArrivedMessage message;
        message.key = text("key");
        message.title = text("title");
        message.messageId = text("id");
        message.chatId = text("chat");
        message.number = text("number");
        message.headerPicture = text("picture");
        message.inGroup = json[QStringLiteral("inGroup")].toBool();
        message.sender = text("sender");
        message.kind = text("kind");
        message.text = text("text");
        message.time = text("time");
        message.ageMs = json[QStringLiteral("ageMs")].toInt();
        message.lines = strings(json[QStringLiteral("lines")]);
        message.badge = text("badge");
        arrived.append(message);
    }
    return arrived;
}

QString elementName(Box box) {
    switch (box) {
        case Box::Message:
            return QStringLiteral("XX_ChatBox");
        case Box::Caption:
            return QStringLiteral("XX_Caption");
        case Box::Search:
            return QStringLiteral("XX_SearchBox");
    }
    return {};
}

std::optional<BoxLook> boxLook(const std::optional<QJsonValue>& seen) {
    if (!seen) return std::nullopt;
    return BoxLook{(*seen)[QStringLiteral("asExpected")].toBool(), (*seen)[QStringLiteral("chatSerial")].toInt(),
                   (*seen)[QStringLiteral("linkPointed")].toBool(),
                   (*seen)[QStringLiteral("lastMessageId")].toString()};
}

QJsonObject keyAction(const char* type, const QString& key) {
    return {{QStringLiteral("type"), QString::fromLatin1(type)}, {QStringLiteral("value"), key}};
}

PerformActions keyActions(const QJsonArray& actions) {
    return {{QJsonObject{{QStringLiteral("type"), QStringLiteral("key")},
                         {QStringLiteral("id"), QStringLiteral("keyboard")},
                         {QStringLiteral("actions"), actions}}}};
}

/// One press of `key` while `modifiers` are held.
PerformActions keyPress(char16_t key, std::initializer_list<char16_t> modifiers = {}) {
    QJsonArray actions;
    for (const char16_t modifier : modifiers) actions.append(keyAction("keyDown", QChar(modifier)));
    actions.append(keyAction("keyDown", QChar(key)));
    actions.append(keyAction("keyUp", QChar(key)));
    for (const char16_t modifier : modifiers) actions.append(keyAction("keyUp", QChar(modifier)));
    return keyActions(actions);
}

/// The newest of `newest`, which end at the `count`th of their kind; of them `known` ones stand in `all`.
void joinNewest(QStringList& all, int known, const QStringList& newest, int count) {
    const qsizetype kept = all.size() - std::max<qsizetype>(known - (count - newest.size()), 0);
    all = all.mid(0, std::max<qsizetype>(kept, 0)) + newest;
    if (all.size() > kMostPassed) all = all.mid(all.size() - kMostPassed);
}

}  // namespace

WebPage::WebPage(Browser& browser, const ElementTable& elements, const ErrorPolicy& policy)
    : browser_(browser), elements_(elements), policy_(policy) {
    browser_.accompany(page_module::script(), page_module::leave());
}

// What the page lacks is found out before a command has any effect, so it is never carried out twice.
Result<QJsonValue> WebPage::call(const char* name, const QJsonArray& arguments) {
    const QString command = QLatin1String(name);
    for (int attempt = 1;; ++attempt) {
        auto answer = browser_.client().send(page_module::call(elements_, heard_, command, arguments));
        const QString missing = answer ? answer.value().toString() : QString();
        if (missing.isEmpty()) return answer;
        if (attempt > kMostPreparations)
            return Failure{FailureKind::Protocol, command.toStdString() + ": the page doesn't keep its script"};
        heard_ = {};  // another document, as far as is known
        titles_.clear();
        clicked_.clear();
        Result<QJsonValue> prepared =
            missing == QLatin1String(page_module::kAbsent)
                ? browser_.client().send(ExecuteScript{page_module::script()})
                : browser_.client().send(page_module::handOver(elements_, known_ ? known_() : KnownMessages()));
        if (!prepared) return prepared;
    }
}

std::optional<QJsonValue> WebPage::callOrSkip(const char* step, const char* name, const QJsonArray& arguments) {
    auto answer = call(name, arguments);
    if (answer) return std::move(answer).value();
    policy_.skip("browser", step, answer.failure());
    return std::nullopt;
}

OpenChat WebPage::openChat(const QJsonValue& chat) {
    OpenChat shown;
    shown.serial = chat[QStringLiteral("serial")].toInt();
    shown.open = chat[QStringLiteral("open")].toBool();
    shown.title = chat[QStringLiteral("title")].toString();
    shown.number = chat[QStringLiteral("number")].toString();
    shown.lastMessageId = chat[QStringLiteral("lastMessageId")].toString();
    shown.untaken = chat[QStringLiteral("untaken")].toBool();
    shown.othersUntaken = chat[QStringLiteral("othersUntaken")].toBool();
    shown.takenId = chat[QStringLiteral("takenId")].toString();
    shown.clicks = chat[QStringLiteral("clicks")].toInt();
    shown.personClicks = chat[QStringLiteral("personClicks")].toInt();
    joinNewest(titles_, heard_.serial, strings(chat[QStringLiteral("titles")]), shown.serial);
    joinNewest(clicked_, heard_.clicks, strings(chat[QStringLiteral("clicked")]), shown.clicks);
    heard_ = {shown.serial, shown.clicks};
    shown.titles = titles_;
    shown.clicked = clicked_;
    return shown;
}

bool WebPage::sendOrSkip(const char* step, const Command& command) {
    const auto answer = browser_.client().send(command);
    if (!answer) policy_.skip("browser", step, answer.failure());
    return answer.ok();
}

PageLook WebPage::look(const QString& nextAddress) {
    PageLook look;
    const auto answer = call("look", {nextAddress, browser_.pageTitle()});
    if (!answer) {
        const bool gone = isSessionGone(answer.failure()) || !browser_.windowExists();
        look.presence = gone ? PageLook::Presence::Gone : PageLook::Presence::Silent;
        if (!gone) policy_.skip("browser", "look at the page", answer.failure());
        return look;
    }
    const QJsonObject seen = answer.value().toObject();
    look.presence = PageLook::Presence::Here;
    look.noPage = seen[QStringLiteral("noPage")].toBool();
    look.errorPage = seen[QStringLiteral("errorPage")].toBool();
    const QString host = seen[QStringLiteral("host")].toString();
    if (!look.noPage && host != QUrl(browser_.startPage()).host()) look.otherSite = host;
    look.useHereButtons = seen[QStringLiteral("useHereButtons")].toInt();
    look.hasUpdate = seen[QStringLiteral("hasUpdate")].toBool();
    look.hasChatList = seen[QStringLiteral("hasChatList")].toBool();
    look.hasBox = seen[QStringLiteral("hasBox")].toBool();
    look.misunderstood = strings(seen[QStringLiteral("misunderstood")]);
    for (const QString& name : std::as_const(look.misunderstood)) {
        if (reported_.contains(name)) continue;
        reported_.append(name);
        log::error("browser", QStringLiteral("the locator %1 is neither XPath nor CSS and finds nothing: correct its "
                                             "row in element.sys")
                                  .arg(name));
    }
    look.newChatControls = seen[QStringLiteral("newChatControls")].toInt();
    look.qrCodes = seen[QStringLiteral("qrCodes")].toInt();
    look.qrData = seen[QStringLiteral("qrData")].toString();
    look.qrReloads = seen[QStringLiteral("qrReloads")].toInt();
    look.hasBanner = seen[QStringLiteral("hasBanner")].toBool();
    look.banner = seen[QStringLiteral("banner")].toString();
    look.linkText = seen[QStringLiteral("linkText")].toString();
    look.ownPicture = seen[QStringLiteral("ownPicture")].toString();
    look.hasNotice = seen[QStringLiteral("hasNotice")].toBool();
    look.notice = seen[QStringLiteral("notice")].toString();
    look.chat = openChat(seen[QStringLiteral("chat")]);
    look.arrived = arrivedMessages(seen[QStringLiteral("arrived")]);
    return look;
}

bool WebPage::plantLink(const QString& address) {
    return callOrSkip("plant the link", "plantLink", {address}).value_or(QJsonValue()).toBool();
}

bool WebPage::pointLink(const QString& address) {
    return callOrSkip("point the link", "pointLink", {address}).value_or(QJsonValue()).toBool();
}

std::optional<ClickedLink> WebPage::clickLink(const QString& address) {
    const auto answer = callOrSkip("click the link", "clickLink", {address});
    if (!answer || !answer->isObject()) return std::nullopt;
    const QJsonObject clicked = answer->toObject();
    return ClickedLink{openChat(clicked[QStringLiteral("before")]), clicked[QStringLiteral("chatListLength")].toInt()};
}

std::optional<ChatLook> WebPage::lookAtChat(bool focusBox) {
    const auto answer = callOrSkip("look at the chat", "lookAtChat", {focusBox});
    if (!answer) return std::nullopt;
    const QJsonObject seen = answer->toObject();
    ChatLook look;
    look.linkText = seen[QStringLiteral("linkText")].toString();
    look.hasNotice = seen[QStringLiteral("hasNotice")].toBool();
    look.notice = seen[QStringLiteral("notice")].toString();
    look.hasBox = seen[QStringLiteral("hasBox")].toBool();
    look.boxFocused = seen[QStringLiteral("boxFocused")].toBool();
    look.boxText = seen[QStringLiteral("boxText")].toString();
    look.headerPicture = seen[QStringLiteral("headerPicture")].toString();
    const QJsonArray ticks = seen[QStringLiteral("ticks")].toArray();
    for (const QJsonValue& one : ticks)
        look.ticks.append({one[QStringLiteral("id")].toString(), one[QStringLiteral("ticks")].toInt()});
    look.chat = openChat(seen[QStringLiteral("chat")]);
    return look;
}

std::optional<QList<ChatMessage>> WebPage::lastMessages() {
    const auto answer = callOrSkip("read the chat's messages", "lastMessages");
    if (!answer) return std::nullopt;
    QList<ChatMessage> messages;
    const QJsonArray shown = answer->toArray();
    for (const QJsonValue& message : shown)
        messages.append({message[QStringLiteral("id")].toString(), message[QStringLiteral("own")].toBool(),
                         message[QStringLiteral("text")].toString()});
    return messages;
}

std::optional<UnreadMessages> WebPage::readUnread(const QString& title, int count) {
    const auto answer = callOrSkip("read unread messages", "readUnread", {title, count, kLongestScriptWaitMs});
    if (!answer || !answer->isObject()) return std::nullopt;
    return UnreadMessages{(*answer)[QStringLiteral("hasIds")].toBool(),
                          arrivedMessages((*answer)[QStringLiteral("messages")])};
}

bool WebPage::forgetArrived(const QStringList& keys) {
    return callOrSkip("forget the messages that were taken", "forgetArrived",
                      {QJsonValue(QJsonArray::fromStringList(keys))})
        .has_value();
}

// Chrome's Input.insertText takes any text at once, where key events take one character each and many driver
// versions refuse those beyond the Basic Multilingual Plane. A line feed in it would end a paragraph rather than
// break the line, so lines are typed one by one with Shift+Enter between them.
bool WebPage::typeText(const QString& text) {
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        if (i > 0 && !sendOrSkip("type a line break", keyPress(kEnter, {kShift}))) return false;
        if (lines[i].isEmpty()) continue;
        const ChromeExecuteCdp insert{QStringLiteral("Input.insertText"), {{QStringLiteral("text"), lines[i]}}};
        if (!sendOrSkip("type a line", insert)) return false;
    }
    return true;
}

bool WebPage::typeKeys(const QString& text) {
    QJsonArray actions;
    const auto flush = [&] {
        if (actions.isEmpty()) return true;
        return sendOrSkip("type keys", keyActions(std::exchange(actions, {})));
    };
    const std::u32string characters = text.toStdU32String();
    for (const char32_t character : characters) {
        if (character == u'\n') actions.append(keyAction("keyDown", QString(QChar(kShift))));
        const QString key = character == u'\n' ? QString(QChar(kEnter)) : QString::fromUcs4(&character, 1);
        actions.append(keyAction("keyDown", key));
        actions.append(keyAction("keyUp", key));
        if (character == u'\n') actions.append(keyAction("keyUp", QString(QChar(kShift))));
        if (actions.size() >= kKeyActionsAtATime && !flush()) return false;
    }
    return flush();
}

bool WebPage::pressPaste() {
    return sendOrSkip("paste", keyPress(u'v', {kControl}));
}

std::optional<BoxLook> WebPage::pasteText(Box box, const QString& text, int chatSerial, int milliseconds) {
    return boxLook(callOrSkip("paste a text", "pasteText",
                              {elementName(box), text, std::min(milliseconds, kLongestScriptWaitMs), chatSerial}));
}

std::optional<BoxLook> WebPage::awaitBoxText(Box box, const QString& text, int milliseconds) {
    return boxLook(callOrSkip("await a box's text", "awaitBoxText",
                              {elementName(box), text, std::min(milliseconds, kLongestScriptWaitMs)}));
}

std::optional<BoxLook> WebPage::awaitSent(const QString& nextAddress, int milliseconds) {
    return boxLook(
        callOrSkip("await the emptied box", "awaitSent", {nextAddress, std::min(milliseconds, kLongestScriptWaitMs)}));
}

bool WebPage::clearBox(Box box) {
    const auto answer = callOrSkip("focus a box", "emptyBox", {elementName(box)});
    if (!answer || !(*answer)[QStringLiteral("focused")].toBool()) return false;
    if ((*answer)[QStringLiteral("empty")].toBool()) return true;
    return sendOrSkip("select the box's text", keyPress(u'a', {kControl})) &&
           sendOrSkip("clear the box", keyPress(kBackspace));
}

std::optional<SearchLook> WebPage::lookAtSearch() {
    const auto answer = callOrSkip("look at the search", "lookAtSearch");
    if (!answer) return std::nullopt;
    const QJsonObject seen = answer->toObject();
    return SearchLook{seen[QStringLiteral("hasBox")].toBool(), seen[QStringLiteral("text")].toString(),
                      strings(seen[QStringLiteral("titles")]), seen[QStringLiteral("complete")].toBool()};
}

// A mouse click by the driver: the list's rows listen to the mouse, not to click events alone.
std::optional<EntryClick> WebPage::clickEntry(const QString& title) {
    const auto answer = callOrSkip("find the entry", "findEntry", {title});
    if (!answer) return std::nullopt;
    const QJsonObject found = answer->toObject();
    const auto entry = elementFrom(found[QStringLiteral("entry")]);
    if (!entry) return EntryClick{};
    if (!sendOrSkip("click the entry", ElementClick{*entry})) return std::nullopt;
    return EntryClick{true, openChat(found[QStringLiteral("before")])};
}

bool WebPage::pressEnter() {
    return sendOrSkip("press Enter", keyPress(kEnter));
}

bool WebPage::pressEscape() {
    return sendOrSkip("press Escape", keyPress(kEscape));
}

bool WebPage::pressEscapeTwice(int milliseconds) {
    const QJsonObject pause{{QStringLiteral("type"), QStringLiteral("pause")},
                            {QStringLiteral("duration"), milliseconds}};
    const QString key(QChar{kEscape});
    return sendOrSkip("press Escape twice", keyActions({keyAction("keyDown", key), keyAction("keyUp", key), pause,
                                                        keyAction("keyDown", key), keyAction("keyUp", key)}));
}

std::optional<ChatListGlance> WebPage::watchChatList(const QString& title) {
    const auto answer = callOrSkip("watch the chat list", "watchChatList", {title});
    if (!answer || !answer->isObject()) return std::nullopt;
    const QJsonObject glance = answer->toObject();
    ChatListGlance seen{glance[QStringLiteral("length")].toInt(), glance[QStringLiteral("unread")].toString(), {}};
    if (const QJsonValue signs = glance[QStringLiteral("signs")]; signs.isObject()) {
        const auto number = [&signs](const char* name) { return signs[QLatin1String(name)].toInt(); };
        seen.signs = {number("filled"), number("titled"),          number("counted"),
                      number("marked"), number("markedElsewhere"), number("lines")};
    }
    const QJsonArray ticks = glance[QStringLiteral("ticks")].toArray();
    for (const QJsonValue& one : ticks)
        seen.ticks.append({one[QStringLiteral("title")].toString(), one[QStringLiteral("preview")].toString(),
                           one[QStringLiteral("ticks")].toInt()});
    return seen;
}

std::optional<ChatListLook> WebPage::readChatList(int offset, const QString& title) {
    const auto answer = callOrSkip("read the chat list", "readChatList", {offset, title});
    if (!answer || !answer->isObject()) return std::nullopt;
    const QJsonObject seen = answer->toObject();
    ChatListLook look;
    look.nextOffset = seen[QStringLiteral("nextOffset")].toInt(-1);
    look.ownPicture = seen[QStringLiteral("ownPicture")].toString();
    look.search = seen[QStringLiteral("search")].toBool();
    look.length = seen[QStringLiteral("length")].toInt();
    const QJsonArray entries = seen[QStringLiteral("entries")].toArray();
    look.entries.reserve(entries.size());
    for (const QJsonValue& value : entries) {
        const QJsonObject entry = value.toObject();
        look.entries.append({entry[QStringLiteral("title")].toString(), entry[QStringLiteral("badge")].toString(),
                             strings(entry[QStringLiteral("lines")]), entry[QStringLiteral("marked")].toBool()});
    }
    return look;
}

std::optional<QList<ListedChat>> WebPage::listChats() {
    const auto answer = callOrSkip("list the chats", "listChats");
    if (!answer || !answer->isArray()) return std::nullopt;
    QList<ListedChat> chats;
    const QJsonArray rows = answer->toArray();
    for (const QJsonValue& row : rows)
        chats.append({row[QLatin1String("title")].toString(), row[QLatin1String("picture")].toString()});
    return chats;
}

std::optional<ClickedEntry> WebPage::clickEntry(const ChatEntry& entry) {
    const auto answer =
        callOrSkip("click a chat", "clickRow", {entry.title, entry.badge, QJsonArray::fromStringList(entry.lines)});
    if (!answer || !answer->isObject()) return std::nullopt;
    const QJsonObject clicked = answer->toObject();
    return ClickedEntry{clicked[QStringLiteral("found")].toBool(), openChat(clicked[QStringLiteral("before")])};
}

// The key is pressed only where it clears something: on an empty search box Escape would close the open chat.
std::optional<int> WebPage::leaveSearch() {
    if (callOrSkip("look at the search box", "focusSearch").value_or(QJsonValue()).toBool()) pressEscape();
    const auto answer = callOrSkip("measure the chat list", "chatListLength");
    return answer ? std::optional(answer->toInt()) : std::nullopt;
}

bool WebPage::refresh() {
    return sendOrSkip("load the page anew", Refresh{});
}

bool WebPage::openStartPage() {
    return sendOrSkip("open the start page", NavigateTo{browser_.startPage()});
}

bool WebPage::clickQrReload() {
    return callOrSkip("reload the QR code", "clickQrReload").value_or(QJsonValue()).toBool();
}

bool WebPage::clickUseHere() {
    return callOrSkip("use the account here", "clickUseHere").value_or(QJsonValue()).toBool();
}

QByteArray WebPage::qrPicture() {
    const QString locator = elements_[QStringLiteral("XX_QR")];
    const Using strategy = ElementTable::isXPath(locator) ? Using::XPath : Using::Css;
    const auto found = browser_.client().send(FindElement{{strategy, locator}});
    const auto element = found ? elementFrom(found.value()) : std::nullopt;
    if (!element) return {};
    const auto picture = browser_.client().send(ElementScreenshot{*element});
    return picture ? QByteArray::fromBase64(picture.value().toString().toLatin1()) : QByteArray();
}

QByteArray WebPage::pagePicture() {
    return browser_.screenshot().valueOr({});
}

int WebPage::closeStrayTabs() {
    const auto closed = browser_.closeStrayWindows();
    if (!closed) policy_.skip("browser", "close stray tabs", closed.failure());
    return closed.valueOr(0);
}

void WebPage::end() {
    browser_.quit();
}

Result<QString> WebPage::report() {
    const auto answer = call("report");
    if (!answer) return answer.failure();
    return strings(answer.value()[QStringLiteral("lines")]).join(u'\n');
}

Result<Matches> WebPage::outline(const QString& locator) {
    const auto answer = call("outline", {page_module::locatorJson(elements_, locator), kOutlineMs});
    if (!answer) return answer.failure();
    const QJsonObject found = answer.value().toObject();
    return Matches{found[QStringLiteral("understood")].toBool(), found[QStringLiteral("count")].toInt(),
                   found[QStringLiteral("visible")].toInt(), strings(found[QStringLiteral("texts")])};
}

}  // namespace kibo
