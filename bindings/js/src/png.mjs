// PNG: its compressed rows are what PDF calls Flate with predictor 15, so they go into the file as
// they are. Rows with alpha cannot: PDF keeps the alpha in a picture of its own.
import { be16, be32, startsWith } from './bytes.mjs';
import { cutOff, damaged } from './errors.mjs';
import { known, readExif } from './exif.mjs';
import { inflated } from './inflate.mjs';
import { QUESTION } from './platform.mjs';

const SIGNATURE = '\x89PNG\r\n\x1a\n';
const GRAY = 0, RGB = 2, PALETTE = 3, GRAY_ALPHA = 4, RGB_ALPHA = 6;
const SAMPLES = { [GRAY]: 1, [RGB]: 3, [PALETTE]: 1, [GRAY_ALPHA]: 2, [RGB_ALPHA]: 4 };
const DEPTHS = {
  [GRAY]: [1, 2, 4, 8, 16], [RGB]: [8, 16], [PALETTE]: [1, 2, 4, 8], [GRAY_ALPHA]: [8, 16], [RGB_ALPHA]: [8, 16],
};
const MOST_PROFILE = 1 << 24;
const WINDOW = 1 << 20;
const MOST_HEADS = 1000;  // asked for at once

export const isPng = (head) => startsWith(head, SIGNATURE);

/**
 * What a PNG file says outside of its pixels, and where those are: { width, height, depth, type,
 * interlaced, palette, transparency, profile, orientation, resolution, data: [[begin, end]] }.
 * With check, the whole file is read, and each chunk held against its checksum.
 */
export async function readPng(source, check) {
  const facts = { orientation: 1, data: [] };
  let at = SIGNATURE.length, length = 0, heads = new Map();
  for (let name = ''; name !== 'IEND'; at += 12 + length) {
    const isNear = length < QUESTION;  // then it is read with what stands in between
    if (name === 'IDAT' && !isNear && !heads.has(at)) heads = await likelyHeads(source, at, length);
    const head = heads.get(at) ?? await source.read(at, 8, name === 'IDAT' && isNear ? WINDOW : undefined);
    if (head.length < 8) throw cutOff();
    length = be32(head, 0);
    name = String.fromCharCode(...head.subarray(4, 8));
    if (at + 12 + length > source.size) throw cutOff();
    if (at === SIGNATURE.length && (name !== 'IHDR' || length !== 13)) {
      throw damaged('a PNG file must begin with its header; save the picture again');
    }
    if (check) await checkSum(source, at, length, name);
    if (name === 'IDAT') {
      if (length > 0) facts.data.push([at + 8, at + 8 + length]);
    } else if (CHUNKS[name]) {
      CHUNKS[name](facts, (await source.read(at + 8, length)).slice());
    }
  }
  checkHeader(facts);
  return facts;
}

// Writers cut the pixels into pieces of one size, as a rule: the heads that stand where the next ones are then, and
// that of an empty chunk at the end. A guess that is wrong is not reached.
async function likelyHeads(source, first, length) {
  const places = [], end = source.size - 12;
  for (let at = first; at < end && places.length < MOST_HEADS; at += 12 + length) places.push(at);
  places.push(end);
  const found = await source.gather(places, 8);
  return new Map(found.map((head, i) => [places[i], head]));
}

const CHUNKS = {
  IHDR(facts, chunk) {
    [facts.width, facts.height] = [be32(chunk, 0), be32(chunk, 4)];
    [facts.depth, facts.type, facts.interlaced] = [chunk[8], chunk[9], chunk[12] !== 0];
  },
  PLTE(facts, chunk) { facts.palette = chunk; },
  tRNS(facts, chunk) { facts.transparency = chunk; },
  iCCP(facts, chunk) { facts.profile = chunk.subarray(chunk.indexOf(0) + 2); },
  eXIf(facts, chunk) {
    const exif = readExif(chunk);
    facts.orientation = exif.orientation;
    facts.resolution ??= exif.resolution;
  },
  pHYs(facts, chunk) {
    if (chunk.length !== 9 || chunk[8] !== 1) return;  // 1: pixels per metre
    // 300 dpi is 11811.02 pixels per metre, of which the file keeps the whole ones.
    const dpi = [be32(chunk, 0), be32(chunk, 4)].map((perMetre) => {
      const exact = perMetre * 0.0254, near = Math.round(exact);
      return Math.abs(exact - near) <= 0.0127 ? near : exact;
    });
    facts.resolution = known(...dpi) ?? facts.resolution;
  },
};

