// Pixels, by what the browser decodes: WebP, AVIF, GIF, BMP and whatever else it knows.
import { invalid, JtpdfError, unsupported } from './errors.mjs';

// ImageDecoder wants to be told; only it tells the frames of an animation apart.
const TYPES = [[/^GIF8/, 'image/gif'], [/^RIFF[^]{4}WEBP/, 'image/webp'], [/^[^]{4}ftypavi[fs]/, 'image/avif'],
  [/^\x89PNG/, 'image/png']];

export const canDecode = () => typeof createImageBitmap === 'function' && typeof OffscreenCanvas === 'function';

const isDrawableKind = ['ImageBitmap', 'HTMLImageElement', 'HTMLCanvasElement', 'OffscreenCanvas', 'VideoFrame',
  'SVGImageElement', 'HTMLVideoElement'];
export const isDrawable = (data) => isDrawableKind.includes(Object.prototype.toString.call(data).slice(8, -1));

/** { pixels, frames }: the picture upright, in 8 bits, or that frame of an animation; and how many there are. */
export async function decode(source, frame = 0) {
  const decoder = await openDecoder(source);
  try {
    const frames = decoder?.tracks.selectedTrack.frameCount ?? 1;
    if (frame > 0 && !decoder) {
      throw unsupported('this browser shows the first frame only of pictures such as this one; leave frame away');
    }
    if (frame >= frames) throw invalid(`embedImage: frame is ${frame}, but the picture has ${frames}, counted from 0`);
    const image = frames > 1 ? (await decoder.decode({ frameIndex: frame })).image
      : await createImageBitmap(blobOf(source), { imageOrientation: 'from-image' });
    const pixels = draw(image);
    image.close();
    return { pixels, frames };
  } catch (error) {
    if (error instanceof JtpdfError) throw error;
    throw unsupported('this is no picture, or of a kind that the browser cannot decode; save it as JPEG or PNG');
  } finally {
    decoder?.close();
  }
}

const blobOf = (source) => source.blob ?? new Blob([source.bytes]);

// None for what ImageDecoder is not there for, or does not know; what is wrong shows in decoding.
async function openDecoder(source) {
  const head = String.fromCharCode(...await source.read(0, 16));
  const type = TYPES.find(([pattern]) => pattern.test(head))?.[1];
  if (!type || typeof ImageDecoder !== 'function' || !await ImageDecoder.isTypeSupported(type)) return undefined;
  const decoder = new ImageDecoder({ type, data: blobOf(source).stream() });
  try {
    await decoder.tracks.ready;
    await decoder.completed;  // an animation's frames are counted then
    return decoder;
  } catch {
    decoder.close();
    return undefined;
  }
}

/** The pixels of what a canvas can draw. */
export function draw(image) {
  const width = image.naturalWidth || image.videoWidth || image.displayWidth || image.width;
  const height = image.naturalHeight || image.videoHeight || image.displayHeight || image.height;
  if (!(width > 0 && height > 0)) throw invalid('embedImage: the picture has no pixels, or they are not there yet');
  const context = new OffscreenCanvas(width, height).getContext('2d', { willReadFrequently: true });
  context.drawImage(image, 0, 0, width, height);
  return context.getImageData(0, 0, width, height);
}
