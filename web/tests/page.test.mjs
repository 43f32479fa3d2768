// The page in Chromium, as somebody uses it.
import assert from 'node:assert/strict';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import http from 'node:http';
import { basename, extname, join } from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import puppeteer from 'puppeteer-core';

const { JTPDF_PAGE: folder, JTPDF_PICTURES: pictures, JTPDF_WORK: work, JTPDF_SCREENSHOTS: screenshots } = process.env;
const axe = fs.readFileSync(new URL('./node_modules/axe-core/axe.min.js', import.meta.url), 'utf8');
const TYPES = { '.html': 'text/html', '.mjs': 'text/javascript', '.js': 'text/javascript', '.css': 'text/css',
  '.wasm': 'application/wasm', '.svg': 'image/svg+xml', '.webmanifest': 'application/manifest+json' };
const downloads = join(work, 'downloads');
let server, origin, browser, page, cdp;
let finished = 0;  // downloads
const strangers = [];  // requests that leave the machine
const complaints = [];

const within = (milliseconds, promise, what) => Promise.race([promise,
  new Promise((_, reject) => setTimeout(() => reject(new Error(`${what} took more than ${milliseconds} ms`)), milliseconds).unref())]);

async function until(condition, what, milliseconds = 20000) {
  for (const end = Date.now() + milliseconds; Date.now() < end;) {
    const value = await condition();
    if (value) return value;
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
  throw new Error(`${what} did not happen within ${milliseconds} ms`);
}

before(async () => {
  server = http.createServer((request, response) => {
    const path = new URL(request.url, 'http://x').pathname;
    const file = join(folder, path === '/' ? 'index.html' : basename(path));
    if (!fs.existsSync(file)) return response.writeHead(404).end();
    response.writeHead(200, { 'Content-Type': TYPES[extname(file)], 'Cache-Control': 'no-store' });
    response.end(fs.readFileSync(file));
  });
  await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
  origin = `http://127.0.0.1:${server.address().port}`;
  browser = await puppeteer.launch({
    executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-dev-shm-usage', '--disable-background-networking', '--force-color-profile=srgb'],
    protocolTimeout: 120000,
  });
  page = await browser.newPage();
  await page.setViewport({ width: 1280, height: 900 });
  page.on('request', (request) => {
    if (!request.url().startsWith(`${origin}/`) && !request.url().startsWith(`blob:${origin}/`)) strangers.push(request.url());
  });
  page.on('console', (message) => {
    if (message.type() === 'error') complaints.push(message.text());
  });
  page.on('pageerror', (error) => complaints.push(String(error)));
  cdp = await page.createCDPSession();
  const whole = await browser.target().createCDPSession();
  fs.rmSync(downloads, { recursive: true, force: true });
  await whole.send('Browser.setDownloadBehavior', { behavior: 'allow', downloadPath: downloads, eventsEnabled: true });
  whole.on('Browser.downloadProgress', ({ state }) => { finished += state === 'completed' ? 1 : 0; });
  await page.goto(origin);
});

after(async () => {
  await browser?.close();
  server?.closeAllConnections();
  server?.close();
});

const names = () => page.$$eval('#list .name', (found) => found.map((one) => one.textContent));
const text = (selector) => page.$eval(selector, (found) => found.textContent);
const picture = (name) => join(pictures, name);

async function drop(files) {
  const data = { items: [], files, dragOperationsMask: 1 };
  for (const type of ['dragEnter', 'dragOver', 'drop']) await cdp.send('Input.dispatchDragEvent', { type, x: 300, y: 200, data });
}

async function drag(from, to) {
  const middle = (selector) => page.$eval(selector, (element) => {
    const box = element.getBoundingClientRect();
    return [box.x + box.width / 2, box.y + box.height / 2];
  });
  const target = await middle(to);
  await page.mouse.move(...await middle(from));
  await page.mouse.down();
  await page.mouse.move(...target, { steps: 10 });
  await page.mouse.up();
}

async function choose(files) {
  await (await page.$('#choose')).uploadFile(...files);
}

// Presses the button and gives the file that was downloaded.
async function download(name) {
  fs.rmSync(join(downloads, name), { force: true });
  finished = 0;
  await page.click('#make');
  await until(async () => (await text('#done')) || (await text('#failed')), 'a result', 60000);
  await until(() => finished > 0, `the download of ${name}`, 60000);
  execFileSync('qpdf', ['--check', join(downloads, name)]);
  return join(downloads, name);
}

async function accessible(state) {
  await page.evaluate(axe);
  const found = await page.evaluate(async () => (await globalThis.axe.run()).violations.map(
    (one) => `${one.id}: ${one.help}: ${one.nodes.map((node) => node.html).join(' ')}`));
  assert.deepEqual(found, [], `axe-core, ${state}`);
}

async function shoot(name) {
  for (const [scheme, width] of [['light', 1280], ['dark', 1280], ['light', 390], ['dark', 390]]) {
    await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: scheme }]);
    await page.setViewport({ width, height: 900 });
    await new Promise((resolve) => setTimeout(resolve, 200));
    await page.screenshot({ path: join(screenshots, `${name}-${scheme}-${width}.png`), fullPage: true });
    await accessible(`${name}, ${scheme}, ${width} pixels`);
    const wide = await page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
    assert.ok(wide <= 0, `${name} at ${width} pixels is ${wide} pixels too wide`);
  }
  await page.emulateMediaFeatures([{ name: 'prefers-color-scheme', value: 'light' }]);
  await page.setViewport({ width: 1280, height: 900 });
}

