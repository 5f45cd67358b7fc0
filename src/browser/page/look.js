// The look of every tick, and single controls.
const look = (nextAddress, title) => {
  if (link()?.textContent !== nextAddress) pointLink(nextAddress);
  const qr = all('XX_QR');
  if (qr.length > 0 && title && document.title !== title) document.title = title;
  const banner = all('XX_Info');
  const own = one('XX_OwnPicture');
  const notice = one('XX_InvalidNumber');
  return {
    noPage: /^(chrome-error|about|data):/.test(location.href) && !document.body?.childElementCount || location.protocol === 'chrome-error:',
    errorPage: !!one('XX_ErrorPage'),
    host: location.hostname,
    useHereButtons: all('XX_UseHere').length,
    hasUpdate: !!one('XX_Update'),
    hasChatList: !!one('XX_ChatList'),
    hasBox: !!one('XX_ChatBox'),
    misunderstood: misunderstood,
    newChatControls: all('XX_NewChat').length,
    qrCodes: qr.length,
    qrData: qr.length === 1 ? qr[0].getAttribute('data-ref') || '' : '',
    qrReloads: all('XX_QRReload').length,
    hasBanner: banner.length > 0,
    banner: textOf('XX_Info'),
    linkText: link()?.textContent || '',
    ownPicture: own ? own.getAttribute('src') || '' : '',
    hasNotice: !!notice,
    notice: textOf('XX_InvalidNumber'),
    chat: openChat(),
    arrived: takeable()
  };
};
const clickQrReload = () => {
  const reload = all('XX_QRReload');
  if (reload.length !== 1) return false;
  reload[0].click();
  return true;
};
const clickUseHere = () => {
  const button = one('XX_UseHere');
  if (button) button.click();
  return !!button;
};
// The frames lie in a layer of their own above the page: its elements, which its own code redraws, stay untouched.
const outlineId = 'kibo-outline';
const outline = (locator, milliseconds) => {
  let matches = [];
  try { matches = find(locator); } catch (error) { return {understood: false, count: 0, visible: 0, texts: []}; }
  document.getElementById(outlineId)?.remove();
  const layer = document.createElement('div');
  layer.id = outlineId;
  for (const node of matches.slice(0, 200)) {
    const element = node.nodeType === Node.ELEMENT_NODE ? node : node.ownerElement || node.parentElement;
    const box = element ? element.getBoundingClientRect() : {width: 0, height: 0};
    if (!box.width || !box.height) continue;
    const frame = document.createElement('div');
    frame.style.cssText = 'position:fixed;z-index:2147483647;pointer-events:none;box-sizing:border-box;' +
      'border:3px solid #e4002b;border-radius:3px;background:rgba(228,0,43,.12);' +
      `left:${box.left}px;top:${box.top}px;width:${box.width}px;height:${box.height}px`;
    layer.appendChild(frame);
  }
  document.body.appendChild(layer);
  setTimeout(() => layer.remove(), milliseconds);
  return {
    understood: true,
    count: matches.length,
    visible: layer.childElementCount,
    texts: matches.slice(0, 20).map((node) => visibleText(node).trim().slice(0, 300)).filter((text) => text)
  };
};
