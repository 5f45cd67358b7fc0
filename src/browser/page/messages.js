// One message of the open chat. Its id names direction, chat, the message itself and, in a group, the member:
// false_1203@g.us_3EB0_62811@c.us. A page that names own ones otherwise marks them by their class.
const idOf = (row) => row.dataset.id || '';
const isOwn = (row) => /^true_/.test(idOf(row)) || !!row.closest('.message-out') || !!row.querySelector('.message-out');
const idParts = (id) => {
  const [, chat = '', member = ''] = /^(?:true|false)_([^_]+)_[^_]+(?:_(.+))?$/.exec(id) || [];
  return {chat: chat, member: member};
};
const isOfGroup = (id) => /@g\.us/.test(id);
// In a group, messages and their ids name the members, not the chat.
const namedNumber = (id) => {
  if (isOfGroup(id)) return '';
  const texts = [id, one('XX_HeaderPicture')?.getAttribute('src') || ''];
  return texts.map((text) => /(?:^|_|&u=)(\d{5,20})(?:@|%40)c\.us/.exec(text)).find(Boolean)?.[1] || '';
};

// "[15:09, 11/23/2026] Budi: " stands beside texts.
const stampOf = (row) => row.querySelector('[data-pre-plain-text]')?.dataset.prePlainText || '';
const writerIn = (stamp) => plain(/\] (.*):\s*$/.exec(stamp)?.[1] || '').trim();
const dayFirst = () => new Intl.DateTimeFormat(document.documentElement.lang || undefined)
    .formatToParts(new Date(2001, 10, 22)).find(({type}) => type === 'day' || type === 'month')?.type === 'day';
// As "2026-11-23 15:09"; empty where it isn't told.
const timeOf = (row) => {
  const told = /^\[(\d{1,2})[:.](\d{2})[^,\]]*?([ap]?)\.?m?\.?,\s*(\d{1,4})\D(\d{1,2})\D(\d{1,4})/i.exec(plain(stampOf(row)));
  if (!told) return '';
  const [hour, minute, a, b, c] = [told[1], told[2], told[4], told[5], told[6]].map(Number);
  const half = told[3].toLowerCase();
  const [year, month, day] = a > 31 ? [a, b, c] : a > 12 || (b <= 12 && dayFirst()) ? [c, b, a] : [c, a, b];
  const two = (number) => String(number).padStart(2, '0');
  return `${year < 100 ? 2000 + year : year}-${two(month)}-${two(day)} ${two(half ? hour % 12 + (half === 'p' ? 12 : 0) : hour)}:${two(minute)}`;
};
// A member's name stands beside his texts only, so it is looked for in all that he has written.
const senderOf = (row) => {
  const own = writerIn(stampOf(row));
  const {member} = idParts(idOf(row));
  if (own || !member) return own;
  const same = all('XX_MessageRow').find((other) => idParts(idOf(other)).member === member && writerIn(stampOf(other)));
  return same ? writerIn(stampOf(same)) : '';
};

// What a message without a text says: its kind, and what the page shows of it.
const kinds = ['Call', 'Deleted', 'Poll', 'Contact', 'Location', 'Sticker', 'Voice', 'Document', 'Video', 'Photo'];
const partsIn = (row, name, quoted = all('XX_Quoted', row)) =>
    all(name, row).filter((node) => !quoted.some((other) => other.contains(node)));
const kindOf = (row) => {
  const quoted = all('XX_Quoted', row);
  const shows = (kind) => partsIn(row, `XX_Kind${kind}`, quoted).length > 0;
  return kinds.find(shows)?.toLowerCase() || '';
};
const isClockTime = (line) => /^\d{1,2}[:.]\d{2}(\s?[ap]\.?m\.?)?$/i.test(line);
const detailOf = (kind, row, caption) => {
  const lines = drawnText(row).split('\n').map((line) => line.trim()).filter(Boolean);
  // The last time that is shown is the message's own.
  if (kind === 'voice') return lines.filter(isClockTime).slice(0, -1).shift() || '';
  if (kind === 'document') return lines.find((line) => /\S\.\w{1,5}$/.test(line)) || '';
  const sender = senderOf(row);
  return lines.find((line) => !isClockTime(line) && line !== sender && line !== caption) || '';
};
const nameless = {voice: 'voice message', media: 'media'};
const withDetail = ['voice', 'document', 'location', 'contact', 'poll'];
const contentIn = (row) => {
  const texts = all('XX_MessageText', row);
  const text = texts.length ? drawnText(texts[texts.length - 1]).trim() : '';
  const kind = kindOf(row) || (text ? 'text' : 'media');
  if (kind === 'text') return {kind: kind, text: text};
  const detail = withDetail.includes(kind) ? detailOf(kind, row, text) : '';
  const name = `(${nameless[kind] || kind}${detail ? ` ${detail}` : ''})`;
  return {kind: kind, text: text && kind !== 'deleted' ? `${name} ${text}` : name};
};
const said = (row) => {
  const id = idOf(row);
  const inGroup = isOfGroup(id);
  return {
    id: id,
    chat: idParts(id).chat,
    inGroup: inGroup,
    number: namedNumber(id),
    picture: one('XX_HeaderPicture')?.getAttribute('src') || '',
    sender: inGroup ? senderOf(row) : '',
    time: timeOf(row),
    ...contentIn(row)
  };
};
