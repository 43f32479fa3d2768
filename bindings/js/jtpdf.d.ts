// jtpdf: writes PDF files in one forward pass. What the package gives, with types.
//
// Lengths are in the document's unit, angles in degrees, y runs upwards. Every failure is a JtpdfError, which calls
// that return a promise reject with and others throw. Options that a call does not know are refused.

/**
 * Bytes of a picture or a profile. Of a Blob or a File only the header is read; its bytes go into the result as
 * a part of it. Bytes in memory stay the caller's, and must not change until the document is saved: those from 32 kB
 * on are not copied.
 */
export type Data = Blob | ArrayBufferLike | ArrayBufferView;

/** Points (1/72 inch), inches, centimetres, millimetres, or how many points one unit has. */
export type Unit = 'pt' | 'in' | 'cm' | 'mm' | number;

/** `0xff8000`, `'#ff8000'` or `rgb(1, 0.5, 0)`. */
export type Color = number | string;

/** `[width, height]`, `[left, bottom, width, height]`, or a sheet's name; in the document's unit. */
export type Size =
  | readonly [number, number]
  | readonly [number, number, number, number]
  | 'A3' | 'A4' | 'A5' | 'Letter' | 'Legal';

/** A colour of red, green and blue from 0 to 1, beyond which it throws an `argument` error. */
export function rgb(red: number, green: number, blue: number): number;

/**
 * Gets the WebAssembly module ready; documents do so by themselves. A source says where it is, where
 * that is not beside the package's own file: for bundlers, and for servers that name it otherwise. It is compiled
 * once for a thread; a second call gives what the first gave. Where that fails, the platform's error is passed on,
 * and a later call tries again.
 */
export function load(source?: string | URL | Response | BufferSource | WebAssembly.Module): Promise<unknown>;

/**
 * What every failure is. `code` says which kind:
 * `argument` (a call was given what it does not take), `state` (the document is saved, or the page
 * finished), `damaged` (a picture is), `unsupported` (a picture is of a kind that PDF does not know and
 * nothing here decodes), `memory` (there is none left), `failed` (the document cannot go on).
 */
export class JtpdfError extends Error {
  constructor(code: JtpdfError['code'], message: string, options?: { cause?: unknown });
  readonly code: 'argument' | 'state' | 'damaged' | 'unsupported' | 'memory' | 'failed';
}

export interface DocumentOptions {
  /** Of all lengths; points, unless given. */
  unit?: Unit;
  /**
   * Makes the file small: contents are compressed and written to a thousandth of a point, and objects packed
   * together, which readers know since PDF 1.5. Off unless given: then the same calls give the same bytes everywhere.
   */
  compress?: boolean;
  /** Information that readers show; setInfo has more. */
  title?: string;
  author?: string;
  subject?: string;
  keywords?: string;
  creator?: string;
  /** The mark flag, written as the information item MGmk. */
  mark?: boolean;
}

export interface EmbedOptions {
  /** As EXIF counts, 1 to 8, in place of the picture's own. */
  orientation?: number;
}

export interface ImageOptions extends EmbedOptions {
  /** Which frame of an animation, from 0, the first unless given; as far as the browser tells them apart. */
  frame?: number;
  /** Reads PNG files whole, and holds them against their checksums. */
  check?: boolean;
}

/** A picture in a document, upright. It belongs to that document, and goes with it. */
export class PdfImage {
  private constructor();
  /** The object's number in the file. */
  readonly number: number;
  /** In pixels, turned as the picture's EXIF orientation says. */
  readonly width: number;
  readonly height: number;
  /** As EXIF counts, 1 to 8: how drawImage turns and mirrors it. */
  readonly orientation: number;
  /** How many frames the file has, 1 unless it is an animation that the browser decoded. */
  readonly frames: number;
  /** Dots per inch, where the file says so. */
  readonly resolution: { readonly x: number; readonly y: number } | undefined;
}

/** A colour space of an ICC profile, in the document that made it. */
export class PdfProfile {
  private constructor();
  /** The object's number in the file. */
  readonly number: number;
}

