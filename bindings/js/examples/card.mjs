// Shapes, a form that two pages show, text by an operator of PDF, and contents that are compressed.
import { writeFile } from 'node:fs/promises';
import { Document, JtpdfError } from 'jtpdf';

const doc = await Document.create({ unit: 'mm', title: 'A card', compress: true });
const sun = doc.addForm([20, 20], (form) => {
  form.drawEllipse({ x: 10, y: 10, xScale: 9, yScale: 9, color: '#ffd166', borderColor: '#ef476f', borderWidth: 1 });
});
for (const angle of [0, 90]) {
  const page = doc.addPage([105, 74]);
  page.drawRectangle({ width: 105, height: 74, color: '#e8f4ff' });
  page.drawForm(sun, { x: 60, y: 30, width: 40, height: 40, rotate: angle });
  page.setResource('/Font/F1', '<< /Type /Font /Subtype /Type1 /BaseFont /Helvetica >>');
  page.drawContent('BT /F1 18 Tf 30 40 Td (Greetings) Tj ET');
}
try {
  await doc.embedPng(new Uint8Array([1, 2, 3]));
} catch (error) {
  if (!(error instanceof JtpdfError)) throw error;
  console.log(`${error.code}: ${error.message}`);
}
await writeFile('card.pdf', await doc.save());
