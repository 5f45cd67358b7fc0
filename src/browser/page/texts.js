// Texts as a person sees them. Direction marks surround names and numbers and say nothing to the reader.
const plain = (text) => text.replace(/[\u061c\u200e\u200f\u202a-\u202e\u2066-\u2069]/g, '').replace(/[\u00a0\u202f]/g, ' ');
const visibleText = (node) => node ? plain(node.innerText ?? node.textContent ?? '') : '';
// What the element store says of a text: several, separated by "|", "*" for anything, in any case.
const patternOf = (described) => {
  const texts = described.split('|').filter(Boolean)
      .map((text) => text.split('*').map((part) => part.replace(/[.+?^${}()[\]\\/]/g, '\\$&')).join('.*'));
  return texts.length ? new RegExp(`^(?:${texts.join('|')})$`, 'isu') : /(?!)/;
};
const oneLine = (text) => text.replace(/\s+/g, ' ').trim();

// An emoji may be drawn as a picture, which innerText passes over. So where there are pictures the text is gathered here,
// line by line as innerText does it; nothing of the page is touched for that.
const isBlock = /^(block|flow-root|flex|grid|list-item|table|-webkit-box)/;
const drawnText = (node) => {
  if (!node?.querySelector?.('img[alt]')) return visibleText(node);
  let text = '';
  let breaks = 0;
  const put = (part) => {
    if (text && breaks) text += '\n'.repeat(breaks);
    breaks = 0;
    text += part;
  };
  const walk = (part, style) => {
    if (part.nodeType === Node.TEXT_NODE) {
      if (style.visibility !== 'visible') return;
      const kept = /^(pre|break)/.test(style.whiteSpace);
      const atBegin = !text || breaks || text.endsWith('\n');
      const data = kept ? part.data : part.data.replace(/[ \t\r\n]+/g, ' ').replace(atBegin ? /^ / : /$^/, '');
      if (data) put(data);
      return;
    }
    if (part.nodeType !== Node.ELEMENT_NODE || part instanceof SVGElement) return;
    const own = getComputedStyle(part);
    if (own.display === 'none') return;
    if (part.tagName === 'BR') {
      put('\n');
      return;
    }
    if (part.tagName === 'IMG') {
      if (part.alt) put(part.alt);
      return;
    }
    const owed = part.tagName === 'P' ? 2 : isBlock.test(own.display) ? 1 : 0;
    breaks = Math.max(breaks, owed);
    part.childNodes.forEach((child) => walk(child, own));
    breaks = Math.max(breaks, owed);
  };
  walk(node, getComputedStyle(node));
  return plain(text);
};
const textOf = (name) => once(`${name} text`, () => drawnText(one(name)).trim());
