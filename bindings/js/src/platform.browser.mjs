// The module in a browser.
import { compileGiven } from './compile.mjs';
import { pump } from './pump.mjs';

export async function compile(source = new URL('./jtpdf.wasm', import.meta.url)) {
  if (!(source instanceof URL) && typeof source !== 'string' && !(source instanceof Response)) return compileGiven(source);
  const response = source instanceof Response ? source : await fetch(source);
  if (!response.ok) throw new Error(`${response.url} cannot be had: ${response.status} ${response.statusText}`);
  // Servers that do not know the type "application/wasm" rule out the faster way.
  return compileGiven(await response.arrayBuffer());
}

export const deflatedNow = () => undefined;  // a browser has CompressionStream alone
export const deflated = (bytes) => pump(new Blob([bytes]), new CompressionStream('deflate'));
