// What the package gives.
export { rgb, PdfForm, PdfImage, PdfPage, PdfProfile } from './canvas.mjs';
export { Document } from './document.mjs';
export { JtpdfError } from './errors.mjs';
export { load } from './load.mjs';
