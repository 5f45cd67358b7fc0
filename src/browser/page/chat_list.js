// The rows of the chat list. They may be drawn anew between two commands, so a row is known by what it shows. Finding
// them costs more than reading them.
let listed = null;
const list = () => {
  catchUp();
  if (listed) return listed;
  const rows = all('XX_ReadMessage');
  const known = new Set(rows);
  const withEmoji = new Set(Array.from(document.querySelectorAll('[dir] img[alt]'), (picture) => {
    let node = picture;
    while (node && !known.has(node)) node = node.parentElement;
    return node;
  }));
  return listed = {rows: rows, withEmoji: withEmoji, length: null};
};
const chatRows = () => list().rows;
// Measuring the list's text costs as much as reading all of its rows.
const chatListLength = () => list().length ??= visibleText(one('XX_ChatList')).length;
const textOfRow = (row) => list().withEmoji.has(row) ? drawnText(row) : visibleText(row);
const linesOf = (row) => textOfRow(row).split('\n').map((line) => line.trim()).filter(Boolean);
// Looking inside a row costs more than reading its text, so only those are looked into that can be unread.
const endsInCount = (lines) => /^\d/.test(lines[lines.length - 1] || '');
const badgeOf = (row) => visibleText(one('XX_UnreadBadge', row)).trim();
const titleOf = (row) => plain(one('XX_EntryTitle', row)?.getAttribute('title') || '').trim();
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
const memberIn = (row) => {
  const lines = row ? row.lines.slice(0, row.lines.length - (row.badge ? 1 : 0)) : [];
  return lines[lines.length - 2] === ':' ? lines[lines.length - 3] || '' : '';
};
