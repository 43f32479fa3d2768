// Documents.
import { endCanvas, formEntries, PdfForm, PdfImage, PdfPage, PdfProfile, real, stateError } from './canvas.mjs';
import { planAny, planJp2, planJpeg, planPng } from './embed.mjs';
import { describe, finite, invalid, JtpdfError, options, whole } from './errors.mjs';
import { deflated } from './flate.mjs';
import { isSmall } from './library.mjs';
import { load } from './load.mjs';
import { Several, Sink, toBytes, toStream } from './parts.mjs';
import { bytesOf, concat, sizeOf, Source } from './source.mjs';

// Points in each unit; the metric ones as the library has them, for files that agree to the byte.
const UNITS = { pt: 1, in: 72, cm: 28.346456692944, mm: 2.8346456692944 };
const MM = UNITS.mm;
const SIZES = {
  A3: [297 * MM, 420 * MM], A4: [210 * MM, 297 * MM], A5: [148 * MM, 210 * MM], Letter: [612, 792], Legal: [612, 1008],
};
const INFO = ['title', 'author', 'subject', 'keywords', 'creator'];
const COMPRESSIONS = { jpeg: 0, lzw: 1, flate: 2, jpeg2000: 3, none: -1 };
const SPACES = { gray: 0, rgb: 1, cmyk: 2 };
const ICC = 3;
const ROLES = ['background', 'photo', 'mask', 'border', 'clipArt', 'alpha', 'text', 'shape', 'other'];
// Positions in a PDF file have ten digits.
const MOST_BYTES = 1e10;

// A document that nobody holds any more gives its memory back.
const abandoned = new FinalizationRegistry((handle) => handle.library.close(handle));
const PACKED_AT_ONCE = 16;
const MAKING = Symbol('Document.create');

export class Document {
  #library;
  #handle;
  #sink = new Sink();
  #unit;
  #open;  // the page or form that is drawn
  #shown;  // the media box and the crop box of a page that is drawn
  #pages = 0;
  #profiles = new Map();
  #packing = [];  // forms whose contents are being compressed
  // What pages and forms know of it; compact: contents need not be those of the library's own shapes.
  #host = { document: this, unit: 0, compact: false, call: (canvas, what, body) => this.#onCanvas(canvas, what, body),
    require: (canvas, what) => this.#requireOpen(canvas, what) };
  #end;  // why it cannot be used any more

