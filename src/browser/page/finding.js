// Finding by locator. What is found in the whole document stands until the page changes: most looks meet the page as the
// last one left it.
let locators = {};
let found = new Map();
const misunderstood = [];
const findAll = ({xpath, text}, root) => {
  if (!xpath) return Array.from(root.querySelectorAll(text));
  const matches = document.evaluate(text, root, null, XPathResult.ORDERED_NODE_SNAPSHOT_TYPE, null);
  return Array.from({length: matches.snapshotLength}, (_, i) => matches.snapshotItem(i));
};
// `words` describes the texts of those that count: what looks alike may be told by its text alone.
const find = (locator, root = document) => {
  if (locator.words === undefined) return findAll(locator, root);
  locator.pattern ??= patternOf(locator.words);
  return findAll(locator, root).filter((node) => locator.pattern.test(oneLine(visibleText(node))));
};
// What `read` gives, read once for each state of the page.
const once = (name, read) => {
  catchUp();
  if (!found.has(name)) found.set(name, read());
  return found.get(name);
};
const matchesIn = (name, root) => {
  const locator = locators[name];
  if (!locator?.text) return [];
  try { return find(locator, root); } catch (error) {
    if (!misunderstood.includes(name)) misunderstood.push(name);
    return [];
  }
};
const all = (name, root = document) => root === document ? once(name, () => matchesIn(name, root)) : matchesIn(name, root);
const one = (name, root = document) => all(name, root)[0] || null;

// Every change of the page is noticed: those that others listen to, and those that only put an end to what was found.
const listeners = [];
const forgetFound = () => {
  found = new Map();
  listed = null;
};
const tells = (records) => records.some((record) => record.type !== 'attributes' || record.attributeName === 'role');
const observer = new MutationObserver((records) => {
  forgetFound();
  if (tells(records)) listeners.forEach((listener) => listener());
});
// What this script itself, or the page in it, has just changed is not observed before the script ends.
const catchUp = () => {
  const records = observer.takeRecords();
  if (!records.length) return;
  forgetFound();
  if (tells(records)) queueMicrotask(() => listeners.forEach((listener) => listener()));
};
