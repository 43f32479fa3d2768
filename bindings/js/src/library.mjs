// The WebAssembly module: its memory, its calls, and the bytes that it writes.
import { sizeOf } from './bytes.mjs';
import { JtpdfError, invalid } from './errors.mjs';

// Data from this size on is handed on by its address and never read: it stays where it is.
const UNREAD = 32768;
const SCRATCH = 8192;  // bytes that are enough for most calls
const MESSAGES = {
  '-1': ['memory', 'there is no memory left for it'],
  '-2': ['argument', 'what it was given is not what PDF has there'],
  '-3': ['failed', 'the document has failed before and cannot go on'],
};

/** One instance of the module, which all documents of a thread share. */
export class Library {
  static async from(module) {
    const library = new Library();
    library.exports = (await WebAssembly.instantiate(module, library.#imports())).exports;
    library.exports._initialize();
    library.scratch = library.exports.malloc(SCRATCH) >>> 0;
    return library;
  }

  constructor() {
    this.sinks = new Map();  // what documents write to, by their number
    this.outside = [];  // data of the call under way, which the module knows by addresses 1, 2, ...
    this.scratch = 0;  // memory for calls, where
    this.used = 0;  // so much is taken by the call under way,
    this.blocks = [];  // and these besides
    this.lastNumber = 0;
  }

  #imports() {
    const refuse = () => 52;  // ENOSYS: there is no system
    return {
      jtpdf: {
        write: (number, at, size) => this.#write(number, at >>> 0, size >>> 0),
      },
      env: { emscripten_notify_memory_growth() {} },
      wasi_snapshot_preview1: {
        proc_exit(code) {
          throw new JtpdfError('failed', `the module ended with ${code}`);
        },
        fd_close: refuse, fd_write: refuse, fd_seek: refuse, environ_get: refuse,
        environ_sizes_get: refuse,
      },
    };
  }

  get bytes() {  // memory grows, and leaves its old views behind
    if (this.view?.buffer !== this.exports.memory.buffer) this.view = new Uint8Array(this.exports.memory.buffer);
    return this.view;
  }

  open(unit, sink) {
    const number = ++this.lastNumber;
    this.sinks.set(number, sink);
    const pointer = this.exports.create(unit, number) >>> 0;
    if (pointer === 0) {
      this.sinks.delete(number);
      throw failure('Document.create', -1);
    }
    return { library: this, pointer, number };
  }

  close({ pointer, number }) {
    this.exports.destroy(pointer);
    this.sinks.delete(number);
  }

  /**
   * Runs body, which may place texts and data for the module, and frees those. What body returns is
   * the module's answer: less than 0 is a failure of what is called so for people.
   */
  call(what, body) {
    let code;
    try {
      code = body();
    } catch (error) {
      if (error instanceof JtpdfError || !(error instanceof WebAssembly.RuntimeError)) throw error;
      throw new JtpdfError('failed', `${what}: the module failed`, { cause: error });
    } finally {
      for (const block of this.blocks) this.exports.free(block);
      this.used = this.blocks.length = this.outside.length = 0;
    }
    const { error } = this;
    if (error) {
      this.error = undefined;
      throw new JtpdfError('memory', `${what}: what was written cannot be kept`, { cause: error });
    }
    if (code < 0) throw failure(what, code);
    return code;
  }

  #write(number, at, size) {
    try {
      const part = at <= this.outside.length ? this.outside[at - 1] : this.bytes.slice(at, at + size);
      this.sinks.get(number).add(part);
      return 0;
    } catch (error) {  // no memory for the copy
      this.error = error;
      return 1;
    }
  }

  // ---- What is placed for a call ---------------------------------------------------------------

  take(size) {
    const begin = this.used, end = begin + size;
    if (end <= SCRATCH) {
      this.used = (end + 7) & ~7;
      return this.scratch + begin;
    }
    const at = this.exports.malloc(Math.max(size, 1)) >>> 0;
    if (at === 0) throw new JtpdfError('memory', `there is no memory for ${size} bytes`);
    this.blocks.push(at);
    return at;
  }

  /** UTF-8 with a NUL behind it. */
  text(value, name) {
    const bytes = encoder.encode(checked(value, name));
    const at = this.take(bytes.length + 1);
    this.bytes.set(bytes, at);
    this.bytes[at + bytes.length] = 0;
    return at;
  }

  /** UTF-32 with a NUL behind it, or null for nothing. */
  wide(value, name) {
    if (value === undefined || value === '') return 0;
    const points = Array.from(checked(value, name), (character) => character.codePointAt(0));
    // The library has room for one UTF-16 unit a character. A blank behind the text, which is cut
    // off, makes the room for each pair of units.
    const pairs = points.filter((point) => point > 0xffff).length;
    const at = this.take(4 * (points.length + pairs + 1));
    const units = new Uint32Array(this.exports.memory.buffer, at, points.length + pairs + 1);
    // Half a pair of units is no character; shown as what stands for one.
    units.set(points.map((point) => (point >= 0xd800 && point <= 0xdfff ? 0xfffd : point)));
    units.fill(0x20, points.length, points.length + pairs);
    units[points.length + pairs] = 0;
    return at;
  }

  /** Bytes to be written: small ones as a copy, a Blob or large ones by an address that stands for them. */
  data(part) {
    const size = sizeOf(part);
    if (size >= UNREAD) return this.outside.push(part);
    if (!(part instanceof Uint8Array)) throw new TypeError('small data has to be read first');
    const at = this.take(size);
    this.bytes.set(part, at);
    return at;
  }

  numbers(Kind, values) {
    const at = this.take(values.length * Kind.BYTES_PER_ELEMENT);
    new Kind(this.exports.memory.buffer, at, values.length).set(values);
    return at;
  }

  /** A table of keys and values, by their addresses. */
  table(entries, value) {
    return this.numbers(Uint32Array, entries.flatMap(([key, what]) => [this.text(key, 'a key'), value(what)]));
  }

  /** The same where both are UTF-8, in one piece. */
  entries(pairs) {
    const bytes = encoder.encode(pairs.map(([key, value]) =>
      `${checked(key, 'a key')}\0${checked(value, `the value of ${key}`)}\0`).join(''));
    const at = this.take(bytes.length);
    this.bytes.set(bytes, at);
    const addresses = [];
    for (let begin = 0; begin < bytes.length; begin = bytes.indexOf(0, begin) + 1) addresses.push(at + begin);
    return this.numbers(Uint32Array, addresses);
  }
}

const encoder = new TextEncoder();

/** A text that the module takes. */
export function checked(value, name) {
  if (typeof value !== 'string') throw invalid(`${name} is ${typeof value}, not a text`);
  if (value.includes('\0')) throw invalid(`${name} has a NUL in it, which no text of a PDF can have`);
  return value;
}

function failure(what, code) {
  const [kind, words] = MESSAGES[code] ?? MESSAGES['-3'];
  return new JtpdfError(kind, `${what}: ${words}`);
}

/** Whether the data is to be in memory before it is written. */
export const isSmall = (part) => sizeOf(part) < UNREAD;
