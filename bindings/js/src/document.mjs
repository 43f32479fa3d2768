// Documents.
import { bytesOf, concat, sizeOf } from './bytes.mjs';
import { drawnOn, PdfForm, PdfImage, PdfPage, PdfProfile } from './canvas.mjs';
import { compressionOf, readEncoded, readIfSmall, roleOf } from './encoded.mjs';
import { dictionary, filtered, formEntries, imageEntries } from './entries.mjs';
import { planAny, planJp2, planJpeg, planPng } from './embed.mjs';
import { describe, invalid, JtpdfError, options, stateError, whole } from './errors.mjs';
import { checked, isSmall } from './library.mjs';
import { load } from './load.mjs';
import { boxOf, pointsIn } from './measures.mjs';
import { packed } from './pack.mjs';
import { Several, Sink, toBytes, toStream } from './parts.mjs';
import { short } from './pens.mjs';
import { deflated, deflatedNow } from './platform.mjs';
import { opened, Source } from './source.mjs';
import { Turns } from './turns.mjs';

const INFO = ['title', 'author', 'subject', 'keywords', 'creator'];
// Positions in a PDF file have ten digits.
const MOST_BYTES = 1e10;

// A document that nobody holds any more gives its memory back.
const abandoned = new FinalizationRegistry((handle) => handle.library.close(handle));
const PACKED_AT_ONCE = 16;
const LEAST_PACKED = 100;  // bytes of contents; less hardly gets smaller
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
  #turns = new Turns();  // of the pictures that are under way
  #contents = [];  // of pages and forms, to be compressed in the end
  // What pages and forms know of it; compact: contents need not be those of the library's own shapes.
  #host = { document: this, unit: 0, compact: false, call: (what, body) => this.#call(what, body),
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
  }

  static async create(given) {
    const library = await load();
    const o = options(given, ['unit', 'compress', 'mark', ...INFO], 'Document.create');
    const document = new Document(MAKING, library, pointsIn(o.unit, 'Document.create'), o.compress === true);
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
    const box = boxOf(size, this.#unit, 'addPage: the size');
    const crop = o.crop === undefined ? box : boxOf(o.crop, this.#unit, 'addPage: crop');
    const form = o.form === undefined ? undefined : PdfForm.numberOf(o.form, this, 'addPage: form');
    if (o.rotate !== undefined && ![0, 90, 180, 270].includes(o.rotate)) {
      throw invalid(`addPage: rotate is ${describe(o.rotate)}; a page is turned by 0, 90, 180 or 270 degrees clockwise`);
    }
    const entries = Object.entries(o.entries ?? {});
    if (o.rotate) entries.push(['/Rotate', `${o.rotate}`]);
    this.#finishCanvas();
    const page = new PdfPage(this, this.#host, box, this.#pages);
    this.#shown = [...box, 0, ...crop, 0];
    this.#setPageEntries(entries);
    if (form !== undefined) this.#writePage(form);
    else this.#begin(page);
    return page;
  }

  /** Makes a form of what draw draws, to be shown by any number of pages. */
  addForm(size, draw) {
    if (typeof draw !== 'function') throw invalid('addForm takes a function that draws: addForm([w, h], (form) => …)');
    const box = boxOf(size, this.#unit, 'addForm: the size');
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

  #begin(canvas) {
    if (!this.#host.compact) this.#call('drawing', (m, at) => (m.bounds(at, ...canvas.box), 0));
    this.#open = canvas;
  }

  #finishCanvas() {
    this.#require();
    const canvas = this.#open;
    if (!canvas) return;
    const number = this.#host.compact ? this.#keepContents(canvas)
      : this.#call('writing what was drawn', (m, at) => m.write_canvas(at));
    this.#open = undefined;
    if (canvas instanceof PdfPage) this.#writePage(number, this.#host.compact);
    canvas.number = number;
  }

  #discardCanvas() {
    this.#open = undefined;
    this.#call('drawing', (m, at) => (m.clear(at), 0));
  }

  // Contents that are compressed: a page shows its own, a form has its own resources. Where the platform takes
  // its time, they have a number now, and are written at the end.
  #keepContents(canvas) {
    const { text, resources, isGiven } = drawnOn(canvas);
    const isPage = canvas instanceof PdfPage;
    if (isPage) this.#setPageEntries(resources);
    if (isGiven) this.#call('drawing', (m, at) => (m.clear(at), 0));
    const entries = isPage ? [] : this.#formEntries(canvas.box, resources);
    const plain = encoder.encode(text);
    const smaller = plain.length < LEAST_PACKED ? plain : deflatedNow(plain);
    if (smaller) {
      const [all, data] = filtered(entries, plain, smaller);
      return isPage ? this.#writeOwnStream('drawing', all, [data]) : this.#writeStream('drawing', all, [data]);
    }
    const number = this.#call('drawing', (m, at) => m.reserve(at));
    this.#contents.push({ number, entries, plain });
    return number;
  }

  #formEntries([left, bottom, width, height], resources) {
    return formEntries([left, bottom, left + width, bottom + height].map((side) => short(side * this.#unit)), resources);
  }

  #setPageEntries(entries) {
    for (const [key, value] of entries) {
      this.#call('addPage: entries', (m, at, library) =>
        m.page_entry(at, library.text(key, 'a key'), library.text(value, 'a value')));
    }
  }

  // Queues a page that shows a form, or contents of its own.
  #writePage(number, isContents = false) {
    this.#call('addPage', (m, at, library) =>
      m[isContents ? 'add_page' : 'write_page'](at, number, library.numbers(Float64Array, this.#shown)));
    ++this.#pages;
  }

  #requireOpen(canvas, what) {
    this.#require();
    if (canvas !== this.#open) {
      throw stateError(`${what}: this ${canvas instanceof PdfPage ? 'page' : 'form'} is finished; draw on it before ` +
        'the next page or form begins');
    }
  }

  // ---- Pictures ---------------------------------------------------------------------------------

  embedJpeg(data, given) {
    return this.#embed('embedJpeg', given, [], async () => planJpeg(await opened(data, 'embedJpeg')));
  }

  embedPng(data, given) {
    return this.#embed('embedPng', given, ['check'], async (o) => planPng(await opened(data, 'embedPng'), o));
  }

  embedJp2(data, given) {
    return this.#embed('embedJp2', given, [], async () => planJp2(await opened(data, 'embedJp2')));
  }

  /** Of any kind that the platform decodes, by what the data is. */
  embedImage(data, given) {
    return this.#embed('embedImage', given, ['frame', 'check'], (o) => planAny(data, 'embedImage', o));
  }

  async #embed(call, given, more, plan) {
    const o = options(given, ['orientation', ...more], call);
    if (o.orientation !== undefined) whole(o.orientation, `${call}: orientation`, 1, 8);
    return this.#inTurn(async () => {
      const picture = await plan(o);
      for (const stream of [picture, picture.alpha]) if (stream && isToRead(stream)) await readWhole(stream);
      return { picture, profile: picture.profile && await deflated(picture.profile) };
    }, ({ picture, profile }) => {
      const base = picture.profile && `${this.#profile(picture.profile, profile)} 0 R`;
      const entries = [];
      if (picture.alpha) entries.push(['/SMask', `${this.#writePicture(call, picture.alpha)} 0 R`]);
      const number = this.#writePicture(call, picture, base, entries);
      return new PdfImage(this, number, { ...picture.facts, orientation: o.orientation ?? picture.facts.orientation });
    });
  }

  // Data is read side by side, for a few calls ahead, and written in the order of the calls.
  #inTurn(read, write) {
    this.#require();
    const ifUsable = (body) => (data) => {
      this.#require();
      return body(data);
    };
    return this.#turns.take(ifUsable(read), ifUsable(write));
  }

  #writePicture(call, picture, base, entries = []) {
    const { space, parts } = picture;
    const name = typeof space === 'function' ? space(base ?? '/DeviceRGB') : base ?? space;
    return this.#writeOwnStream(call, [...imageEntries(picture, name), ...entries], parts);
  }

  // Of entries that are right as they are; nested ones are arrays of their own.
  #writeOwnStream(call, entries, parts) {
    return this.#writeParts(call, parts, (m, at, library, data, size) =>
      m.write_own_stream(at, library.text(dictionary(entries), call), data, size));
  }

  // Of entries of the host's, at which the library looks.
  #writeStream(call, entries, parts) {
    return this.#writeParts(call, parts, (m, at, library, data, size) =>
      m.write_stream(at, entries.length, library.entries(entries), data, size));
  }

  #writeParts(call, parts, write) {
    const part = parts.length === 1 ? parts[0] : new Several(parts);
    this.#requireRoom(call, sizeOf(part));
    return this.#call(call, (m, at, library) => write(m, at, library, library.data(part), sizeOf(part)));
  }

  /** An image whose data is encoded already, as PDF has it. */
  async embedEncoded(data, given) {
    const call = 'embedEncoded';
    const more = ['maskWhite', 'role', 'name', 'texts', 'softMask'];
    return this.#inTurn(async () => {
      const image = await readEncoded(this, call, data, given, more);
      const { softMask } = image.options;
      if (!softMask) return { image };
      return { image, alpha: await readEncoded(this, `${call}: softMask`, softMask.data, withoutData(softMask), []) };
    }, ({ image, alpha }) => this.#writeEncoded(call, image, alpha));
  }

  #writeEncoded(call, image, alpha) {
    const { maskWhite = false, name, texts = {} } = image.options;
    const role = roleOf(image.options.role ?? 'other', call);
    this.#requireRoom(call, sizeOf(image.part) + (alpha ? sizeOf(alpha.part) : 0));
    const items = Object.entries(texts);
    const number = this.#call(call, (m, at, library) => m.write_image(at, image.place(library),
      alpha ? alpha.place(library) : 0, maskWhite, role, library.wide(name, `${call}: name`), items.length, library.table(items,
        (value) => library.wide(value, 'a text'))));
    return new PdfImage(this, number, image.options);
  }

  /** A profile for RGB data, to be the colorSpace of embedEncoded. */
  async embedIcc(data, given) {
    const o = options(given, ['compression'], 'embedIcc');
    const compression = compressionOf(o.compression ?? 'none', 'embedIcc');
    return this.#inTurn(() => bytesOf(new Source(data, 'embedIcc').part()),
      (bytes) => new PdfProfile(this, this.#writeProfile('embedIcc', bytes, compression)));
  }

  #writeProfile(call, bytes, compression) {
    return this.#call(call, (m, at, library) => m.write_profile(at, library.data(bytes), bytes.length, compression));
  }

  // Written once for all pictures that have it.
  #profile(profile, packed) {
    const key = String.fromCharCode(...packed.subarray(-64)) + packed.length;
    const known = this.#profiles.get(key)?.find((one) => sameBytes(one.profile, profile));
    if (known) return known.number;
    const number = this.#writeProfile('embedding a profile', packed, compressionOf('flate'));
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
    return this.#inTurn(() => readIfSmall(new Source(data, 'writeStream')),
      (part) => this.#writeStream('writeStream', Object.entries(entries), [part]));
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
    const closing = closingText === undefined ? '' : checked(closingText, 'closingText');
    this.#end = `the document was saved by ${call}(), which ends it; make another by Document.create()`;
    try {
      await this.#writeContents();
      this.#call(call, (m, at) => m.finish(at), true);
      const result = this.#host.compact ? await packed(this.#sink) : this.#sink;
      if (closing !== '') result.add(encoder.encode(`${closing}\r\n`));
      return result;
    } finally {
      this.#release();
    }
  }

  async #writeContents() {
    for (let i = 0; i < this.#contents.length; i += PACKED_AT_ONCE) {
      const some = this.#contents.slice(i, i + PACKED_AT_ONCE);
      const smaller = await Promise.all(some.map(({ plain }) => deflated(plain)));
      some.forEach((one, k) => this.#writeReserved(one, smaller[k]));
    }
  }

  #writeReserved({ number, entries, plain }, smaller) {
    const [all, data] = filtered(entries, plain, smaller);
    this.#call('drawing', (m, at, library) => m.write_reserved(at, number, all.length, library.entries(all),
      library.data(data), data.length), true);
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

// Small data becomes one piece in memory.
const isToRead = ({ parts }) => !(parts.length === 1 && parts[0] instanceof Uint8Array) && isSmall(new Several(parts));

async function readWhole(stream) {
  stream.parts = [concat(await Promise.all(stream.parts.map(bytesOf)))];
}

const encoder = new TextEncoder();
const withoutData = ({ data, ...rest }) => rest;
const sameBytes = (a, b) => a.length === b.length && a.every((byte, i) => byte === b[i]);

function pdfDate(date) {
  if (Number.isNaN(date.getTime())) throw invalid('setInfo: the date is none');
  return `D:${date.toISOString().replace(/[-:T]|\.\d+Z/g, '')}Z`;
}
