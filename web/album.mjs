// The PDF of the pictures.
import { Document } from './jtpdf.mjs';
import { layOut } from './layout.mjs';

/**
 * Makes the document of the items, { file, turn }, and calls step before each. What cannot be used is
 * left out and told: { document, pages, failures: [{ item, why }] }.
 */
export async function makeAlbum(items, options, step) {
  const document = await Document.create({ title: options.title || undefined, creator: 'Pictures to PDF', compress: true });
  // All at once: the document reads a few ahead.
  const images = items.map(({ file }) => document.embedImage(file, { check: true }));
  for (const image of images) image.catch(() => {});  // told when its turn comes
  const failures = [];
  for (const [i, item] of items.entries()) {
    step(i);
    // Between two pictures the browser gets to show how far it is.
    if (i % 8 === 7) await new Promise((resolve) => setTimeout(resolve));
    try {
      addPicture(document, item, await images[i], options);
    } catch (error) {
      const why = reason(error);
      if (!why) throw error;
      failures.push({ item, why });
    }
  }
  return { document, pages: document.pageCount, failures };
}

// Why this picture cannot be used; none for what is wrong with more than the picture.
function reason(error) {
  if (error.code === 'damaged' || error.code === 'unsupported') return error.message;
  const isGone = error.name === 'NotReadableError' || error.name === 'NotFoundError';
  return isGone ? 'the file cannot be read any more; it was moved or changed, choose it again' : undefined;
}

function addPicture(document, { file, turn }, image, options) {
  const { page, box, cut } = layOut(image, turn, options);
  const canvas = document.addPage(page);
  if (cut) canvas.drawContent(`q ${cut.map((side) => side.toFixed(4)).join(' ')} re W n`);
  canvas.drawImage(image, box);
  if (cut) canvas.drawContent('Q');
  if (options.bookmarks) document.addBookmark(file.name.replace(/\.[^.]*$/, '') || file.name);
}
