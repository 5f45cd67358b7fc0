#include "browser/page/page_scripts.h"

#include "browser/page/script_parts.h"

namespace kibo::scripts {

QString look() {
    return script(R"js(
const [, nextAddress, title] = arguments;
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
  banner: visibleText(banner[0]).trim(),
  linkText: link()?.textContent || '',
  ownPicture: own ? own.getAttribute('src') || '' : '',
  hasNotice: !!notice,
  notice: visibleText(notice).trim(),
  chat: openChat(),
  arrived: watch.takeable()
};
)js");
}

// A click on this link is taken by the page itself, like a click on a number in a message: the chat opens in place.
QString plantLink() {
    return script(R"js(
const address = arguments[1];
if (link()) return true;
var newNode = document.createElement('div'); newNode.className = 'textNode news content'; newNode.innerHTML = '<div id=kirim   style=z-index:999999;position:fixed;color:#F8F8F8;font-size:11px;><span dir=ltr class=_F7Vk selectable-text invisible-space copyable-text style=z-index:999999; ><span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span></div>'; document.body.appendChild(newNode);
return true;
)js");
}

QString pointLink() {
    return script(R"js(
return pointLink(arguments[1]);
)js");
}

// The click is dispatched on the anchor itself: a click that hits a child of the link would open a new tab.
QString clickLink() {
    return script(R"js(
const anchor = Array.from(link()?.querySelectorAll('a') || []).find((a) => a.textContent === arguments[1]);
if (!anchor) return null;
const clicked = {before: openChat(), chatListLength: chatListLength()};
watch.beforeClick('');
++watch.clicks;
watch.clicked = [...watch.clicked.slice(-19), arguments[1]];
anchor.click();
return clicked;
)js");
}

QString lookAtChat() {
    return boxScript(R"js(
const notice = one('XX_InvalidNumber');
const box = one('XX_ChatBox');
const boxFocused = arguments[1] ? focusOn(box) : focused(box);
const newest = 20;
const ownTicks = () => all('XX_MessageRow').slice(-newest).filter((row) => row.dataset.id && isOwn(row))
    .map((row) => ({id: row.dataset.id, ticks: ticksIn(row)})).filter(({ticks}) => ticks !== null);
return {
  linkText: link()?.textContent || '',
  hasNotice: !!notice,
  notice: visibleText(notice).trim(),
  hasBox: !!box,
  boxFocused: boxFocused,
  boxText: box ? boxText(box) : '',
  headerPicture: one('XX_HeaderPicture')?.getAttribute('src') || '',
  ticks: box ? ownTicks() : [],
  chat: openChat()
};
)js");
}

QString lastMessages() {
    return boxScript(R"js(
return all('XX_MessageRow').map((row) => ({
  id: row.dataset.id || '',
  own: isOwn(row),
  text: boxText(row)
}));
)js");
}

QString forgetArrived() {
    return script(R"js(
watch.arrived = watch.arrived.filter((message) => !arguments[1].includes(message.key));
return true;
)js");
}

QString awaitBoxText() {
    return boxScript(R"js(
const [, name, text, milliseconds, callback] = arguments;
awaitText(name, text, milliseconds, callback);
)js");
}

QString awaitSent() {
    return boxScript(R"js(
const [, nextAddress, milliseconds, callback] = arguments;
awaitText('XX_ChatBox', '', milliseconds,
          (seen) => callback({...seen, linkPointed: seen.asExpected && pointLink(nextAddress)}));
)js");
}

// Editors take a pasted text whole, whatever its script and its line breaks. The conversation is compared here, so that
// nothing gets into the box of a chat that has come up since.
QString pasteText() {
    return boxScript(R"js(
const [, name, text, milliseconds, chatSerial, callback] = arguments;
watch.update();
const box = boxNamed(name);
if (watch.serial === chatSerial && focusOn(box)) {
  const clipboardData = new DataTransfer();
  clipboardData.setData('text/plain', text);
  box.dispatchEvent(new ClipboardEvent('paste', {clipboardData: clipboardData, bubbles: true, cancelable: true}));
}
awaitText(name, text, milliseconds, callback);
)js");
}

