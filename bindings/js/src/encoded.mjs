// Images whose data is encoded already, as the library takes them.
import { sizeOf } from './bytes.mjs';
import { PdfProfile } from './canvas.mjs';
import { describe, invalid, options, whole } from './errors.mjs';
import { isSmall } from './library.mjs';
import { Source } from './source.mjs';

const COMPRESSIONS = { jpeg: 0, lzw: 1, flate: 2, jpeg2000: 3, none: -1 };
const SPACES = { gray: 0, rgb: 1, cmyk: 2 };
const ICC = 3;
const ROLES = ['background', 'photo', 'mask', 'border', 'clipArt', 'alpha', 'text', 'shape', 'other'];

export function compressionOf(name, call) {
  const compression = COMPRESSIONS[name];
  if (compression !== undefined) return compression;
  throw invalid(`${call}: compression is ${describe(name)}, none of ${Object.keys(COMPRESSIONS).join(', ')}`);
}

export function roleOf(name, call) {
  const role = ROLES.indexOf(name);
  if (role < 0) throw invalid(`${call}: role is ${describe(name)}, none of ${ROLES.join(', ')}`);
  return role;
}

/** { part, options, place }: place(library) puts what describes the image where the module finds it. */
export async function readEncoded(document, call, data, given, more) {
  const o = options(given, ['compression', 'width', 'height', 'bitsPerComponent', 'colorSpace', ...more], call);
  const width = whole(o.width, `${call}: width`, 1, 0x7fffffff), height = whole(o.height, `${call}: height`, 1, 0x7fffffff);
  const bits = whole(o.bitsPerComponent ?? 8, `${call}: bitsPerComponent`, 1, 16);
  const compression = compressionOf(o.compression, call);
  const isProfile = o.colorSpace instanceof PdfProfile;
  const space = isProfile ? ICC : SPACES[o.colorSpace ?? 'rgb'];
  const object = isProfile ? PdfProfile.numberOf(o.colorSpace, document, `${call}: colorSpace`) : 0;
  if (space === undefined) {
    throw invalid(`${call}: colorSpace is ${describe(o.colorSpace)}, neither gray, rgb, cmyk nor a PdfProfile`);
  }
  const part = await readIfSmall(new Source(data, call));
  const place = (library) =>
    library.numbers(Int32Array, [library.data(part), sizeOf(part), compression, width, height, bits, space, object]);
  return { part, place, options: o };
}

/** Small data, to be in memory when it is written; a large Blob stays where it is. */
export const readIfSmall = async (source) => (isSmall(source.part()) ? source.read(0, source.size) : source.part());
