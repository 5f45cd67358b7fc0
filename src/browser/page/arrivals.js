// What the chat list will not tell. What comes in while its chat is open is read for the page and gets no mark in the
// list, and opening a chat to write takes the mark of what was unread. For chats that were opened by us and left to us,
// `arrived` keeps these messages until they are taken.
const arrivals = {rows: new Map(), inHand: new Map(), ownClicks: 0, ownText: '', arrived: [], unsure: [], kept: 0};
let opening = {serial: 0};
// The list shows the beginning of a long text.
const isPreviewOf = (preview, text) => !!text && !!preview && (text.startsWith(preview.slice(0, 60)) || preview.startsWith(text.slice(0, 60)));
// A chat in hand is one for as long as its row says the same: it may come up late, after further clicks.
const rememberRows = (reading) => {
  const a = arrivals;
  ++a.ownClicks;
  a.rows = new Map();
  for (const row of listedChats()) a.rows.set(titleOf(row), a.rows.has(titleOf(row)) ? null : contentOf(row));
  for (const title of a.inHand.keys()) if (!a.rows.get(title)?.badge) a.inHand.delete(title);
  if (reading) a.inHand.set(reading, JSON.stringify(a.rows.get(reading)));
};
const keep = (list, what) => list.push({
  key: `${performance.timeOrigin}/${++arrivals.kept}`, serial: watch.serial, at: performance.now(), title: watch.title,
  inGroup: false, number: '', picture: '', sender: '', text: '', lines: [], badge: '', previewBefore: '', ...what});
// A conversation may be drawn in several steps, so what comes below the rest soon after the opening (`early`) counts
// only once the chat list shows it as something new. What has no text of its own goes by what the list says.
const accept = (count, row) => {
  const last = arrivals.unsure[count - 1];
  const shown = previewOf(row);
  if (!last.text && !isPreviewOf(shown, arrivals.ownText))
    Object.assign(last, {text: shown, sender: last.sender || (last.inGroup ? memberIn(row) : '')});
  arrivals.arrived.push(...arrivals.unsure.splice(0, count));
};
const settle = () => {
  if (!arrivals.unsure.length) return;
  const title = arrivals.unsure[0].title;
  const row = rowOf(title);
  const shown = previewOf(row);
  const isShown = ({text, shownBefore}) =>
    shown !== shownBefore && (text ? isPreviewOf(shown, text) : !isPreviewOf(shown, arrivals.ownText));
  const last = arrivals.unsure.findLastIndex((message) => message.title === title && isShown(message));
  if (last >= 0) accept(last + 1, row);
};
const begin = () => {
  const a = arrivals;
  const before = a.rows.get(watch.title) || null;
  a.rows.delete(watch.title);  // the same chat may be drawn anew without another click
  opening = {serial: watch.serial, at: performance.now(), clicks: a.ownClicks, title: watch.title, before: before, known: null,
             preview: previewOf(before || rowOf(watch.title)), former: opening};
  a.ownText = '';
  opening.former.former = null;
  if (before?.badge && JSON.stringify(before) !== a.inHand.get(watch.title)) keep(a.arrived, {lines: before.lines, badge: before.badge});
};
// What a chat opens with: only what its row tells of is new.
const hearOpened = (newest, before) => {
  if (isOwn(newest)) return;
  const message = said(newest);
  const unread = arrivals.arrived.findLast((kept) => kept.serial === watch.serial && kept.badge);
  if (unread) Object.assign(unread, message);
  const shown = previewOf(rowOf(watch.title));
  if (before && shown !== previewOf(before) && isPreviewOf(shown, message.text))
    keep(arrivals.arrived, {...message, previewBefore: previewOf(before)});
};
const listen = () => {
  settle();
  if (!watch.node || !watch.title || watch.personClicks !== watch.personAtClick) return;
  if (opening.serial !== watch.serial) begin();
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
  const first = known ? rows.findLastIndex((row) => known.has(row.dataset.id)) + 1 : 0;
  if (first === 0) {
    hearOpened(newest, known ? null : opening.before);
    return;
  }
  const early = performance.now() - opening.at < 1000;
  if (isOwn(newest)) arrivals.ownText = said(newest).text;
  for (const row of rows.slice(first).filter((row) => !isOwn(row))) {
    const message = said(row);
    keep(early || !message.text ? arrivals.unsure : arrivals.arrived, {...message, early: early, shownBefore: opening.preview});
  }
  if (!early) opening.preview = previewOf(rowOf(watch.title));
};
// What is ready to be taken: its chat has been left, or is open for long. A message that the list marks as unread
// all the same is read from there.
const takeable = () => {
  settle();
  const a = arrivals;
  const now = performance.now();
  a.unsure = a.unsure.filter((message) => !message.early || now - message.at < 5000);
  if (a.unsure.length && now - a.unsure[0].at >= 5000) accept(1, rowOf(a.unsure[0].title));
  const marked = a.arrived.filter((message) => {
    const row = rowOf(message.title);
    return row?.badge && isPreviewOf(previewOf(row), message.text || message.lines[message.lines.length - 2] || '');
  });
  a.arrived = a.arrived.filter((message) => !marked.includes(message));
  return a.arrived.filter((message) => message.serial !== watch.serial || now - message.at > 3000)
      .map((message) => ({...message, ageMs: Math.round(now - message.at)}));
};
const forgetArrived = (keys) => {
  arrivals.arrived = arrivals.arrived.filter((message) => !keys.includes(message.key));
  return true;
};
