// The module in a browser.
import { collect } from './collect.mjs';
import { compileGiven } from './compile.mjs';

export async function compile(source = new URL('./jtpdf.wasm', import.meta.url)) {
  if (!(source instanceof URL) && typeof source !== 'string' && !(source instanceof Response)) return compileGiven(source);
  const response = source instanceof Response ? source : await fetch(source);
  if (!response.ok) throw new Error(`${response.url} cannot be had: ${response.status} ${response.statusText}`);
  // Servers that do not know the type "application/wasm" rule out the faster way.
  return compileGiven(await response.arrayBuffer());
}

/** What is read of a file to begin with: most headers, even those with a thumbnail. */
export const HEAD = 1 << 16;

/** How many bytes a Blob gives in the time that a question takes, which goes to another process. */
export const QUESTION = 1 << 18;

export const deflatedNow = () => undefined;  // a browser has CompressionStream alone

/** A zlib stream. Written by hand, as a Blob's own stream takes several times as long. */
export function deflated(bytes) {
  const { writable, readable } = new CompressionStream('deflate');
  const writer = writable.getWriter();
  for (const done of [writer.write(bytes), writer.close()]) done.catch(() => {});  // the reader gets to know
  return collect(readable);
}
