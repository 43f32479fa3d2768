// node compare.mjs INPUTS MODULES ROUNDS SHARE [PLACE]: each workload by each package, in turn, under Node and in
// Chromium, or in one of them; the best of the rounds counts. SHARE of the pictures and pages is taken. Prints
// Markdown.
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import { cpus } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { openBrowser } from './browser.mjs';
import { packages, workloads } from './workloads.mjs';

const [folder, modules, rounds, share, only = ''] = process.argv.slice(2);
const LONG = 8000;  // milliseconds: what takes longer runs once
const names = Object.keys(packages);
const version = (name) => JSON.parse(fs.readFileSync(join(modules, name.toLowerCase(), 'package.json'))).version;
const why = (text) => /[^\n]*(Error|heap out of memory)[^\n]*/.exec(text)?.[0].trim().slice(0, 60) ?? 'does not end';

function underNode(name, index) {
  const one = fileURLToPath(new URL('./one.mjs', import.meta.url));
  try {
    return JSON.parse(execFileSync('node', [one, name, index, share, folder],
      { encoding: 'utf8', stdio: ['ignore', 'pipe', 'pipe'], timeout: 300000 }));
  } catch (error) {
    return { failed: why(error.stderr) };
  }
}

async function inBrowser(name, index, { inputs, count }) {
  const files = inputs ? fs.readdirSync(join(folder, inputs)).sort().slice(0, count) : [];
  const browser = await openBrowser(modules);
  try {
    return await browser.measure(name, index, Number(share), files.map((file) => join(folder, inputs, file)));
  } catch (error) {
    return { failed: why(error.message) };
  } finally {
    await browser.close();
  }
}

async function compare(measure, index, workload) {
  const results = names.map((name) => ({ name, best: { ms: Infinity } }));
  for (let round = 0; round < rounds; ++round) {
    for (const one of results) {
      if (round > 0 && (one.best.failed || one.best.ms > LONG)) continue;
      const found = await measure(one.name, index, workload);
      if (found.failed || found.ms < one.best.ms) one.best = found;
    }
  }
  return results;
}

function table(results) {
  const [ours] = results;
  console.log('| package | ms | jtpdf is faster by | MB of memory | bytes |\n|---|---:|---:|---:|---:|');
  for (const { name, best } of results) {
    const cells = best.failed ? [best.failed, '', '', ''] : [best.ms.toFixed(best.ms < 100 ? 1 : 0),
      (best.ms / ours.best.ms).toFixed(1), best.mb.toFixed(1), best.size.toLocaleString('en')];
    console.log(`| ${name} | ${cells.join(' | ')} |`);
  }
  console.log();
}

const browser = await openBrowser(modules);
const versions = names.slice(1).map((name) => `${name} ${version(name)}`).join(', ');
console.log(`Node ${process.version}, ${await browser.version()}, ${cpus()[0].model}; ${versions}; best of ${rounds}` +
  `${rounds > 1 ? `, but what takes more than ${LONG / 1000} s runs once` : ''}.\n`);
await browser.close();
for (const [place, measure] of [['Node', underNode], ['Chromium', inBrowser]]) {
  if (only && only !== place.toLowerCase()) continue;
  for (const [index, workload] of workloads(Number(share)).entries()) {
    console.log(`### ${place}: ${workload.title}\n`);
    table(await compare(measure, index, workload));
  }
}
