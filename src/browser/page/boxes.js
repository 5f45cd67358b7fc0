// The boxes that are typed into. A box's text is as the editor means it: emoji may be drawn as pictures, lines as blocks
// or breaks.
const boxNamed = (name) => { const node = one(name); return node?.closest('[contenteditable=true]') || node; };
const boxText = (box) => {
  let text = box.value || '';
  const walk = (node) => {
    if (node.nodeType === Node.TEXT_NODE) text += node.data;
    if (node.nodeType !== Node.ELEMENT_NODE) return;
    if (node.tagName === 'BR') { if (node.nextSibling) text += '\n'; return; }  // the last one only fills its block
    if (node.tagName === 'IMG') { text += node.dataset.plainText || node.alt || ''; return; }
    if (/^(P|DIV)$/.test(node.tagName) && node.previousSibling) text += '\n';
    node.childNodes.forEach(walk);
  };
  box.childNodes.forEach(walk);
  return text.replace(/\u00a0/g, ' ');
};
const focused = (box) => !!box && (document.activeElement === box || box.contains(document.activeElement));
const focusOn = (box) => { if (box && !focused(box)) { box.click(); box.focus(); } return focused(box); };
// The editor applies input asynchronously, so the page itself is asked to wait: one command instead of many looks. A
// change of the page ends the wait at once; the timer is for boxes whose text is no part of the page, and a window that
// is hidden may hold it back for a second.
const awaitBoxText = (name, text, milliseconds) => new Promise((answer) => {
  const end = performance.now() + milliseconds;
  let answered = false;
  const check = () => {
    if (answered) return;
    const box = boxNamed(name);
    const asExpected = !!box && boxText(box).trim() === text.trim();
    if (!asExpected && performance.now() < end) return;
    answered = true;
    changes.disconnect();
    clearInterval(timer);
    updateWatch();
    answer({asExpected: asExpected, chatSerial: watch.serial, lastMessageId: newestId()});
  };
  const changes = new MutationObserver(check);
  changes.observe(document, {childList: true, subtree: true, characterData: true});
  const timer = setInterval(check, 10);
  check();
});
const awaitSent = async (nextAddress, milliseconds) => {
  const seen = await awaitBoxText('XX_ChatBox', '', milliseconds);
  return {...seen, linkPointed: seen.asExpected && pointLink(nextAddress)};
};
// Editors take a pasted text whole, whatever its script and its line breaks. The conversation is compared here, so that
// nothing gets into the box of a chat that has come up since.
const pasteText = (name, text, milliseconds, chatSerial) => {
  updateWatch();
  const box = boxNamed(name);
  if (watch.serial === chatSerial && focusOn(box)) {
    const clipboardData = new DataTransfer();
    clipboardData.setData('text/plain', text);
    box.dispatchEvent(new ClipboardEvent('paste', {clipboardData: clipboardData, bubbles: true, cancelable: true}));
  }
  return awaitBoxText(name, text, milliseconds);
};
// An input is emptied at once, in the way that frameworks notice. An editor of its own takes keys only.
const emptyBox = (name) => {
  const box = boxNamed(name);
  const hasFocus = focusOn(box);
  if (box instanceof HTMLInputElement) {
    Object.getOwnPropertyDescriptor(HTMLInputElement.prototype, 'value').set.call(box, '');
    box.dispatchEvent(new InputEvent('input', {bubbles: true, inputType: 'deleteContentBackward'}));
  }
  return {focused: hasFocus, empty: !!box && !boxText(box)};
};
