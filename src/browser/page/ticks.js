// What is drawn beside a message of ours: 0 a clock, 1 and 2 ticks, 3 blue ones; null: nothing that is known.
// In every theme the grey of a tick has about as much red as blue.
const isBlue = (node) => {
  const drawn = node.nodeType === Node.ELEMENT_NODE ? node : node.ownerElement || node.parentElement;
  const [red, , blue] = (getComputedStyle(drawn).color.match(/[\d.]+/g) || []).map(Number);
  return blue - red > 60;
};
const ticksIn = (row) => {
  const two = one('XX_TickTwo', row);
  if (one('XX_TickRead', row) || (two && isBlue(two))) return 3;
  if (two) return 2;
  if (one('XX_TickOne', row)) return 1;
  return one('XX_TickClock', row) ? 0 : null;
};