export interface Box {
  /** Left and bottom, 0 unless given; y runs upwards. */
  x?: number;
  y?: number;
  /** 100 for shapes, the picture's or the form's own unless given. A negative one mirrors. */
  width?: number;
  height?: number;
  /** In degrees, counter-clockwise, about the centre of the box. */
  rotate?: number;
}

export interface Paint {
  /** Of the inside: none if only borderColor is given, black if neither is. */
  color?: Color;
  /** Of the border, which lies half inside and half outside. */
  borderColor?: Color;
  /** In the document's unit, 1 unless given. */
  borderWidth?: number;
}

export interface Ellipse extends Paint {
  /** The centre. */
  x?: number;
  y?: number;
  /** Half the width and half the height, 100 unless given. */
  xScale?: number;
  yScale?: number;
}

/** What is drawn on: until the document's next page or form begins, or it is saved. */
export interface Canvas {
  /** In the document's unit. */
  readonly width: number;
  readonly height: number;
  /** Left, bottom, width, height. */
  readonly box: readonly number[];
  /** Draws the picture upright, one unit a pixel unless width and height are given. */
  drawImage(image: PdfImage, box?: Box): void;
  drawRectangle(rectangle?: Box & Paint): void;
  drawEllipse(ellipse?: Ellipse): void;
  /** Draws a form, scaled to the box. */
  drawForm(form: PdfForm, box?: Box): void;
  /** Operators of a content stream as they are, in points: `'BT /F1 12 Tf 72 720 Td (Hello) Tj ET'`. */
  drawContent(operators: string): void;
  /** A resource that operators name: `setResource('/Font/F1', '<< /Type /Font … >>')`. */
  setResource(key: string, value: string): void;
}

export interface PdfPage extends Canvas {}
export class PdfPage {
  private constructor();
  /** From 0. */
  readonly index: number;
}

export interface PdfForm extends Canvas {}
/** What was drawn once, to be shown by any number of pages. */
export class PdfForm {
  private constructor();
}

export interface PageOptions {
  /** The part of the page that readers show. */
  crop?: readonly [number, number] | readonly [number, number, number, number];
  /** How readers turn the page: 0, 90, 180 or 270 degrees clockwise. */
  rotate?: 0 | 90 | 180 | 270;
  /** What the page shows, unscaled; it cannot be drawn on then, and a `state` error says so. */
  form?: PdfForm;
  /** Entries of the page's dictionary, as PDF writes them: `{ '/UserUnit': '2' }`. */
  entries?: Readonly<Record<string, string>>;
}

/** Image data that is encoded already, as PDF has it. */
export interface Encoded {
  compression: 'jpeg' | 'lzw' | 'flate' | 'jpeg2000' | 'none';
  /** In pixels. */
  width: number;
  height: number;
  /** 8 unless given. */
  bitsPerComponent?: number;
  /** 'rgb' unless given. CMYK data has to be inverted, as JPEG files with an Adobe marker are. */
  colorSpace?: 'gray' | 'rgb' | 'cmyk' | PdfProfile;
}

export interface EncodedOptions extends Encoded {
  /** A grey image of any size: 0 is transparent, the largest value opaque. */
  softMask?: Encoded & { data: Data };
  /** Makes pixels transparent whose components are all 255, of 8-bit data that is not JPEG. */
  maskWhite?: boolean;
  /** What the image is for, which is recorded only. */
  role?: 'background' | 'photo' | 'mask' | 'border' | 'clipArt' | 'alpha' | 'text' | 'shape' | 'other';
  /** Recorded with the image. */
  name?: string;
  /** More entries of the image's dictionary, as texts. */
  texts?: Readonly<Record<string, string>>;
}

export interface SaveOptions {
  /** One more line behind the end of the file. */
  closingText?: string;
}

/**
 * A PDF file that is being written, in one forward pass.
 *
 * One page or form is drawn at a time, and the next one ends it. What save(), saveBlob(), stream() or
 * pipeTo() have ended cannot be used any more. A document that is not saved gives its memory back by
 * dispose(), at the end of its `using`, or when nobody holds it any more. Documents do not know each
 * other: any number may be written at once, in a thread or in workers.
 *
 * Data is not copied: a picture's bytes must stay as they are until the document is saved.
 *
 * The calls that begin with "embed" read side by side where several are under way (16 at most), and write in the order
 * in which they were called, so that the file does not depend on which of them was ready first. Besides the errors of
 * the options they reject with `damaged` or `unsupported`, for which the document goes on, with `memory`, and with what
 * reading a Blob fails with (a DOMException where the file was moved or changed).
 */
