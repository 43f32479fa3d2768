// The same documents by each package, for Node and for a browser alike. Each takes inputs (Blobs) and
// gives the size of the file, of which it holds what the package makes.
const POINTS = 72 / 150;
const AT_ONCE = 16;  // files that are read side by side

// Reads files side by side, by each package in the same way, and uses what was read in the files' order.
async function forEach(files, read, use) {
  for (let i = 0; i < files.length; i += AT_ONCE) {
    const some = files.slice(i, i + AT_ONCE);
    for (const [k, found] of (await Promise.all(some.map(read))).entries()) await use(found, some[k]);
  }
}

const jtpdf = ({ Document }) => {
  const pictures = async (files, embed) => {
    const doc = await Document.create({ compress: true });
    await forEach(files, (file) => doc[embed](file), (image) => {
      const [width, height] = [image.width * POINTS, image.height * POINTS];
      doc.addPage([width, height]).drawImage(image, { width, height });
    });
    const blob = await doc.saveBlob();
    return blob.size;
  };
  return {
    jpegs: (files) => pictures(files, 'embedJpeg'),
    pngs: (files) => pictures(files, 'embedPng'),
    async rectangles(pages, each) {
      const doc = await Document.create({ compress: true });
      for (let i = 0; i < pages; ++i) {
        const page = doc.addPage([595, 842]);
        for (let k = 0; k < each; ++k) page.drawRectangle(rectangle(i, k));
      }
      return (await doc.save()).length;
    },
  };
};

const rectangle = (i, k) => ({ x: 20 + (k % 10) * 55, y: 20 + Math.floor(k / 10) * 80, width: 40 + (i % 7), height: 60,
  color: (i * 7919 + k * 104729) & 0xffffff });
const channels = (color) => [color >> 16, (color >> 8) & 255, color & 255];

const pdfLib = ({ PDFDocument, rgb }) => {
  const pictures = async (files, embed) => {
    const doc = await PDFDocument.create();
    await forEach(files, async (file) => doc[embed](await file.arrayBuffer()), (image) => {
      const [width, height] = [image.width * POINTS, image.height * POINTS];
      doc.addPage([width, height]).drawImage(image, { x: 0, y: 0, width, height });
    });
    return (await doc.save()).length;
  };
  return {
    jpegs: (files) => pictures(files, 'embedJpg'),
    pngs: (files) => pictures(files, 'embedPng'),
    async rectangles(pages, each) {
      const doc = await PDFDocument.create();
      for (let i = 0; i < pages; ++i) {
        const page = doc.addPage([595, 842]);
        for (let k = 0; k < each; ++k) {
          const { color, ...box } = rectangle(i, k);
          page.drawRectangle({ ...box, color: rgb(...channels(color).map((byte) => byte / 255)) });
        }
      }
      return (await doc.save()).length;
    },
  };
};

const jsPdf = ({ jsPDF }) => {
  const pictures = async (files, kind, sizeOf) => {
    const doc = new jsPDF({ unit: 'pt', compress: kind === 'PNG' });
    doc.deletePage(1);
    await forEach(files, async (file) => new Uint8Array(await file.arrayBuffer()), (bytes, file) => {
      const [width, height] = sizeOf(bytes).map((side) => side * POINTS);
      doc.addPage([width, height], width > height ? 'l' : 'p');
      doc.addImage(bytes, kind, 0, 0, width, height, file.name, 'FAST');
    });
    return doc.output('arraybuffer').byteLength;
  };
  return {
    jpegs: (files) => pictures(files, 'JPEG', jpegSize),
    pngs: (files) => pictures(files, 'PNG', pngSize),
    async rectangles(pages, each) {
      const doc = new jsPDF({ unit: 'pt', format: [595, 842], compress: true });
      doc.deletePage(1);
      for (let i = 0; i < pages; ++i) {
        doc.addPage([595, 842]);
        for (let k = 0; k < each; ++k) {
          const { x, y, width, height, color } = rectangle(i, k);
          doc.setFillColor(...channels(color)).rect(x, 842 - y - height, width, height, 'F');
        }
      }
      return doc.output('arraybuffer').byteLength;
    },
  };
};

const pdfKit = (PDFDocument) => {
  const written = (doc) => new Promise((resolve, reject) => {
    let size = 0;
    const chunks = [];  // as whoever wants the file has to keep them
    doc.on('data', (chunk) => {
      size += chunk.length;
      chunks.push(chunk);
    }).on('end', () => resolve(size)).on('error', reject);
    doc.end();
  });
  const pictures = async (files) => {
    const doc = new PDFDocument({ autoFirstPage: false });
    await forEach(files, (file) => file.arrayBuffer(), (bytes) => {
      const image = doc.openImage(bytes);
      const size = [image.width * POINTS, image.height * POINTS];
      doc.addPage({ size, margin: 0 }).image(image, 0, 0, { width: size[0], height: size[1] });
    });
    return written(doc);
  };
  return {
    jpegs: pictures, pngs: pictures,
    async rectangles(pages, each) {
      const doc = new PDFDocument({ autoFirstPage: false });
      for (let i = 0; i < pages; ++i) {
        doc.addPage({ size: [595, 842], margin: 0 });
        for (let k = 0; k < each; ++k) {
          const { x, y, width, height, color } = rectangle(i, k);
          doc.rect(x, 842 - y - height, width, height).fill(channels(color));
        }
      }
      return written(doc);
    },
  };
};

const be16 = (bytes, at) => bytes[at] * 256 + bytes[at + 1];
const pngSize = (bytes) => [be16(bytes, 18), be16(bytes, 22)];
function jpegSize(bytes) {
  let at = 2;
  while (bytes[at + 1] < 0xc0 || bytes[at + 1] > 0xc2) at += 2 + be16(bytes, at + 2);
  return [be16(bytes, at + 7), be16(bytes, at + 5)];
}

export const packages = { jtpdf, 'pdf-lib': pdfLib, jsPDF: jsPdf, PDFKit: pdfKit };

/** What is compared: its title, the folder of its pictures and how many, and what it does with a package. */
export function workloads(share) {
  const some = (count) => Math.ceil(count * share);
  const named = (count, what) => `${some(count).toLocaleString('en')} ${what}`;
  return [
    { title: named(200, 'JPEG photographs of 2 MB'), inputs: 'large', count: some(200), run: (by, files) => by.jpegs(files) },
    { title: named(2000, 'small JPEGs'), inputs: 'small', count: some(2000), run: (by, files) => by.jpegs(files) },
    { title: named(50, 'PNG photographs of 1 megapixel'), inputs: 'png', count: some(50), run: (by, files) => by.pngs(files) },
    { title: named(1000, 'pages of 100 rectangles'), run: (by) => by.rectangles(some(1000), 100) },
  ];
}
