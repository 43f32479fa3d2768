// Renders pages as pdf.js shows them:
//     node render_with_pdfjs.mjs NODE_MODULES IN.pdf OUT_PREFIX
// writes OUT_PREFIX1.png and so on, at 96 dpi, and prints pdf.js's warnings.
import { createRequire } from "node:module";
import { readFileSync, writeFileSync } from "node:fs";
import { pathToFileURL } from "node:url";

const [modules, input, prefix] = process.argv.slice(2);
const require = createRequire(pathToFileURL(modules + "/"));
const { createCanvas } = require("@napi-rs/canvas");
const folder = modules + "/pdfjs-dist";
const pdfjs = await import(pathToFileURL(folder + "/legacy/build/pdf.mjs").href);

const pdf = await pdfjs.getDocument({
  data: new Uint8Array(readFileSync(input)),
  standardFontDataUrl: folder + "/standard_fonts/",
  stopAtErrors: true,
}).promise;
for (let number = 1; number <= pdf.numPages; ++number) {
  const page = await pdf.getPage(number);
  const viewport = page.getViewport({ scale: 96 / 72 });
  const canvas = createCanvas(Math.round(viewport.width), Math.round(viewport.height));
  await page.render({ canvasContext: canvas.getContext("2d"), viewport }).promise;
  writeFileSync(`${prefix}${number}.png`, canvas.toBuffer("image/png"));
}
