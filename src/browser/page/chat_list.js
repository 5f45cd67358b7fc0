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
// A number in the digits of any script; of very many "99+" or "1,234".
const isCount = (line) => /^\p{Nd}[\p{Nd}+.,\u066b\u066c]*$/u.test(line);
const fewestLines = 4;
// Looking inside a row costs more than reading its text, so only those are looked into that can be unread.
const endsInCount = (lines) => lines.length >= fewestLines && isCount(lines[lines.length - 1]);
const markOf = (row) => visibleText(one('XX_UnreadBadge', row)).trim();
const titleOf = (row) => plain(one('XX_EntryTitle', row)?.getAttribute('title') || '').trim();
// The page counts unread messages in the last of a row's lines, whatever it calls the mark. A number right below a group's
// colon is a message that was read, unless it is the mark. What has no title is no chat.
const badgeOf = (row, lines) => {
  const last = lines[lines.length - 1];
  if (!endsInCount(lines) || !titleOf(row)) return '';
  return lines[lines.length - 2] !== ':' || markOf(row) === last ? last : '';
};
const contentOf = (row) => {
  const lines = linesOf(row);
  return {lines: lines, badge: badgeOf(row, lines)};
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
