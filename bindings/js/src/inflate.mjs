// Reads zlib streams.
import { damaged } from './errors.mjs';
import { collect } from './collect.mjs';

/** Up to most bytes of what the parts inflate to; what stands behind them is not looked at. */
export async function inflated(parts, most) {
  try {
    return await collect(new Blob(parts).stream().pipeThrough(new DecompressionStream('deflate')), most);
  } catch (error) {
    throw damaged('its compressed data cannot be read; the file is damaged, save the picture again');
  }
}
