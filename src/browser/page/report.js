// The page without what it says: its elements, and of their texts and attributes no more than kind and length. Whoever
// mends a locator needs the structure, and must not see names, numbers and messages.
const mostLines = 20000;
const namingAttributes = ['role', 'data-icon', 'data-testid', 'id', 'type', 'dir', 'contenteditable'];
const isWord = (text) => /^[a-z]{1,20}(?:-[a-z]{1,20})*$/.test(text);
const kindOfText = (text) => {
  const kind = /^[a-z][a-z0-9+.-]*:|^(?:www\.|\/)/i.test(text) ? 'address' : /^[^\p{L}]*\p{Nd}[^\p{L}]*$/u.test(text) ? 'number' : 'text';
  return `${kind}(${text.length})`;
};
const attributeIn = ({name, value}) => {
  if (name === 'style') return '';
  const shown = name.replace(/\d+/g, '#');
  if (name === 'class') {
    const words = value.split(/\s+/).filter((word) => word.includes('-') && isWord(word));
    return words.length ? `class=${words.join('.')}` : '';
  }
  return namingAttributes.includes(name) && isWord(value) ? `${shown}=${value}` : `${shown}=${kindOfText(value.trim())}`;
};
const skeleton = () => {
  const lines = [];
  const walk = (node, depth) => {
    if (lines.length >= mostLines) return;
    const indent = ' '.repeat(depth);
    if (node.nodeType === Node.TEXT_NODE && node.data.trim()) lines.push(`${indent}"${kindOfText(node.data.trim())}"`);
    if (node.nodeType !== Node.ELEMENT_NODE || /^(script|style)$/.test(node.localName)) return;
    const attributes = Array.from(node.attributes, attributeIn).filter(Boolean);
    lines.push(indent + [node.localName, ...attributes].join(' '));
    node.childNodes.forEach((child) => walk(child, depth + 1));
  };
  walk(document.body, 0);
  return lines;
};
// Locators that begin at a row are counted in the rows in sight.
const matchCounts = () => Object.entries(locators).map(([name, locator]) => {
  const roots = /^\.\.?\//.test(locator.text) ? [...chatRows().slice(0, 40), ...all('XX_MessageRow')] : [document];
  return `${name} ${roots.reduce((count, root) => count + matchesIn(name, root).length, 0)}`;
});
const report = () => ({lines: [
  `language ${document.documentElement.lang || 'unknown'}, direction ${document.documentElement.dir || 'unknown'}, asked for ${navigator.language}`,
  '', 'Matches of the locators', ...matchCounts(), '', 'Elements', ...skeleton()
]});
