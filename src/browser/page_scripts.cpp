#include "browser/page_scripts.h"

namespace kibo::scripts {
namespace {

// Shared by all scripts: finding by locator, texts as a person sees them, and the conversation watch.
//
// The watch lives in the page because a conversation that comes up and is replaced between two looks would
// otherwise go unnoticed, and which chats came up since a click is what decides whether a text may be typed.
constexpr const char* kPrelude = R"js(
const locators = arguments[0];
const misunderstood = [];
const find = (locator, root = document) => {
  if (!locator.xpath) return Array.from(root.querySelectorAll(locator.text));
  const found = document.evaluate(locator.text, root, null, XPathResult.ORDERED_NODE_SNAPSHOT_TYPE, null);
  return Array.from({length: found.snapshotLength}, (_, i) => found.snapshotItem(i));
};
const all = (name, root = document) => {
  const locator = locators[name];
  if (!locator || !locator.text) return [];
  try { return find(locator, root); } catch (error) { misunderstood.push(name); return []; }
};
const one = (name, root = document) => all(name, root)[0] || null;
// Direction marks surround names and numbers and say nothing to the reader.
const plain = (text) => text.replace(/[\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, '').replace(/\u00a0/g, ' ');
const visibleText = (node) => node ? plain(node.innerText ?? node.textContent ?? '') : '';
// An emoji may be drawn as a picture, which has no text of its own.
const textWithEmoji = (node) => {
  if (!node || !node.querySelector('img[alt]')) return visibleText(node);
  let text = '';
  const walk = (part) => {
    if (part.nodeType === Node.TEXT_NODE) text += part.data;
    else if (part.tagName === 'IMG') text += part.alt;
    else part.childNodes.forEach(walk);
  };
  walk(node);
  return plain(text);
};
const watch = window.kiboWatch || (window.kiboWatch = (() => {
  const w = {serial: 0, node: null, title: '', titles: [], clicks: 0, clicked: [], personClicks: 0, ownClickUntil: 0};
  // Scripted clicks are not trusted ones, so these are a person's, but for the one that was announced.
  document.addEventListener('mousedown', (event) => {
    if (!event.isTrusted) return;
    if (performance.now() > w.ownClickUntil) ++w.personClicks;
    w.ownClickUntil = 0;
  }, true);
  w.update = () => {
    const node = one('XX_Conversation');
    const title = node ? textWithEmoji(one('XX_To')).trim() : '';
    const cameUp = node && (node !== w.node || (title && w.title && title !== w.title));
    if (cameUp) {
      ++w.serial;
      w.titles = [...w.titles.slice(-19), title];
    } else if (node && title) {
      w.titles[w.titles.length - 1] = title;  // the name may be drawn after the rest
    }
    w.node = node;
    w.title = cameUp ? title : node ? title || w.title : '';
  };
  new MutationObserver(w.update).observe(document.documentElement, {childList: true, subtree: true, characterData: true});
  return w;
})());
const openChat = () => {
  watch.update();
  const shown = {serial: watch.serial, open: !!watch.node, title: watch.title, number: '', lastMessageId: '', titles: watch.titles,
                 clicks: watch.clicks, clicked: watch.clicked, personClicks: watch.personClicks};
  if (!shown.open) return shown;
  const rows = all('XX_MessageRow');
  if (rows.length) shown.lastMessageId = rows[rows.length - 1].dataset.id || '';
  const ids = [shown.lastMessageId];
  const picture = one('XX_HeaderPicture');
  if (picture) ids.push(picture.getAttribute('src') || '');
  const named = ids.map((id) => /(?:^|_|&u=)(\d{5,20})(?:@|%40)c\.us/.exec(id)).filter(Boolean);
  if (named.length) shown.number = named[0][1];
  return shown;
};
const chatListLength = () => visibleText(one('XX_ChatList')).length;
const link = () => document.getElementById('kirim');
const pointLink = (address) => {
  if (!address || !link()) return false;
  document.getElementById('kirim').innerHTML  = '<span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span>';
  return true;
};
)js";

// Rows of the chat list. Several may be drawn anew between two commands, so a row is known by what it shows.
constexpr const char* kEntries = R"js(
let rowsWithEmoji = new Set();
const chatRows = () => {
  const rows = all('XX_ReadMessage');
  const known = new Set(rows);
  rowsWithEmoji = new Set(Array.from(document.querySelectorAll('[dir] img[alt]'), (picture) => {
    let node = picture;
    while (node && !known.has(node)) node = node.parentElement;
    return node;
  }));
  return rows;
};
const textOfRow = (row) => {
  if (!rowsWithEmoji.has(row)) return visibleText(row);
  const emoji = Array.from(row.querySelectorAll('[dir] img[alt]')).filter((picture) => picture.alt);
  // For as long as the text is read, each picture has its text beside it: nothing is drawn in between.
  const texts = emoji.map((picture) => {
    const text = document.createTextNode(picture.alt);
    picture.before(text);
    return text;
  });
  try { return visibleText(row); } finally { texts.forEach((text) => text.remove()); }
};
// Looking inside a row costs more than reading its text, so only those are looked into that can be unread.
const endsInCount = (lines) => /^\d/.test(lines[lines.length - 1] || '');
const badgeOf = (row) => visibleText(one('XX_UnreadBadge', row)).trim();
const titleOf = (row) => plain(one('XX_EntryTitle', row)?.getAttribute('title') || '').trim();
const searchBox = one('XX_SearchBox');
const searching = !!searchBox && (searchBox.value ?? visibleText(searchBox)).trim() !== '';
const linesOf = (row) => textOfRow(row).split('\n').map((line) => line.trim()).filter(Boolean);
)js";

// A box's text as the editor means it: emoji may be drawn as pictures, lines as blocks or breaks.
constexpr const char* kBoxText = R"js(
const boxNamed = (name) => { const node = one(name); return node?.closest('[contenteditable=true]') || node; };
const boxText = (box) => {
  let text = box.value || '';
  const walk = (node) => {
    if (node.nodeType === Node.TEXT_NODE) text += node.data;
    if (node.nodeType !== Node.ELEMENT_NODE) return;
    if (node.tagName === 'BR') { if (node.nextSibling) text += '\n'; return; }  // the last one only fills its block
    if (node.tagName === 'IMG') { text += node.dataset.plainText || node.alt || ''; return; }
    if (/^(P|DIV)$/.test(node.tagName) && node.previousSibling) text += '\n';
    node.childNodes.forEach(walk);
  };
  box.childNodes.forEach(walk);
  return text.replace(/\u00a0/g, ' ');
};
const focused = (box) => !!box && (document.activeElement === box || box.contains(document.activeElement));
const focusOn = (box) => { if (box && !focused(box)) { box.click(); box.focus(); } return focused(box); };
// The editor applies input asynchronously, so the page itself is asked to wait: one command instead of many looks. A
// change of the page ends the wait at once; the timer is for boxes whose text is no part of the page, and a window that
// is hidden may hold it back for a second.
const awaitText = (name, text, milliseconds, answer) => {
  const end = performance.now() + milliseconds;
  let answered = false;
  const check = () => {
    if (answered) return;
    const box = boxNamed(name);
    const asExpected = !!box && boxText(box).trim() === text.trim();
    if (!asExpected && performance.now() < end) return;
    answered = true;
    changes.disconnect();
    clearInterval(timer);
    watch.update();
    answer({asExpected: asExpected, chatSerial: watch.serial});
  };
  const changes = new MutationObserver(check);
  changes.observe(document.documentElement, {childList: true, subtree: true, characterData: true});
  const timer = setInterval(check, 10);
  check();
};
)js";

