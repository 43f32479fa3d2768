// Bytes in memory, and parts of files: bytes or Blobs.
import { describe, invalid } from './errors.mjs';

/** A view of the bytes, without a copy. */
export function asBytes(data, call) {
  if (data instanceof Uint8Array) return data;
  if (ArrayBuffer.isView(data)) return new Uint8Array(data.buffer, data.byteOffset, data.byteLength);
  const tag = Object.prototype.toString.call(data);  // buffers of other realms are no instances
  if (tag === '[object ArrayBuffer]' || tag === '[object SharedArrayBuffer]') return new Uint8Array(data);
  if (typeof data === 'string') {
    throw invalid(`${call} takes bytes or a Blob, not a text; of a file give its contents, under Node ` +
      'by fs.readFileSync(path) or, of Node 20 and later, fs.openAsBlob(path)');
  }
  throw invalid(`${call} takes a Uint8Array, an ArrayBuffer or a Blob, not ${describe(data)}`);
}

export const sizeOf = (part) => (part instanceof Uint8Array ? part.length : part.size);

export async function bytesOf(part) {
  return part instanceof Uint8Array ? part : new Uint8Array(await part.arrayBuffer());
}

export const be16 = (bytes, at) => (bytes[at] << 8) | bytes[at + 1];
export const be32 = (bytes, at) => ((bytes[at] << 24) | (bytes[at + 1] << 16) | be16(bytes, at + 2)) >>> 0;

export function startsWith(bytes, text) {
  if (bytes.length < text.length) return false;
  for (let i = 0; i < text.length; ++i) if (bytes[i] !== text.charCodeAt(i)) return false;
  return true;
}

/** All bytes in a row; of a lone chunk that chunk itself. */
export function concat(chunks) {
  if (chunks.length === 1) return chunks[0];
  const all = new Uint8Array(chunks.reduce((size, chunk) => size + chunk.length, 0));
  let at = 0;
  for (const chunk of chunks) {
    all.set(chunk, at);
    at += chunk.length;
  }
  return all;
}
