#include "browser/page/page_scripts.h"
#include "browser/page/script_parts.h"

namespace kibo::scripts {

QString lookAtSearch() {
    return listScript(R"js(
const callback = arguments[arguments.length - 1];
const entries = new Map();
scrollThrough((found) => found.forEach(({at, title}) => entries.set(at, title))).then((complete) => {
  const box = boxNamed('XX_SearchBox');
  const inOrder = Array.from(entries).sort((a, b) => a[0] - b[0]).filter(([at]) => at < messagesFrom);
  callback({hasBox: !!box, text: box ? boxText(box) : '', titles: inOrder.map(([, title]) => title), complete: complete});
});
)js");
}

QString findEntry() {
    return listScript(R"js(
const [, wanted, callback] = arguments;
let entry = null;
scrollThrough((found) => {
  entry = found.find(({at, title}) => title === wanted && at < messagesFrom)?.row || null;
  return !!entry;
}).then(() => {
  if (entry) watch.beforeClick('');
  if (entry) watch.ownClickUntil = performance.now() + 3000;
  callback({entry: entry, before: openChat()});
});
)js");
}

// The length alone would miss a message that makes up for the one before it: "hello" read, then "hey" with its badge.
QString watchChatList() {
    return entryScript(R"js(
watch.update();
document.title = arguments[1];
const unread = chatRows().map((row) => [row, linesOf(row)])
    .filter(([row, lines]) => endsInCount(lines) && badgeOf(row)).map(([, lines]) => lines.join('\n')).join('\n');
// A list that somebody has scrolled doesn't show what is new. He is given some time.
const scrolledMs = 10000;
const pane = one('XX_ChatList');
if (!pane || pane.scrollTop < 1) watch.scrolledAt = null;
else if (performance.now() - (watch.scrolledAt ??= performance.now()) > scrolledMs) pane.scrollTop = 0;
// Ticks of the last messages, where they are ours. Two chats of one name can't be told apart.
const ticksEveryMs = 3000;
let ticks = [];
if (!(performance.now() - watch.ticksAt < ticksEveryMs)) {
  watch.ticksAt = performance.now();
  const titles = chatRows().map(titleOf);
  ticks = chatRows().map((row, i) => ({row: row, title: titles[i], ticks: ticksIn(row)}))
      .filter(({title, ticks}) => ticks !== null && title && titles.indexOf(title) === titles.lastIndexOf(title))
      .map(({row, title, ticks}) => ({title: title, preview: linesOf(row).pop() || '', ticks: ticks}));
}
let digest = 0;
for (let i = 0; i < unread.length; ++i) digest = (digest * 31 + unread.charCodeAt(i)) | 0;
return {length: chatListLength(), unread: unread ? unread.length + ':' + digest : '', ticks: ticks};
)js");
}

QString readChatList() {
    return entryScript(R"js(
const callback = arguments[arguments.length - 1];
const offset = arguments[1];
const drawMs = 80;
const overlap = 100;
const pane = one('XX_ChatList');
const read = () => {
  const below = pane.scrollTop + pane.clientHeight;
  callback({
    entries: chatRows().map((row) => {
      const lines = linesOf(row);
      return endsInCount(lines) ? {title: titleOf(row), badge: badgeOf(row), lines: lines} : {lines: lines};
    }),
    nextOffset: below < pane.scrollHeight - 1 ? Math.round(Math.max(below - overlap, offset + 1)) : -1,
    ownPicture: one('XX_OwnPicture')?.getAttribute('src') || '',
    search: searching,
    length: chatListLength()
  });
};
if (!pane) {
  callback(null);
} else if (Math.abs(pane.scrollTop - offset) < 2) {
  read();
} else {
  pane.scrollTop = offset;
  setTimeout(read, drawMs);
}
)js");
}

QString listChats() {
    return entryScript(R"js(
const listed = all('XX_ListedChat');
return (listed.length ? listed : chatRows())
  .map((row) => ({title: titleOf(row), picture: row.querySelector('img[src*="&u="]')?.getAttribute('src') || ''}))
  .filter(({title}) => title);
)js");
}

// Found and clicked in one go: between two commands the row could have become another chat's. The page may listen to
// any of the events of a click.
QString clickEntry() {
    return entryScript(R"js(
const [, title, badge, lines] = arguments;
const shown = JSON.stringify(lines);
const row = chatRows().find(
    (row) => JSON.stringify(linesOf(row)) === shown && titleOf(row) === title && badgeOf(row) === badge);
const clicked = {found: !!row, before: openChat()};
if (!row) return clicked;
watch.beforeClick(title);
const target = one('XX_EntryTitle', row) || row;
for (const type of ['pointerdown', 'mousedown', 'pointerup', 'mouseup', 'click']) {
  const Event = type.startsWith('pointer') ? PointerEvent : MouseEvent;
  target.dispatchEvent(new Event(type, {bubbles: true, cancelable: true, composed: true, view: window}));
}
return clicked;
)js");
}

QString focusSearch() {
    return entryScript(R"js(
if (searching) searchBox.focus();
return searching;
)js");
}

QString chatListLength() {
    return script("return chatListLength();");
}

}  // namespace kibo::scripts
