// What the chat list will not tell. What comes in while its chat is open is read for the page and gets no mark in the
// list, and opening a chat to write takes the mark of what was unread. For chats that were opened by us and left to us,
// `told` keeps these messages until they are taken.
//
// A message is known by its id. Of each chat the ids that its last drawing showed are known; new is what comes in below
// them. A chat that was never drawn before shows as new as many as its row in the list had unread.
let told = [];
let kept = 0;
const chats = new Map();  // by the chat's id: {title, clicks, ids}
const mostChats = 500;
let opening = {serial: 0, title: '', settled: true, unread: []};

// The rows of the list since our last click, by title: those with an unread mark as they showed it last. Of two chats
// with the same title neither row tells anything.
let marks = new Map();
let ownClicks = 0;
const inHand = new Map();  // by title: the row of a chat whose unread messages are read by the program
const noteMarks = () => {
  const titles = new Set();
  for (const row of listedChats()) {
    const content = contentOf(row);
    const title = titleOf(row);
    if (titles.has(title)) marks.set(title, null);
    else if (content.badge && title !== opening.title) marks.set(title, content);
    titles.add(title);
  }
};
// A mark that comes while a chat is being opened would be gone with the opening.
const isOpening = () => watch.serial !== opening.serial || ownClicks !== opening.clicks;
const rememberRows = (reading) => {
  ++ownClicks;
  marks = new Map();
  noteMarks();
  for (const title of inHand.keys()) if (!marks.get(title)) inHand.delete(title);
  if (reading && !lost.has(reading)) inHand.set(reading, JSON.stringify(marks.get(reading)));
};

const tell = (what, row = null) => {
  const key = what.id || `${performance.timeOrigin}/${++kept}`;
  if (told.some((message) => message.key === key)) return;
  told.push({key: key, at: performance.now(), row: row, looks: 0, title: watch.title, id: '', chat: '', inGroup: false,
             number: '', picture: '', sender: '', time: '', kind: '', text: '', lines: [], badge: '', ...what});
};
// What the program has stored from its chats, before this document was there, and which of them were open then: by
// title, the last message above which all was taken, and when the chat was opened.
const lost = new Map();
const takeKnown = (ids, opened) => {
  for (const chat of opened) lost.set(chat.title, chat);
  for (const id of ids) {
    const {chat} = idParts(id);
    if (!chat) continue;
    if (!chats.has(chat)) chats.set(chat, {title: '', clicks: -1, ids: new Set()});
    chats.get(chat).ids.add(id);
  }
};
const isMessage = (row) => !isOwn(row) && kindOf(row) !== 'call';
const countOf = (badge) => Number((badge || '').replace(/\D/g, '')) || 0;

