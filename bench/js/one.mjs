// node one.mjs PACKAGE WORKLOAD SHARE FOLDER: one document under Node: prints milliseconds, megabytes of memory at
// most above those before, and bytes.
import * as fs from 'node:fs';
import { join } from 'node:path';
import { packages, workloads } from './workloads.mjs';

const [name, index, share, folder] = process.argv.slice(2);
const { inputs, count, run } = workloads(Number(share))[index];
const load = { jtpdf: () => import('jtpdf'), 'pdf-lib': () => import('pdf-lib'), jsPDF: () => import('jspdf'),
  PDFKit: async () => (await import('pdfkit')).default };
const loaded = await load[name]();
await loaded.load?.();  // jtpdf's module, which is as good as a script
const by = packages[name](loaded);
const blob = fs.openAsBlob ?? (async (path) => new Blob([fs.readFileSync(path)]));
const names = inputs ? fs.readdirSync(join(folder, inputs)).sort().slice(0, count) : [];
const files = await Promise.all(names.map(async (file) => Object.assign(await blob(join(folder, inputs, file)), { name: file })));
const peak = () => Number(/VmHWM:\s+(\d+)/.exec(fs.readFileSync('/proc/self/status', 'utf8'))[1]) / 1024;

fs.writeFileSync('/proc/self/clear_refs', '5');  // begins a new peak
const [before, start] = [peak(), performance.now()];
const size = await run(by, files);
console.log(JSON.stringify({ ms: performance.now() - start, mb: peak() - before, size }));
process.exit();
