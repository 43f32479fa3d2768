import { writeFile } from 'node:fs/promises';
import { Document } from 'jtpdf';

const doc = await Document.create({ unit: 'mm' });
doc.addPage('A4').drawRectangle({ x: 45, y: 110, width: 120, height: 80, rotate: 15, color: '#d62839' });
await writeFile('hello.pdf', await doc.save());
