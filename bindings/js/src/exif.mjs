// Orientation and resolution of EXIF data (a TIFF directory).
import { startsWith } from './bytes.mjs';

const ORIENTATION = 0x0112, X_RESOLUTION = 0x011a, Y_RESOLUTION = 0x011b, UNIT = 0x0128;
const SHORT = 3, LONG = 4, RATIONAL = 5;

/** { orientation: 1 to 8, resolution: { x, y } in dots per inch, or undefined }. */
export function readExif(tiff) {
  const facts = { orientation: 1, resolution: undefined };
  const little = startsWith(tiff, 'II');
  if ((!little && !startsWith(tiff, 'MM')) || tiff.length < 8) return facts;
  const view = new DataView(tiff.buffer, tiff.byteOffset, tiff.byteLength);
  const directory = view.getUint32(4, little);
  if (view.getUint16(2, little) !== 42 || directory + 2 > tiff.length) return facts;
  let x = 0, y = 0, unit = 2;  // inches, unless it says otherwise
  const entries = view.getUint16(directory, little);
  for (let i = 0; i < entries; ++i) {
    const at = directory + 2 + 12 * i;
    if (at + 12 > tiff.length) break;
    const [tag, type] = [view.getUint16(at, little), view.getUint16(at + 2, little)];
    if (view.getUint32(at + 4, little) !== 1) continue;
    const number = numberAt(view, at, type, little);
    if (number === undefined) continue;
    if (tag === ORIENTATION && type !== RATIONAL && number >= 1 && number <= 8) facts.orientation = number;
    if (tag === UNIT && type !== RATIONAL) unit = number;
    if (tag === X_RESOLUTION) x = number;
    if (tag === Y_RESOLUTION) y = number;
  }
  const inches = unit === 2 ? 1 : unit === 3 ? 2.54 : 0;
  facts.resolution = known(x * inches, y * inches);
  return facts;
}

function numberAt(view, entry, type, little) {
  if (type === SHORT) return view.getUint16(entry + 8, little);
  const value = view.getUint32(entry + 8, little);
  if (type === LONG) return value;
  if (type !== RATIONAL || value + 8 > view.byteLength) return undefined;
  const below = view.getUint32(value + 4, little);
  return below === 0 ? 0 : view.getUint32(value, little) / below;
}

/** A resolution that says something, else undefined. */
export const known = (x, y) => (x > 0 && y > 0 ? { x, y } : undefined);
