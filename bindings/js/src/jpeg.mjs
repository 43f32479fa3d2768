// JPEG: what PDF has to be told of a file that goes into it byte for byte.
import { be16, concat, startsWith } from './bytes.mjs';
import { cutOff, damaged, unsupported } from './errors.mjs';
import { known, readExif } from './exif.mjs';

const SOI = 0xd8, EOI = 0xd9, SOS = 0xda, TEM = 0x01, RST0 = 0xd0, RST7 = 0xd7, COM = 0xfe;
const APP0 = 0xe0, APP1 = 0xe1, APP2 = 0xe2, APP14 = 0xee, APP15 = 0xef;
const NO_FRAME = [0xc4, 0xc8, 0xcc];  // between the frame headers: tables

export const isJpeg = (head) => head[0] === 0xff && head[1] === SOI && head[2] === 0xff;

/**
 * The facts of a JPEG file: { width, height, components, inverted, transform, orientation,
 * resolution, profile, part }. part is the file, or as much of it as belongs to its first picture.
 */
export async function readJpeg(source) {
  const facts = await readSegments(source);
  const { sof } = facts;
  if (!sof || !facts.scan) throw damaged('a JPEG file without a picture; save or export it again');
  const components = sof[5];
  if (sof.length < 6 || sof.length < 6 + 3 * components) throw cutOff();
  checkKind(facts.frame, sof[0], components);
  const [width, height] = [be16(sof, 3), be16(sof, 1)];
  if (width === 0 || height === 0) {
    throw damaged(`the picture has no pixels (${width} x ${height}); the file is damaged, save it again`);
  }
  const named = components === 3 && sof[6] === 0x52 && sof[9] === 0x47 && sof[12] === 0x42;  // R, G, B
  return {
    width, height, components,
    inverted: facts.adobe,
    // Without the Adobe marker readers take three components for YCbCr; these say that they are not.
    rgbByName: named && !facts.adobe,
    orientation: facts.orientation,
    resolution: facts.jfif ?? facts.resolution,
    profile: joinProfile(facts.chunks),
    part: source.part(0, await findEnd(source, facts)),
  };
}

function checkKind(frame, depth, components) {
  if (frame === 0xc9 || frame === 0xca) {
    throw unsupported('a JPEG with arithmetic coding, which PDF does not know; save it as an ordinary JPEG');
  }
  if (frame > 0xc2 || depth !== 8) {
    throw unsupported(`a JPEG of a rare kind (lossless, hierarchical or ${depth}-bit) that PDF readers ` +
      'cannot show; save it as an ordinary 8-bit JPEG or as PNG');
  }
  if (![1, 3, 4].includes(components)) {
    throw unsupported(`a JPEG of ${components} colour components; save it as grey, RGB or CMYK`);
  }
}

// Walks over the marker segments as decoders do: bytes between them are passed over.
async function readSegments(source) {
  const facts = { frame: 0, sof: undefined, scan: 0, adobe: false, orientation: 1, chunks: [] };
  for (let at = 2; !facts.scan;) {
    const mark = source.held(at, 4) ?? await source.read(at, 4);
    if (mark.length < 2) throw cutOff();
    if (mark[0] !== 0xff || mark[1] === 0 || mark[1] === 0xff) {
      ++at;
      continue;
    }
    const marker = mark[1];
    at += 2;
    if (marker === EOI) break;
    if (marker === TEM || (marker >= RST0 && marker <= SOI)) continue;
    if (mark.length < 4) throw cutOff();
    const size = be16(mark, 2);
    const isComment = (marker >= APP0 && marker <= APP15) || marker === COM;
    if (size < 2 && !isComment) throw damaged('a JPEG segment without its length; save the picture again');
    const length = Math.max(size, 2);
    const data = source.held(at + 2, length - 2) ?? await source.read(at + 2, length - 2);
    if (data.length !== length - 2) throw cutOff();
    at += length;
    readSegment(marker, data, facts, at);
  }
  return facts;
}

