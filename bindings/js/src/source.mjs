// The bytes of a picture, of which only those are read that are asked for.
import { asBytes, bytesOf } from './bytes.mjs';
import { collect } from './collect.mjs';
import { HEAD } from './platform.mjs';

const WINDOW = 65536;
const NOTHING = new Uint8Array(0);

/**
 * Bytes that are in memory, or a Blob. A Blob is read a window at a time, so the headers of a file
 * take one or two reads, and its pixels none.
 */
export class Source {
  #from = 0;  // where the window that was read last begins
  #window = NOTHING;

  constructor(data, call) {
    if (typeof Blob !== 'undefined' && data instanceof Blob) {
      this.blob = data;
      this.size = data.size;
    } else {
      this.bytes = asBytes(data, call);
      this.size = this.bytes.length;
    }
  }

  /** Up to length bytes from begin on, fewer at the end, if they are in memory: none has to wait for those. */
  held(begin, length) {
    const end = Math.min(begin + length, this.size);
    if (begin >= end) return NOTHING;
    if (this.bytes) return this.bytes.subarray(begin, end);
    const from = begin - this.#from, to = end - this.#from;
    return from >= 0 && to <= this.#window.length ? this.#window.subarray(from, to) : undefined;
  }

  /** The same bytes, read with some behind them unless they are held. */
  async read(begin, length, window = this.#window === NOTHING && this.size > WINDOW ? HEAD : WINDOW) {
    const held = this.held(begin, length);
    if (held) return held;
    const bytes = await bytesOf(this.part(begin, Math.min(begin + Math.max(length, window), this.size)));
    if (bytes.length === this.size) this.bytes = bytes;  // a small file is not read again
    this.#from = begin;
    this.#window = bytes;
    return bytes.subarray(0, length);
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

let wasSmall = false;  // the file before

/**
 * A source for data. The size of a File that somebody chose is a question to another process, for which the page has
 * to wait. Small files come together: behind one the next is read without that question, until it ends.
 */
export async function opened(data, call) {
  const isChosen = typeof File !== 'undefined' && data instanceof File;
  if (isChosen && wasSmall) {
    const bytes = await collect(data.stream(), WINDOW + 1).catch(() => NOTHING);  // the other way says why it failed
    if (bytes.length > 0 && bytes.length <= WINDOW) return new Source(bytes, call);
  }
  const source = new Source(data, call);
  if (isChosen) wasSmall = source.size <= WINDOW;
  return source;
}
