// The only thing that the page could meet: one function, under a name that is new with each start of the program.
const commands = () => ({
  look, plantLink, pointLink, clickLink, lookAtChat, lastMessages, readUnread, forgetArrived, awaitBoxText, awaitSent, pasteText,
  emptyBox, fileInput, lookAtPreview, sendPreview, awaitFileSent, lookAtSearch, findEntry, watchChatList, readChatList,
  listChats, clickRow, focusSearch, chatListLength, saveMedia, clickQrReload, clickUseHere, outline, report
});
let revision = 0;
const takeLocators = (number, table, stored, opened) => {
  if (!revision) {
    takeKnown(stored, opened);
    listeners.push(updateWatch);
    document.addEventListener('mousedown', onMouseDown, true);
    observer.observe(document, {childList: true, subtree: true, characterData: true, attributes: true});
  }
  revision = number;
  locators = table;
  misunderstood.length = 0;
  ticksAt = null;
  forgetFound();
  return true;
};
// Nothing of ours is left in the page.
const leave = () => {
  observer.disconnect();
  listeners.length = 0;
  document.removeEventListener('mousedown', onMouseDown, true);
  document.querySelector('.textNode > #kirim')?.parentElement.remove();
  document.getElementById(outlineId)?.remove();
  delete window[symbol];
  return true;
};
// A command that would go by other locators than the caller's is refused before it has any effect.
const run = (wanted, serial, clicks, name, ...given) => {
  if (name === 'locators') return takeLocators(wanted, given[0], given[1], given[2]);
  if (name === 'leave') return leave();
  if (wanted !== revision) return 'locators';
  heard = {serial: serial, clicks: clicks};
  const answer = commands()[name](...given);
  return name === 'look' ? lean(answer) : answer;
};
const symbol = Symbol.for(key);
const install = () => {
  if (!window[symbol]) Object.defineProperty(window, symbol, {value: run, configurable: true});
};
