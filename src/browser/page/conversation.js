// The open chat's messages. Ids of own ones begin with "true_"; a page that names them otherwise marks them by their class.
const isOwn = (row) => /^true_/.test(row.dataset.id || '') || !!row.closest('.message-out') || !!row.querySelector('.message-out');
// In a group, messages and their ids name the members, not the chat.
const isOfGroup = (id) => /@g\.us/.test(id);
const namedNumber = (id) => {
  if (isOfGroup(id)) return '';
  const texts = [id, one('XX_HeaderPicture')?.getAttribute('src') || ''];
  return texts.map((text) => /(?:^|_|&u=)(\d{5,20})(?:@|%40)c\.us/.exec(text)).find(Boolean)?.[1] || '';
};
const newestId = () => {
  const rows = all('XX_MessageRow');
  return rows.length ? rows[rows.length - 1].dataset.id || '' : '';
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
    text: texts.length ? oneLine(drawnText(texts[texts.length - 1])) : ''
  };
};
const lastMessages = () => all('XX_MessageRow').map((row) => ({
  id: row.dataset.id || '',
  own: isOwn(row),
  text: boxText(row)
}));
const newestTicks = 20;
const ownTicks = () => all('XX_MessageRow').slice(-newestTicks).filter((row) => row.dataset.id && isOwn(row))
    .map((row) => ({id: row.dataset.id, ticks: ticksIn(row)})).filter(({ticks}) => ticks !== null);
const lookAtChat = (focusBox) => {
  const notice = one('XX_InvalidNumber');
  const box = one('XX_ChatBox');
  const boxFocused = focusBox ? focusOn(box) : focused(box);
  return {
    linkText: link()?.textContent || '',
    hasNotice: !!notice,
    notice: textOf('XX_InvalidNumber'),
    hasBox: !!box,
    boxFocused: boxFocused,
    boxText: box ? boxText(box) : '',
    headerPicture: one('XX_HeaderPicture')?.getAttribute('src') || '',
    ticks: box ? ownTicks() : [],
    chat: openChat()
  };
};
