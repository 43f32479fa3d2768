// The module under Node.
import { readFile } from 'node:fs/promises';
import { promisify } from 'node:util';
import { deflate, deflateSync } from 'node:zlib';
import { compileGiven } from './compile.mjs';

export async function compile(source = new URL('./jtpdf.wasm', import.meta.url)) {
  if (source instanceof URL && source.protocol === 'file:') return compileGiven(await readFile(source));
  if (source instanceof Response) return compileGiven(await source.arrayBuffer());
  if (source instanceof URL || typeof source === 'string') return compile(await fetch(source));
  return compileGiven(source);
}

/** What is read of a file to begin with: most headers are shorter, and each page of memory takes its time. */
export const HEAD = 1 << 14;

/** How many bytes a Blob gives in the time that a question takes. */
export const QUESTION = 1 << 15;

const inThread = promisify(deflate);
const MOST_AT_ONCE = 1 << 16;  // what takes less time than handing it to another thread and back

/** A zlib stream of few bytes, at once. */
export const deflatedNow = (bytes) =>
  (bytes.length <= MOST_AT_ONCE ? deflateSync(bytes, { chunkSize: Math.max(bytes.length, 1024) }) : undefined);
/** A zlib stream, without the detours of CompressionStream. */
export const deflated = async (bytes) => deflatedNow(bytes) ?? inThread(bytes);