test('the page is small', () => {
  const size = fs.readdirSync(folder).reduce((sum, name) =>
    sum + execFileSync('gzip', ['-9c', join(folder, name)]).length, 0);
  console.log(`The page has ${size} bytes, compressed by gzip.`);
  assert.ok(size < 150000);
});

test('pictures are dropped, put in order, turned, and become a PDF', async () => {
  await shoot('empty');
  assert.ok(await page.$eval('#make', (button) => button.disabled));
  await drop(['rgb-alpha.png', 'turned-6.jpg', 'lossy.webp'].map(picture));
  await until(async () => (await names()).length === 3, 'three pictures');
  await until(() => page.$$eval('#list canvas', (found) => found.length === 3), 'three thumbnails');
  assert.match(await text('#said'), /3 pictures added, 3 in all/);

  await drag('#list li:nth-child(3) .name', '#list li:nth-child(1) .name');
  await until(async () => (await names())[0] === 'lossy.webp', 'the order by dragging');
  assert.deepEqual(await names(), ['lossy.webp', 'rgb-alpha.png', 'turned-6.jpg']);

  await page.focus('#list li:nth-child(2) button');
  await page.keyboard.down('Alt');
  await page.keyboard.press('ArrowRight');
  await page.keyboard.up('Alt');
  assert.deepEqual(await names(), ['lossy.webp', 'turned-6.jpg', 'rgb-alpha.png']);
  assert.match(await text('#said'), /rgb-alpha\.png is page 3 of 3/);
  assert.equal(await page.evaluate(() => document.activeElement.closest('li').querySelector('.name').textContent),
    'rgb-alpha.png', 'the keyboard stays where it was');

  await page.click('button[aria-label="Turn turned-6.jpg clockwise"]');
  await page.type('[name=title]', 'Sea: 1/2');
  await shoot('pictures');
  const file = await download('Sea_ 1_2.pdf');
  assert.match(await text('#done'), /^3 pages, \d+ kB\.$/);

  const info = JSON.parse(execFileSync('qpdf', ['--json', file], { encoding: 'utf8' }));
  assert.deepEqual(info.outlines.map((entry) => entry.title), ['lossy', 'turned-6', 'rgb-alpha']);
  // Each page shows its picture; the one that was turned, a quarter further.
  const turned = join(work, 'turned.pixels.png');
  const quarter = 'import sys; from PIL import Image; Image.open(sys.argv[1]).rotate(-90, expand=True).save(sys.argv[2])';
  execFileSync('/usr/bin/python3', ['-c', quarter, picture('turned-6.jpg.pixels.png'), turned]);
  execFileSync('/usr/bin/python3', [fileURLToPath(new URL('./compare_pixels.py', import.meta.url)), '96', file,
    picture('lossy.webp.pixels.png'), turned, picture('rgb-alpha.png.pixels.png')]);
});

test('what cannot be used is marked, left out and told, and can be removed', async () => {
  const damaged = Buffer.from(fs.readFileSync(picture('rgb.png')));
  damaged[damaged.length - 40] ^= 1;  // a pixel
  const wrong = { 'broken.jpg': fs.readFileSync(picture('gray.jpg')).subarray(0, 300), 'damaged.png': damaged,
    'empty.jpg': '', 'notes.txt': 'Nothing to see.\n' };
  for (const [name, bytes] of Object.entries(wrong)) fs.writeFileSync(join(work, name), bytes);
  await drop([...Object.keys(wrong).map((name) => join(work, name)), picture('interlaced.png'), picture('plain.jp2')]);
  await until(async () => (await names()).length === 9, 'nine files');
  await until(() => page.$$eval('#list .thumb b', (found) => found.length >= 4), 'four without a thumbnail');
  await download('Sea_ 1_2.pdf');
  assert.match(await text('#done'), /^5 pages/);
  assert.equal(await text('#failed'), `Left out, as marked:\n${Object.keys(wrong).join('\n')}`);
  const why = await page.$$eval('li.wrong', (found) => found.map((one) => one.querySelector('.why').textContent));
  for (const [i, words] of [/cut off/, /IDAT .* checksum/, /file is empty/, /no picture/].entries()) assert.match(why[i], words);
  await shoot('failed');
  for (const name of [...Object.keys(wrong), 'interlaced.png', 'plain.jp2']) await page.click(`button[aria-label="Remove ${name}"]`);
  assert.equal((await names()).length, 3);
});

