// Looking for a chat by its name. The list holds the rows in sight only, so it is looked through by scrolling; an entry
// is known by its place in it. Below the chats, a search lists single messages under a heading of their own.
const scrollThrough = async (visit) => {
  const pane = one('XX_ChatList');
  if (!pane) return false;
  const end = performance.now() + 2000;
  const moveTo = async (top) => {
    if (Math.abs(pane.scrollTop - top) < 1) return;
    pane.scrollTop = top;
    await soon(40);
  };
  let messagesFrom = Infinity;
  await moveTo(0);
  for (;;) {
    const origin = pane.getBoundingClientRect().top - pane.scrollTop;
    const placeOf = (node) => Math.round(node.getBoundingClientRect().top - origin);
    all('XX_MessageResults').forEach((node) => { messagesFrom = Math.min(messagesFrom, placeOf(node)); });
    const rows = all('XX_ReadMessage').map((row) =>
      ({row: row, at: placeOf(row), title: row.querySelector('span[title]')?.getAttribute('title')}));
    if (visit(rows.filter(({title}) => title), messagesFrom)) return true;
    const next = Math.min(pane.scrollTop + 0.8 * pane.clientHeight, pane.scrollHeight - pane.clientHeight);
    if (next <= pane.scrollTop + 1) break;
    if (performance.now() >= end) return false;
    await moveTo(next);
  }
  await moveTo(0);
  return true;
};
const lookAtSearch = async () => {
  const entries = new Map();
  let end = Infinity;
  const complete = await scrollThrough((seen, messagesFrom) => {
    seen.forEach(({at, title}) => entries.set(at, title));
    end = messagesFrom;
    return false;
  });
  const box = boxNamed('XX_SearchBox');
  const inOrder = Array.from(entries).sort((a, b) => a[0] - b[0]).filter(([at]) => at < end);
  return {hasBox: !!box, text: box ? boxText(box) : '', titles: inOrder.map(([, title]) => title), complete: complete};
};
const findEntry = async (wanted) => {
  let entry = null;
  await scrollThrough((seen, messagesFrom) => {
    entry = seen.find(({at, title}) => title === wanted && at < messagesFrom)?.row || null;
    return !!entry;
  });
  if (entry) beforeClick('');
  if (entry) watch.ownClickUntil = performance.now() + 3000;
  return {entry: entry, before: openChat()};
};
