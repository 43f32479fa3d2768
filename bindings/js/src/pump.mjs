// Bytes through one of the platform's streams.
import { concat } from './source.mjs';

/** Up to most bytes of what the blob becomes. */
export async function pump(blob, transform, most = Infinity) {
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
