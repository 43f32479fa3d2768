// The result: pieces in memory and Blobs that nobody has read yet, one behind the other.
import { bytesOf, sizeOf } from './bytes.mjs';
import { JtpdfError } from './errors.mjs';

/** What a document writes to. */
export class Sink {
  parts = [];
  size = 0;

  add(part) {
    for (const piece of part instanceof Several ? part.parts : [part]) {
      const last = this.parts.at(-1);
      // A Blob of many small parts takes several times as long as one of few.
      if (isNext(last, piece)) {
        this.parts[this.parts.length - 1] = new Uint8Array(last.buffer, last.byteOffset, last.length + piece.length);
      } else {
        this.parts.push(piece);
      }
    }
    this.size += sizeOf(part);
  }
}

// Whether the piece lies right behind the last one in memory.
const isNext = (last, piece) => last instanceof Uint8Array && piece instanceof Uint8Array &&
  last.buffer === piece.buffer && last.byteOffset + last.length === piece.byteOffset;

/** Parts that are written one behind the other, as one. */
export class Several {
  constructor(parts) {
    this.parts = parts;
    this.size = parts.reduce((sum, part) => sum + sizeOf(part), 0);
  }
}

export async function toBytes({ parts, size }) {
  let bytes;
  try {
    bytes = new Uint8Array(size);
  } catch (error) {
    throw new JtpdfError('memory', `the document has ${size} bytes, for which there is no memory; ` +
      'take it by saveBlob(), stream() or pipeTo()', { cause: error });
  }
  let at = 0;
  for (const part of parts) {
    bytes.set(await bytesOf(part), at);
    at += sizeOf(part);
  }
  return bytes;
}

/** The chunks of a stream: Blobs are read as they are asked for. */
export async function* chunks({ parts }) {
  for (const part of parts) {
    if (part instanceof Uint8Array) {
      if (part.length > 0) yield part;
      continue;
    }
    const reader = part.stream().getReader();
    for (let next = await reader.read(); !next.done; next = await reader.read()) yield next.value;
  }
}

export function toStream(start) {
  let iterator;
  return new ReadableStream({
    async pull(controller) {
      iterator ??= chunks(await start());
      const next = await iterator.next();
      if (next.done) controller.close();
      else controller.enqueue(next.value);
    },
    async cancel(reason) {
      await iterator?.return(reason);
    },
  }, { highWaterMark: 0 });
}