// The list holds the rows in sight only, so it is looked through by scrolling; an entry is known by its place in it.
// Below the chats, a search lists single messages under a heading of their own.
constexpr const char* kChatList = R"js(
let messagesFrom = Infinity;
const scrollThrough = async (visit) => {
  const pane = one('XX_ChatList');
  if (!pane) return false;
  const end = performance.now() + 2000;
  const pause = (ms) => new Promise((done) => setTimeout(done, ms));
  const moveTo = async (top) => {
    if (Math.abs(pane.scrollTop - top) < 1) return;
    pane.scrollTop = top;
    await pause(40);
  };
  await moveTo(0);
  for (;;) {
    const origin = pane.getBoundingClientRect().top - pane.scrollTop;
    const placeOf = (node) => Math.round(node.getBoundingClientRect().top - origin);
    all('XX_MessageResults').forEach((node) => { messagesFrom = Math.min(messagesFrom, placeOf(node)); });
    const rows = all('XX_ReadMessage').map((row) =>
      ({row: row, at: placeOf(row), title: row.querySelector('span[title]')?.getAttribute('title')}));
    if (visit(rows.filter(({title}) => title))) return true;
    const next = Math.min(pane.scrollTop + 0.8 * pane.clientHeight, pane.scrollHeight - pane.clientHeight);
    if (next <= pane.scrollTop + 1) break;
    if (performance.now() >= end) return false;
    await moveTo(next);
  }
  await moveTo(0);
  return true;
};
)js";

