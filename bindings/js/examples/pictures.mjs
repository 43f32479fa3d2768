// Each picture becomes a page of its own.
import { createWriteStream } from 'node:fs';
import { readFile } from 'node:fs/promises';
import { Writable } from 'node:stream';
import { Document } from 'jtpdf';

const doc = await Document.create({ title: 'An album' });
for (const path of process.argv.slice(2)) {
  const image = await doc.embedImage(await readFile(path));
  const size = [image.width * 72 / 150, image.height * 72 / 150];
  doc.addPage(size).drawImage(image, { width: size[0], height: size[1] });
  doc.addBookmark(path);
}
await doc.pipeTo(Writable.toWeb(createWriteStream('album.pdf')));
