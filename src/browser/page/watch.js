// Which chat is open. It is watched in the page because a conversation that comes up and is replaced between two looks
// would otherwise go unnoticed, and which chats came up since a click is what decides whether a text may be typed.
const shownAtOnce = 20;  // titles and addresses that one answer carries at most
const watch = {serial: 0, node: null, title: '', titles: [], clicks: 0, clicked: [], personClicks: 0, ownClickUntil: 0,
               personAtClick: -1, beforeFile: null};
// Scripted clicks are not trusted ones, so these are a person's, but for the one that was announced.
const onMouseDown = (event) => {
  if (!event.isTrusted) return;
  if (performance.now() > watch.ownClickUntil) ++watch.personClicks;
  watch.ownClickUntil = 0;
};
const updateWatch = () => {
  const node = one('XX_Conversation');
  const title = node ? textOf('XX_To') : '';
  const cameUp = node && (node !== watch.node || (title && watch.title && title !== watch.title));
  if (cameUp) {
    ++watch.serial;
    watch.titles = [...watch.titles.slice(1 - shownAtOnce), title];
  } else if (node && title) {
    watch.titles[watch.titles.length - 1] = title;  // the name may be drawn after the rest
  }
  watch.node = node;
  watch.title = cameUp ? title : node ? title || watch.title : '';
  if (isOpening()) noteMarks();
  listen();
};
// `reading`: title of the chat whose unread message is in hand already.
const beforeClick = (reading) => {
  watch.personAtClick = watch.personClicks;
  rememberRows(reading);
};
// What the caller has heard already is left out of its answer.
let heard = {serial: 0, clicks: 0};
const since = (newest, count, known) => count > known ? newest.slice(-Math.min(count - known, newest.length)) : [];
const openChat = () => {
  updateWatch();
  const id = watch.node ? newestId() : '';
  return lean({
    serial: watch.serial,
    open: !!watch.node,
    title: watch.title,
    number: watch.node ? namedNumber(id) : '',
    lastMessageId: id,
    ...untakenIn(id),
    othersUntaken: told.length > 0,
    titles: since(watch.titles, watch.serial, Math.min(heard.serial, watch.serial - 1)),
    clicks: watch.clicks,
    clicked: since(watch.clicked, watch.clicks, heard.clicks),
    personClicks: watch.personClicks
  });
};
// An answer carries what differs from nothing.
const lean = (answer) => Object.fromEntries(Object.entries(answer).filter(([, value]) =>
    value && !(Array.isArray(value) && value.length === 0)));
