// A host in strict TypeScript, which is only to compile.
import { type Color, Document, JtpdfError, load, type PdfImage, rgb, type Size } from 'jtpdf';

const sheet: Size = [210, 297];
const red: Color = rgb(1, 0, 0);

export async function card(photo: Blob, pixels: ImageData, module: WebAssembly.Module): Promise<Uint8Array> {
  await load(module);
  const doc = await Document.create({ unit: 'mm', title: 'A card', compress: true });
  const image: PdfImage = await doc.embedJpeg(photo, { orientation: 1 });
  await doc.embedPng(new Uint8Array(8), { check: true });
  await doc.embedImage(pixels);
  const { frames }: { frames: number } = await doc.embedImage(photo, { frame: 1, check: true });
  doc.addBookmark(`of ${frames}`);
  const profile = await doc.embedIcc(new ArrayBuffer(8), { compression: 'flate' });
  const encoded = await doc.embedEncoded(photo, { compression: 'jpeg', width: 1, height: 1, colorSpace: profile });
  const stamp = doc.addForm([20, 20], (form) => form.drawEllipse({ x: 10, y: 10, xScale: 8, yScale: 8, color: red }));
  const page = doc.addPage(sheet, { crop: [10, 10, 190, 277], rotate: 90 });
  page.drawImage(image, { x: 10, y: 10, width: 100, height: 80, rotate: 15 });
  page.drawForm(stamp);
  page.drawImage(encoded);
  doc.addBookmark('The card', { page, level: 0 });
  doc.setInfo('CreationDate', new Date(0));
  try {
    return await doc.save();
  } catch (error) {
    if (error instanceof JtpdfError && error.code === 'memory') doc.dispose();
    throw error;
  }
}

// @ts-expect-error: a document is made by Document.create()
new Document();
// @ts-expect-error: there is no such option
void Document.create({ units: 'mm' });