QString script(const char* body) {
    return QString::fromUtf8(kPrelude) + QString::fromUtf8(body);
}
QString entryScript(const char* body) {
    return QString::fromUtf8(kPrelude) + QString::fromUtf8(kEntries) + QString::fromUtf8(body);
}
QString boxScript(const char* body) {
    return QString::fromUtf8(kPrelude) + QString::fromUtf8(kBoxText) + QString::fromUtf8(body);
}
QString listScript(const char* body) {
    return QString::fromUtf8(kPrelude) + QString::fromUtf8(kBoxText) + QString::fromUtf8(kChatList) +
           QString::fromUtf8(body);
}

}  // namespace

QString look() {
    return script(R"js(
const [, nextAddress] = arguments;
if (link()?.textContent !== nextAddress) pointLink(nextAddress);
const qr = all('XX_QR');
const banner = all('XX_Info');
const own = one('XX_OwnPicture');
const notice = one('XX_InvalidNumber');
return {
  noPage: /^(chrome-error|about|data):/.test(location.href) && !document.body?.childElementCount || location.protocol === 'chrome-error:',
  errorPage: !!one('XX_ErrorPage'),
  host: location.hostname,
  useHereButtons: all('XX_UseHere').length,
  hasUpdate: !!one('XX_Update'),
  hasChatList: !!one('XX_ChatList'),
  hasBox: !!one('XX_ChatBox'),
  misunderstood: misunderstood,
  newChatControls: all('XX_NewChat').length,
  qrCodes: qr.length,
  qrData: qr.length === 1 ? qr[0].getAttribute('data-ref') || '' : '',
  qrReloads: all('XX_QRReload').length,
  hasBanner: banner.length > 0,
  banner: visibleText(banner[0]).trim(),
  linkText: link()?.textContent || '',
  ownPicture: own ? own.getAttribute('src') || '' : '',
  hasNotice: !!notice,
  notice: visibleText(notice).trim(),
  chat: openChat()
};
)js");
}

// A click on this link is taken by the page itself, like a click on a number in a message: the chat opens in place.
QString plantLink() {
    return script(R"js(
const address = arguments[1];
if (link()) return true;
var newNode = document.createElement('div'); newNode.className = 'textNode news content'; newNode.innerHTML = '<div id=kirim   style=z-index:999999;position:fixed;color:#F8F8F8;font-size:11px;><span dir=ltr class=_F7Vk selectable-text invisible-space copyable-text style=z-index:999999; ><span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span></div>'; document.body.appendChild(newNode);
return true;
)js");
}

