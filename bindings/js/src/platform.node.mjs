// The module under Node.
import { readFile } from 'node:fs/promises';
import { compileGiven } from './compile.mjs';

export async function compile(source = new URL('./jtpdf.wasm', import.meta.url)) {
  if (source instanceof URL && source.protocol === 'file:') return compileGiven(await readFile(source));
  if (source instanceof Response) return compileGiven(await source.arrayBuffer());
  if (source instanceof URL || typeof source === 'string') return compile(await fetch(source));
  return compileGiven(source);
}
