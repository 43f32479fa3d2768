// JPEG 2000: plain grey and RGB files go into the PDF byte for byte.
import { be16, be32, startsWith } from './bytes.mjs';
import { cutOff, damaged, unsupported } from './errors.mjs';
import { known, readExif } from './exif.mjs';

const SIGNATURE = '\0\0\0\x0cjP  \r\n\x87\n';
const CODESTREAM = '\xff\x4f\xff\x51';
const GRAY = 17, RGB = 16, CMYK = 12;
const EXIF = ['JpgTiffExif->JP2', '\x05\x37\xcd\xab\x9d\x0c\x44\x31\xa7\x2a\xfa\x56\x1f\x2a\x11\x3e'];

export const isJp2 = (head) => startsWith(head, SIGNATURE) || startsWith(head, CODESTREAM);

/** { width, height, components, orientation, resolution } of a JP2 file that readers agree about. */
export async function readJp2(source) {
  const facts = { orientation: 1 };
  for await (const box of boxes(source, 0, source.size)) {
    if (box.type === 'jp2h') await readHeader(source, box, facts);
    if (box.type === 'uuid') await readUuid(source, box, facts);
    if (box.type === 'jp2c') facts.codestream ??= await source.read(box.begin, 42);
  }
  if (!facts.size) {
    throw unsupported('a JPEG 2000 codestream without the header of a JP2 file; save it as .jp2');
  }
  if (!facts.codestream) throw cutOff();
  checkKind(facts);
  return facts;
}

async function* boxes(source, begin, end) {
  for (let at = begin; at + 8 <= end;) {
    const head = await source.read(at, 16);
    let size = be32(head, 0), headSize = 8;
    if (size === 1 && head.length === 16) [size, headSize] = [be32(head, 8) * 2 ** 32 + be32(head, 12), 16];
    if (size === 0) size = end - at;
    if (startsWith(head, CODESTREAM)) return;
    if (size < headSize || size > end - at) throw cutOff();
    yield { type: String.fromCharCode(...head.subarray(4, 8)), begin: at + headSize, end: at + size };
    at += size;
  }
}

async function readHeader(source, header, facts) {
  for await (const box of boxes(source, header.begin, header.end)) {
    const data = (await source.read(box.begin, box.end - box.begin)).slice();
    if (box.type === 'ihdr' && data.length === 14) facts.size = data;
    if (box.type === 'colr') readColour(data, facts);
    if (box.type === 'pclr') facts.palette = true;
    if (box.type === 'cdef') readChannels(data, facts);
    if (box.type === 'res ') facts.resolution = await readResolution(source, box);
  }
}

function readColour(data, facts) {
  if (facts.space !== undefined || data.length < 7) return;  // the first that is known counts
  if (data[0] === 1) facts.space = be32(data, 3);
  const byProfile = { GRAY, 'RGB ': RGB, CMYK };
  if (data[0] === 2 && data.length > 23) facts.space = byProfile[String.fromCharCode(...data.subarray(19, 23))];
}

function readChannels(data, facts) {
  for (let at = 2; at + 6 <= data.length; at += 6) {
    const [channel, kind, use] = [be16(data, at), be16(data, at + 2), be16(data, at + 4)];
    if (kind !== 0) facts.alpha = true;
    else if (use !== channel + 1) facts.reordered = true;
  }
}

async function readResolution(source, parent) {
  let found;
  for await (const box of boxes(source, parent.begin, parent.end)) {
    if ((box.type !== 'resd' && box.type !== 'resc') || (box.type === 'resc' && found)) continue;
    const d = await source.read(box.begin, 10);  // vertical first, as fractions and exponents, per metre
    if (d.length < 10) continue;
    const signed = (byte) => (byte << 24) >> 24;
    const perInch = (at, exponent) => (0.0254 * be16(d, at) / be16(d, at + 2)) * 10 ** signed(d[exponent]);
    found = known(perInch(4, 9), perInch(0, 8));
  }
  return found;
}

async function readUuid(source, box, facts) {
  const data = await source.read(box.begin, box.end - box.begin);
  if (!EXIF.some((identity) => startsWith(data, identity))) return;
  const exif = data.subarray(16);
  const { orientation, resolution } = readExif(startsWith(exif, 'Exif\0\0') ? exif.subarray(6) : exif);
  facts.orientation = orientation;
  facts.resolution ??= resolution;
}

function checkKind(facts) {
  const { size, codestream, space } = facts;
  if (codestream.length < 42 || !startsWith(codestream, CODESTREAM)) throw cutOff();
  [facts.height, facts.width, facts.components] = [be32(size, 0), be32(size, 4), be16(size, 8)];
  const [right, bottom, left, top] = [8, 12, 16, 20].map((at) => be32(codestream, at));
  if (facts.width !== right - left || facts.height !== bottom - top || facts.width === 0 || facts.height === 0) {
    throw damaged('its two JPEG 2000 headers are of different pictures; save it again');
  }
  const plain = (space === GRAY && facts.components === 1) || (space === RGB && facts.components === 3);
  const why = facts.alpha ? 'with alpha' : facts.palette ? 'with a palette'
    : !plain || facts.reordered ? 'that is neither plain grey nor plain RGB'
      : size[10] !== 7 ? 'of other than 8 bits' : '';
  if (why) throw unsupported(`JPEG 2000 ${why}, which PDF readers show differently; save it as PNG`);
}
