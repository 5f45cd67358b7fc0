#include "browser/script_parts.h"

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
// The editor applies input asynchronously, so the page itself is asked to wait: one command instead of many looks.
const awaitText = (...given) => {
  const [, name, text, milliseconds] = given;
  const end = performance.now() + milliseconds;
  const check = () => {
    const box = boxNamed(name);
    const asExpected = !!box && boxText(box).trim() === text.trim();
    if (asExpected || performance.now() >= end) {
      watch.update();
      given[given.length - 1]({asExpected: asExpected, chatSerial: watch.serial});
    } else {
      setTimeout(check, 10);
    }
  };
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

}  // namespace

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

}  // namespace kibo::scripts
