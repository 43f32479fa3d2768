// node build.mjs PACKAGE FOLDER: puts the page in FOLDER: the files here, and the npm package's script and
// module. The service worker gets to know which there are, and a version that changes with them.
import { createHash } from 'node:crypto';
import { copyFileSync, mkdirSync, readdirSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const [dist, folder] = process.argv.slice(2);
if (!folder) throw new Error('usage: node build.mjs PACKAGE FOLDER');
const here = fileURLToPath(new URL('.', import.meta.url));

rmSync(folder, { recursive: true, force: true });
mkdirSync(folder, { recursive: true });
for (const name of readdirSync(here)) {
  if (!['build.mjs', 'tests', 'worker.js'].includes(name)) copyFileSync(join(here, name), join(folder, name));
}
copyFileSync(join(dist, 'dist/jtpdf.browser.mjs'), join(folder, 'jtpdf.mjs'));
copyFileSync(join(dist, 'dist/jtpdf.wasm'), join(folder, 'jtpdf.wasm'));

const hash = createHash('sha256');
const files = readdirSync(folder).sort();
for (const name of files) hash.update(name).update(readFileSync(join(folder, name)));
const worker = readFileSync(join(here, 'worker.js'), 'utf8')
  .replace("'VERSION'", `'pictures-${hash.digest('hex').slice(0, 16)}'`)
  .replace("['FILES']", JSON.stringify(['./', ...files]));
writeFileSync(join(folder, 'worker.js'), worker);
