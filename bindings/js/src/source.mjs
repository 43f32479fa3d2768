// The bytes of a picture, of which only those are read that are asked for.
import { describe, invalid } from './errors.mjs';

const WINDOW = 65536;

/**
 * Bytes that are in memory, or a Blob. A Blob is read a window at a time, so the headers of a file
 * take one or two reads, and its pixels none.
 */
export class Source {
  constructor(data, call) {
    this.name = typeof data?.name === 'string' ? data.name : '';
    if (typeof Blob !== 'undefined' && data instanceof Blob) {
      this.blob = data;
      this.size = data.size;
    } else {
      this.bytes = asBytes(data, call);
      this.size = this.bytes.length;
    }
  }

  /** Up to length bytes from begin on, fewer at the end. */
  async read(begin, length, window = WINDOW) {
    const end = Math.min(begin + length, this.size);
    if (begin >= end) return new Uint8Array(0);
    if (this.bytes) return this.bytes.subarray(begin, end);
    const held = this.held;
    if (!held || begin < held.begin || end > held.begin + held.bytes.length) {
      const last = Math.min(begin + Math.max(length, window), this.size);
      const bytes = await bytesOf(this.part(begin, last));
      if (bytes.length === this.size) this.bytes = bytes;  // a small file is not read again
      this.held = { begin, bytes };
      return bytes.subarray(0, end - begin);
    }
    return held.bytes.subarray(begin - held.begin, end - held.begin);
  }

  /** So many bytes at each of the places, which a Blob gives in the time of one. */
  async gather(places, length) {
    if (this.bytes) return places.map((at) => this.bytes.subarray(at, at + length));
    const bytes = await bytesOf(new Blob(places.map((at) => this.blob.slice(at, at + length))));
    return places.map((_, i) => bytes.subarray(i * length, (i + 1) * length));
  }

  /** The last two bytes, which are asked for ahead: a Blob answers both questions in the time of one. */
  lookAhead() {
    if (this.last || this.bytes || this.size <= WINDOW) return;  // what is small comes whole
    this.last = bytesOf(this.part(this.size - 2));
    this.last.catch(() => {});  // whoever waits for it gets to know
  }

  async lastTwo() {
    return await this.last ?? this.read(this.size - 2, 2, 2);
  }

  /** The bytes from begin to end as a part of the result, without reading them. */
  part(begin = 0, end = this.size) {
    if (this.bytes) return this.bytes.subarray(begin, end);
    return begin === 0 && end === this.size ? this.blob : this.blob.slice(begin, end);
  }
}

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
