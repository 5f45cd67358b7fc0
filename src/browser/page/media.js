// Saving what a message of the open chat carries: a picture, a video, a voice note, a document. What the page holds is handed
// to the browser's download; else the message's own control is clicked, which fetches it into the page or saves it at once, and
// where there is none, "Download" in the message's menu.
let asked = {id: '', at: 0, ways: new Set()};  // the message in hand, when its control was clicked, and what was done for it
const holders = {photo: 'XX_MediaPhoto', video: 'XX_MediaVideo', voice: 'XX_MediaVoice'};
const menuAfterMs = 1500;  // a control that was clicked is gone while it fetches
const heldAddress = (row, kind) => {
  const node = holders[kind] && partsIn(row, holders[kind])[0];
  return node ? node.currentSrc || node.src || '' : '';
};
const suffixOf = (row) => /\.(\w{1,8})$/.exec(detailOf('document', row, ''))?.[1] || '';
// Whether the menu has such an item, which was clicked then; null: it was opened and has none. What opens it is there while the
// mouse is over the message.
const saveByMenu = async (row) => {
  for (const type of ['mouseover', 'mousemove']) (row.firstElementChild || row).dispatchEvent(new MouseEvent(type, {bubbles: true}));
  await soon(30);
  const opener = partsIn(row, 'XX_MessageMenu')[0];
  if (!opener) return false;
  opener.click();
  for (let i = 0; i < 10; ++i) {
    await soon(30);
    const item = one('XX_MenuDownload');
    if (item) {
      item.click();
      return true;
    }
  }
  return null;
};
// `begins`: nothing was done for this message so far. "asked" is answered until there is nothing left to do; `menuLeft`: an open
// menu stands over the chat.
const saveMedia = async (id, kind, begins) => {
  const row = all('XX_MessageRow').find((one) => idOf(one) === id);
  if (!row) return {state: 'gone'};
  if (begins || asked.id !== id) asked = {id: id, at: 0, ways: new Set()};
  const isFirst = (way) => !asked.ways.has(way) && !!asked.ways.add(way);
  const told = {state: 'asked', suffix: kind === 'document' ? suffixOf(row) : ''};
  const address = heldAddress(row, kind);
  const control = partsIn(row, 'XX_MediaDownload')[0];
  if (address) {
    if (isFirst('held')) Object.assign(document.createElement('a'), {href: address, download: 'media'}).click();
  } else if (control) {
    if (!isFirst('control')) return told;
    asked.at = performance.now();
    control.click();
  } else if ((!asked.at || performance.now() > asked.at + menuAfterMs) && isFirst('menu')) {
    const saved = await saveByMenu(row);
    if (!saved) return {state: 'none', menuLeft: saved === null};
  }
  return told;
};
