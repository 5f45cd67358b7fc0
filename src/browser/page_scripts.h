#pragma once

#include <QString>

/// The scripts that run in the chat page. Each is a function body for WebDriver's Execute Script; its first
/// argument is the table of locators, name → {xpath: bool, text: string}. Nothing is pasted into a script: what
/// differs from call to call is passed as an argument.
namespace kibo::scripts {

/// () → what PageLook holds.
QString look();
/// (address) → true. Adds the link element.
QString plantLink();
/// (address) → whether there was a link to point.
QString pointLink();
/// (address) → what ClickedLink holds, or null. Clicks the link whose text is `address`.
QString clickLink();
/// (focusBox) → what ChatLook holds.
QString lookAtChat();
QString lastMessages();
/// Asynchronous: (text, milliseconds, callback) → {asExpected, chatSerial}.
QString awaitBoxText();
/// () → true when the message box has the focus.
QString focusBox();
/// (title) → what ChatListGlance holds.
QString watchChatList();
/// Asynchronous: (offset, callback) → what ChatListLook holds, or null while there is no chat list.
QString readChatList();
/// (title, badge, lines) → what ClickedEntry holds.
QString clickEntry();
/// () → whether a search was left above the chat list; the search box has the focus then.
QString focusSearch();
/// () → length of the chat list's text.
QString chatListLength();
/// () → whether exactly one reload control was clicked.
QString clickQrReload();

}  // namespace kibo::scripts