test('sheets, borders and fits are as chosen', async () => {
  await page.select('[name=size]', 'A4');
  await page.select('[name=orientation]', 'landscape');
  await page.select('[name=fit]', 'fill');
  await page.$eval('[name=border]', (input) => { input.value = '10'; });
  await page.click('[name=bookmarks]');
  const file = await download('Sea_ 1_2.pdf');
  const info = execFileSync('pdfinfo', [file], { encoding: 'utf8' });
  assert.match(info, /Page size: +841\.89 x 595\.276 pts/);
  assert.doesNotMatch(execFileSync('qpdf', ['--qdf', '--object-streams=disable', file, '-'], { encoding: 'latin1' }), /Outlines/);
  await page.$eval('[name=border]', (input) => { input.value = '100'; });
  await page.select('[name=size]', 'A5');
  await page.click('#make');
  await until(() => text('#failed'), 'an error');
  assert.match(await text('#failed'), /border leaves no room/);
});

test('the PDF goes straight to a file where the browser can', async () => {
  await page.select('[name=size]', 'picture');
  await page.$eval('[name=border]', (input) => { input.value = '0'; });
  const read = () => page.evaluate(async () => {
    const folder = await navigator.storage.getDirectory();
    const file = await folder.getFileHandle('Sea_ 1_2.pdf').then((handle) => handle.getFile(), () => undefined);
    return file && [file.size, await file.slice(0, 8).text()];
  });
  // A file of the browser's own in place of the one that somebody picks.
  await page.evaluate(() => {
    window.showSaveFilePicker = async ({ suggestedName }) =>
      (await navigator.storage.getDirectory()).getFileHandle(suggestedName, { create: true });
  });
  await page.click('#file');
  await until(async () => /written to Sea_ 1_2\.pdf/.test(await text('#done')), 'the file');
  const [size, head] = await read();
  assert.equal(head, '%PDF-1.5');
  assert.ok(size > 1000);
  await page.evaluate(() => { window.showSaveFilePicker = async () => { throw new DOMException('', 'AbortError'); }; });
  await page.click('#file');
  assert.equal(await text('#failed'), '');
});

test('the policy lets nothing leave the machine', async () => {
  const violation = await page.evaluate(async () => {
    const told = new Promise((resolve) => addEventListener('securitypolicyviolation', (event) => resolve(event.violatedDirective)));
    const failed = await fetch('https://example.com/').then(() => false, () => true);
    return failed && told;
  });
  assert.equal(violation, 'connect-src');
  complaints.length = 0;  // the browser's words about it
  assert.deepEqual(strangers.filter((url) => url !== 'https://example.com/'), []);
  strangers.length = 0;
});

