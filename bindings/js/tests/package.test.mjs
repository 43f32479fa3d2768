// The package as it is installed: what it writes, and what it says when something is wrong.
import assert from 'node:assert/strict';
import { execFileSync, spawnSync } from 'node:child_process';
import * as fs from 'node:fs';
import { readFileSync, readdirSync, writeFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { join } from 'node:path';
import { describe, test } from 'node:test';
import { setFlagsFromString } from 'node:v8';
import { runInNewContext } from 'node:vm';
import { Worker } from 'node:worker_threads';
import { deflateSync } from 'node:zlib';
import { Document, JtpdfError, PdfImage, load, rgb } from 'jtpdf';

const { JTPDF_PICTURES: pictures, JTPDF_WORK: work, JTPDF_SOURCE: source } = process.env;
const python = '/usr/bin/python3';
// Node 18 has no Blobs of files.
const openAsBlob = fs.openAsBlob ?? (async (path) => new Blob([readFileSync(path)]));
const picture = (name) => new Uint8Array(readFileSync(join(pictures, name)));

// The document's bytes, which qpdf has nothing to say about.
async function sound(doc, name) {
  const bytes = await doc.save();
  writeFileSync(join(work, name), bytes);
  const checked = spawnSync('qpdf', ['--check', join(work, name)], { encoding: 'utf8' });
  assert.equal(checked.status, 0, checked.stdout + checked.stderr);
  return bytes;
}

const failsWith = (code, words) => (error) => {
  assert.ok(error instanceof JtpdfError, error.stack);
  assert.equal(error.code, code, error.message);
  assert.match(error.message, words);
  return true;
};

async function card(options) {
  const doc = await Document.create({ unit: 'mm', title: 'Grüße, 世界 🎉', author: 'me', ...options });
  const photo = await doc.embedJpeg(picture('progressive.jpg'));
  const stamp = doc.addForm([20, 20], (form) => form.drawEllipse({ x: 10, y: 10, xScale: 9, yScale: 6, color: rgb(1, 0, 0) }));
  for (let i = 0; i < 3; ++i) {
    const page = doc.addPage([100, 80], { crop: [5, 5, 90, 70] });
    page.drawImage(photo, { x: 10, y: 10, width: 60, height: 40, rotate: 10 * i });
    page.drawRectangle({ x: 5, y: 60, width: 30, height: 10, color: '#d62839', borderColor: 0x0000ff, borderWidth: 2 });
    page.drawEllipse({ x: 60, y: 65, xScale: 20, yScale: 8, borderColor: '#00ff00' });
    page.drawForm(stamp, { x: 70, y: 50, width: 20, height: 20, rotate: 45 });
    doc.addBookmark(`Page ${i + 1}`, { page, level: i > 0 ? 1 : 0 });
  }
  return doc;
}

describe('a document', () => {
  test('is sound, and holds what it was told', async () => {
    const file = Buffer.from(await sound(await card(), 'card.pdf'));
    const qpdf = JSON.parse(execFileSync('qpdf', ['--json', join(work, 'card.pdf')], { encoding: 'utf8', maxBuffer: 1 << 26 }));
    assert.equal(qpdf.pages.length, 3);
    assert.deepEqual(qpdf.outlines.map((entry) => [entry.title, entry.kids.length]), [['Page 1', 2]]);
    assert.ok(JSON.stringify(qpdf).includes('Grüße, 世界 🎉'));
    assert.match(file.toString('latin1'), /^%PDF-1\.5\r\n/);
  });

  test('opens where it is told', async () => {
    const doc = await Document.create();
    const pages = [doc.addPage(), doc.addPage()];
    assert.throws(() => doc.setOpenPage(1, '/Fit >>'), failsWith('argument', /not what PDF has/));
    doc.setOpenPage(pages[1], '/FitH null');
    assert.match(Buffer.from(await sound(doc, 'open.pdf')).toString('latin1'), /\/OpenAction \[\d+ 0 R \/FitH null\]/);
  });

  test('has the same bytes however it is taken', async () => {
    const saved = Buffer.from(await (await card()).save());
    const blob = await (await card()).saveBlob();
    assert.equal(blob.type, 'application/pdf');
    assert.ok(saved.equals(Buffer.from(await blob.arrayBuffer())));
    assert.ok(saved.equals(Buffer.from(await new Response((await card()).stream()).arrayBuffer())));
    const chunks = [];
    await (await card()).pipeTo(new WritableStream({ write: (chunk) => void chunks.push(chunk) }));
    assert.ok(saved.equals(Buffer.concat(chunks)));
  });

  test('is smaller compressed, and shows the same', async () => {
    const many = async (compress) => {
      const doc = await Document.create({ compress });
      const photo = await doc.embedJpeg(picture('progressive.jpg'));
      for (let i = 0; i < 20; ++i) {
        const page = doc.addPage([60, 40]);
        page.drawImage(photo);
        page.setResource('/Font/F1', '<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>');
        page.drawContent('BT /F1 6 Tf 5 5 Td (compressed) Tj ET');
        for (let k = 0; k < 50; ++k) page.drawRectangle({ x: k, y: 30, width: 1, height: k / 5, color: 0x030303 * k });
      }
      return sound(doc, `compressed-${compress}.pdf`);
    };
    const [plain, packed] = [await many(false), await many(true)];
    assert.ok(packed.length < plain.length / 3, `${packed.length} of ${plain.length}`);
    const text = (name) => execFileSync('pdftoppm', ['-r', '72', '-f', '20', join(work, name)]);
    assert.ok(text('compressed-true.pdf').equals(text('compressed-false.pdf')));
  });

  test('compressed is no larger than what it needs', async () => {
    const doc = await Document.create({ compress: true, title: 'small' });
    for (let i = 0; i < 250; ++i) {
      const page = doc.addPage([595, 842]);
      for (let k = 0; k < 100; ++k) page.drawRectangle({ x: k * 5, y: 20, width: 4, height: k + i, color: 0x10203 * (k % 50) });
      doc.addBookmark(`Page ${i}`);
    }
    const bytes = await sound(doc, 'packed.pdf');
    assert.ok(bytes.length < 250 * 1000, `${bytes.length} bytes`);
    const json = JSON.parse(execFileSync('qpdf', ['--json', join(work, 'packed.pdf')], { encoding: 'utf8', maxBuffer: 1 << 28 }));
    assert.equal(json.pages.length, 250);
    assert.equal(json.outlines.length, 250);
  });

  test('compressed shows shapes of every kind as it does plain', async () => {
    const shapes = async (compress) => {
      const doc = await Document.create({ compress, unit: 'mm' });
      const photo = await doc.embedJpeg(picture('turned-6.jpg'));
      const mirrored = await doc.embedJpeg(picture('turned-5.jpg'));
      const stamp = doc.addForm([20, 20], (form) => {
        form.drawRectangle({ width: 20, height: 20, color: '#ffd166' });
        form.drawImage(photo, { x: 2, y: 2, width: 10, height: 15, rotate: 30 });
      });
      const page = doc.addPage([100, 80]);
      page.drawRectangle({ x: 5, y: 5, width: 30, height: 20, rotate: 25, color: '#d62839', borderColor: 0x0000ff, borderWidth: 2 });
      page.drawRectangle({ x: 40, y: 5, width: 10, height: 10, borderColor: '#00aa00' });
      page.drawContent('1 0 0 rg 0 0 20 20 re f');
      page.drawRectangle({ x: 8, y: 8, width: 5, height: 5 });
      page.drawEllipse({ x: 70, y: 20, xScale: 20, yScale: 10, color: '#118ab2', borderColor: '#073b4c', borderWidth: 1.5 });
      page.drawEllipse({ x: 70, y: 50, xScale: 8, yScale: 12, borderColor: '#ef476f' });
      page.drawEllipse({ x: 90, y: 70, xScale: 5, yScale: 5, color: '#06d6a0' });
      page.drawImage(mirrored, { x: 10, y: 40, width: 20, height: 30, rotate: 100 });
      page.drawForm(stamp, { x: 35, y: 40, width: 25, height: 30, rotate: -15 });
      const name = join(work, `shapes-${compress}.pdf`);
      await sound(doc, `shapes-${compress}.pdf`);
      return execFileSync('pdftoppm', ['-r', '100', name]);
    };
    const [plain, small] = [await shapes(false), await shapes(true)];
    assert.equal(plain.length, small.length);
    let differing = 0;
    for (let i = 0; i < plain.length; ++i) if (Math.abs(plain[i] - small[i]) > 40) ++differing;
    assert.ok(differing < plain.length / 2000, `${differing} of ${plain.length} samples differ`);
    assert.ok(new Set(plain).size > 20, 'there is nothing to see');
  });

  test('compressed keeps what stands behind its end, and its order however it is taken', async () => {
    const made = async () => {
      const doc = await Document.create({ compress: true });
      const files = await Promise.all(['gray.jpg', 'rgb.png', 'plain.jp2', 'progressive.jpg'].map((name) => openAsBlob(join(pictures, name))));
      const images = await Promise.all(files.map((file) => doc.embedImage(file)));
      assert.deepEqual(images.map(({ number }) => number), [2, 3, 4, 5], 'in the order of the calls');
      for (const image of images) doc.addPage([60, 40]).drawImage(image, { width: 60, height: 40 });
      return doc;
    };
    const bytes = Buffer.from(await (await made()).save({ closingText: '% the end' }));
    assert.ok(bytes.toString('latin1').endsWith('%%EOF\r\n% the end\r\n'));
    const stream = Buffer.from(await new Response((await made()).stream({ closingText: '% the end' })).arrayBuffer());
    assert.ok(bytes.equals(stream));
    const name = join(work, 'behind.pdf');
    writeFileSync(name, bytes);
    execFileSync('qpdf', ['--check', name]);
  });

  test('compressed refuses a resource in the way of another where it is named, and goes on', async () => {
    const doc = await Document.create({ compress: true });
    const image = await doc.embedJpeg(picture('gray.jpg'));
    const page = doc.addPage([60, 40]);
    page.setResource('/XObject', '<< >>');
    assert.throws(() => page.drawImage(image), failsWith('argument', /^setResource: /));
    const next = doc.addPage([60, 40]);
    next.drawImage(image);
    assert.throws(() => next.setResource('/XObject', '<< >>'), failsWith('argument', /^setResource: /));
    await sound(doc, 'resources.pdf');
  });

  test('that is given up reads no further pictures', async () => {
    const doc = await Document.create();
    let read = 0;
    class Counted extends Blob {
      arrayBuffer() {
        ++read;
        return super.arrayBuffer();
      }
    }
    const calls = Array.from({ length: 100 }, () => doc.embedJpeg(new Counted([picture('gray.jpg')])));
    doc.dispose();
    for (const { reason } of await Promise.allSettled(calls)) assert.equal(reason?.code, 'state');
    assert.ok(read <= 16, `${read} were read`);
  });

  test('writes pictures in the order of the calls, and goes on when one fails', async () => {
    const doc = await Document.create();
    const calls = [doc.embedJpeg(await openAsBlob(join(pictures, 'progressive.jpg'))), doc.embedPng(picture('gray.jpg')),
      ...Array.from({ length: 40 }, () => doc.embedPng(picture('gray.png'))), doc.embedJpeg(picture('gray.jpg'))];
    const settled = await Promise.allSettled(calls);
    assert.equal(settled[1].reason.code, 'argument');
    assert.deepEqual(settled.filter(({ value }) => value).map(({ value }) => value.number), Array.from({ length: 42 }, (_, i) => i + 2));
  });

  test('cannot be used once it is saved, and says so', async () => {
    const doc = await Document.create();
    const page = doc.addPage();
    await doc.save();
    const ended = failsWith('state', /saved by save\(\)/);
    await assert.rejects(doc.save(), ended);
    await assert.rejects(doc.saveBlob(), ended);
    await assert.rejects(doc.embedJpeg(picture('gray.jpg')), ended);
    await assert.rejects(doc.pipeTo(new WritableStream()), ended);
    assert.throws(() => doc.addPage(), ended);
    assert.throws(() => doc.stream(), ended);
    assert.throws(() => page.drawRectangle({}), ended);
    const given = await Document.create();
    given.dispose();
    given.dispose();
    assert.throws(() => given.addPage(), failsWith('state', /given up by dispose/));
  });

  test('does not take a picture that comes when it is saved', async () => {
    const doc = await Document.create();
    doc.addPage();
    const late = doc.embedJpeg(await openAsBlob(join(pictures, 'gray.jpg')));
    const [, failed] = await Promise.allSettled([doc.save(), late]);
    assert.equal(failed.reason?.code, 'state');
  });

  test('draws on one page at a time', async () => {
    const doc = await Document.create();
    const [first] = [doc.addPage(), doc.addPage()];
    assert.throws(() => first.drawRectangle({}), failsWith('state', /page is finished/));
    assert.equal(first.index, 0);
    assert.equal(doc.pageCount, 2);
    assert.throws(() => doc.addForm([1, 1], () => { throw new TypeError('mine'); }), TypeError);
    doc.addPage().drawRectangle({});
    await sound(doc, 'one-at-a-time.pdf');
  });

  test('is freed when nobody holds it, with its memory', async () => {
    setFlagsFromString('--expose-gc');
    const collectGarbage = runInNewContext('gc');
    const library = await load();
    const before = library.sinks.size;
    for (let i = 0; i < 200; ++i) (await Document.create()).addPage().drawRectangle({});
    for (let i = 0; i < 50 && library.sinks.size > before + 5; ++i) {
      collectGarbage();
      await new Promise((resolve) => setTimeout(resolve, 10));
    }
    assert.ok(library.sinks.size <= before + 5, `${library.sinks.size} documents are held`);
  });

  test('that gets no memory says so, and others go on', async () => {
    const { exports } = await load();
    const blocks = [];
    const other = await card();
    const full = await Document.create();
    const page = full.addPage();
    for (let size = 1 << 28; size >= 16; size /= 2) {
      for (let at = exports.malloc(size); at !== 0; at = exports.malloc(size)) blocks.push(at);
    }
    try {
      await assert.rejects(Document.create(), failsWith('memory', /no memory/));
      for (let i = 0; i < 1000; ++i) page.drawRectangle({});  // what could not be drawn shows in the next call
      assert.throws(() => full.addPage(), failsWith('memory', /no memory/));
    } finally {
      blocks.forEach((at) => exports.free(at));
    }
    assert.ok(Buffer.from(await other.save()).equals(Buffer.from(await (await card()).save())));
  });

  test('knows only what is its own', async () => {
    const [one, two] = [await Document.create(), await Document.create()];
    const image = await one.embedJpeg(picture('gray.jpg'));
    assert.ok(image instanceof PdfImage);
    assert.throws(() => two.addPage().drawImage(image), failsWith('argument', /another document/));
    assert.throws(() => one.addPage().drawImage({ number: 2 }), failsWith('argument', /not a PdfImage/));
  });

  test('several at once, in turns and in workers, are as one by itself', async () => {
    const alone = Buffer.from(await (await card()).save());
    for (const bytes of await Promise.all(Array.from({ length: 8 }, async () => (await card()).save()))) {
      assert.ok(alone.equals(Buffer.from(bytes)));
    }
    const draw = `const { Document } = require('jtpdf'), { parentPort } = require('worker_threads');
      (async () => { const doc = await Document.create({ unit: 'in' }); doc.addPage([2, 2]).drawRectangle({ width: 1, height: 1 });
        parentPort.postMessage(await doc.save()); })();`;
    const run = () => new Promise((resolve, reject) => {
      new Worker(draw, { eval: true }).on('message', resolve).on('error', reject);
    });
    const [a, b] = await Promise.all([run(), run()]);
    assert.ok(Buffer.from(a).equals(Buffer.from(b)) && a.length > 500);
  });
});

describe('a call', () => {
  const wrong = [
    ['an option that there is not', (doc) => doc.addPage('A4', { corp: [1, 1] }), /knows no option "corp"/],
    ['a size that is none', (doc) => doc.addPage([10, NaN]), /NaN, not a finite number/],
    ['a size of nothing', (doc) => doc.addPage([0, 10]), /more than 0/],
    ['a sheet that there is not', (doc) => doc.addPage('A44'), /"A44", not \[width/],
    ['a colour that is none', (doc) => doc.addPage().drawRectangle({ color: 'red' }), /"red", not a colour/],
    ['a text for a number', (doc) => doc.addPage().drawEllipse({ x: '1' }), /x is "1", not a finite number/],
    ['a NUL in a text', (doc) => doc.setInfo('Title', 'a\0b'), /NUL/],
    ['an entry that is none', (doc) => doc.setCatalogEntry('/A', '<<'), /not what PDF has/],
    ['a bookmark too deep', (doc) => doc.addBookmark('x', { level: 2 }), /not what PDF has/],
    ['a path for a picture', (doc) => doc.embedJpeg('photo.jpg'), /openAsBlob/],
    ['an object for a picture', (doc) => doc.embedPng({}), /not an object \(Object\)/],
    ['another kind of picture', (doc) => doc.embedPng(picture('gray.jpg')), /no PNG file/],
    ['a frame that is no number', (doc) => doc.embedImage(picture('gray.jpg'), { frame: -1 }), /frame is -1, not a whole number/],
    ['pixels of another size', (doc) => doc.embedImage({ width: 2, height: 2, data: new Uint8ClampedArray(15) }), /2 x 2/],
  ];
  for (const [name, body, words] of wrong) {
    test(`refuses ${name}`, async () => {
      const doc = await Document.create();
      await assert.rejects(async () => body(doc), failsWith('argument', words));
      doc.dispose();
    });
  }
  test('makes no document by new', () => assert.throws(() => new Document(), failsWith('argument', /Document\.create/)));
});

describe('pictures', () => {
  const kinds = readdirSync(pictures).filter((name) => !name.endsWith('.pixels.png') && !/interlaced|webp|gif|bmp|avif/.test(name));
  test('of every kind show what they are, from bytes and from a Blob', async () => {
    assert.ok(kinds.length >= 25);
    for (const from of ['bytes', 'blob']) {
      const doc = await Document.create();
      for (const name of kinds) {
        const image = await doc.embedImage(from === 'blob' ? await openAsBlob(join(pictures, name)) : picture(name));
        doc.addPage([image.width, image.height]).drawImage(image);
      }
      await sound(doc, `${from}.pdf`);
      const compared = spawnSync(python, [join(source, 'bindings/js/tests/compare_pixels.py'), '72', join(work, `${from}.pdf`),
        ...kinds.map((name) => join(pictures, `${name}.pixels.png`))], { encoding: 'utf8' });
      assert.equal(compared.status, 0, compared.stderr);
    }
    assert.ok(readFileSync(join(work, 'bytes.pdf')).equals(readFileSync(join(work, 'blob.pdf'))));
  });

  test('that only a browser decodes are refused under Node', async () => {
    const doc = await Document.create();
    for (const name of ['lossy.webp', 'animated.gif', 'rows.bmp']) {
      await assert.rejects(doc.embedImage(picture(name)), failsWith('unsupported', /only a browser decodes/));
    }
    await assert.rejects(doc.embedPng(picture('interlaced.png')), failsWith('unsupported', /interlaced/));
    doc.dispose();
  });

  test('of a Blob are read no further than their header', async () => {
    const jpeg = picture('progressive.jpg');
    const large = [jpeg.subarray(0, -2), new Uint8Array(2e6), jpeg.subarray(-2)];
    class Watched extends Blob {
      read = 0;
      slice(begin, end) {
        this.read += end - begin;
        return super.slice(begin, end);
      }
      arrayBuffer() { throw new Error('the whole of it was read'); }
    }
    const blob = new Watched(large);
    const doc = await Document.create();
    doc.addPage([60, 40]).drawImage(await doc.embedJpeg(blob));
    const file = await doc.saveBlob();
    assert.ok(file.size > 2e6);
    assert.ok(blob.read <= 70000, `${blob.read} bytes were read`);
    const held = Buffer.from(await file.arrayBuffer());
    assert.ok(held.includes(Buffer.concat(large)));
  });

  test('of a Blob are the same as in memory, however long their header', async () => {
    const jpeg = picture('profile.jpg');
    const comment = (size) => Uint8Array.of(0xff, 0xfe, (size + 2) >> 8, (size + 2) & 255, ...new Uint8Array(size));
    const save = async (data) => {
      const doc = await Document.create({ compress: true });
      const { width, height } = await doc.embedJpeg(data);
      assert.deepEqual([width, height], [60, 40]);
      return Buffer.from(await doc.save());
    };
    for (const comments of [[], [100], [16200, 300], [20000], [65000, 65000], [...Array(40).fill(4000)]]) {
      const parts = [jpeg.subarray(0, 2), ...comments.map(comment), jpeg.subarray(2)];
      for (const scan of [[], [jpeg.subarray(-2), new Uint8Array(80000), jpeg.subarray(-2)]]) {
        const blob = new Blob([...parts, ...scan]);
        assert.ok((await save(blob)).equals(await save(await blob.arrayBuffer())), `${comments} and ${blob.size} bytes`);
      }
      const cut = new Blob([...parts.slice(0, -1), ...[65000, 65000].map(comment)]);
      const doc = await Document.create();
      await assert.rejects(doc.embedJpeg(cut.slice(0, -1)), failsWith('damaged', /cut off/));
    }
  });

  test('that somebody chose are the same as in memory; behind a small one the size of small ones is not asked', {
    skip: !globalThis.File && 'Node 18 has no File',
  }, async () => {
    let asked = 0;
    class Chosen extends File {
      get size() {
        ++asked;
        return super.size;
      }
    }
    const chosen = (bytes) => new Chosen([bytes], 'chosen');
    const small = picture('gray.jpg'), large = Buffer.concat([small.subarray(0, -2), new Uint8Array(80000), small.subarray(-2)]);
    const save = async (pictures) => {
      const doc = await Document.create();
      for (const data of pictures) doc.addPage([60, 40]).drawImage(await doc.embedImage(data));
      return Buffer.from(await doc.save());
    };
    const mixed = [large, small, small, large, picture('rgb.png'), large, large, small];
    assert.ok((await save(mixed.map(chosen))).equals(await save(mixed)));
    asked = 0;
    await save(Array.from({ length: 20 }, () => chosen(small)));
    assert.equal(asked, 0);

    const doc = await Document.create();
    await assert.rejects(doc.embedJpeg(chosen(new Uint8Array(0))), failsWith('argument', /no JPEG/));
    class Gone extends Chosen {
      stream() { return new ReadableStream({ start: (controller) => controller.error(new TypeError('network error')) }); }
      arrayBuffer() { return Promise.reject(new DOMException('gone', 'NotReadableError')); }
    }
    await assert.rejects(doc.embedJpeg(new Gone([small], 'gone')), { name: 'NotReadableError' });
  });

  test('that are damaged are refused in words', async () => {
    const doc = await Document.create();
    const cut = failsWith('damaged', /cut off/);
    for (const name of ['progressive.jpg', 'rgb.png', 'rgb-alpha.png', 'plain.jp2']) {
      const whole = picture(name);
      for (const part of [0.1, 0.3, 0.6, 0.95]) {
        const length = Math.floor(whole.length * part);
        if (length < 64) continue;
        await assert.rejects(doc.embedImage(whole.subarray(0, length)), (error) => {
          assert.ok(['damaged', 'unsupported'].includes(error.code), `${name} of ${length} bytes: ${error.stack}`);
          return true;
        });
      }
    }
    await assert.rejects(doc.embedJpeg(picture('gray.jpg').subarray(0, -2)), cut);
    const png = picture('rgb.png').slice();
    png[png.length - 20] ^= 1;
    await doc.embedPng(png);
    await assert.rejects(doc.embedPng(png, { check: true }), failsWith('damaged', /IDAT .* checksum/));
    await doc.embedPng(picture('rgb.png'), { check: true });
    doc.dispose();
  });

  test('damaged anywhere give a document or an error of ours', async () => {
    let seed = 1;
    const random = (most) => (seed = (seed * 48271) % 0x7fffffff) % most;
    for (const name of ['turned-6.jpg', 'profile.jpg', 'palette-alpha.png', 'gray-alpha.png', 'plain.jp2']) {
      const whole = picture(name);
      for (let i = 0; i < 150; ++i) {
        const bytes = whole.slice(0, i % 3 ? whole.length : random(whole.length));
        for (let k = 0; k < 3 && bytes.length; ++k) bytes[random(Math.min(bytes.length, i % 2 ? 200 : 1e9))] = random(256);
        const doc = await Document.create();
        try {
          doc.addPage().drawImage(await doc.embedImage(bytes), { width: 10, height: 10 });
          await doc.save();
        } catch (error) {
          assert.ok(error instanceof JtpdfError, `${name}, case ${i}: ${error.stack}`);
        }
        doc.dispose();
      }
    }
  });

  test('of pixels, and encoded ones with a soft mask and a profile', async () => {
    const doc = await Document.create();
    const pixels = await doc.embedImage({ width: 2, height: 1, data: Uint8ClampedArray.of(255, 0, 0, 255, 0, 0, 255, 0) });
    const profile = await doc.embedIcc(readFileSync(join(source, 'examples/images/bgr.icc')));
    const data = deflateSync(Uint8Array.of(0, 0, 255, 255, 0, 0));
    const encoded = await doc.embedEncoded(data, { compression: 'flate', width: 2, height: 1, colorSpace: profile,
      softMask: { data: deflateSync(Uint8Array.of(255, 0)), compression: 'flate', width: 2, height: 1, colorSpace: 'gray' } });
    for (const image of [pixels, encoded]) doc.addPage([20, 10]).drawImage(image, { width: 20, height: 10 });
    await sound(doc, 'pixels.pdf');
    const rows = (n) => execFileSync('pdftoppm', ['-r', '72', '-f', `${n}`, '-l', `${n}`, join(work, 'pixels.pdf')]).subarray(-300);
    for (const n of [1, 2]) {
      assert.deepEqual([...rows(n).subarray(6, 9)], [255, 0, 0]);
      assert.deepEqual([...rows(n).subarray(-9, -6)], [255, 255, 255]);
    }
  });
});

test('CommonJS takes the package as well', async () => {
  const cjs = createRequire(import.meta.url)('jtpdf');
  assert.deepEqual(Object.keys(cjs).sort(), Object.keys(await import('jtpdf')).sort());
  const doc = await cjs.Document.create();
  doc.addPage();
  assert.ok((await doc.save()).length > 500);
});
