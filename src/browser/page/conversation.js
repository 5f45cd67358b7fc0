// The open chat.
const newestId = () => {
  const rows = all('XX_MessageRow');
  return rows.length ? idOf(rows[rows.length - 1]) : '';
};
const lastMessages = () => all('XX_MessageRow').map((row) => ({
  id: idOf(row),
  own: isOwn(row),
  text: boxText(row)
}));
const newestTicks = 20;
const ownTicks = () => all('XX_MessageRow').slice(-newestTicks).filter((row) => idOf(row) && isOwn(row))
    .map((row) => ({id: idOf(row), ticks: ticksIn(row)})).filter(({ticks}) => ticks !== null);
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