QString pointLink() {
    return script(R"js(
return pointLink(arguments[1]);
)js");
}

// The click is dispatched on the anchor itself: a click that hits a child of the link would open a new tab.
QString clickLink() {
    return script(R"js(
const anchor = Array.from(link()?.querySelectorAll('a') || []).find((a) => a.textContent === arguments[1]);
if (!anchor) return null;
const clicked = {before: openChat(), chatListLength: chatListLength()};
++watch.clicks;
watch.clicked = [...watch.clicked.slice(-19), arguments[1]];
anchor.click();
return clicked;
)js");
}

QString lookAtChat() {
    return boxScript(R"js(
const notice = one('XX_InvalidNumber');
const box = one('XX_ChatBox');
const boxFocused = arguments[1] ? focusOn(box) : focused(box);
return {
  linkText: link()?.textContent || '',
  hasNotice: !!notice,
  notice: visibleText(notice).trim(),
  hasBox: !!box,
  boxFocused: boxFocused,
  boxText: box ? boxText(box) : '',
  headerPicture: one('XX_HeaderPicture')?.getAttribute('src') || '',
  chat: openChat()
};
)js");
}

// Ids of own messages begin with "true_"; a page that names them otherwise marks them by their class.
QString lastMessages() {
    return boxScript(R"js(
return all('XX_MessageRow').map((row) => ({
  id: row.dataset.id || '',
  own: /^true_/.test(row.dataset.id || '') || row.matches('.message-out') || !!row.querySelector('.message-out'),
  text: boxText(row)
}));
)js");
}

QString awaitBoxText() {
    return boxScript(R"js(
const [, name, text, milliseconds, callback] = arguments;
awaitText(name, text, milliseconds, callback);
)js");
}

QString awaitSent() {
    return boxScript(R"js(
const [, nextAddress, milliseconds, callback] = arguments;
awaitText('XX_ChatBox', '', milliseconds,
          (seen) => callback({...seen, linkPointed: seen.asExpected && pointLink(nextAddress)}));
)js");
}

// Editors take a pasted text whole, whatever its script and its line breaks. The conversation is compared here, so that
// nothing gets into the box of a chat that has come up since.
QString pasteText() {
    return boxScript(R"js(
const [, name, text, milliseconds, chatSerial, callback] = arguments;
watch.update();
const box = boxNamed(name);
if (watch.serial === chatSerial && focusOn(box)) {
  const clipboardData = new DataTransfer();
  clipboardData.setData('text/plain', text);
  box.dispatchEvent(new ClipboardEvent('paste', {clipboardData: clipboardData, bubbles: true, cancelable: true}));
}
awaitText(name, text, milliseconds, callback);
)js");
}

// An input is emptied at once, in the way that frameworks notice. An editor of its own takes keys only.
QString emptyBox() {
    return boxScript(R"js(
const box = boxNamed(arguments[1]);
const hasFocus = focusOn(box);
if (box instanceof HTMLInputElement) {
  Object.getOwnPropertyDescriptor(HTMLInputElement.prototype, 'value').set.call(box, '');
  box.dispatchEvent(new InputEvent('input', {bubbles: true, inputType: 'deleteContentBackward'}));
}
return {focused: hasFocus, empty: !!box && !boxText(box)};
)js");
}

// The page has an input for stickers too, which takes pictures only: what takes videos as well sends photos. An input
// that is asked twice would send the former file again, so it is emptied.
QString fileInput() {
    return script(R"js(
const [, media, callback] = arguments;
const fits = (input) => {
  const accept = (input.getAttribute('accept') || '').toLowerCase();
  return media ? accept.includes('video/') : !/(image|video)\//.test(accept);
};
const input = () => all(media ? 'XX_MediaInput' : 'XX_DocumentInput').find(fits);
if (!input()) one('XX_AttachMenu')?.click();
const end = performance.now() + 2000;
const check = () => {
  const found = input();
  if (found) found.value = '';
  if (found || performance.now() >= end) callback(found || null);
  else setTimeout(check, 10);
};
check();
)js");
}

