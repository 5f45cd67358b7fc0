// Files. The page has an input for stickers too, which takes pictures only: what takes videos as well sends photos. An
// input that is asked twice would send the former file again, so it is emptied.
const soon = (ms) => new Promise((done) => setTimeout(done, ms));
const fileInput = async (media) => {
  const fits = (input) => {
    const accept = (input.getAttribute('accept') || '').toLowerCase();
    return media ? accept.includes('video/') : !/(image|video)\//.test(accept);
  };
  const input = () => all(media ? 'XX_MediaInput' : 'XX_DocumentInput').find(fits);
  if (!input()) one('XX_AttachMenu')?.click();
  const end = performance.now() + 2000;
  while (!input() && performance.now() < end) await soon(10);
  const chosen = input() || null;
  if (chosen) chosen.value = '';
  return chosen;
};
const lookAtPreview = (focusCaption) => {
  const caption = boxNamed('XX_Caption');
  updateWatch();
  return {
    hasCaption: !!caption,
    hasSendButton: !!one('XX_SendFileButton'),
    captionFocused: focusCaption ? focusOn(caption) : focused(caption),
    chatSerial: watch.serial
  };
};
const sendPreview = () => {
  const button = one('XX_SendFileButton');
  if (!button) return false;
  updateWatch();
  const rows = all('XX_MessageRow');
  watch.beforeFile = {title: watch.title, ids: new Set(rows.map((row) => row.dataset.id)), rows: new Set(rows),
                      own: rows.filter(isOwn).length};
  button.click();
  return true;
};
// Ours is an outgoing message below the last one that stood there: older ones may still be loaded above. Where messages
// have no ids, it is one more than before, drawn since.
const stoodBefore = (row, before) => row.dataset.id ? before.ids.has(row.dataset.id) : before.rows.has(row);
const ownBelow = (rows, before) => {
  const below = rows.slice(rows.findLastIndex((row) => stoodBefore(row, before)) + 1);
  return below.some(isOwn) && (!!below[0].dataset.id || rows.filter(isOwn).length > before.own);
};
const awaitFileSent = async (milliseconds) => {
  const end = performance.now() + milliseconds;
  for (;;) {
    updateWatch();
    const before = watch.beforeFile;
    const rows = all('XX_MessageRow');
    const inChat = !!before && watch.title === before.title && ownBelow(rows, before);
    const previewGone = !one('XX_Caption') && !one('XX_SendFileButton');
    if ((previewGone && inChat) || performance.now() >= end)
      return {previewGone: previewGone, inChat: inChat, chatSerial: watch.serial, lastMessageId: newestId()};
    await soon(25);
  }
};
