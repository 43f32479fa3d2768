// Entries of what the package writes by itself: [[key, value]].

/** The text of a dictionary, in the library's way of writing it; nested ones are arrays of their own. */
export function dictionary(entries) {
  const sorted = entries.sort(([a], [b]) => (a < b ? -1 : 1));
  return sorted.map(([key, value]) =>
    (Array.isArray(value) ? `${key}\r\n<<\r\n${dictionary(value)}>>\r\n` : `${key} ${value}\r\n`)).join('');
}

/** Entries and data of contents: compressed where that is smaller. */
export const filtered = (entries, plain, smaller) => (smaller.length < plain.length
  ? [[...entries, ['/Filter', '/FlateDecode']], smaller] : [entries, plain]);

/** What an image's stream has, in that colour space. */
export const imageEntries = ({ facts, filter, bits, more }, space) => [
  ['/Type', '/XObject'], ['/Subtype', '/Image'], ['/Width', facts.width], ['/Height', facts.height],
  ['/BitsPerComponent', bits], ['/ColorSpace', space], ['/Filter', filter], ...more,
];

/** What a form's stream has; its bounds are in points. */
export const formEntries = (bounds, resources) =>
  [...resources, ['/BBox', `[${bounds.join(' ')}]`], ['/Subtype', '/Form'], ['/Type', '/XObject']];