// The row's mark went away with the opening; nothing but the row itself tells what it said.
const tellOfMark = () => {
  opening.settled = true;
  const {mark, title} = opening;
  if (mark) tell({title: title, lines: mark.lines, badge: mark.badge});
};
const beginOpening = () => {
  endOpening();
  const mark = marks.get(watch.title) || null;
  const isInHand = !!mark && JSON.stringify(mark) === inHand.get(watch.title);
  marks.delete(watch.title);  // the same chat may be drawn anew without another click
  opening = {serial: watch.serial, clicks: ownClicks, node: watch.node, redrawn: opening.node === watch.node,
             title: watch.title, at: Date.now(), mark: mark, isInHand: isInHand, settled: !mark || isInHand,
             wasEmpty: false, chat: null, rows: null, unread: []};
};
// The program read the last message of a chat in hand in the list, and no more where the chat came up too late for it.
const endOpening = () => {
  if (!opening.settled) tellOfMark();
  opening.unread.splice(0).slice(0, -1).forEach((message) => tell(message));
};
// What stands in a chat that was drawn without messages first: they came in since, unless their time says otherwise.
const cameSince = (rows, since) => {
  const minute = (date) => new Date(date.getTime() - date.getTimezoneOffset() * 60000).toISOString().slice(0, 16).replace('T', ' ');
  const begin = minute(new Date(since));
  const isOld = (row) => { const time = timeOf(row); return !!time && time < begin; };
  const fresh = rows.slice(rows.findLastIndex(isOld) + 1);
  return fresh.some((row) => timeOf(row)) || rows.length === 1 ? fresh : [];
};
// What came in while the chat was open on a document that has gone. An answer of ours may stand below it.
const cameUnseen = (rows, {id, at}) => {
  const last = id ? rows.findLastIndex((row) => idOf(row) === id) : -1;
  return last >= 0 ? rows.slice(last + 1) : cameSince(rows, at);
};
const newIn = (rows, record, first) => {
  const opened = first ? lost.get(watch.title) : null;
  if (opened) {
    lost.delete(watch.title);
    return cameUnseen(rows, opened);
  }
  const last = record ? rows.findLastIndex((row) => record.ids.has(idOf(row))) : -1;
  if (last >= 0) return rows.slice(first ? Math.max(last, rows.findLastIndex(isOwn)) + 1 : last + 1);
  if (!first) return [];  // somebody looks at what was long ago
  const count = countOf(opening.mark?.badge);
  if (count) return rows.slice(rows.findLastIndex(isOwn) + 1).filter(isMessage).slice(-count);
  return opening.wasEmpty ? cameSince(rows, opening.at) : [];
};
const listen = () => {
  if (!watch.node || !watch.title) return;
  const ours = watch.personClicks === watch.personAtClick;
  if (opening.serial !== watch.serial) beginOpening();
  if (!ours) opening.settled = true;
  const rows = all('XX_MessageRow');
  if (rows === opening.rows) return;
  opening.rows = rows;
  if (!rows.length) {
    opening.wasEmpty = true;
    return;
  }
  const id = idOf(rows[rows.length - 1]);
  if (!id) {
    if (!opening.settled) tellOfMark();
    return;
  }
  const chat = idParts(id).chat || watch.title;
  const record = chats.get(chat);
  const first = opening.chat !== chat;
  // A frame that is used again shows the messages of the chat before for a while, which keep its name.
  const title = record?.title && opening.redrawn && record.clicks !== ownClicks ? record.title : watch.title;
  const fresh = ours ? newIn(rows, record, first) : [];
  for (const row of fresh.filter(isMessage)) {
    const message = {...said(row), title: title};
    if (first && opening.isInHand) opening.unread.push(message);
    else tell(message, row);
  }
  if (title === watch.title) {
    opening.settled = true;
    opening.chat = chat;
  }
  chats.delete(chat);
  chats.set(chat, {title: title, clicks: ownClicks, ids: new Set(rows.map(idOf))});
  if (chats.size > mostChats) chats.delete(chats.keys().next().value);
};
// Where in the open chat, whose newest message is `newest`, something waits to be taken: the message above it.
const untakenIn = (newest) => {
  const ids = new Set([...told, ...opening.unread].map(({id}) => id).filter(Boolean));
  if (!newest || !ids.size) return {};
  const rows = all('XX_MessageRow');
  const first = rows.findIndex((row) => ids.has(idOf(row)));
  return first < 0 ? {} : {untaken: true, takenId: first > 0 ? idOf(rows[first - 1]) : ''};
};
// A message may be drawn in several steps, so it is read once more; one that says nothing yet is given a look's time. One
// without an id that the list marks as unread all the same is read from there.
const takeable = () => {
  if (!watch.node) endOpening();
  for (const message of told) {
    ++message.looks;
    if (message.row?.isConnected && idOf(message.row) === message.id) Object.assign(message, contentIn(message.row));
  }
  const isMarked = ({id, title, lines}) => {
    const row = id ? null : rowOf(title);
    return !!row?.badge && row.lines[row.lines.length - 2] === lines[lines.length - 2];
  };
  told = told.filter((message) => !isMarked(message));
  const isReady = ({kind, looks, row}) => kind !== 'media' || looks > 1 || !row?.isConnected;
  return told.filter(isReady).map(({row, at, looks, ...message}) => ({...lean(message), ageMs: Math.round(performance.now() - at)}));
};
// The unread messages of the chat in hand, oldest first: `count` of them, none above our own last one, scrolled up to as far
// as needed. Null while the chat isn't there; without ids the newest one at most.
const readUnread = async (title, count, milliseconds) => {
  updateWatch();
  if (!watch.node || watch.title !== title) return null;
  const end = performance.now() + milliseconds;
  const serial = watch.serial;
  const rows = all('XX_MessageRow');
  const last = rows.length ? idOf(rows[rows.length - 1]) : '';
  if (!last) return {messages: rows.filter(isMessage).slice(-1).map((row) => lean({...said(row), title: title}))};
  if (opening.chat !== (idParts(last).chat || watch.title)) return null;
  const newest = opening.unread.length ? opening.unread[opening.unread.length - 1].id : idOf(rows.findLast(isMessage) || rows[0]);
  for (;;) {
    const drawn = all('XX_MessageRow');
    const upTo = drawn.slice(0, drawn.findLastIndex((row) => idOf(row) === newest) + 1);
    const own = upTo.findLastIndex(isOwn);
    const found = upTo.slice(own + 1).filter(isMessage);
    const isEnough = found.length >= count || own >= 0 || !drawn.length;
    if (isEnough || performance.now() >= end || !await showsOlder(drawn[0])) {
      opening.unread = [];
      const isHere = watch.serial === serial;
      return {hasIds: isHere, messages: isHere ? found.slice(-count).map((row) => lean({...said(row), title: title})) : []};
    }
  }
};
const scrollerOf = (node) => {
  let pane = node.parentElement;
  while (pane && !(pane.scrollHeight > pane.clientHeight + 1 && /auto|scroll/.test(getComputedStyle(pane).overflowY))) pane = pane.parentElement;
  return pane;
};
// Whether scrolling up has brought messages that are older than `first`.
const showsOlder = async (first) => {
  const pane = scrollerOf(first);
  if (!pane) return false;
  pane.scrollTop = pane.scrollTop > 0 ? 0 : 1;
  pane.scrollTop = 0;
  for (let i = 0; i < 10; ++i) {
    await soon(30);
    if (all('XX_MessageRow')[0] !== first) return true;
  }
  return false;
};
const forgetArrived = (keys) => {
  told = told.filter((message) => !keys.includes(message.key));
  return true;
};
