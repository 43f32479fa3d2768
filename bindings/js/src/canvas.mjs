// Pages and forms, and what is drawn on them.
import { describe, invalid, numberIn, options } from './errors.mjs';
import { CompactPen, LibraryPen, NO_COLOR, real } from './pens.mjs';

const BOX = ['x', 'y', 'width', 'height', 'rotate'];
const PAINT = ['color', 'borderColor', 'borderWidth'];
const RECTANGLE = [...BOX, ...PAINT];
const ELLIPSE = ['x', 'y', 'xScale', 'yScale', ...PAINT];

/** A colour of red, green and blue from 0 to 1, as other packages have it. */
export function rgb(red, green, blue) {
  const byte = (share, name) => {
    if (!(share >= 0 && share <= 1)) throw invalid(`rgb: ${name} is ${describe(share)}, not a number from 0 to 1`);
    return Math.round(share * 255);
  };
  return (byte(red, 'red') << 16) | (byte(green, 'green') << 8) | byte(blue, 'blue');
}

function colorOf(color, name, call) {
  if (Number.isInteger(color) && color >= 0 && color <= 0xffffff) return color;
  if (typeof color === 'string' && /^#[0-9a-f]{6}$/i.test(color)) return parseInt(color.slice(1), 16);
  throw invalid(`${call}: ${name} is ${describe(color)}, not a colour: give "#ff8000", 0xff8000 or rgb(1, 0.5, 0)`);
}

// What turns and mirrors a stored picture upright, by its EXIF orientation: mirrored, then turned.
const PLACEMENTS = [
  [0, 1, 1], [0, -1, 1], [180, 1, 1], [0, 1, -1], [90, -1, 1], [270, 1, 1], [270, -1, 1], [90, 1, 1],
];

/** What a document makes: known by its number, and to the one document that made it. */
class Made {
  #document;
  constructor(document, number) {
    this.#document = document;
    this.number = number;
  }
  static numberOf(made, document, what) {
    if (!(made instanceof this)) throw invalid(`${what} is ${describe(made)}, not a ${this.name} of this document`);
    if (made.#document !== document) throw invalid(`${what} is a ${this.name} of another document`);
    return made.number;
  }
}

export class PdfImage extends Made {
  constructor(document, number, { width, height, orientation = 1, resolution, frames = 1 }) {
    super(document, number);
    [this.width, this.height] = orientation >= 5 ? [height, width] : [width, height];
    this.orientation = orientation;
    const swapped = resolution && orientation >= 5 ? { x: resolution.y, y: resolution.x } : resolution;
    this.resolution = swapped;
    this.frames = frames;
    Object.freeze(this);
  }
}

export class PdfProfile extends Made {
  constructor(document, number) {
    super(document, number);
    Object.freeze(this);
  }
}

/** A page or a form that is drawn, until the document begins the next. */
class Canvas extends Made {
  #host;  // what the document lets its canvases do
  #pen;
  #resources = new Map();
  #isGiven = false;  // whether some of them are the host's

  constructor(document, host, box) {
    super(document, undefined);
    this.#host = host;
    this.box = Object.freeze([...box]);
    [, , this.width, this.height] = box;
    const draw = (body) => host.call('drawing', (...given) => (body(...given), 0));
    this.#pen = host.compact ? new CompactPen(host.unit) : new LibraryPen(draw, host.unit);
  }

  /** Draws the picture upright over the box, which is turned about its centre. */
  drawImage(image, given) {
    const number = PdfImage.numberOf(image, this.#host.document, 'drawImage: the image');
    const box = boxOf(options(given, BOX, 'drawImage'), image.width, image.height, 'drawImage');
    const [angle, mirrorX, mirrorY] = PLACEMENTS[image.orientation - 1];
    let { width, height } = box;
    const [centreX, centreY] = [box.x + width / 2, box.y + height / 2];
    if (image.orientation >= 5) [width, height] = [height, width];
    width *= mirrorX;
    height *= mirrorY;
    const pen = this.#use();
    if (this.#host.compact) this.#takeImage(number);
    pen.image(number, { x: centreX - width / 2, y: centreY - height / 2, width, height, rotate: angle + box.rotate });
  }

  drawRectangle(given) {
    const o = options(given, RECTANGLE, 'drawRectangle');
    const { fill, stroke, line } = paint(o, 'drawRectangle');
    this.#use().rectangle(boxOf(o, 100, 100, 'drawRectangle'), fill, stroke, line);
  }

  drawEllipse(given) {
    const o = options(given, ELLIPSE, 'drawEllipse');
    const { fill, stroke, line } = paint(o, 'drawEllipse');
    const value = (name, usual) => numberIn(o, name, usual, 'drawEllipse');
    this.#use().ellipse(value('x', 0), value('y', 0), value('xScale', 100), value('yScale', 100), fill, stroke, line);
  }

  /** Draws a form, scaled to the box. */
  drawForm(form, given) {
    const number = PdfForm.numberOf(form, this.#host.document, 'drawForm: the form');
    const box = boxOf(options(given, BOX, 'drawForm'), form.width, form.height, 'drawForm');
    if (form.width === 0 || form.height === 0) return;
    const unit = this.#host.unit, turn = (box.rotate * Math.PI) / 180;
    const [sx, sy] = [box.width / form.width, box.height / form.height];
    const [cos, sin] = [Math.cos(turn), Math.sin(turn)];
    const matrix = [cos * sx, sin * sx, -sin * sy, cos * sy].map((value) => value.toFixed(6));
    const centre = [box.x + box.width / 2, box.y + box.height / 2].map((value) => real(value * unit));
    const back = form.box.slice(0, 2).map((from, i) => real(-(from + [form.width, form.height][i] / 2) * unit));
    this.setResource(`/XObject/Fm${number}`, `${number} 0 R`);
    this.drawContent(`q 1 0 0 1 ${centre.join(' ')} cm ${matrix.join(' ')} 0 0 cm 1 0 0 1 ${back.join(' ')} cm ` +
      `/Fm${number} Do Q`);
  }

  /** Operators of a content stream as they are, in points: "BT /F1 12 Tf 72 720 Td (Hello) Tj ET". */
  drawContent(operators) {
    this.#use().content(operators);
  }

  /** A resource of what is drawn: setResource('/Font/F1', '<< /Type /Font … >>'). */
  setResource(key, value) {
    this.#host.require(this, 'setResource');
    if (!this.#isGiven) for (const own of this.#resources) this.#look(...own);
    this.#isGiven = true;
    this.#look(key, value);
    this.#resources.set(key, value);
  }

  // A picture's resource, at which the library has to look only beside those of the host's.
  #takeImage(number) {
    const key = `/XObject/Im${number}`, value = `${number} 0 R`;
    if (!this.#isGiven) this.#resources.set(key, value);
    else if (!this.#resources.has(key)) this.setResource(key, value);
  }

  #look(key, value) {
    this.#host.call('setResource', (m, at, library) =>
      m.canvas_entry(at, library.text(`/Resources${key}`, 'the key'), library.text(value, 'the value')));
  }

  #use() {
    this.#host.require(this, 'drawing');
    return this.#pen;
  }

  // What a compact pen wrote, and the entries of what it takes.
  static drawnOn(canvas) {
    const resources = [...canvas.#resources].map(([key, value]) => [`/Resources${key}`, value]);
    return { text: canvas.#pen.text(), resources, isGiven: canvas.#isGiven };
  }
}

export class PdfPage extends Canvas {
  constructor(document, host, box, index) {
    super(document, host, box);
    this.index = index;
  }
}

export class PdfForm extends Canvas {}

/** The contents of a canvas of a compact document: { text, resources: [[key, value]], isGiven }. */
export const drawnOn = (canvas) => Canvas.drawnOn(canvas);

const boxOf = (o, width, height, call) => ({
  x: numberIn(o, 'x', 0, call), y: numberIn(o, 'y', 0, call), rotate: numberIn(o, 'rotate', 0, call),
  width: numberIn(o, 'width', width, call), height: numberIn(o, 'height', height, call),
});

function paint(given, call) {
  const { color, borderColor } = given;
  const stroke = borderColor === undefined ? NO_COLOR : colorOf(borderColor, 'borderColor', call);
  const bare = color === undefined && stroke !== NO_COLOR;
  const fill = bare ? NO_COLOR : colorOf(color ?? 0, 'color', call);
  const borderWidth = numberIn(given, 'borderWidth', 1, call);
  if (borderWidth < 0) throw invalid(`${call}: borderWidth is less than 0`);
  return { fill, stroke, line: stroke === NO_COLOR ? 0 : borderWidth };
}
