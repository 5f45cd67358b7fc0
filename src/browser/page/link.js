// The planted link. A click on it is taken by the page itself, like a click on a number in a message: the chat opens in
// place.
const link = () => document.getElementById('kirim');
const plantLink = (address) => {
  if (link()) return true;
  const newNode = document.createElement('div'); newNode.className = 'textNode news content'; newNode.innerHTML = '<div id=kirim   style=z-index:999999;position:fixed;color:#F8F8F8;font-size:11px;><span dir=ltr class=_F7Vk selectable-text invisible-space copyable-text style=z-index:999999; ><span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span></div>'; document.body.appendChild(newNode);
  return true;
};
const pointLink = (address) => {
  if (!address || !link()) return false;
  document.getElementById('kirim').innerHTML  = '<span><a style=color:red; href=' + address + ' title=' + address + ' target=_blank rel=noopener noreferrer class=_F7Vk selectable-text invisible-space copyable-text>' + address + '</a></span>';
  return true;
};
// The click is dispatched on the anchor itself: a click that hits a child of the link would open a new tab.
const clickLink = (address) => {
  const anchor = Array.from(link()?.querySelectorAll('a') || []).find((a) => a.textContent === address);
  if (!anchor) return null;
  const clicked = {before: openChat(), chatListLength: chatListLength()};
  beforeClick('');
  ++watch.clicks;
  watch.clicked = [...watch.clicked.slice(1 - shownAtOnce), address];
  anchor.click();
  return clicked;
};
