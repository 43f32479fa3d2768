// The documents that the library is held to, drawn by the package: the same bytes. The calls come from
// record_golden, which takes the library's place under the documents.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { join } from 'node:path';
import { test } from 'node:test';
import { Document, JtpdfError } from 'jtpdf';

const { JTPDF_RECORDER, JTPDF_GOLDEN_FILES, JTPDF_GENERATED_FILES } = process.env;

// What the package does not say, and why.
const INEXPRESSIBLE = {
  images_unknown: 'compression',  // values outside the enumerations
  rectangles: 'a rectangle of nothing',
  circles: 'a colour that is none',  // to fill a rectangle with
  numbers: 'borderWidth is less than 0',
  canvas: 'a form without an extent',
  texts: 'text that the library would cut',
  dictionaries: 'bytes that are no ASCII',
  pixels: 'a colour that is none',
  open_objects: 'numbers that are reserved',
  closing_text: 'bytes that are no ASCII',
  unfinished: 'a document that is not saved',
};

class Inexpressible extends Error {}
const give = (condition, why) => {
  if (condition) throw new Inexpressible(why);
};

function readCalls() {
  const documents = new Map();
  const lines = execFileSync(JTPDF_RECORDER, ['200'], { encoding: 'utf8', maxBuffer: 1 << 28 }).trim().split('\n');
  let calls;
  for (const line of lines) {
    const [call, ...values] = JSON.parse(line);
    if (call === 'document') documents.set(ascii(values[0]), (calls = []));
    else calls.push([call, ...values]);
  }
  return documents;
}

const bytes = (hex) => Uint8Array.from(Buffer.from(hex, 'hex'));
const ascii = (hex) => {
  give(hex === null, 'nothing where a text belongs');
  const text = Buffer.from(hex, 'hex').toString('latin1');
  give(/[^\x01-\x7f]/.test(text), 'bytes that are no ASCII');
  return text;
};
const wide = (points) => {
  give(points?.some((point) => point > 0xffff || (point >= 0xd800 && point < 0xe000)), 'text that the library would cut');
  return points === null ? undefined : String.fromCodePoint(...points);
};
const color = (value) => {
  give(value < 0, 'a colour that is none');
  return value;
};
const white = (value) => (value < 0 ? 0xffffff : value);  // which is what none is in an ellipse
const pairs = (values, value) => {
  const table = {};
  for (let i = 0; i < values.length; i += 2) {
    give(values[i + 1] === null, 'a text without a value');
    table[ascii(values[i])] = value(values[i + 1]);
  }
  give(2 * Object.keys(table).length !== values.length, 'a key twice');
  return table;
};

class Player {
  drawn = [];

  made = new Map();
  entries = {};

