// Small pictures of the files that are in view: decoding is what takes memory.
const SIDE = 320;
let last = Promise.resolve();  // one after the other

const seen = new IntersectionObserver((entries) => {
  for (const { target, isIntersecting } of entries) {
    if (!isIntersecting) continue;
    seen.unobserve(target);
    const file = waiting.get(target);
    last = last.then(() => draw(target, file)).catch(() => nothing(target, file));
  }
}, { rootMargin: '200px' });
const waiting = new WeakMap();

/** Shows the file in the element, once that is in view. */
export function showThumbnail(element, file) {
  waiting.set(element, file);
  seen.observe(element);
}

async function draw(element, file) {
  if (!element.isConnected) return;
  const bitmap = await createImageBitmap(file, { resizeWidth: SIDE, resizeQuality: 'medium' });
  const canvas = document.createElement('canvas');
  [canvas.width, canvas.height] = [bitmap.width, bitmap.height];
  canvas.getContext('2d').drawImage(bitmap, 0, 0);
  bitmap.close();
  element.replaceChildren(canvas);
}

// What the browser does not show may be fine for the PDF.
function nothing(element, file) {
  const kind = document.createElement('b');
  kind.textContent = /[^.]+$/.exec(file.name)[0].slice(0, 5).toUpperCase();
  element.replaceChildren(kind);
}
