// Units, and sizes of sheets.
import { describe, finite, invalid } from './errors.mjs';

// Points in each unit; the metric ones as the library has them, for files that agree to the byte.
const UNITS = { pt: 1, in: 72, cm: 28.346456692944, mm: 2.8346456692944 };
const MM = UNITS.mm;
const SIZES = {
  A3: [297 * MM, 420 * MM], A4: [210 * MM, 297 * MM], A5: [148 * MM, 210 * MM], Letter: [612, 792], Legal: [612, 1008],
};

/** Points in a unit, which may be their number. */
export function pointsIn(given, call) {
  const unit = given === undefined ? 1 : UNITS[given] ?? finite(given, `${call}: unit`);
  if (unit <= 0) throw invalid(`${call}: unit is ${unit} points; it takes more than 0`);
  return unit;
}

/** [left, bottom, width, height] of a size in a unit of so many points. */
export function boxOf(size, unit, what) {
  const named = typeof size === 'string' ? SIZES[size]?.map((points) => points / unit) : size;
  if (!Array.isArray(named) || (named.length !== 2 && named.length !== 4)) {
    throw invalid(`${what} is ${describe(size)}, not [width, height], [left, bottom, width, height] or one of ` +
      Object.keys(SIZES).join(', '));
  }
  named.forEach((side) => finite(side, what));
  const box = named.length === 2 ? [0, 0, ...named] : [...named];
  if (!(box[2] > 0 && box[3] > 0)) throw invalid(`${what} is ${box[2]} x ${box[3]}, but both have to be more than 0`);
  return box;
}