function checkHeader({ width, height, depth, type, palette, data }) {
  if (!DEPTHS[type]?.includes(depth)) {
    throw damaged(`a PNG header with ${depth} bits of type ${type}; save the picture again`);
  }
  if (width === 0 || height === 0 || Math.max(width, height) > 0x7fffffff) {
    throw damaged(`the picture claims ${width} x ${height} pixels; the file is damaged, save it again`);
  }
  if (data.length === 0) throw damaged('a PNG file without pixels; save or export it again');
  if (type === PALETTE && !palette?.length) throw damaged('a PNG file without its palette; save it again');
}

async function checkSum(source, at, length, name) {
  let sum = 0xffffffff;
  for (let done = -4; done < length; done += WINDOW) {
    const chunk = await source.read(at + 8 + done, Math.min(WINDOW, length - done), WINDOW);
    for (const byte of chunk) sum = CRC[(sum ^ byte) & 0xff] ^ (sum >>> 8);
  }
  if ((~sum >>> 0) !== be32(await source.read(at + 8 + length, 4), 0)) {
    throw damaged(`the file was damaged on its way (the chunk ${name} at byte ${at} does not have its checksum); ` +
      'copy it again from its source');
  }
}

const CRC = Uint32Array.from({ length: 256 }, (_, n) => {
  for (let bit = 0; bit < 8; ++bit) n = n & 1 ? 0xedb88320 ^ (n >>> 1) : n >>> 1;
  return n;
});

/** Whether the picture has to be unpacked. */
export const takesPixels = ({ type, interlaced, transparency }) =>
  interlaced || type === GRAY_ALPHA || type === RGB_ALPHA || (type === PALETTE && transparency !== undefined);

/**
 * The picture as PDF has it: { bits, space: 'gray', 'rgb' or an array's text, predictor: the number
 * of samples a pixel has in its rows, parts, mask: colour key or undefined, alpha: the rows of a
 * grey picture or undefined }.
 */
export async function packPng(source, facts) {
  const { type, depth, palette, transparency } = facts;
  if (type === GRAY_ALPHA || type === RGB_ALPHA) return splitAlpha(source, facts);
  const packed = {
    bits: depth, samples: SAMPLES[type],
    space: type === GRAY ? 'gray' : 'rgb',
    parts: facts.data.map(([begin, end]) => source.part(begin, end)),
  };
  if (type === PALETTE) {
    const count = Math.min(Math.floor(palette.length / 3), 1 << depth);
    const hex = Array.from(palette.subarray(0, 3 * count), (byte) => byte.toString(16).padStart(2, '0')).join('');
    packed.space = (base) => `[/Indexed ${base} ${count - 1} <${hex}>]`;
    if (transparency) Object.assign(packed, await paletteMask(source, facts));
  } else if (transparency?.length >= 2 * packed.samples) {
    const key = Array.from({ length: packed.samples }, (_, i) => be16(transparency, 2 * i) & ((1 << depth) - 1));
    packed.mask = key.flatMap((value) => [value, value]);
  }
  return packed;
}

// Where the entries without any alpha stand side by side and all others are opaque, their range is a
// colour key; else each pixel gets the alpha of its entry.
async function paletteMask(source, facts) {
  const { depth, width, height, transparency } = facts;
  const clear = [...transparency.keys()].filter((i) => transparency[i] === 0);
  if (transparency.every((alpha) => alpha === 0 || alpha === 255)) {
    if (clear.length === 0) return {};
    const [first, last] = [clear[0], clear[clear.length - 1]];
    if (last - first + 1 === clear.length) return { mask: [first, last] };
  }
  const rows = await unfiltered(source, facts);
  const alpha = new Uint8Array(width * height);
  const stride = rowBytes(facts);
  for (let y = 0, to = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x, ++to) {
      const shift = 8 - depth - ((x * depth) & 7);
      const index = (rows[y * stride + ((x * depth) >> 3)] >> shift) & ((1 << depth) - 1);
      alpha[to] = index < transparency.length ? transparency[index] : 255;
    }
  }
  return { alpha };
}