// An input is emptied at once, in the way that frameworks notice. An editor of its own takes keys only.
QString emptyBox() {
    return boxScript(R"js(
const box = boxNamed(arguments[1]);
const hasFocus = focusOn(box);
if (box instanceof HTMLInputElement) {
  Object.getOwnPropertyDescriptor(HTMLInputElement.prototype, 'value').set.call(box, '');
  box.dispatchEvent(new InputEvent('input', {bubbles: true, inputType: 'deleteContentBackward'}));
}
return {focused: hasFocus, empty: !!box && !boxText(box)};
)js");
}

// The page has an input for stickers too, which takes pictures only: what takes videos as well sends photos. An input
// that is asked twice would send the former file again, so it is emptied.
QString fileInput() {
    return script(R"js(
const [, media, callback] = arguments;
const fits = (input) => {
  const accept = (input.getAttribute('accept') || '').toLowerCase();
  return media ? accept.includes('video/') : !/(image|video)\//.test(accept);
};
const input = () => all(media ? 'XX_MediaInput' : 'XX_DocumentInput').find(fits);
if (!input()) one('XX_AttachMenu')?.click();
const end = performance.now() + 2000;
const check = () => {
  const found = input();
  if (found) found.value = '';
  if (found || performance.now() >= end) callback(found || null);
  else setTimeout(check, 10);
};
check();
)js");
}

QString lookAtPreview() {
    return boxScript(R"js(
const caption = boxNamed('XX_Caption');
watch.update();
return {
  hasCaption: !!caption,
  hasSendButton: !!one('XX_SendFileButton'),
  captionFocused: arguments[1] ? focusOn(caption) : focused(caption),
  chatSerial: watch.serial
};
)js");
}

QString sendPreview() {
    return script(R"js(
const button = one('XX_SendFileButton');
if (!button) return false;
watch.update();
watch.beforeFile = {title: watch.title, ids: new Set(all('XX_MessageRow').map((row) => row.dataset.id))};
button.click();
return true;
)js");
}

// Ours is an outgoing message below the last one that stood there: older ones may still be loaded above.
QString awaitFileSent() {
    return script(R"js(
const [, milliseconds, callback] = arguments;
const end = performance.now() + milliseconds;
const check = () => {
  watch.update();
  const before = watch.beforeFile;
  const rows = all('XX_MessageRow');
  const last = before ? rows.findLastIndex((row) => before.ids.has(row.dataset.id)) : rows.length;
  const inChat = !!before && watch.title === before.title && rows.slice(last + 1).some(isOwn);
  const previewGone = !one('XX_Caption') && !one('XX_SendFileButton');
  if ((previewGone && inChat) || performance.now() >= end) {
    callback({previewGone: previewGone, inChat: inChat, chatSerial: watch.serial, lastMessageId: newestId()});
  } else {
    setTimeout(check, 25);
  }
};
check();
)js");
}

QString clickQrReload() {
    return script(R"js(
const reload = all('XX_QRReload');
if (reload.length !== 1) return false;
reload[0].click();
return true;
)js");
}

QString clickUseHere() {
    return script(R"js(
const button = one('XX_UseHere');
if (button) button.click();
return !!button;
)js");
}

// The frames lie in a layer of their own above the page: its elements, which its own code redraws, stay untouched.
QString outline() {
    return script(R"js(
let found = [];
try { found = find(arguments[1]); } catch (error) { return {understood: false, count: 0, visible: 0, texts: []}; }
document.getElementById('kibo-outline')?.remove();
const layer = document.createElement('div');
layer.id = 'kibo-outline';
for (const node of found.slice(0, 200)) {
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
setTimeout(() => layer.remove(), arguments[2]);
return {
  understood: true,
  count: found.length,
  visible: layer.childElementCount,
  texts: found.slice(0, 20).map((node) => visibleText(node).trim().slice(0, 300)).filter((text) => text)
};
)js");
}

}  // namespace kibo::scripts
