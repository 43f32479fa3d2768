// Pictures into documents: from the header of a file to what is written of it.
import { canDecode, decode, draw, isDrawable } from './decode.mjs';
import { damaged, invalid, unsupported, whole } from './errors.mjs';
import { isRgbProfile } from './icc.mjs';
import { isJp2, readJp2 } from './jp2.mjs';
import { isJpeg, readJpeg } from './jpeg.mjs';
import { filteredUp, isPng, packPng, pngProfile, readPng, takesPixels } from './png.mjs';
import { deflated } from './platform.mjs';
import { opened } from './source.mjs';

const DEVICE = { 1: '/DeviceGray', 3: '/DeviceRGB', 4: '/DeviceCMYK' };
const SIGNATURE = 64;  // bytes that tell what a file is

/** Each gives what a document writes of the picture: its facts, the entries of its stream, and the data. */
export async function planJpeg(source) {
  source.lookAhead();
  if (!isJpeg(await source.read(0, SIGNATURE))) throw invalid('embedJpeg: this is no JPEG file');
  const jpeg = await readJpeg(source);
  const rgb = jpeg.components === 3;
  return {
    facts: jpeg,
    profile: rgb && jpeg.profile && isRgbProfile(jpeg.profile) ? jpeg.profile : undefined,
    filter: '/DCTDecode', bits: 8, space: DEVICE[jpeg.components],
    // Files with an Adobe marker hold their inks inverted.
    more: [
      ...(jpeg.components === 4 && jpeg.inverted ? [['/Decode', '[1 0 1 0 1 0 1 0]']] : []),
      ...(jpeg.rgbByName ? [['/DecodeParms', [['/ColorTransform', 0]]]] : []),
    ],
    parts: [jpeg.part],
  };
}

export async function planPng(source, { check = false } = {}) {
  if (!isPng(await source.read(0, SIGNATURE))) throw invalid('embedPng: this is no PNG file');
  const facts = await readPng(source, check);
  return takesPixels(facts) ? alone(() => planRows(source, facts)) : planRows(source, facts);
}

async function planRows(source, facts) {
  if (facts.interlaced) return planByBrowser(source, 0, facts);
  const packed = await packPng(source, facts);
  const profile = packed.samples === 1 && typeof packed.space !== 'function' ? undefined : await pngProfile(facts);
  const spaces = { gray: '/DeviceGray', rgb: '/DeviceRGB' };
  const stride = Math.ceil((facts.width * packed.bits * packed.samples) / 8);
  return {
    facts,
    profile: profile && isRgbProfile(profile) ? profile : undefined,
    filter: '/FlateDecode', bits: packed.bits, space: spaces[packed.space] ?? packed.space,
    more: [...predictor(packed.samples, packed.bits, facts.width),
      ...(packed.mask ? [['/Mask', `[${packed.mask.join(' ')}]`]] : [])],
    parts: packed.parts ?? [await deflated(filteredUp(packed.pixels, stride))],
    alpha: packed.alpha && await planAlpha(facts, packed.alpha),
  };
}

export async function planJp2(source) {
  if (!isJp2(await source.read(0, SIGNATURE))) throw invalid('embedJp2: this is no JPEG 2000 file');
  const facts = await readJp2(source);
  return { facts, filter: '/JPXDecode', bits: 8, space: DEVICE[facts.components], more: [], parts: [source.part()] };
}

/** Of any kind: a file's bytes, or pixels as { width, height, data }, or what a canvas can draw. */
export async function planAny(data, call, { frame = 0, check = false } = {}) {
  whole(frame, `${call}: frame`, 0, 0x7fffffff);
  if (isPixels(data)) return alone(() => planPixels(data));
  if (isDrawable(data)) return alone(() => planPixels(draw(data)));
  const source = await opened(data, call);
  source.lookAhead();
  if (source.size === 0) throw damaged('the file is empty; copy it again from its source');
  const head = await source.read(0, SIGNATURE);
  if (frame === 0) {
    if (isJpeg(head)) return planJpeg(source);
    if (isPng(head)) return planPng(source, { check });
    if (isJp2(head)) return planJp2(source);
  }
  return alone(() => planByBrowser(source, frame));
}

const isPixels = (data) => data?.data instanceof Uint8ClampedArray && Number.isInteger(data.width);

// What takes memory for all pixels is done for one picture at a time.
let pixels = Promise.resolve();
function alone(body) {
  const result = pixels.then(body);
  pixels = result.catch(() => {});
  return result;
}

async function planByBrowser(source, frame, facts) {
  if (!canDecode()) {
    throw unsupported(facts ? 'an interlaced PNG, which only a browser decodes here; save it without interlacing'
      : 'this picture is neither JPEG, PNG nor JPEG 2000, and only a browser decodes others; convert it to one of them');
  }
  const { pixels, frames } = await decode(source, frame);
  const picture = await planPixels(pixels);
  Object.assign(picture.facts, { frames, resolution: facts?.resolution });
  return picture;
}

async function planPixels({ width, height, data }) {
  if (data.length !== 4 * width * height || data.length === 0) {
    throw invalid(`embedImage: ${data.length} bytes are not ${width} x ${height} pixels of four bytes each`);
  }
  const pixels = new Uint8Array(3 * width * height), alpha = new Uint8Array(width * height);
  let least = 255;
  for (let from = 0, to = 0, i = 0; from < data.length; from += 4, to += 3, ++i) {
    pixels[to] = data[from];
    pixels[to + 1] = data[from + 1];
    pixels[to + 2] = data[from + 2];
    least &= alpha[i] = data[from + 3];
  }
  const facts = { width, height };
  return {
    facts, filter: '/FlateDecode', bits: 8, space: '/DeviceRGB', more: predictor(3, 8, width),
    parts: [await deflated(filteredUp(pixels, 3 * width))],
    alpha: least < 255 ? await planAlpha(facts, alpha) : undefined,
  };
}

async function planAlpha(facts, alpha) {
  const stride = alpha.length / facts.height, bits = (8 * stride) / facts.width;
  return {
    facts, filter: '/FlateDecode', bits, space: '/DeviceGray', more: predictor(1, bits, facts.width),
    parts: [await deflated(filteredUp(alpha, stride))],
  };
}

const predictor = (colors, bits, columns) => [['/DecodeParms',
  [['/Predictor', 15], ['/Colors', colors], ['/BitsPerComponent', bits], ['/Columns', columns]]]];
