// zlib streams, by what the platform brings along.
import { damaged } from './errors.mjs';
import { systemDeflate } from './platform.mjs';
import { concat } from './source.mjs';

export const deflated = systemDeflate ?? ((bytes) => pump(new Blob([bytes]), new CompressionStream('deflate'), Infinity));

/** Up to most bytes of what the parts inflate to; what stands behind them is not looked at. */
export async function inflated(parts, most) {
  try {
    return await pump(new Blob(parts), new DecompressionStream('deflate'), most);
  } catch (error) {
    throw damaged('its compressed data cannot be read; the file is damaged, save the picture again');
  }
}

async function pump(blob, transform, most) {
  const reader = blob.stream().pipeThrough(transform).getReader();
  const chunks = [];
  let size = 0;
  while (size < most) {
    const { done, value } = await reader.read();
    if (done) break;
    chunks.push(value);
    size += value.length;
  }
  if (size >= most) reader.cancel().catch(() => {});
  const all = chunks.length === 1 ? chunks[0] : concat(chunks);
  return all.length > most ? all.subarray(0, most) : all;
}
