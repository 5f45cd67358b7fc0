#include "browser/page/script_parts.h"

namespace kibo::scripts {
namespace {

// Finding by locator, and texts as a person sees them. Rows of the chat list may be drawn anew between two commands, so
// a row is known by what it shows.
constexpr const char* kBasics = R"js(
// The page keeps them for the watch, which outlives the script that began it.
window.kiboLocators = arguments[0];
const misunderstood = [];
const find = (locator, root = document) => {
  if (!locator.xpath) return Array.from(root.querySelectorAll(locator.text));
  const found = document.evaluate(locator.text, root, null, XPathResult.ORDERED_NODE_SNAPSHOT_TYPE, null);
  return Array.from({length: found.snapshotLength}, (_, i) => found.snapshotItem(i));
};
const all = (name, root = document) => {
  const locator = window.kiboLocators[name];
  if (!locator || !locator.text) return [];
  try { return find(locator, root); } catch (error) {
    if (!misunderstood.includes(name)) misunderstood.push(name);
    return [];
  }
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
let rowsWithEmoji = new Set();
// Finding the rows costs more than reading them, so they are looked up anew when the page has changed.
const chatRows = () => {
  const wanted = window.kiboLocators.XX_ReadMessage?.text;
  if (watch.list?.locator !== wanted) watch.list = {locator: wanted, rows: all('XX_ReadMessage')};
  const rows = watch.list.rows;
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
const linesOf = (row) => textOfRow(row).split('\n').map((line) => line.trim()).filter(Boolean);
// In every theme the grey of a tick has about as much red as blue.
const isBlue = (node) => {
  const drawn = node.nodeType === Node.ELEMENT_NODE ? node : node.ownerElement || node.parentElement;
  const [red, , blue] = (getComputedStyle(drawn).color.match(/[\d.]+/g) || []).map(Number);
  return blue - red > 60;
};
// What is drawn beside a message of ours: 0 a clock, 1 and 2 ticks, 3 blue ones; null: nothing that is known.
const ticksIn = (row) => {
  const two = one('XX_TickTwo', row);
  if (one('XX_TickRead', row) || (two && isBlue(two))) return 3;
  if (two) return 2;
  if (one('XX_TickOne', row)) return 1;
  return one('XX_TickClock', row) ? 0 : null;
};
)js";

// The watch lives in the page because a conversation that comes up and is replaced between two looks would otherwise go
// unnoticed, and which chats came up since a click is what decides whether a text may be typed.
//
// It also listens. What comes in while its chat is open is read for the page and gets no mark in the chat list, and
// opening a chat to write takes the mark of what was unread. For chats that were opened by us and left to us, `arrived`
// keeps what the list will not tell any more.
constexpr const char* kWatch = R"js(
const contentOf = (row) => {
  const lines = linesOf(row);
  return {lines: lines, badge: endsInCount(lines) ? badgeOf(row) : ''};
};
// Without the single messages that a search lists below its chats.
const listedChats = () => {
  const heading = one('XX_MessageResults');
  const rows = chatRows();
  if (!heading) return rows;
  const end = heading.getBoundingClientRect().top;
  return rows.filter((row) => row.getBoundingClientRect().top < end);
};
// Of two chats with the same title neither row tells anything.
const rowOf = (title) => {
  const rows = title ? listedChats().filter((row) => titleOf(row) === title) : [];
  return rows.length === 1 ? contentOf(rows[0]) : null;
};
const previewOf = (row) => (row ? row.lines[row.lines.length - (row.badge ? 2 : 1)] || '' : '');
const oneLine = (text) => text.replace(/\s+/g, ' ').trim();
// The list shows the beginning of a long text.
const isPreviewOf = (preview, text) => !!text && !!preview && (text.startsWith(preview.slice(0, 60)) || preview.startsWith(text.slice(0, 60)));
// Ids of own messages begin with "true_"; a page that names them otherwise marks them by their class.
const isOwn = (row) => /^true_/.test(row.dataset.id || '') || !!row.closest('.message-out') || !!row.querySelector('.message-out');
// In a group, messages and their ids name the members, not the chat.
const isOfGroup = (id) => /@g\.us/.test(id);
const namedNumber = (id) => {
  if (isOfGroup(id)) return '';
  const texts = [id, one('XX_HeaderPicture')?.getAttribute('src') || ''];
  return texts.map((text) => /(?:^|_|&u=)(\d{5,20})(?:@|%40)c\.us/.exec(text)).find(Boolean)?.[1] || '';
};
const memberIn = (row) => {
  const lines = row ? row.lines.slice(0, row.lines.length - (row.badge ? 1 : 0)) : [];
  return lines[lines.length - 2] === ':' ? lines[lines.length - 3] || '' : '';
};
const said = (row) => {
  const id = row.dataset.id || '';
  const inGroup = isOfGroup(id);
  const stamp = row.querySelector('[data-pre-plain-text]')?.dataset.prePlainText || '';
  const texts = all('XX_MessageText', row);
  return {
    inGroup: inGroup,
    number: namedNumber(id),
    picture: one('XX_HeaderPicture')?.getAttribute('src') || '',
    sender: inGroup ? plain(/\] (.*):\s*$/.exec(stamp)?.[1] || '').trim() : '',
    text: texts.length ? oneLine(textWithEmoji(texts[texts.length - 1])) : ''
  };
};
const watch = window.kiboWatch || (window.kiboWatch = (() => {
  const w = {serial: 0, node: null, title: '', titles: [], clicks: 0, clicked: [], personClicks: 0, ownClickUntil: 0,
             personAtClick: -1, list: null, listLength: null, ownClicks: 0, rows: new Map(), inHand: new Map(), opening: {serial: 0}, ownText: '', arrived: [], unsure: [], kept: 0};
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
    w.listen();
  };
  // `reading`: title of the chat whose unread message is in hand already, for as long as its row says the same: the chat
  // may come up late, after further clicks.
  w.beforeClick = (reading) => {
    w.personAtClick = w.personClicks;
    ++w.ownClicks;
    w.rows = new Map();
    for (const row of listedChats()) w.rows.set(titleOf(row), w.rows.has(titleOf(row)) ? null : contentOf(row));
    for (const title of w.inHand.keys()) if (!w.rows.get(title)?.badge) w.inHand.delete(title);
    if (reading) w.inHand.set(reading, JSON.stringify(w.rows.get(reading)));
  };
  const keep = (list, what) => list.push({
    key: `${performance.timeOrigin}/${++w.kept}`, serial: w.serial, at: performance.now(), title: w.title,
    inGroup: false, number: '', picture: '', sender: '', text: '', lines: [], badge: '', previewBefore: '', ...what});
  // A conversation may be drawn in several steps, so what comes below the rest soon after the opening (`early`) counts
  // only once the chat list shows it as something new. What has no text of its own goes by what the list says.
  const accept = (count, row) => {
    const last = w.unsure[count - 1];
    const shown = previewOf(row);
    if (!last.text && !isPreviewOf(shown, w.ownText))
      Object.assign(last, {text: shown, sender: last.sender || (last.inGroup ? memberIn(row) : '')});
    w.arrived.push(...w.unsure.splice(0, count));
  };
  const settle = () => {
    if (!w.unsure.length) return;
    const title = w.unsure[0].title;
    const row = rowOf(title);
    const shown = previewOf(row);
    const isShown = ({text, shownBefore}) =>
      shown !== shownBefore && (text ? isPreviewOf(shown, text) : !isPreviewOf(shown, w.ownText));
    const last = w.unsure.findLastIndex((message) => message.title === title && isShown(message));
    if (last >= 0) accept(last + 1, row);
  };
  const open = () => {
    const before = w.rows.get(w.title) || null;
    w.rows.delete(w.title);  // the same chat may be drawn anew without another click
    w.opening = {serial: w.serial, at: performance.now(), clicks: w.ownClicks, title: w.title, before: before, known: null,
                 preview: previewOf(before || rowOf(w.title)), former: w.opening};
    w.ownText = '';
    w.opening.former.former = null;
    if (before?.badge && JSON.stringify(before) !== w.inHand.get(w.title)) keep(w.arrived, {lines: before.lines, badge: before.badge});
  };
  // What a chat opens with: only what its row tells of is new.
  const hearOpened = (newest, before) => {
    if (isOwn(newest)) return;
    const message = said(newest);
    const unread = w.arrived.findLast((kept) => kept.serial === w.serial && kept.badge);
    if (unread) Object.assign(unread, message);
    const shown = previewOf(rowOf(w.title));
    if (before && shown !== previewOf(before) && isPreviewOf(shown, message.text))
      keep(w.arrived, {...message, previewBefore: previewOf(before)});
  };
  w.listen = () => {
    settle();
    if (!w.node || !w.title || w.personClicks !== w.personAtClick) return;
    if (w.opening.serial !== w.serial) open();
    const opening = w.opening;
    const rows = all('XX_MessageRow');
    const newest = rows[rows.length - 1];
    if (!newest?.dataset.id) return;
    const former = opening.former.known;
    if (!opening.known && former && rows.some((row) => former.has(row.dataset.id))) {
      const same = opening.title === opening.former.title || opening.clicks === opening.former.clicks;
      if (!same) return;  // still the messages of the chat before
      opening.known = former;  // drawn anew, or under another name
    }
    if (opening.known?.has(newest.dataset.id)) return;
    const known = opening.known;
    opening.known = new Set(rows.map((row) => row.dataset.id));
    const begin = known ? rows.findLastIndex((row) => known.has(row.dataset.id)) + 1 : 0;
    if (begin === 0) {
      hearOpened(newest, known ? null : opening.before);
      return;
    }
    const early = performance.now() - opening.at < 1000;
    if (isOwn(newest)) w.ownText = said(newest).text;
    for (const row of rows.slice(begin).filter((row) => !isOwn(row))) {
      const message = said(row);
      keep(early || !message.text ? w.unsure : w.arrived, {...message, early: early, shownBefore: opening.preview});
    }
    if (!early) opening.preview = previewOf(rowOf(w.title));
  };
  // What is ready to be taken: its chat has been left, or is open for long. A message that the list marks as unread
  // all the same is read from there.
  w.takeable = () => {
    settle();
    const now = performance.now();
    w.unsure = w.unsure.filter((message) => !message.early || now - message.at < 5000);
    if (w.unsure.length && now - w.unsure[0].at >= 5000) accept(1, rowOf(w.unsure[0].title));
    const marked = w.arrived.filter((message) => {
      const row = rowOf(message.title);
      return row?.badge && isPreviewOf(previewOf(row), message.text || message.lines[message.lines.length - 2] || '');
    });
    w.arrived = w.arrived.filter((message) => !marked.includes(message));
    return w.arrived.filter((message) => message.serial !== w.serial || now - message.at > 3000)
        .map((message) => ({...message, ageMs: Math.round(now - message.at)}));
  };
  new MutationObserver(() => {
    w.list = w.listLength = null;
    w.update();
  }).observe(document.documentElement,
             {childList: true, subtree: true, characterData: true, attributes: true, attributeFilter: ['role']});
  return w;
})());
const newestId = () => {
  const rows = all('XX_MessageRow');
  return rows.length ? rows[rows.length - 1].dataset.id || '' : '';
};
const openChat = () => {
  watch.update();
  const shown = {serial: watch.serial, open: !!watch.node, title: watch.title, number: '', lastMessageId: '', titles: watch.titles,
                 clicks: watch.clicks, clicked: watch.clicked, personClicks: watch.personClicks};
  if (!shown.open) return shown;
  shown.lastMessageId = newestId();
  shown.number = namedNumber(shown.lastMessageId);
  return shown;
};
// Measuring the list's text costs as much as reading all of its rows.
const chatListLength = () => watch.listLength ??= visibleText(one('XX_ChatList')).length;
const link = () => document.getElementById('kirim');
const pointLink = (address) => {
  if (!address || !link()) return false;
  document.getElementById('kirim').innerHTML  = '<span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span>';
  return true;
};
)js";

constexpr const char* kEntries = R"js(
const searchBox = one('XX_SearchBox');
const searching = !!searchBox && (searchBox.value ?? visibleText(searchBox)).trim() !== '';
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
    answer({asExpected: asExpected, chatSerial: watch.serial, lastMessageId: newestId()});
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

}  // namespace

QString script(const char* body) {
    return QString::fromUtf8(kBasics) + QString::fromUtf8(kWatch) + QString::fromUtf8(body);
}
QString entryScript(const char* body) {
    return script(kEntries) + QString::fromUtf8(body);
}
QString boxScript(const char* body) {
    return script(kBoxText) + QString::fromUtf8(body);
}
QString listScript(const char* body) {
    return boxScript(kChatList) + QString::fromUtf8(body);
}

}  // namespace kibo::scripts