async function splitAlpha(source, facts) {
  const { type, depth, width, height } = facts;
  const bytes = depth / 8, samples = SAMPLES[type] - 1;
  const rows = await unfiltered(source, facts);
  const pixels = new Uint8Array(width * height * samples * bytes), alpha = new Uint8Array(width * height * bytes);
  let from = 0, to = 0, toAlpha = 0;
  while (from < rows.length) {
    for (let i = samples * bytes; i > 0; --i) pixels[to++] = rows[from++];
    for (let i = bytes; i > 0; --i) alpha[toAlpha++] = rows[from++];
  }
  const opaque = alpha.every((byte) => byte === 255);
  return { bits: depth, samples, space: samples === 1 ? 'gray' : 'rgb', pixels, alpha: opaque ? undefined : alpha };
}

const rowBytes = ({ type, depth, width }) => Math.ceil((width * depth * SAMPLES[type]) / 8);

// The rows as they were before PNG's filters.
async function unfiltered(source, facts) {
  const { type, depth, height } = facts;
  const stride = rowBytes(facts), step = Math.max(1, (depth * SAMPLES[type]) / 8);
  const size = (stride + 1) * height;
  const stored = facts.data.reduce((sum, [begin, end]) => sum + end - begin, 0);
  // Bytes deflate to no less than about a thousandth: found before memory is taken for a lie.
  if (size / 1100 > stored) {
    throw damaged(`the file is too small for its ${facts.width} x ${height} pixels; it is damaged, save it again`);
  }
  const raw = await inflated(facts.data.map(([begin, end]) => source.part(begin, end)), size);
  if (raw.length < size) throw cutOff();
  const rows = new Uint8Array(stride * height);
  for (let y = 0; y < height; ++y) unfilterRow(raw, y * (stride + 1), rows, y * stride, stride, step, y > 0);
  return rows;
}

function unfilterRow(raw, from, rows, to, stride, step, hasAbove) {
  const filter = raw[from++];
  if (filter > 4) throw damaged(`a PNG row has the filter ${filter}, which there is not; save the picture again`);
  for (let x = 0; x < stride; ++x) {
    const left = x >= step ? rows[to + x - step] : 0;
    const above = hasAbove ? rows[to + x - stride] : 0;
    const corner = hasAbove && x >= step ? rows[to + x - stride - step] : 0;
    rows[to + x] = raw[from + x] + predicted(filter, left, above, corner);
  }
}

function predicted(filter, left, above, corner) {
  if (filter === 1) return left;
  if (filter === 2) return above;
  if (filter === 3) return (left + above) >> 1;
  if (filter === 0) return 0;
  const byLeft = Math.abs(above - corner), byAbove = Math.abs(left - corner);
  const byCorner = Math.abs(left + above - 2 * corner);
  if (byLeft <= byAbove && byLeft <= byCorner) return left;
  return byAbove <= byCorner ? above : corner;
}

/** Rows with the filter "up" before each, which makes photographs smaller when they are compressed. */
export function filteredUp(rows, stride) {
  const height = rows.length / stride;
  const filtered = new Uint8Array((stride + 1) * height);
  for (let y = 0, to = 0; y < height; ++y) {
    filtered[to++] = 2;
    const from = y * stride;
    for (let x = from; x < from + stride; ++x) filtered[to++] = rows[x] - (y > 0 ? rows[x - stride] : 0);
  }
  return filtered;
}

/** The profile of an iCCP chunk, unpacked. */
export async function pngProfile(facts) {
  if (!facts.profile?.length) return undefined;
  try {
    return await inflated([facts.profile], MOST_PROFILE);
  } catch {
    return undefined;  // a damaged profile is left out, as a picture is not worth less without
  }
}
