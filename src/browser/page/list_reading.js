// Reading the chat list as a whole.
const searchBox = () => one('XX_SearchBox');
const isSearching = () => {
  const box = searchBox();
  return !!box && (box.value ?? visibleText(box)).trim() !== '';
};
// What can be read of the rows at the top, and by which signs they look unread.
const signsOfList = () => {
  const rows = chatRows().slice(0, 40).map((row) => {
    const {lines, badge} = contentOf(row);
    const mark = markOf(row);
    return {filled: lines.length > 2, titled: !!titleOf(row), counted: !!badge, marked: !!badge && mark === badge,
            markedElsewhere: isCount(mark) && mark !== lines[lines.length - 1]};
  });
  const count = (sign) => rows.filter((row) => row[sign]).length;
  const titled = count('titled');
  return lean({
    filled: count('filled'), titled: titled, counted: count('counted'), marked: count('marked'),
    markedElsewhere: count('markedElsewhere'),
    lines: titled ? 0 : visibleText(one('XX_ChatList')).split('\n').filter((line) => line.trim()).length
  });
};
let scrolledAt = null;
let ticksAt = null;
// The length alone would miss a message that makes up for the one before it: "hello" read, then "hey" with its badge.
const watchChatList = (title) => {
  updateWatch();
  document.title = title;
  const unread = chatRows().map(contentOf).filter(({badge}) => badge).map(({lines}) => lines.join('\n')).join('\n');
  // A list that somebody has scrolled doesn't show what is new. He is given some time.
  const scrolledMs = 10000;
  const pane = one('XX_ChatList');
  if (!pane || pane.scrollTop < 1) scrolledAt = null;
  else if (performance.now() - (scrolledAt ??= performance.now()) > scrolledMs) pane.scrollTop = 0;
  // Ticks of the last messages, where they are ours. Two chats of one name can't be told apart.
  const ticksEveryMs = 3000;
  let ticks = [];
  let signs = null;
  if (ticksAt === null || performance.now() - ticksAt >= ticksEveryMs) {
    ticksAt = performance.now();
    if (pane && !isSearching()) signs = signsOfList();
    const titles = chatRows().map(titleOf);
    ticks = chatRows().map((row, i) => ({row: row, title: titles[i], ticks: ticksIn(row)}))
        .filter(({title, ticks}) => ticks !== null && title && titles.indexOf(title) === titles.lastIndexOf(title))
        .map(({row, title, ticks}) => ({title: title, preview: linesOf(row).pop() || '', ticks: ticks}));
  }
  let digest = 0;
  for (let i = 0; i < unread.length; ++i) digest = (digest * 31 + unread.charCodeAt(i)) | 0;
  return {length: chatListLength(), unread: unread ? unread.length + ':' + digest : '', ticks: ticks, signs: signs};
};
// Of rows that can't be unread, but for those of the chat `title`, only the place is told: a list has hundreds of them.
const readChatList = async (offset, title) => {
  const drawMs = 80;
  const overlap = 100;
  const pane = one('XX_ChatList');
  if (!pane) return null;
  if (Math.abs(pane.scrollTop - offset) >= 2) {
    pane.scrollTop = offset;
    await soon(drawMs);
  }
  const below = pane.scrollTop + pane.clientHeight;
  return {
    entries: chatRows().map((row) => {
      const lines = linesOf(row);
      if (endsInCount(lines)) return {title: titleOf(row), badge: badgeOf(row, lines), lines: lines, marked: !!markOf(row)};
      return title && lines[0] === title ? {lines: lines} : 0;
    }),
    nextOffset: below < pane.scrollHeight - 1 ? Math.round(Math.max(below - overlap, offset + 1)) : -1,
    ownPicture: one('XX_OwnPicture')?.getAttribute('src') || '',
    search: isSearching(),
    length: chatListLength()
  };
};
const listChats = () => {
  const older = all('XX_ListedChat');
  return (older.length ? older : chatRows())
    .map((row) => ({title: titleOf(row), picture: row.querySelector('img[src*="&u="]')?.getAttribute('src') || ''}))
    .filter(({title}) => title);
};
// Found and clicked in one go: between two commands the row could have become another chat's. The page may listen to
// any of the events of a click.
const clickRow = (title, badge, lines) => {
  const shown = JSON.stringify(lines);
  const row = chatRows().find((row) => {
    const lines = linesOf(row);
    return JSON.stringify(lines) === shown && titleOf(row) === title && badgeOf(row, lines) === badge;
  });
  const clicked = {found: !!row, before: openChat()};
  if (!row) return clicked;
  beforeClick(title);
  const target = one('XX_EntryTitle', row) || row;
  for (const type of ['pointerdown', 'mousedown', 'pointerup', 'mouseup', 'click']) {
    const Event = type.startsWith('pointer') ? PointerEvent : MouseEvent;
    target.dispatchEvent(new Event(type, {bubbles: true, cancelable: true, composed: true, view: window}));
  }
  return clicked;
};
const focusSearch = () => {
  if (isSearching()) searchBox().focus();
  return isSearching();
};