  /** Use Document.create(). */
  constructor(making, library, unit, compress) {
    if (making !== MAKING) throw invalid('a document is made by await Document.create(), not by new');
    this.#library = library;
    this.#unit = this.#host.unit = unit;
    this.#host.compact = compress;
    this.#handle = library.open(unit, this.#sink);
    abandoned.register(this, this.#handle, this.#host);
    if (compress) this.#call('Document.create', (m, at) => m.defer_contents(at, this.#handle.number));
  }

  static async create(given) {
    const library = await load();
    const o = options(given, ['unit', 'compress', 'mark', ...INFO], 'Document.create');
    const unit = o.unit === undefined ? 1 : UNITS[o.unit] ?? finite(o.unit, 'Document.create: unit');
    if (unit <= 0) throw invalid(`Document.create: unit is ${unit} points; it takes more than 0`);
    const document = new Document(MAKING, library, unit, o.compress === true);
    if (o.mark) document.#call('Document.create', (m, at) => (m.mark(at), 0));
    for (const key of INFO) {
      if (o[key] !== undefined) document.setInfo(key[0].toUpperCase() + key.slice(1), o[key]);
    }
    return document;
  }

  // ---- Information ------------------------------------------------------------------------------

  setInfo(key, value) {
    const text = value instanceof Date ? pdfDate(value) : value;
    this.#call('setInfo', (m, at, library) => {
      m.info(at, library.text(key, 'setInfo: the key'), library.wide(text, `setInfo: ${key}`));
      return 0;
    });
  }

  setCatalogEntry(key, value) {
    this.#call('setCatalogEntry', (m, at, library) =>
      m.catalog_entry(at, library.text(key, 'the key'), library.text(value, 'the value')));
  }

  /** A bookmark to the page, or to the one that was added last. */
  addBookmark(title, given) {
    const o = options(given, ['page', 'level'], 'addBookmark');
    const page = this.#indexOf(o.page ?? Math.max(0, this.pageCount - 1), 'addBookmark: page');
    const level = whole(o.level ?? 0, 'addBookmark: level', 0, 0x7fffffff);
    this.#call('addBookmark', (m, at, library) =>
      m.bookmark(at, level, library.wide(title, 'addBookmark: the title'), page));
  }

  /** What a reader shows first: a page, in a view as "/FitH null". */
  setOpenPage(page, view = '/Fit') {
    const index = this.#indexOf(page, 'setOpenPage: page');
    this.#call('setOpenPage', (m, at, library) => m.open_page(at, index, library.text(view, 'setOpenPage: view')));
  }

  #indexOf(page, what) {
    return whole(page instanceof PdfPage ? page.index : page, what, 0, 0x7fffffff);
  }

  get pageCount() {
    return this.#pages + (this.#open instanceof PdfPage ? 1 : 0);
  }

  // ---- Pages and forms --------------------------------------------------------------------------

  /** Begins a page, to be drawn on until the next page or form begins. */
  addPage(size = 'A4', given = undefined) {
    const o = options(given, ['crop', 'rotate', 'form', 'entries'], 'addPage');
    const box = this.#boxOf(size, 'addPage: the size');
    const crop = o.crop === undefined ? box : this.#boxOf(o.crop, 'addPage: crop');
    const form = o.form === undefined ? undefined : PdfForm.numberOf(o.form, this, 'addPage: form');
    if (o.rotate !== undefined && ![0, 90, 180, 270].includes(o.rotate)) {
      throw invalid(`addPage: rotate is ${describe(o.rotate)}; a page is turned by 0, 90, 180 or 270 degrees clockwise`);
    }
    const entries = Object.entries(o.entries ?? {});
    if (o.rotate) entries.push(['/Rotate', `${o.rotate}`]);
    this.#finishCanvas();
    const page = new PdfPage(this, this.#host, box, this.#pages);
    this.#shown = [...box, 0, ...crop, 0];
    for (const [key, value] of entries) {
      this.#call('addPage: entries', (m, at, library) =>
        m.page_entry(at, library.text(key, 'a key'), library.text(value, 'a value')));
    }
    if (form !== undefined) this.#writePage(form);
    else this.#begin(page);
    return page;
  }

  /** Makes a form of what draw draws, to be shown by any number of pages. */
  addForm(size, draw) {
    if (typeof draw !== 'function') throw invalid('addForm takes a function that draws: addForm([w, h], (form) => …)');
    const box = this.#boxOf(size, 'addForm: the size');
    this.#finishCanvas();
    const form = new PdfForm(this, this.#host, box);
    this.#begin(form);
    try {
      draw(form);
    } catch (error) {
      this.#discardCanvas();
      throw error;
    }
    this.#finishCanvas();
    return form;
  }

  #boxOf(size, what) {
    const named = typeof size === 'string' ? SIZES[size]?.map((points) => points / this.#unit) : size;
    if (!Array.isArray(named) || (named.length !== 2 && named.length !== 4)) {
      throw invalid(`${what} is ${describe(size)}, not [width, height], [left, bottom, width, height] or one of ` +
        Object.keys(SIZES).join(', '));
    }
    named.forEach((side) => finite(side, what));
    const box = named.length === 2 ? [0, 0, ...named] : [...named];
    if (!(box[2] > 0 && box[3] > 0)) throw invalid(`${what} is ${box[2]} x ${box[3]}, but both have to be more than 0`);
    return box;
  }

  #begin(canvas) {
    this.#call('drawing', (m, at) => {
      m.bounds(at, ...canvas.box);
      return 0;
    });
    this.#open = canvas;
  }

  #finishCanvas() {
    this.#require();
    const canvas = this.#open;
    if (!canvas) return;
    endCanvas(canvas);
    const number = this.#writeForm(canvas);
    this.#open = undefined;
    if (canvas instanceof PdfPage) this.#writePage(number);
    canvas.number = number;
  }

  #discardCanvas() {
    this.#open = undefined;
    this.#call('drawing', (m, at) => (m.clear(at), 0));
  }

  #writeForm(canvas) {
    const sink = this.#sink;
    sink.deferred = undefined;
    try {
      return this.#call('writing what was drawn', (m, at) => m.write_canvas(at));
    } catch (error) {
      if (!sink.deferred) throw error;
    }
    // Contents that are to be compressed have a number now, and are written at the end.
    const number = this.#call('writing what was drawn', (m, at) => m.reserve(at));
    const [left, bottom, width, height] = canvas.box;
    const bounds = [left, bottom, left + width, bottom + height].map((side) => real(side * this.#unit));
    this.#packing.push({ number, entries: formEntries(canvas, bounds), plain: sink.deferred });
    sink.deferred = undefined;
    this.#call('drawing', (m, at) => (m.clear(at), 0));
    return number;
  }

  #writePage(form) {
    this.#call('addPage', (m, at, library) =>
      m.write_page(at, form, library.numbers(Float64Array, this.#shown)));
    ++this.#pages;
  }

  #onCanvas(canvas, what, body) {
    this.#requireOpen(canvas, what);
    return this.#call(what, body);
  }

  #requireOpen(canvas, what) {
    this.#require();
    if (canvas !== this.#open) {
      throw stateError(`${what}: this ${canvas instanceof PdfPage ? 'page' : 'form'} is finished; draw on it before ` +
        'the next page or form begins');
    }
  }

  // ---- Pictures ---------------------------------------------------------------------------------

  async embedJpeg(data, given) {
    return this.#embed('embedJpeg', given, [], () => planJpeg(new Source(data, 'embedJpeg')));
  }

  async embedPng(data, given) {
    return this.#embed('embedPng', given, ['check'], (o) => planPng(new Source(data, 'embedPng'), o));
  }

  async embedJp2(data, given) {
    return this.#embed('embedJp2', given, [], () => planJp2(new Source(data, 'embedJp2')));
  }

  /** Of any kind that the platform decodes, by what the data is. */
  async embedImage(data, given) {
    return this.#embed('embedImage', given, [], () => planAny(data, 'embedImage'));
  }

  async #embed(call, given, more, plan) {
    this.#require();
    const o = options(given, ['orientation', ...more], call);
    const picture = await plan(o);
    for (const stream of [picture, picture.alpha]) if (stream) await readSmall(stream);
    const orientation = o.orientation === undefined ? picture.facts.orientation
      : whole(o.orientation, `${call}: orientation`, 1, 8);
    const profile = picture.profile && await deflated(picture.profile);
    this.#require();
    const base = picture.profile && `${this.#profile(picture.profile, profile)} 0 R`;
    const entries = [];
    if (picture.alpha) entries.push(['/SMask', `${this.#writePicture(call, picture.alpha)} 0 R`]);
    const number = this.#writePicture(call, picture, base, entries);
    return new PdfImage(this, number, { ...picture.facts, orientation });
  }

  #writePicture(call, { facts, filter, bits, space, more, parts }, base, entries = []) {
    const name = typeof space === 'function' ? space(base ?? '/DeviceRGB') : base ?? space;
    return this.#writeStream(call, [
      ['/Type', '/XObject'], ['/Subtype', '/Image'], ['/Width', `${facts.width}`], ['/Height', `${facts.height}`],
      ['/BitsPerComponent', `${bits}`], ['/ColorSpace', name], ['/Filter', filter], ...more, ...entries,
    ], parts);
  }

  #writeStream(call, entries, parts) {
    const part = parts.length === 1 ? parts[0] : new Several(parts);
    this.#requireRoom(call, sizeOf(part));
    return this.#call(call, (m, at, library) =>
      m.write_stream(at, entries.length, library.entries(entries), library.data(part), sizeOf(part)));
  }

  /** An image whose data is encoded already, as PDF has it. */
  async embedEncoded(data, given) {
    const call = 'embedEncoded';
    this.#require();
    const image = await this.#encoded(call, data, given, ['maskWhite', 'role', 'name', 'texts', 'softMask']);
    const { maskWhite = false, role = 'other', name, texts = {}, softMask } = image.options;
    if (!ROLES.includes(role)) throw invalid(`${call}: role is ${describe(role)}, none of ${ROLES.join(', ')}`);
    const alpha = softMask && await this.#encoded(`${call}: softMask`, softMask.data, withoutData(softMask), []);
    this.#require();
    this.#requireRoom(call, sizeOf(image.part) + (alpha ? sizeOf(alpha.part) : 0));
    const items = Object.entries(texts);
    const number = this.#call(call, (m, at, library) => m.write_image(at, image.place(library),
      alpha ? alpha.place(library) : 0, maskWhite, ROLES.indexOf(role), library.wide(name, `${call}: name`), items.length,
      library.table(items, (value) => library.wide(value, 'a text'))));
    return new PdfImage(this, number, image.options);
  }

  async #encoded(call, data, given, more) {
    const o = options(given, ['compression', 'width', 'height', 'bitsPerComponent', 'colorSpace', ...more], call);
    const width = whole(o.width, `${call}: width`, 1, 0x7fffffff), height = whole(o.height, `${call}: height`, 1, 0x7fffffff);
    const bits = whole(o.bitsPerComponent ?? 8, `${call}: bitsPerComponent`, 1, 16);
    const compression = COMPRESSIONS[o.compression];
    if (compression === undefined) {
      throw invalid(`${call}: compression is ${describe(o.compression)}, none of ${Object.keys(COMPRESSIONS).join(', ')}`);
    }
    const isProfile = o.colorSpace instanceof PdfProfile;
    const space = isProfile ? ICC : SPACES[o.colorSpace ?? 'rgb'];
    const object = isProfile ? PdfProfile.numberOf(o.colorSpace, this, `${call}: colorSpace`) : 0;
    if (space === undefined) {
      throw invalid(`${call}: colorSpace is ${describe(o.colorSpace)}, neither gray, rgb, cmyk nor a PdfProfile`);
    }
    const source = new Source(data, call);
    const part = isSmall(source.part()) ? await source.read(0, source.size) : source.part();
    const place = (library) => {
      const record = [library.data(part), sizeOf(part), compression, width, height, bits, space, object];
      return library.numbers(Int32Array, record);
    };
    return { part, place, options: o };
  }

  /** A profile for RGB data, to be the colorSpace of embedEncoded. */
  async embedIcc(data, given) {
    const o = options(given, ['compression'], 'embedIcc');
    const compression = COMPRESSIONS[o.compression ?? 'none'];
    if (compression === undefined) throw invalid(`embedIcc: compression is ${describe(o.compression)}`);
    const bytes = await bytesOf(new Source(data, 'embedIcc').part());
    this.#require();
    return new PdfProfile(this, this.#writeProfile('embedIcc', bytes, compression));
  }

  #writeProfile(call, bytes, compression) {
    return this.#call(call, (m, at, library) => m.write_profile(at, library.data(bytes), bytes.length, compression));
  }

  // Written once for all pictures that have it.
  #profile(profile, packed) {
    const key = String.fromCharCode(...packed.subarray(-64)) + packed.length;
    const known = this.#profiles.get(key)?.find((one) => sameBytes(one.profile, profile));
    if (known) return known.number;
    const number = this.#writeProfile('embedding a profile', packed, COMPRESSIONS.flate);
    this.#profiles.set(key, [...(this.#profiles.get(key) ?? []), { profile, number }]);
    return number;
  }

  // ---- Objects of the host's ---------------------------------------------------------------------

  /** Writes an object by its text, "[0 1]" or "<< /Type /Font >>", and gives its number. */
  writeObject(value) {
    return this.#call('writeObject', (m, at, library) => m.write_object(at, library.text(value, 'writeObject: the value')));
  }

  /** Writes a stream with these entries and gives its number. */
  async writeStream(entries, data) {
    const source = new Source(data, 'writeStream');
    const part = isSmall(source.part()) ? await source.read(0, source.size) : source.part();
    this.#require();
    return this.#writeStream('writeStream', Object.entries(entries), [part]);
  }

  // ---- The end -----------------------------------------------------------------------------------

  /** The file's bytes. */
  async save(given) {
    return toBytes(await this.#finish('save', given));
  }

  /** The file as a Blob, of which pictures from Blobs are parts: nobody has read them yet. */
  async saveBlob(given) {
    const { parts } = await this.#finish('saveBlob', given);
    return new Blob(parts, { type: 'application/pdf' });
  }

  /** The file as a stream, which reads what it needs when it is read. */
  stream(given) {
    this.#require();
    const finished = this.#finish('stream', given);
    finished.catch(() => {});  // whoever reads the stream gets to know
    return toStream(() => finished);
  }

  async pipeTo(writable, given) {
    this.#require();
    if (typeof writable?.getWriter === 'function') return this.stream(given).pipeTo(writable);
    throw invalid(`pipeTo takes a WritableStream, not ${describe(writable)}; of a stream of Node's make one by ` +
      'stream.Writable.toWeb()');
  }

  async #finish(call, given) {
    const { closingText } = options(given, ['closingText'], call);
    this.#finishCanvas();
    this.#end = `the document was saved by ${call}(), which ends it; make another by Document.create()`;
    try {
      for (let i = 0; i < this.#packing.length; i += PACKED_AT_ONCE) {
        const forms = this.#packing.slice(i, i + PACKED_AT_ONCE);
        const packed = await Promise.all(forms.map(({ plain }) => deflated(plain)));
        forms.forEach((form, k) => this.#writePacked(form, packed[k]));
      }
      this.#call(call, (m, at, library) =>
        m.finish(at, closingText === undefined ? 0 : library.text(closingText, 'closingText')), true);
      return this.#sink;
    } finally {
      this.#release();
    }
  }

  #writePacked({ number, entries, plain }, packed) {
    const smaller = packed.length < plain.length;
    const all = smaller ? [...entries, ['/Filter', '/FlateDecode']] : entries;
    const data = smaller ? packed : plain;
    this.#call('writing what was drawn', (m, at, library) => m.write_reserved(at, number, all.length,
      library.entries(all), library.data(data), data.length), true);
  }

  /** Gives up a document that is not saved, and its memory. Does nothing the second time. */
  dispose() {
    this.#end ??= 'the document was given up by dispose()';
    this.#release();
  }

  #release() {
    if (!this.#handle) return;
    abandoned.unregister(this.#host);
    this.#library.close(this.#handle);
    this.#handle = this.#open = undefined;
  }

  #require() {
    if (this.#end) throw stateError(this.#end);
  }

  #requireRoom(call, size) {
    if (size > 0xffffffff) throw new JtpdfError('argument', `${call}: one picture cannot have more than 4 GiB`);
    if (this.#sink.size + size + 1e6 <= MOST_BYTES) return;
    throw new JtpdfError('failed', `${call}: the document would have more than 10^10 bytes, beyond which readers ` +
      'find nothing; write it as several documents');
  }

  #call(what, body, finishing = false) {
    if (!finishing) this.#require();
    const { pointer } = this.#handle;
    return this.#library.call(what, () => body(this.#library.exports, pointer, this.#library));
  }
}

if (Symbol.dispose) Document.prototype[Symbol.dispose] = Document.prototype.dispose;

async function readSmall(stream) {
  if (!isSmall(new Several(stream.parts))) return;
  stream.parts = [concat(await Promise.all(stream.parts.map(bytesOf)))];
}

const withoutData = ({ data, ...rest }) => rest;
const sameBytes = (a, b) => a.length === b.length && a.every((byte, i) => byte === b[i]);

function pdfDate(date) {
  if (Number.isNaN(date.getTime())) throw invalid('setInfo: the date is none');
  return `D:${date.toISOString().replace(/[-:T]|\.\d+Z/g, '')}Z`;
}
