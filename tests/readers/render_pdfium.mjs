// render_pdfium.mjs PACKAGES FILE FOLDER [SCALE]: renders each page with PDFium, SCALE pixels a point
// (one), into FOLDER/page-N.ppm. PACKAGES is the directory with node_modules.

import { createRequire } from "node:module";
import fs from "node:fs";
import path from "node:path";

const [packages, file, folder, scale] = process.argv.slice(2);
const require = createRequire(path.join(path.resolve(packages), "package.json"));
const { PDFiumLibrary } = require("@hyzyla/pdfium");

const library = await PDFiumLibrary.init();
const document = await library.loadDocument(fs.readFileSync(file));
for (const page of document.pages()) {
  const image = await page.render({ scale: Number(scale ?? 1), render: "bitmap" });
  // Four bytes a pixel: red, green, blue and alpha.
  const pixels = Buffer.alloc(3 * image.width * image.height);
  for (let i = 0, j = 0; i < image.data.length; i += 4) {
    pixels[j++] = image.data[i];
    pixels[j++] = image.data[i + 1];
    pixels[j++] = image.data[i + 2];
  }
  const head = Buffer.from(`P6\n${image.width} ${image.height}\n255\n`);
  fs.writeFileSync(path.join(folder, `page-${page.number + 1}.ppm`), Buffer.concat([head, pixels]));
}
document.destroy();
library.destroy();