function readSegment(marker, data, facts, end) {
  if (marker === SOS) {
    facts.scan = end;
  } else if (marker === APP0 && startsWith(data, 'JFIF\0') && data.length >= 12) {
    const inches = data[7] === 1 ? 1 : data[7] === 2 ? 2.54 : 0;
    facts.jfif = known(be16(data, 8) * inches, be16(data, 10) * inches);
  } else if (marker === APP1 && startsWith(data, 'Exif\0') && data.length > 6) {
    Object.assign(facts, readExif(data.subarray(6)));
  } else if (marker === APP2 && startsWith(data, 'ICC_PROFILE\0') && data.length > 14) {
    facts.chunks.push({ number: data[12], count: data[13], data: data.slice(14) });
  } else if (marker === APP2 && startsWith(data, 'MPF\0')) {
    facts.firstSize = firstPicture(data.subarray(4));
  } else if (marker === APP14 && startsWith(data, 'Adobe') && data.length >= 12) {
    facts.adobe = true;
  } else if (marker >= 0xc0 && marker <= 0xcf && !NO_FRAME.includes(marker)) {
    if (facts.frame) throw damaged('a file with two JPEG frames; save the picture again');
    facts.frame = marker;
    facts.sof = data.slice();
  }
}

// The size of the first picture of a multi-picture file, 0 where its index cannot be read.
function firstPicture(index) {
  if (index.length < 8) return 0;
  const view = new DataView(index.buffer, index.byteOffset, index.byteLength);
  const little = startsWith(index, 'II');
  const directory = view.getUint32(4, little);
  if (directory + 2 > index.length) return 0;
  for (let at = directory + 2, i = view.getUint16(directory, little); i > 0; --i, at += 12) {
    if (at + 12 > index.length) return 0;
    if (view.getUint16(at, little) !== 0xb002) continue;
    const entries = view.getUint32(at + 8, little);
    return entries + 8 <= index.length ? view.getUint32(entries + 4, little) : 0;
  }
  return 0;
}

const isEnd = (bytes) => bytes.length === 2 && bytes[0] === 0xff && bytes[1] === EOI;

// Where the picture ends: behind the EOI marker that belongs to it. Where the file, or the first
// picture by the file's own index, ends in one, that is it; else the scans are searched.
async function findEnd(source, facts) {
  const { firstSize } = facts;
  if (!firstSize && isEnd(await source.lastTwo())) return source.size;
  if (firstSize && firstSize <= source.size && isEnd(await source.read(firstSize - 2, 2, 2))) return firstSize;
  const WINDOW = 1 << 20;
  for (let at = facts.scan; ;) {
    const bytes = await source.read(at, WINDOW, WINDOW);
    if (bytes.length < 2) throw cutOff();
    let i = bytes.indexOf(0xff);  // at a marker, or at an FF of the data
    while (i >= 0 && i + 1 < bytes.length) {
      const marker = bytes[i + 1];
      if (marker === EOI) return at + i + 2;
      const isData = marker === 0 || marker === 0xff || (marker >= RST0 && marker <= RST7);
      if (!isData && i + 4 > bytes.length) break;
      i = bytes.indexOf(0xff, isData ? i + 1 : i + 2 + be16(bytes, i + 2));  // over tables, too
    }
    if (bytes.length < WINDOW && i < 0) throw cutOff();
    if (i === 0) throw cutOff();
    at += i > 0 ? i : bytes.length;  // a marker at the window's end is looked at again
  }
}

// The profile of its chunks in the order of their numbers; undefined unless all are there.
function joinProfile(chunks) {
  if (chunks.length === 0 || chunks.some((chunk) => chunk.count !== chunks.length)) return undefined;
  const sorted = [...chunks].sort((a, b) => a.number - b.number);
  if (sorted.some((chunk, i) => chunk.number !== i + 1)) return undefined;
  return concat(sorted.map((chunk) => chunk.data));
}