  async play(calls) {
    calls[0].push(calls.some(([call, mark]) => call === 'mark' && mark));
    for (const [call, ...values] of calls) await this[call](...values);
    give(!this.bytes, 'a document that is not saved');
    return this.bytes;
  }
  async create(unit, mark) {
    this.document = await Document.create({ unit, mark });
  }
  async finish(closing) {
    this.bytes = await this.document.save(closing === null ? {} : { closingText: ascii(closing) });
  }
  info(key, value) {
    this.document.setInfo(ascii(key), wide(value) ?? '');
  }
  mark() {}
  clear() {
    this.drawn = [];
  }
  bounds(...box) {
    this.box = box;
  }
  draw(body) {
    this.drawn.push(body);
  }
  image(number, x, y, width, height, rotate) {
    this.draw((canvas) => canvas.drawImage(this.find(number), { x, y, width, height, rotate }));
  }
  fill(x, y, width, height, rotate, fill) {
    this.draw((canvas) => canvas.drawRectangle({ x, y, width, height, rotate, color: color(fill) }));
  }
  stroke(x, y, width, height, rotate, stroke, borderWidth) {
    this.draw((canvas) => canvas.drawRectangle({ x, y, width, height, rotate, borderColor: color(stroke), borderWidth }));
  }
  rectangle(x, y, width, height, rotate, fill, stroke, borderWidth) {
    give(fill < 0 && stroke < 0, 'a rectangle of nothing');
    give(stroke < 0 && borderWidth !== 0, 'a width without a border');
    const some = (value) => (value < 0 ? undefined : value);
    this.draw((canvas) => canvas.drawRectangle(
      { x, y, width, height, rotate, color: some(fill), borderColor: some(stroke), borderWidth }));
  }
  ellipse(left, bottom, width, height, angle, fill, stroke, line) {
    const [xScale, yScale] = [(width - line) / 2, (height - line) / 2];
    this.draw((canvas) => canvas.drawEllipse({ x: left + width / 2, y: bottom + height / 2, xScale, yScale,
      color: white(fill), borderColor: white(stroke), borderWidth: line }));
  }
  content(operators) {
    this.draw((canvas) => canvas.drawContent(ascii(operators)));
  }
  canvas_entry(key, value) {
    give(!ascii(key).startsWith('/Resources/'), 'an entry of a form that is no resource');
    this.draw((canvas) => canvas.setResource(ascii(key).slice('/Resources'.length), ascii(value)));
  }
  encoder() {
    throw new Inexpressible('an encoder of the host’s');
  }
  form(number, left, bottom, width, height) {
    give(!(width > 0 && height > 0), 'a form without an extent');
    this.keep(number, this.document.addForm([left, bottom, width, height], (form) => {
      for (const body of this.drawn) body(form);
    }));
    this.drawn = [];
  }
  page_entry(key, value) {
    this.entries[ascii(key)] = ascii(value);
  }
  page(form, ...boxes) {
    const [crop, media] = [boxes.slice(0, 4), boxes.slice(5, 9)];
    this.document.addPage(media, { crop, form: this.find(form), entries: this.entries });
    this.entries = {};
  }
  description([data, compression, width, height, bitsPerComponent, space, object]) {
    const colorSpace = space === 3 ? this.find(object) : ['gray', 'rgb', 'cmyk'][space];
    give(colorSpace === undefined, 'a colour space that there is not');
    const name = ['jpeg', 'lzw', 'flate', 'jpeg2000'][compression];
    give(name === undefined, 'compression');
    return { data: bytes(data), compression: name, width, height, bitsPerComponent, colorSpace };
  }
  role(role) {
    return ['background', 'photo', 'mask', 'border', 'clipArt', 'alpha', 'text', 'shape', 'other'][role];
  }
  async write_image(number, ...values) {
    const { data, ...image } = this.description(values);
    const [maskWhite, role, name, ...texts] = values.slice(7);
    this.keep(number, await this.document.embedEncoded(data, { ...image, maskWhite, role: this.role(role),
      name: wide(name), texts: pairs(texts, wide) }));
  }
  async write_image_with_alpha(number, ...values) {
    const { data, ...image } = this.description(values);
    const softMask = this.description(values.slice(7));
    const [role, name, ...texts] = values.slice(14);
    this.keep(number, await this.document.embedEncoded(data, { ...image, softMask, role: this.role(role),
      name: wide(name), texts: pairs(texts, wide) }));
  }
  async write_profile(data, compression, number) {
    const name = { 1: 'lzw', 2: 'flate' }[compression] ?? 'none';
    this.keep(number, await this.document.embedIcc(bytes(data), { compression: name }));
  }
  write_object(number, value) {
    assert.equal(this.document.writeObject(ascii(value)), number);
  }
  async write_stream(number, data, count, ...entries) {
    const written = await this.document.writeStream(pairs(entries, ascii), bytes(data));
    assert.equal(written, number);
    this.streams.add(number);
  }
  streams = new Set();
  reserve() {
    throw new Inexpressible('numbers that are reserved');
  }
  catalog(key, value) {
    this.document.setCatalogEntry(ascii(key), ascii(value));
  }
  bookmark(level, title, page) {
    this.document.addBookmark(wide(title) ?? '', { level, page });
  }
  open_page(page, view) {
    this.document.setOpenPage(page, view === null ? undefined : ascii(view));
  }
  keep(number, made) {
    assert.equal(made.number, number);
    this.made.set(number, made);
  }
  find(number) {
    give(!this.made.has(number), 'an object that is known by its number alone');
    return this.made.get(number);
  }
}

// The bytes, or why the package has no calls for the document.
async function written(calls) {
  try {
    return { bytes: await new Player().play(calls) };
  } catch (error) {
    if (error instanceof Inexpressible || (error instanceof JtpdfError && error.code === 'argument')) {
      return { reason: error.message };
    }
    throw error;
  }
}

const documents = readCalls();

for (const [name, calls] of documents) {
  const isGenerated = name.startsWith('generated_');
  const file = join(isGenerated ? JTPDF_GENERATED_FILES : JTPDF_GOLDEN_FILES, `${name}.pdf`);
  test(`${name}: the bytes that C gives`, async () => {
    const { bytes, reason } = await written(calls);
    if (INEXPRESSIBLE[name]) {
      assert.match(reason ?? 'it can be drawn now', new RegExp(INEXPRESSIBLE[name]));
    } else {
      assert.equal(reason, undefined);
      assert.ok(Buffer.from(bytes).equals(readFileSync(file)), `${name}: other bytes than in ${file}`);
    }
  });
}
