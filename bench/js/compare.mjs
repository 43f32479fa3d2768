// node compare.mjs INPUTS MODULES ROUNDS [PLACE]: each workload by each package, in turn, under Node and in
// Chromium, or in one of them; the best of the rounds counts. Prints Markdown.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import { cpus } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { openBrowser } from './browser.mjs';
import { packages, workloads } from './workloads.mjs';

const [folder, modules, rounds, only = ''] = process.argv.slice(2);
const version = (name) => JSON.parse(fs.readFileSync(join(modules, name.toLowerCase(), 'package.json'))).version;
const inputsOf = (name) => (name ? fs.readdirSync(join(folder, name)).sort().map((file) => join(folder, name, file)) : []);

function underNode(name, workload) {
  try {
    const said = execFileSync('node', [fileURLToPath(new URL('./one.mjs', import.meta.url)), name, workload, folder],
      { encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'], timeout: 600000 });
    return JSON.parse(said);
  } catch (error) {
    return { failed: /\w*Error.*|heap.*/.exec(error.stderr)?.[0].slice(0, 60) ?? 'does not end' };
  }
}

async function inBrowser(name, workload) {
  const browser = await openBrowser(modules);
  try {
    return await browser.measure(name, workload, inputsOf(workloads[workload][1]));
  } catch (error) {
    return { failed: error.message.slice(0, 60) };
  } finally {
    await browser.close();
  }
}

function table(results) {
  const [ours, ...peers] = results;
  console.log('| package | ms | jtpdf is faster by | MB of memory | bytes |\n|---|---:|---:|---:|---:|');
  for (const { name, best } of [ours, ...peers]) {
    const cells = best.failed ? [best.failed, '', '', ''] : [best.ms.toFixed(best.ms < 100 ? 1 : 0),
      (best.ms / ours.best.ms).toFixed(1), best.mb.toFixed(1), best.size.toLocaleString('en')];
    console.log(`| ${name} | ${cells.join(' | ')} |`);
  }
  console.log();
}

const browser = await openBrowser(modules);
console.log(`Node ${process.version}, ${await browser.version()}, ${cpus()[0].model}; ` +
  `${Object.keys(packages).slice(1).map((name) => `${name} ${version(name)}`).join(', ')}; best of ${rounds}.\n`);
await browser.close();
for (const [place, measure, names] of [['Node', underNode, Object.keys(packages)],
  ['Chromium', inBrowser, Object.keys(packages).filter((name) => name !== 'PDFKit')]]) {
  if (only && only !== place.toLowerCase()) continue;
  for (const [workload, [title]] of workloads.entries()) {
    const results = names.map((name) => ({ name, best: { ms: Infinity } }));
    for (let round = 0; round < rounds; ++round) {
      for (const one of results) {
        const found = await measure(one.name, workload);
        if (found.failed || found.ms < one.best.ms) one.best = found;
      }
    }
    console.log(`### ${place}: ${title}\n`);
    table(results);
  }
}
