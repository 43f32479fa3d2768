// What comes out of the platform's streams.
import { concat } from './bytes.mjs';

/** Up to most bytes of a stream. */
export async function collect(readable, most = Infinity) {
  const reader = readable.getReader();
  const chunks = [];
  let size = 0;
  while (size < most) {
    const { done, value } = await reader.read();
    if (done) break;
    chunks.push(value);
    size += value.length;
  }
  if (size >= most) reader.cancel().catch(() => {});
  const all = concat(chunks);
  return all.length > most ? all.subarray(0, most) : all;
}
