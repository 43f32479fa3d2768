// What draws: the library's canvas, for the bytes that it gives everywhere, or operators as text, for
// documents that are to be small. Boxes are { x, y, width, height, rotate } in the document's unit.
import { checked } from './library.mjs';

export const NO_COLOR = -1;
const HANDLE = 0.551784;  // of the curves of an ellipse, as the library has it

export class LibraryPen {
  #draw;
  #unit;

  /** draw(body) runs body(module, document, library). */
  constructor(draw, unit) {
    this.#draw = draw;
    this.#unit = unit;
  }

  image(number, { x, y, width, height, rotate }) {
    this.#draw((m, at) => m.image(at, number, x, y, width, height, rotate));
  }

  rectangle({ x, y, width, height, rotate }, fill, stroke, line) {
    this.#draw((m, at) => m.rectangle(at, x, y, width, height, rotate, fill, stroke, line));
  }

  ellipse(x, y, xScale, yScale, fill, stroke, line) {
    if (fill !== NO_COLOR && stroke !== NO_COLOR) {
      // The library keeps the stroke inside of its box; here it lies on the ellipse.
      const [w, h] = [2 * xScale + line, 2 * yScale + line];
      this.#draw((m, at) => m.ellipse(at, x - w / 2, y - h / 2, w, h, fill, stroke, line));
    } else {
      this.content(ellipseAlone(this.#unit, x, y, xScale, yScale, fill, stroke, line));
    }
  }

  content(operators) {
    this.#draw((m, at, library) => m.content(at, library.text(operators, 'drawContent: the operators')));
  }
}

// An ellipse with one paint, in the library's way of writing.
function ellipseAlone(unit, x, y, xScale, yScale, fill, stroke, line) {
  const [a, b] = [xScale * unit, yScale * unit];
  const curve = (...points) => `${points.map(real).join(' ')} c`;
  const channels = (color) => [color >> 16, (color >> 8) & 255, color & 255].map((byte) => real(byte / 255)).join(' ');
  const colors = fill !== NO_COLOR ? `${channels(fill)} rg` : `${channels(stroke)} RG ${real(line * unit)} w`;
  const [ka, kb] = [HANDLE * a, HANDLE * b];
  return [`q ${colors} 1 0 0 1 ${real(x * unit)} ${real(y * unit)} cm ${real(-a)} 0 m`,
    curve(-a, kb, -ka, b, 0, b), curve(ka, b, a, kb, a, 0), curve(a, -kb, ka, -b, 0, -b),
    curve(-ka, -b, -a, -kb, -a, 0), fill !== NO_COLOR ? 'f Q' : 's Q'].join('\r\n');
}

export const real = (value) => value.toFixed(4);

/** A number in as few digits as show a thousandth of a point. */
export function short(value) {
  if (!(Math.abs(value) < 1e9)) return value.toFixed(4);
  if (Number.isInteger(value)) return String(value);
  const text = String(Math.round(value * 1000) / 1000);
  return text.startsWith('0.') ? text.slice(1) : text.startsWith('-0.') ? `-${text.slice(2)}` : text;
}

const SHARES = Array.from({ length: 256 }, (_, byte) => short(byte / 255));
const color = (rgb) => `${SHARES[rgb >> 16]} ${SHARES[(rgb >> 8) & 255]} ${SHARES[rgb & 255]}`;

/** Shapes side by side share one "q" and "Q", and say a colour again only when it changes. */
export class CompactPen {
  #unit;
  #lines = [];
  #isOpen = false;
  #fill;
  #stroke;
  #width;

  constructor(unit) {
    this.#unit = unit;
  }

  image(number, box) {
    const { cos, sin, x, y } = this.#turned(box);
    const [width, height] = [box.width * this.#unit, box.height * this.#unit];
    const [a, b, c, d] = [width * cos, width * sin, -height * sin, height * cos];
    this.#lines.push(`q ${[a, b, c, d, x - (a + c) / 2, y - (b + d) / 2].map(short).join(' ')} cm /Im${number} Do Q`);
  }

  rectangle(box, fill, stroke, line) {
    const paint = this.#paint(fill, stroke, line);
    const unit = this.#unit;
    const [width, height] = [box.width * unit, box.height * unit];
    if (box.rotate === 0) {
      this.#lines.push(`${short(box.x * unit)} ${short(box.y * unit)} ${short(width)} ${short(height)} re ${paint}`);
    } else {
      const { cos, sin, x, y } = this.#turned(box);
      const matrix = `${[cos, sin, -sin, cos].map((value) => value.toFixed(6)).join(' ')} ${short(x)} ${short(y)}`;
      this.#lines.push(`q ${matrix} cm ${[-width / 2, -height / 2, width, height].map(short).join(' ')} re ${paint} Q`);
    }
  }

  ellipse(x, y, xScale, yScale, fill, stroke, line) {
    const paint = this.#paint(fill, stroke, line).toLowerCase();  // which closes the path
    const [a, b, left, bottom] = [xScale, yScale, x, y].map((value) => value * this.#unit);
    const [ka, kb] = [HANDLE * a, HANDLE * b];
    const at = (...points) => points.map((value, i) => short(value + (i % 2 ? bottom : left))).join(' ');
    this.#lines.push(`${at(-a, 0)} m ${at(-a, kb, -ka, b, 0, b)} c ${at(ka, b, a, kb, a, 0)} c ` +
      `${at(a, -kb, ka, -b, 0, -b)} c ${at(-ka, -b, -a, -kb, -a, 0)} c ${paint}`);
  }

  content(operators) {
    checked(operators, 'drawContent: the operators');
    this.#close();
    this.#lines.push(operators);
  }

  /** All that was drawn. */
  text() {
    this.#close();
    return this.#lines.join('\n');
  }

  #turned({ x, y, width, height, rotate }) {
    const angle = (rotate * Math.PI) / 180;
    return { cos: Math.cos(angle), sin: Math.sin(angle), x: (x + width / 2) * this.#unit, y: (y + height / 2) * this.#unit };
  }

  // Sets the paints that are not in force, and gives the operator that uses them.
  #paint(fill, stroke, line) {
    if (!this.#isOpen) {
      this.#lines.push('q');
      this.#isOpen = true;
      this.#fill = this.#stroke = this.#width = undefined;
    }
    if (fill !== NO_COLOR && fill !== this.#fill) this.#lines.push(`${color(this.#fill = fill)} rg`);
    if (stroke === NO_COLOR) return 'f';
    if (stroke !== this.#stroke) this.#lines.push(`${color(this.#stroke = stroke)} RG`);
    if (line !== this.#width) this.#lines.push(`${short((this.#width = line) * this.#unit)} w`);
    return fill === NO_COLOR ? 'S' : 'B';
  }

  #close() {
    if (this.#isOpen) this.#lines.push('Q');
    this.#isOpen = false;
  }
}