QString lookAtPreview() {
    return boxScript(R"js(
const caption = boxNamed('XX_Caption');
watch.update();
return {
  hasCaption: !!caption,
  hasSendButton: !!one('XX_SendFileButton'),
  captionFocused: arguments[1] ? focusOn(caption) : focused(caption),
  chatSerial: watch.serial
};
)js");
}

QString sendPreview() {
    return script(R"js(
const button = one('XX_SendFileButton');
if (!button) return false;
watch.update();
watch.beforeFile = {title: watch.title, ids: new Set(all('XX_MessageRow').map((row) => row.dataset.id))};
button.click();
return true;
)js");
}

// Ours is an outgoing message below the last one that stood there: older ones may still be loaded above.
QString awaitFileSent() {
    return script(R"js(
const [, milliseconds, callback] = arguments;
const end = performance.now() + milliseconds;
const outgoing = (row) => /^true_/.test(row.dataset.id) || !!row.closest('.message-out') || !!row.querySelector('.message-out');
const check = () => {
  watch.update();
  const before = watch.beforeFile;
  const rows = all('XX_MessageRow');
  const last = before ? rows.findLastIndex((row) => before.ids.has(row.dataset.id)) : rows.length;
  const inChat = !!before && watch.title === before.title && rows.slice(last + 1).some(outgoing);
  const previewGone = !one('XX_Caption') && !one('XX_SendFileButton');
  if ((previewGone && inChat) || performance.now() >= end) {
    callback({previewGone: previewGone, inChat: inChat, chatSerial: watch.serial});
  } else {
    setTimeout(check, 25);
  }
};
check();
)js");
}

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
let digest = 0;
for (let i = 0; i < unread.length; ++i) digest = (digest * 31 + unread.charCodeAt(i)) | 0;
return {length: chatListLength(), unread: unread ? unread.length + ':' + digest : ''};
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
    length: visibleText(pane).length
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

QString clickQrReload() {
    return script(R"js(
const reload = all('XX_QRReload');
if (reload.length !== 1) return false;
reload[0].click();
return true;
)js");
}

QString clickUseHere() {
    return script(R"js(
const button = one('XX_UseHere');
if (button) button.click();
return !!button;
)js");
}

// The frames lie in a layer of their own above the page: its elements, which its own code redraws, stay untouched.
QString outline() {
    return script(R"js(
let found = [];
try { found = find(arguments[1]); } catch (error) { return {understood: false, count: 0, visible: 0, texts: []}; }
document.getElementById('kibo-outline')?.remove();
const layer = document.createElement('div');
layer.id = 'kibo-outline';
for (const node of found.slice(0, 200)) {
  const element = node.nodeType === Node.ELEMENT_NODE ? node : node.ownerElement || node.parentElement;
  const box = element ? element.getBoundingClientRect() : {width: 0, height: 0};
  if (!box.width || !box.height) continue;
  const frame = document.createElement('div');
  frame.style.cssText = 'position:fixed;z-index:2147483647;pointer-events:none;box-sizing:border-box;' +
    'border:3px solid #e4002b;border-radius:3px;background:rgba(228,0,43,.12);' +
    `left:${box.left}px;top:${box.top}px;width:${box.width}px;height:${box.height}px`;
  layer.appendChild(frame);
}
document.body.appendChild(layer);
setTimeout(() => layer.remove(), arguments[2]);
return {
  understood: true,
  count: found.length,
  visible: layer.childElementCount,
  texts: found.slice(0, 20).map((node) => visibleText(node).trim().slice(0, 300)).filter((text) => text)
};
)js");
}

}  // namespace kibo::scripts
