// Pages and forms, and what is drawn on them.
import { describe, finite, invalid, JtpdfError, options } from './errors.mjs';

const NO_COLOR = -1;
const MOST_LINES = 1000;  // that wait to be handed over
const HANDLE = 0.551784;  // of the curves of an ellipse, as the library has it

/** A colour of red, green and blue from 0 to 1, as other packages have it. */
export function rgb(red, green, blue) {
  const byte = (share, name) => {
    if (!(share >= 0 && share <= 1)) throw invalid(`rgb: ${name} is ${describe(share)}, not a number from 0 to 1`);
    return Math.round(share * 255);
  };
  return (byte(red, 'red') << 16) | (byte(green, 'green') << 8) | byte(blue, 'blue');
}

function colorOf(color, name) {
  if (Number.isInteger(color) && color >= 0 && color <= 0xffffff) return color;
  if (typeof color === 'string' && /^#[0-9a-f]{6}$/i.test(color)) return parseInt(color.slice(1), 16);
  throw invalid(`${name} is ${describe(color)}, not a colour: give "#ff8000", 0xff8000 or rgb(1, 0.5, 0)`);
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
  constructor(document, number, { width, height, orientation = 1, resolution }) {
    super(document, number);
    [this.width, this.height] = orientation >= 5 ? [height, width] : [width, height];
    this.orientation = orientation;
    const swapped = resolution && orientation >= 5 ? { x: resolution.y, y: resolution.x } : resolution;
    this.resolution = swapped;
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
  #resources = new Map();
  #images = new Set();
  #lines = [];  // operators that the module did not get yet

  constructor(document, host, box) {
    super(document, undefined);
    this.#host = host;
    this.box = Object.freeze([...box]);
    [, , this.width, this.height] = box;
  }

  /** Draws the picture upright over the box, which is turned about its centre. */
  drawImage(image, given) {
    const number = PdfImage.numberOf(image, this.#host.document, 'drawImage: the image');
    const box = this.#box('drawImage', given, image.width, image.height, []);
    const [angle, mirrorX, mirrorY] = PLACEMENTS[image.orientation - 1];
    let { width, height } = box;
    const [centreX, centreY] = [box.x + width / 2, box.y + height / 2];
    if (image.orientation >= 5) [width, height] = [height, width];
    width *= mirrorX;
    height *= mirrorY;
    this.#images.add(number);
    this.#draw((m, at) => m.image(at, number, centreX - width / 2, centreY - height / 2, width, height,
      angle + box.rotate));
  }

  drawRectangle(given) {
    const box = this.#box('drawRectangle', given, 100, 100, ['color', 'borderColor', 'borderWidth']);
    const [fill, stroke, line] = paint(given, 'drawRectangle');
    if (this.#host.compact && box.rotate === 0) return this.#add(compactRectangle(this.#host.unit, box, fill, stroke, line));
    this.#draw((m, at) => m.rectangle(at, box.x, box.y, box.width, box.height, box.rotate, fill, stroke, line));
  }

  drawEllipse(given) {
    const o = options(given, ['x', 'y', 'xScale', 'yScale', 'color', 'borderColor', 'borderWidth'], 'drawEllipse');
    const value = (name, usual) => (o[name] === undefined ? usual : finite(o[name], `drawEllipse: ${name}`));
    const [x, y, a, b] = [value('x', 0), value('y', 0), value('xScale', 100), value('yScale', 100)];
    const [fill, stroke, line] = paint(given, 'drawEllipse');
    if (fill !== NO_COLOR && stroke !== NO_COLOR) {
      // The library keeps the stroke inside of its box; here it lies on the ellipse.
      const [w, h] = [2 * a + line, 2 * b + line];
      this.#draw((m, at) => m.ellipse(at, x - w / 2, y - h / 2, w, h, fill, stroke, line));
    } else {
      this.drawContent(ellipse(this.#host.unit, x, y, a, b, fill, stroke, line));
    }
  }

  /** Draws a form, scaled to the box. */
  drawForm(form, given) {
    const number = PdfForm.numberOf(form, this.#host.document, 'drawForm: the form');
    const box = this.#box('drawForm', given, form.width, form.height, []);
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
    this.#draw((m, at, library) => m.content(at, library.text(operators, 'drawContent: the operators')));
  }

  /** A resource of what is drawn: setResource('/Font/F1', '<< /Type /Font … >>'). */
  setResource(key, value) {
    const name = `/Resources${key}`;
    this.#host.call(this, 'setResource', (m, at, library) =>
      m.canvas_entry(at, library.text(name, 'the key'), library.text(value, 'the value')));
    this.#resources.set(name, value);
  }

  // Entries of a form that is written without the library's canvas.
  static entriesOf(canvas, bounds) {
    const entries = new Map([...canvas.#resources, ['/BBox', `[${bounds.join(' ')}]`], ['/FormType', '1'],
      ['/Resources/ExtGState/GS0', '1 0 R'], ['/Subtype', '/Form'], ['/Type', '/XObject']]);
    for (const image of canvas.#images) entries.set(`/Resources/XObject/Im${image}`, `${image} 0 R`);
    return [...entries];
  }

  #draw(body) {
    this.#host.call(this, 'drawing', (m, at, library) => {
      if (this.#lines.length > 0) m.content(at, library.text(this.#lines.splice(0).join('\n'), ''));
      body?.(m, at, library);
      return 0;
    });
  }

  #add(line) {
    this.#host.require(this, 'drawing');
    if (this.#lines.push(line) >= MOST_LINES) this.#draw();
  }

  static end(canvas) {
    canvas.#draw();
  }

  #box(call, given, usualWidth, usualHeight, more) {
    const o = options(given, ['x', 'y', 'width', 'height', 'rotate', ...more], call);
    const value = (name, usual) => (o[name] === undefined ? usual : finite(o[name], `${call}: ${name}`));
    return {
      x: value('x', 0), y: value('y', 0), rotate: value('rotate', 0),
      width: value('width', usualWidth), height: value('height', usualHeight),
    };
  }
}

export class PdfPage extends Canvas {
  constructor(document, host, box, index) {
    super(document, host, box);
    this.index = index;
  }
}

export class PdfForm extends Canvas {}

/** Hands over what is left to draw. */
export const endCanvas = (canvas) => Canvas.end(canvas);
export const formEntries = (canvas, bounds) => Canvas.entriesOf(canvas, bounds);

function paint(given, call) {
  const { color, borderColor, borderWidth = 1 } = given ?? {};
  const stroke = borderColor === undefined ? NO_COLOR : colorOf(borderColor, `${call}: borderColor`);
  const bare = color === undefined && stroke !== NO_COLOR;
  const fill = bare ? NO_COLOR : colorOf(color ?? 0, `${call}: color`);
  if (finite(borderWidth, `${call}: borderWidth`) < 0) throw invalid(`${call}: borderWidth is less than 0`);
  return [fill, stroke, stroke === NO_COLOR ? 0 : borderWidth];
}

// A rectangle in as few bytes as there are for it.
function compactRectangle(unit, { x, y, width, height }, fill, stroke, line) {
  const box = `${short(x * unit)} ${short(y * unit)} ${short(width * unit)} ${short(height * unit)} re`;
  const share = (byte) => Math.round((byte * 1000) / 255) / 1000;
  const color = (rgb) => `${share(rgb >> 16)} ${share((rgb >> 8) & 255)} ${share(rgb & 255)}`;
  if (stroke === NO_COLOR) return `q ${color(fill)} rg ${box} f Q`;
  const border = `${color(stroke)} RG ${short(line * unit)} w ${box}`;
  return fill === NO_COLOR ? `q ${border} S Q` : `q ${color(fill)} rg ${border} B Q`;
}

const short = (value) => (Math.abs(value) < 1e9 ? String(Math.round(value * 1e4) / 1e4) : value.toFixed(4));

export const real = (value) => value.toFixed(4);

function ellipse(unit, x, y, xScale, yScale, fill, stroke, line) {
  const [a, b] = [xScale * unit, yScale * unit];
  const curve = (...points) => `${points.map(real).join(' ')} c`;
  const channels = (color) => [color >> 16, (color >> 8) & 255, color & 255].map((byte) => real(byte / 255)).join(' ');
  const colors = fill !== NO_COLOR ? `${channels(fill)} rg` : `${channels(stroke)} RG ${real(line * unit)} w`;
  const [ka, kb] = [HANDLE * a, HANDLE * b];
  return [`q ${colors} 1 0 0 1 ${real(x * unit)} ${real(y * unit)} cm ${real(-a)} 0 m`,
    curve(-a, kb, -ka, b, 0, b), curve(ka, b, a, kb, a, 0), curve(a, -kb, ka, -b, 0, -b),
    curve(-ka, -b, -a, -kb, -a, 0), fill !== NO_COLOR ? 'f Q' : 's Q'].join('\r\n');
}

export const stateError = (what) => new JtpdfError('state', what);