test('200 photographs of 2 MB take next to no memory', async () => {
  const photo = fs.readFileSync(picture('progressive.jpg'));
  const base = join(work, 'photographs');
  fs.rmSync(base, { recursive: true, force: true });
  fs.mkdirSync(base);
  const first = join(base, 'photo-000.jpg');
  fs.writeFileSync(first, Buffer.concat([photo.subarray(0, -2), Buffer.alloc(2e6), photo.subarray(-2)]));
  const files = Array.from({ length: 200 }, (_, i) => {
    const name = join(base, `photo-${String(i).padStart(3, '0')}.jpg`);
    if (i > 0) fs.linkSync(first, name);
    return name;
  });
  await page.reload();
  const process = await renderer();
  const peak = () => Number(/VmHWM:\s+(\d+)/.exec(fs.readFileSync(`/proc/${process}/status`, 'utf8'))[1]) / 1024;
  await choose(files);
  await until(async () => (await names()).length === 200, '200 pictures');
  await until(() => page.$$eval('#list canvas', (found) => found.length > 10), 'the thumbnails in view');
  fs.writeFileSync(`/proc/${process}/clear_refs`, '5');  // begins a new peak
  const before = peak(), start = performance.now();
  finished = 0;
  await page.click('#make');
  await until(() => text('#done'), 'the PDF', 60000);
  const took = performance.now() - start;
  await until(() => finished > 0, 'the download', 60000);
  console.log(`200 photographs of 2 MB: ${took.toFixed(0)} ms, ${(peak() - before).toFixed(1)} MB above ${before.toFixed(0)} MB in the tab.`);
  assert.ok(peak() - before < 60, 'the tab holds the pictures');
  // It has words about the bytes that make the photographs large.
  execFileSync('qpdf', ['--check', join(downloads, 'pictures.pdf')], { stdio: 'pipe' });
  await page.screenshot({ path: join(screenshots, 'many-light-1280.png') });
  await page.setViewport({ width: 390, height: 900 });
  await page.screenshot({ path: join(screenshots, 'many-light-390.png') });
  await page.setViewport({ width: 1280, height: 900 });
  await page.click('#clear');
  assert.equal((await names()).length, 0);
  assert.ok(await page.$eval('#make', (button) => button.disabled));
  assert.equal(await text('#said'), '200 pictures removed.');
  fs.rmSync(join(downloads, 'pictures.pdf'));
});

// The process that shows the page: the one of its kind that has used the most memory.
async function renderer() {
  const whole = await browser.target().createCDPSession();
  const { processInfo } = await whole.send('SystemInfo.getProcessInfo');
  const size = (id) => Number(/VmRSS:\s+(\d+)/.exec(fs.readFileSync(`/proc/${id}/status`, 'utf8'))?.[1] ?? 0);
  return processInfo.filter(({ type }) => type === 'renderer').sort((a, b) => size(b.id) - size(a.id))[0].id;
}

test('what the browser decodes shows what it is, each frame of an animation', async () => {
  await page.reload();
  const kinds = ['still.gif', 'rows.bmp', 'still.avif', 'animated.webp', 'animated.gif', 'interlaced.png'];
  await choose(kinds.map(picture));
  await until(async () => (await names()).length === kinds.length, 'the pictures');
  const file = await download('pictures.pdf');
  execFileSync('/usr/bin/python3', [fileURLToPath(new URL('./compare_pixels.py', import.meta.url)), '96', file,
    ...kinds.map((name) => picture(`${name}.pixels.png`))]);

  for (const name of ['animated.gif', 'animated.webp']) {
    const made = await page.evaluate(async (base64) => {
      const { Document } = await import('./jtpdf.mjs');
      const bytes = Uint8Array.from(atob(base64), (character) => character.charCodeAt(0));
      const document = await Document.create();
      const counts = [];
      for (let frame = 0; frame < 3; ++frame) {
        const image = await document.embedImage(bytes, { frame });
        counts.push(image.frames);
        document.addPage([60, 40]).drawImage(image);
      }
      const wrong = await document.embedImage(bytes, { frame: 3 }).then(() => '', ({ code, message }) => `${code}: ${message}`);
      return { counts, wrong, pdf: Array.from(await document.save()) };
    }, fs.readFileSync(picture(name)).toString('base64'));
    assert.deepEqual(made.counts, [3, 3, 3]);
    assert.match(made.wrong, /^argument: embedImage: frame is 3, but the picture has 3/);
    fs.writeFileSync(join(work, 'frames.pdf'), Uint8Array.from(made.pdf));
    const middle = (n) => [...execFileSync('pdftoppm', ['-r', '72', '-f', `${n}`, '-l', `${n}`, join(work, 'frames.pdf')]).subarray(-3)];
    const expected = [[255, 0, 0], [0, 255, 0], [0, 0, 255]];
    for (const [i, colour] of expected.entries()) {
      middle(i + 1).forEach((value, k) => assert.ok(Math.abs(value - colour[k]) < 8, `${name}, frame ${i}: ${middle(i + 1)}`));
    }
  }
});

test('it works without a network', async () => {
  await within(20000, page.evaluate(() => navigator.serviceWorker.ready.then(() => true)), 'the service worker');
  server.closeAllConnections();
  await new Promise((resolve) => server.close(resolve));
  await page.reload();
  assert.equal(await text('h1'), 'Pictures to PDF');
  await choose([picture('gray.jpg')]);
  await until(async () => (await names()).length === 1, 'a picture');
  await download('pictures.pdf');
});

test('no request left the machine, and the browser did not complain', () => {
  assert.deepEqual(strangers, []);
  assert.deepEqual(complaints.filter((one) => !/ERR_FAILED|ERR_CONNECTION_REFUSED/.test(one)), []);
});