export class Document {
  private constructor();
  static create(options?: DocumentOptions): Promise<Document>;

  /** How many pages there are, with the one that is drawn. */
  readonly pageCount: number;

  /** Sets an information item such as Title, Subject, Keywords, CreationDate or ModDate. */
  setInfo(key: string, value: string | Date): void;
  /** An entry of the catalog, as PDF writes it: `setCatalogEntry('/PageLayout', '/TwoPageLeft')`. */
  setCatalogEntry(key: string, value: string): void;
  /** A bookmark to a page, by itself or by its index: to the one added last, unless given. */
  addBookmark(title: string, options?: { page?: PdfPage | number; level?: number }): void;

  /** What a reader shows first, in a view such as `'/FitH null'` (ISO 32000-1, 12.3.2.2); the whole page, unless given. */
  setOpenPage(page: PdfPage | number, view?: string): void;

  /** Begins a page, A4 unless given, and ends the one before. */
  addPage(size?: Size, options?: PageOptions): PdfPage;
  /** Makes a form of what `draw` draws, at once, and ends the page before. What it throws is passed on. */
  addForm(size: Size, draw: (form: PdfForm) => void): PdfForm;

  /** A JPEG file, byte for byte, with its profile and its EXIF orientation. */
  embedJpeg(data: Data, options?: EmbedOptions): Promise<PdfImage>;
  /**
   * A PNG file, also of 16 bits. Its compressed rows go into the document as they are; only those with an alpha
   * channel are unpacked and packed again, and interlaced ones are decoded by the browser. With check, the file is
   * read and held against its checksums.
   */
  embedPng(data: Data, options?: EmbedOptions & { check?: boolean }): Promise<PdfImage>;
  /** A JP2 file, plain grey or RGB of 8 bits, byte for byte. */
  embedJp2(data: Data, options?: EmbedOptions): Promise<PdfImage>;
  /**
   * A picture of any kind that the browser decodes; JPEG, PNG and JPEG 2000 as their own calls do. Others (WebP,
   * AVIF, GIF, BMP) are decoded to 8 bits a channel and compressed, one at a time; under Node they are refused as
   * `unsupported`. Also what a canvas can draw, and pixels: `{ width, height, data }` of four bytes each.
   */
  embedImage(data: Data | ImageData | CanvasImageSource, options?: ImageOptions): Promise<PdfImage>;
  /** Image data that is encoded already. */
  embedEncoded(data: Data, options: EncodedOptions): Promise<PdfImage>;
  /** A profile for RGB data, to be the colorSpace of embedEncoded. */
  embedIcc(profile: Data, options?: { compression?: 'none' | 'flate' | 'lzw' }): Promise<PdfProfile>;

  /** Writes an object by its text, `'[0 1]'` or `'<< /Type /Font >>'`, and gives its number. */
  writeObject(value: string): number;
  /** Writes a stream with these entries, and gives its number. */
  writeStream(entries: Readonly<Record<string, string>>, data: Data): Promise<number>;

  /** Ends the document and gives the file's bytes, which are the caller's. */
  save(options?: SaveOptions): Promise<Uint8Array>;
  /** Ends the document and gives the file as a Blob; pictures that are Blobs are parts of it, unread. */
  saveBlob(options?: SaveOptions): Promise<Blob>;
  /** Ends the document and gives the file as a stream, which reads pictures when it is read. */
  stream(options?: SaveOptions): ReadableStream<Uint8Array>;
  /**
   * Ends the document and writes the file, into a file of the browser's, an answer of a server's, and closes that.
   * Where writing or reading fails, it rejects with that error, and aborts the stream.
   */
  pipeTo(writable: WritableStream<Uint8Array>, options?: SaveOptions): Promise<void>;

  /** Gives up a document that is not saved, and its memory. Does nothing the second time. */
  dispose(): void;
  [Symbol.dispose](): void;
}
