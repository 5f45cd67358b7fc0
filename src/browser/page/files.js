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
  watch.beforeFile = {title: watch.title, ids: new Set(all('XX_MessageRow').map((row) => row.dataset.id))};
  button.click();
  return true;
};
// Ours is an outgoing message below the last one that stood there: older ones may still be loaded above.
const awaitFileSent = async (milliseconds) => {
  const end = performance.now() + milliseconds;
  for (;;) {
    updateWatch();
    const before = watch.beforeFile;
    const rows = all('XX_MessageRow');
    const last = before ? rows.findLastIndex((row) => before.ids.has(row.dataset.id)) : rows.length;
    const inChat = !!before && watch.title === before.title && rows.slice(last + 1).some(isOwn);
    const previewGone = !one('XX_Caption') && !one('XX_SendFileButton');
    if ((previewGone && inChat) || performance.now() >= end)
      return {previewGone: previewGone, inChat: inChat, chatSerial: watch.serial, lastMessageId: newestId()};
    await soon(25);
  }
};
