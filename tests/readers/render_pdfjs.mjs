// render_pdfjs.mjs PACKAGES FILE FOLDER: renders each page with pdf.js, a pixel a point, into
// FOLDER/page-N.ppm. PACKAGES is the directory with node_modules. Every warning goes to standard
// error.

import { createRequire } from "node:module";
import fs from "node:fs";
import path from "node:path";
import { pathToFileURL } from "node:url";

const [packages, file, folder] = process.argv.slice(2);
const require = createRequire(path.join(path.resolve(packages), "package.json"));
const { createCanvas } = require("@napi-rs/canvas");
const home = path.dirname(require.resolve("pdfjs-dist/package.json"));
console.log = console.warn = (...words) => console.error(...words);
const pdfjs = await import(pathToFileURL(path.join(home, "legacy/build/pdf.mjs")));

const document = await pdfjs.getDocument({
  data: new Uint8Array(fs.readFileSync(file)),
  wasmUrl: path.join(home, "wasm") + path.sep,
  iccUrl: path.join(home, "iccs") + path.sep,
  standardFontDataUrl: path.join(home, "standard_fonts") + path.sep,
  verbosity: pdfjs.VerbosityLevel.WARNINGS,
}).promise;

for (let number = 1; number <= document.numPages; number++) {
  const page = await document.getPage(number);
  const viewport = page.getViewport({ scale: 1 });
  const width = Math.round(viewport.width);
  const height = Math.round(viewport.height);
  const canvas = createCanvas(width, height);
  const context = canvas.getContext("2d");
  await page.render({ canvasContext: context, viewport, background: "white" }).promise;
  const { data } = context.getImageData(0, 0, width, height);
  const pixels = Buffer.alloc(3 * width * height);
  for (let i = 0, j = 0; i < data.length; i += 4) {
    pixels[j++] = data[i];
    pixels[j++] = data[i + 1];
    pixels[j++] = data[i + 2];
  }
  const head = Buffer.from(`P6\n${width} ${height}\n255\n`);
  fs.writeFileSync(path.join(folder, `page-${number}.ppm`), Buffer.concat([head, pixels]));
  page.cleanup();
}
await document.destroy();
