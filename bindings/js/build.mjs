// node build.mjs MODULE.wasm FOLDER: makes the package's files in FOLDER/dist out of src: one for each
// way to take it. Each of the sources becomes a function that gives what it exports.
import { copyFileSync, mkdirSync, readFileSync, writeFileSync } from 'node:fs';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const here = fileURLToPath(new URL('.', import.meta.url));
const [wasm, folder] = process.argv.slice(2);
if (!folder) throw new Error('usage: node build.mjs MODULE.wasm FOLDER');

const IMPORT = /^import (\{[^}]*\}) from '(.*?)';\n/gm;
const EXPORT = /^export (?=(?:async )?(?:function\*?|class|const|let) (\w+))/gm;

// The sources that one takes, each behind those that it takes itself.
function inOrder(name, platform, found = new Map()) {
  const file = name === 'platform' ? `platform.${platform}` : name;
  if (found.has(file)) return found;
  const text = readFileSync(join(here, 'src', `${file}.mjs`), 'utf8');
  for (const [, , from] of text.matchAll(/^(?:import|export) (\{[^}]*\}) from '(.*?)';$/gm)) {
    if (from.startsWith('./')) inOrder(from.slice(2, -4), platform, found);
  }
  found.set(file, text);
  return found;
}

function asFunction(text) {
  const names = [...text.matchAll(/^export (?:async )?(?:function\*?|class|const|let) (\w+)/gm)].map((match) => match[1]);
  const body = text.replace(IMPORT, '').replace(EXPORT, '');
  return `const { ${names.join(', ')} } = (() => {\n${body}return { ${names.join(', ')} };\n})();\n`;
}

function bundle(platform) {
  const sources = inOrder('index', platform);
  const index = sources.get('index');
  sources.delete('index');
  const exported = [...index.matchAll(/^export \{(.*?)\}/gm)].flatMap((match) => match[1].split(',').map((name) => name.trim()));
  const system = new Set();
  for (const text of sources.values()) {
    for (const [line, , from] of text.matchAll(IMPORT)) if (!from.startsWith('./')) system.add(line);
  }
  return { head: [...system].join(''), body: [...sources.values()].map(asFunction).join('\n'), exported };
}

const LICENSE = '// jtpdf, MIT licence. Made of the sources in bindings/js/src.\n';
const dist = join(folder, 'dist');
mkdirSync(dist, { recursive: true });
for (const platform of ['node', 'browser']) {
  const { head, body, exported } = bundle(platform);
  writeFileSync(join(dist, `jtpdf.${platform}.mjs`), `${LICENSE}${head}${body}\nexport { ${exported.join(', ')} };\n`);
  if (platform === 'browser') continue;
  const required = head.replace(/^import (\{.*?\}) from ('.*?');$/gm, 'const $1 = require($2);');
  const plain = body.replaceAll('import.meta.url', "require('node:url').pathToFileURL(__filename)");
  writeFileSync(join(dist, 'jtpdf.cjs'), `'use strict';\n${LICENSE}${required}${plain}\nmodule.exports = { ${exported.join(', ')} };\n`);
}
for (const types of ['jtpdf.d.mts', 'jtpdf.d.cts']) copyFileSync(join(here, 'jtpdf.d.ts'), join(dist, types));
copyFileSync(wasm, join(dist, 'jtpdf.wasm'));
