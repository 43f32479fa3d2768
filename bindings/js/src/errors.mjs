// What goes wrong, as one class of error.

/** What went wrong: `code` for programs, `message` for people. */
export class JtpdfError extends Error {
  constructor(code, message, options) {
    super(message, options);
    this.name = 'JtpdfError';
    this.code = code;
  }
}

export const damaged = (what) => new JtpdfError('damaged', what);
export const unsupported = (what) => new JtpdfError('unsupported', what);
export const invalid = (what) => new JtpdfError('argument', what);
export const stateError = (what) => new JtpdfError('state', what);

export const cutOff = () =>
  damaged('the picture ends before it is whole; the file was cut off, copy it again from its source');

/** A finite number, or an error that names it. */
export function finite(value, name) {
  if (typeof value === 'number' && Number.isFinite(value)) return value;
  throw invalid(`${name} is ${describe(value)}, not a finite number`);
}

/** An option that is a finite number, or what is usual. */
export function numberIn(given, name, usual, call) {
  const value = given[name];
  return value === undefined ? usual : Number.isFinite(value) ? value : finite(value, `${call}: ${name}`);
}

export function whole(value, name, least, most) {
  if (Number.isInteger(value) && value >= least && value <= most) return value;
  throw invalid(`${name} is ${describe(value)}, not a whole number from ${least} to ${most}`);
}

/** The options of a call; a name that it does not know is an error, not a silence. */
export function options(given, known, call) {
  if (given === undefined) return {};
  if (given === null || typeof given !== 'object') {
    throw invalid(`${call}: the options are ${describe(given)}, not an object`);
  }
  for (const name in given) {
    if (!known.includes(name) && Object.hasOwn(given, name)) {
      throw invalid(`${call} knows no option "${name}"; it takes ${known.join(', ')}`);
    }
  }
  return given;
}

export function describe(value) {
  if (typeof value === 'string') return JSON.stringify(value.length > 60 ? `${value.slice(0, 60)}…` : value);
  if (typeof value === 'object' && value !== null) return `an object (${value.constructor?.name ?? 'Object'})`;
  return typeof value === 'function' ? 'a function' : String(value);
}
