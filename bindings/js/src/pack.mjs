// A finished document in less room: its objects that are no streams go into object streams, and the table of
// positions is compressed (ISO 32000-1, 7.5.7 and 7.5.8).
import { concat, sizeOf, startsWith } from './bytes.mjs';
import { Sink } from './parts.mjs';
import { deflated } from './platform.mjs';
import { filteredUp } from './png.mjs';

const TOGETHER = 200;  // objects in one object stream; their place in it has one byte
const TRAILER = /trailer\r\n<<\r\n\/Size (\d+)\r\n([^]*)>>\r\nstartxref\r\n(\d+)\r\n%%EOF\r\n$/;
const LONGEST_TRAILER = 200;
const ENTRY = 20;  // bytes of an entry of the library's table
const PLAIN = 1, PACKED = 2;  // kinds of entries of a compressed table

/** The same document in a sink of its own. sink has to end with the end of the file. */
export async function packed(sink) {
  const end = new Cursor(sink.parts).skip(sink.size - LONGEST_TRAILER).text(LONGEST_TRAILER);
  const [, count, references, table] = TRAILER.exec(end).map((text, i) => (i === 2 ? text : Number(text)));
  const places = Array.from({ length: count }, () => [0, 0, 0]);
  const out = new Sink(), small = [];
  const cursor = new Cursor(sink.parts);
  const objects = extents(sink.parts, count, table);
  cursor.take(objects[0].begin).forEach((piece) => out.add(piece));
  for (const { number, begin, end } of objects) {
    const pieces = cursor.take(end - begin);
    if (isStream(pieces)) {
      places[number] = [PLAIN, out.size, 0];
      pieces.forEach((piece) => out.add(piece));
    } else {
      small.push({ number, body: bodyOf(pieces) });
    }
  }
  for (let i = 0; i < small.length; i += TOGETHER) await writeTogether(out, places, small.slice(i, i + TOGETHER));
  await writePlaces(out, places, references);
  return out;
}

/** Goes over parts that lie one behind the other. */
class Cursor {
  #parts;
  #index = 0;
  #at = 0;

  constructor(parts) {
    this.#parts = parts;
  }

  take(size) {
    const pieces = [];
    this.#pass(size, (part, begin, end) => pieces.push(end - begin === sizeOf(part) ? part : slice(part, begin, end)));
    return pieces;
  }

  skip(size) {
    this.#pass(size, () => {});
    return this;
  }

  #pass(size, visit) {
    for (let left = size; left > 0;) {
      const part = this.#parts[this.#index], whole = sizeOf(part), begin = this.#at;
      const end = Math.min(whole, begin + left);
      visit(part, begin, end);
      left -= end - begin;
      this.#at = end < whole ? end : 0;
      if (end === whole) ++this.#index;
    }
  }

  text(size) {
    return latin(concat(this.take(size)));
  }
}

const slice = (part, begin, end) => (part instanceof Uint8Array ? part.subarray(begin, end) : part.slice(begin, end));
const latin = (bytes) => decoder.decode(bytes);
const decoder = new TextDecoder('latin1');

// Where each object lies, in the order of the file.
function extents(parts, count, table) {
  const heading = `xref\r\n0 ${count}\r\n`.length;
  const entries = new Cursor(parts).skip(table + heading).text(count * ENTRY);
  const objects = [];
  for (let number = 1; number < count; ++number) {
    objects.push({ number, begin: Number(entries.slice(number * ENTRY, number * ENTRY + 10)), end: table });
  }
  objects.sort((a, b) => a.begin - b.begin);
  objects.forEach((object, i) => { if (i > 0) objects[i - 1].end = object.begin; });
  return objects;
}

function isStream(pieces) {
  if (pieces.some((piece) => !(piece instanceof Uint8Array))) return true;
  const end = 'endstream\r\nendobj\r\n';
  const last = pieces.at(-1).length >= end.length ? pieces.at(-1) : concat(pieces);
  return startsWith(last.subarray(-end.length), end);
}

// Without "7 0 obj" and "endobj".
function bodyOf(pieces) {
  const bytes = concat(pieces);
  return bytes.subarray(bytes.indexOf(10) + 1, bytes.length - '\r\nendobj\r\n'.length);
}

async function writeTogether(out, places, objects) {
  const number = places.length;
  let at = 0;
  const index = objects.map((object, i) => {
    places[object.number] = [PACKED, number, i];
    const entry = `${object.number} ${at} `;
    at += object.body.length + 1;
    return entry;
  }).join('');
  const lines = objects.flatMap(({ body }) => [body, NEW_LINE]);
  const entries = `/Type /ObjStm\r\n/N ${objects.length}\r\n/First ${index.length}\r\n/Filter /FlateDecode\r\n`;
  places.push([PLAIN, out.size, 0]);
  addStream(out, number, entries, await deflated(concat([encoder.encode(index), ...lines])));
}

async function writePlaces(out, places, references) {
  const number = places.push([PLAIN, out.size, 0]) - 1, start = out.size;
  const width = Math.ceil(start.toString(16).length / 2);
  const rows = new Uint8Array(places.length * (width + 2));
  let to = 0;
  for (const [kind, place, index] of places) {
    rows[to++] = kind;
    for (let i = width - 1; i >= 0; --i) rows[to++] = Math.floor(place / 256 ** i);
    rows[to++] = index;
  }
  const entries = `/Type /XRef\r\n/Size ${places.length}\r\n/W [1 ${width} 1]\r\n${references}/Filter /FlateDecode\r\n` +
    `/DecodeParms << /Predictor 12 /Columns ${width + 2} >>\r\n`;
  addStream(out, number, entries, await deflated(filteredUp(rows, width + 2)));
  out.add(encoder.encode(`startxref\r\n${start}\r\n%%EOF\r\n`));
}

function addStream(out, number, entries, data) {
  out.add(encoder.encode(`${number} 0 obj\r\n<<\r\n${entries}/Length ${data.length}\r\n>>\r\nstream\r\n`));
  out.add(data);
  out.add(encoder.encode('\r\nendstream\r\nendobj\r\n'));
}

const encoder = new TextEncoder();
const NEW_LINE = Uint8Array.of(10);
