// Where a picture goes on its page: arithmetic alone, in points.

const MM = 72 / 25.4;
const SHEETS = {
  A3: [297 * MM, 420 * MM], A4: [210 * MM, 297 * MM], A5: [148 * MM, 210 * MM], Letter: [612, 792], Legal: [612, 1008],
};
const DPI = 96;  // of pictures that do not say
const [LEAST, MOST] = [3, 14400];  // of a page's sides (ISO 32000-1, annex C.2)

/**
 * image: { width, height, resolution } in upright pixels; turn: 0, 90, 180 or 270 degrees clockwise;
 * options: { size, orientation, fit, border in millimetres }. Gives the page's [width, height], what
 * drawImage takes, and the box outside of which nothing is to show, if there is one.
 */
export function layOut(image, turn, { size, orientation, fit, border }) {
  const lies = turn % 180 !== 0;
  const natural = [image.width * 72 / (image.resolution?.x ?? DPI), image.height * 72 / (image.resolution?.y ?? DPI)];
  if (lies) natural.reverse();
  const edge = border * MM;
  const page = SHEETS[size] ? sheet(SHEETS[size], orientation, natural) : around(natural, edge);
  const room = page.map((side) => side - 2 * edge);
  if (Math.min(...room) <= 0) throw new RangeError('The border leaves no room for pictures; choose a smaller one.');
  const scales = room.map((side, i) => side / natural[i]);
  let scale = fit === 'fill' ? Math.max(...scales) : Math.min(...scales);
  if (fit === 'shrink') scale = Math.min(1, scale);
  let [width, height] = natural.map((side) => side * scale);
  if (lies) [width, height] = [height, width];
  const box = { x: (page[0] - width) / 2, y: (page[1] - height) / 2, width, height, rotate: -turn };
  const cut = fit === 'fill' && SHEETS[size] ? [edge, edge, ...room] : undefined;
  return { page, box, cut };
}

function sheet(sides, orientation, natural) {
  const wide = orientation === 'auto' ? natural[0] > natural[1] : orientation === 'landscape';
  return wide ? [sides[1], sides[0]] : [...sides];
}

// Pages have a largest and a smallest size; a picture beyond them is scaled.
function around(natural, edge) {
  const sides = natural.map((side) => side + 2 * edge);
  const scale = Math.min(1, MOST / Math.max(...sides)) * Math.max(1, LEAST / Math.min(...sides));
  return sides.map((side) => Math.min(MOST, Math.max(LEAST, side * scale)));
}
