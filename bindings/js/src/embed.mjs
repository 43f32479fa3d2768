// Pictures into documents: from the header of a file to what is written of it.
import { invalid, unsupported } from './errors.mjs';
import { deflated } from './flate.mjs';
import { isRgbProfile } from './icc.mjs';
import { isJp2, readJp2 } from './jp2.mjs';
import { isJpeg, readJpeg } from './jpeg.mjs';
import { filteredUp, isPng, packPng, pngProfile, readPng } from './png.mjs';
import { Source } from './source.mjs';

const DEVICE = { 1: '/DeviceGray', 3: '/DeviceRGB', 4: '/DeviceCMYK' };
const HEAD = 64;

/** Each gives what a document writes of the picture: its facts, the entries of its stream, and the data. */
export async function planJpeg(source) {
  source.lookAhead();
  if (!isJpeg(await source.read(0, HEAD))) throw invalid('embedJpeg: this is no JPEG file');
  const jpeg = await readJpeg(source);
  const rgb = jpeg.components === 3;
  return {
    facts: jpeg,
    profile: rgb && jpeg.profile && isRgbProfile(jpeg.profile) ? jpeg.profile : undefined,
    filter: '/DCTDecode', bits: 8, space: DEVICE[jpeg.components],
    // Files with an Adobe marker hold their inks inverted.
    more: [
      ...(jpeg.components === 4 && jpeg.inverted ? [['/Decode', '[1 0 1 0 1 0 1 0]']] : []),
      ...(jpeg.rgbByName ? [['/DecodeParms/ColorTransform', '0']] : []),
    ],
    parts: [jpeg.part],
  };
}

export async function planPng(source, { check = false } = {}) {
  if (!isPng(await source.read(0, HEAD))) throw invalid('embedPng: this is no PNG file');
  const facts = await readPng(source, check);
  if (facts.interlaced && canDecode()) return planByBrowser(source, facts);
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
  if (!isJp2(await source.read(0, HEAD))) throw invalid('embedJp2: this is no JPEG 2000 file');
  const facts = await readJp2(source);
  return { facts, filter: '/JPXDecode', bits: 8, space: DEVICE[facts.components], more: [], parts: [source.part()] };
}

/** Of any kind: a file's bytes, or pixels as { width, height, data }, or what a canvas can draw. */
export async function planAny(data, call) {
  if (isPixels(data)) return planPixels(data);
  if (isDrawable(data)) return planPixels(draw(data));
  const source = new Source(data, call);
  source.lookAhead();
  const head = await source.read(0, HEAD);
  if (isJpeg(head)) return planJpeg(source);
  if (isPng(head)) return planPng(source);
  if (isJp2(head)) return planJp2(source);
  return planByBrowser(source);
}

const isPixels = (data) => data?.data instanceof Uint8ClampedArray && Number.isInteger(data.width);

const isDrawable = (data) => ['ImageBitmap', 'HTMLImageElement', 'HTMLCanvasElement', 'OffscreenCanvas', 'VideoFrame',
  'SVGImageElement', 'HTMLVideoElement'].includes(Object.prototype.toString.call(data).slice(8, -1));

const canDecode = () => typeof createImageBitmap === 'function' && typeof OffscreenCanvas === 'function';

async function planByBrowser(source, facts) {
  if (!canDecode()) {
    throw unsupported(facts ? 'an interlaced PNG, which only a browser decodes here; save it without interlacing'
      : 'this picture is neither JPEG, PNG nor JPEG 2000, and only a browser decodes others; convert it to one of them');
  }
  let bitmap;
  try {
    bitmap = await createImageBitmap(source.blob ?? new Blob([source.bytes]), { imageOrientation: 'from-image' });
  } catch (error) {
    throw unsupported('the browser cannot decode this picture; save it as JPEG or PNG');
  }
  try {
    return { ...await planPixels(draw(bitmap)), decoded: true };
  } finally {
    bitmap.close();
  }
}

function draw(image) {
  const width = image.naturalWidth || image.videoWidth || image.displayWidth || image.width;
  const height = image.naturalHeight || image.videoHeight || image.displayHeight || image.height;
  if (!(width > 0 && height > 0)) throw invalid('embedImage: the picture has no pixels, or they are not there yet');
  const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  context.drawImage(image, 0, 0, width, height);
  return context.getImageData(0, 0, width, height);
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

const predictor = (colors, bits, columns) => [
  ['/DecodeParms/Predictor', '15'], ['/DecodeParms/Colors', `${colors}`],
  ['/DecodeParms/BitsPerComponent', `${bits}`], ['/DecodeParms/Columns', `${columns}`],
];
