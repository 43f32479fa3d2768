// One document in Chromium: { ms, mb, size }. A tab of its own, whose process tells its peak.
import fs from 'node:fs';
import http from 'node:http';
import { extname, join } from 'node:path';
import puppeteer from 'puppeteer-core';

const TYPES = { '.html': 'text/html', '.mjs': 'text/javascript', '.js': 'text/javascript', '.wasm': 'application/wasm' };
const PAGE = `<!doctype html><title>bench</title><input type="file" multiple>
<script src="pdf-lib.js"></script><script src="jspdf.js"></script><script src="pdfkit.js"></script>
<script type="module">
import * as jtpdf from './jtpdf.mjs';
import { packages, workloads } from './workloads.mjs';
const loaded = { jtpdf, 'pdf-lib': globalThis.PDFLib, jsPDF: globalThis.jspdf, PDFKit: globalThis.PDFDocument };
await jtpdf.load();
globalThis.measure = async (name, index, share) => {
  const files = [...document.querySelector('input').files];
  const start = performance.now();
  const size = await workloads(share)[index].run(packages[name](loaded[name]), files);
  return { ms: performance.now() - start, size };
};
</script>`;

export async function openBrowser(modules) {
  const files = { 'jtpdf.mjs': join(modules, 'jtpdf/dist/jtpdf.browser.mjs'), 'jtpdf.wasm': join(modules, 'jtpdf/dist/jtpdf.wasm'),
    'pdf-lib.js': join(modules, 'pdf-lib/dist/pdf-lib.min.js'), 'jspdf.js': join(modules, 'jspdf/dist/jspdf.umd.min.js'),
    'pdfkit.js': join(modules, 'pdfkit/js/pdfkit.standalone.js'), 'workloads.mjs': new URL('./workloads.mjs', import.meta.url) };
  const server = http.createServer((request, response) => {
    const name = request.url.slice(1);
    if (name !== '' && !files[name]) return response.writeHead(404).end();
    response.writeHead(200, { 'Content-Type': TYPES[extname(name || '.html')] ?? 'text/html' });
    response.end(name === '' ? PAGE : fs.readFileSync(files[name]));
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  const browser = await puppeteer.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-dev-shm-usage'], protocolTimeout: 600000 });
  return {
    async close() {
      await browser.close();
      server.closeAllConnections();
      server.close();
    },
    version: () => browser.version(),
    async measure(name, index, share, inputs) {
      const page = await browser.newPage();
      await page.goto(`http://127.0.0.1:${server.address().port}/`);
      await page.waitForFunction(() => globalThis.measure);
      if (inputs.length > 0) await (await page.$('input')).uploadFile(...inputs);
      const id = await renderer(browser);
      const peak = () => Number(/VmHWM:\s+(\d+)/.exec(fs.readFileSync(`/proc/${id}/status`, 'utf8'))[1]) / 1024;
      fs.writeFileSync(`/proc/${id}/clear_refs`, '5');
      const before = peak();
      const result = await page.evaluate((...given) => globalThis.measure(...given), name, index, share);
      result.mb = peak() - before;
      await page.close();
      return result;
    },
  };
}

// The process that shows the page: of its kind the one with most memory, as it has loaded the packages.
async function renderer(browser) {
  const session = await browser.target().createCDPSession();
  const { processInfo } = await session.send('SystemInfo.getProcessInfo');
  const size = (id) => Number(/VmRSS:\s+(\d+)/.exec(fs.readFileSync(`/proc/${id}/status`, 'utf8'))?.[1] ?? 0);
  return processInfo.filter(({ type }) => type === 'renderer').sort((a, b) => size(b.id) - size(a.id))[0].id;
}
