#pragma once

#include <QString>

/// The scripts that run in the chat page. Each is a function body for WebDriver's Execute Script; its first
/// argument is the table of locators, name → {xpath: bool, text: string}. Nothing is pasted into a script: what
/// differs from call to call is passed as an argument.
namespace kibo::scripts {

/// (nextAddress) → what PageLook holds.
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
/// (keys) → true. Those messages have been taken.
QString forgetArrived();
/// Asynchronous: (name of the box, text, milliseconds, callback) → {asExpected, chatSerial}.
QString awaitBoxText();
/// Asynchronous: (nextAddress, milliseconds, callback) → {asExpected, chatSerial, linkPointed}.
QString awaitSent();
/// The same with (name of the box, text, milliseconds, chatSerial, callback): pastes first.
QString pasteText();
/// (name of the box) → {focused, empty}: gives it the focus and, where a script can, empties it.
QString emptyBox();
/// Asynchronous: (media, callback) → the input element for photos and videos, or for documents, or null. Opens the
/// attach menu where the input is not there yet.
QString fileInput();
/// (focusCaption) → what PreviewLook holds.
QString lookAtPreview();
/// () → whether there was a send button to press.
QString sendPreview();
/// Asynchronous: (milliseconds, callback) → what FileSentLook holds.
QString awaitFileSent();
/// Asynchronous: (callback) → what SearchLook holds.
QString lookAtSearch();
/// Asynchronous: (title, callback) → {entry, before}; entry is null when the list holds none.
QString findEntry();
/// (title) → what ChatListGlance holds.
QString watchChatList();
/// Asynchronous: (offset, callback) → what ChatListLook holds, or null while there is no chat list.
QString readChatList();
/// () → list of what ListedChat holds.
QString listChats();
/// (title, badge, lines) → what ClickedEntry holds.
QString clickEntry();
/// () → whether a search was left above the chat list; the search box has the focus then.
QString focusSearch();
/// () → length of the chat list's text.
QString chatListLength();
/// () → whether exactly one reload control was clicked.
QString clickQrReload();
/// () → whether there was a control to click.
QString clickUseHere();
/// (locator {xpath, text}, milliseconds) → what Matches holds. Frames the matches for a while.
QString outline();

}  // namespace kibo::scripts
