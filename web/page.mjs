// The page: files come in, a PDF goes out.
import { makeAlbum } from './album.mjs';
import { PictureList } from './list.mjs';

const byId = (id) => document.getElementById(id);
const form = byId('options');
const say = (words) => { byId('said').textContent = words; };
const list = new PictureList(byId('list'), showCount, say);
let url;  // of the last PDF

function showCount() {
  const count = list.items.length;
  byId('make').disabled = byId('file').disabled = count === 0;
  byId('make').textContent = count === 0 ? 'Make the PDF' : `Make the PDF, ${count} ${count === 1 ? 'page' : 'pages'}`;
  byId('hint').hidden = byId('tools').hidden = count < 2;
}

byId('clear').addEventListener('click', () => list.clear());

// ---- Files ---------------------------------------------------------------------------------------

byId('choose').addEventListener('change', (event) => {
  list.add([...event.target.files]);
  event.target.value = '';  // the same file may be chosen again
});

const hasFiles = (event) => event.dataTransfer?.types.includes('Files');
addEventListener('dragover', (event) => {
  if (!hasFiles(event)) return;
  event.preventDefault();
  document.body.classList.add('over');
});
addEventListener('dragleave', (event) => {
  if (event.relatedTarget === null) document.body.classList.remove('over');
});
addEventListener('drop', (event) => {
  document.body.classList.remove('over');
  if (!hasFiles(event)) return;
  event.preventDefault();
  if (event.dataTransfer.files.length > 0) list.add([...event.dataTransfer.files]);
});

// ---- The PDF -------------------------------------------------------------------------------------

function readOptions() {
  const fields = form.elements;
  return {
    size: fields.size.value, orientation: fields.orientation.value, fit: fields.fit.value,
    border: fields.border.valueAsNumber, title: fields.title.value.trim(), bookmarks: fields.bookmarks.checked,
  };
}

const fileName = () => `${(form.elements.title.value.trim() || 'pictures').replace(/[\\/:*?"<>|\p{Cc}]/gu, '_')}.pdf`;

// Makes the document and hands it to finish, which gives what to say of it.
async function make(finish) {
  const progress = byId('progress');
  const buttons = [byId('make'), byId('file')];
  byId('done').textContent = byId('failed').textContent = '';
  progress.hidden = false;
  buttons.forEach((button) => { button.disabled = true; });
  let album;
  try {
    const items = [...list.items];
    album = await makeAlbum(items, readOptions(), (i) => { progress.value = i / items.length; });
    list.showFailures(album.failures);
    if (album.failures.length > 0) {
      byId('failed').textContent = `Left out, as marked:\n${album.failures.map(({ item }) => item.file.name).join('\n')}`;
    }
    if (album.pages === 0) return;
    byId('done').textContent = await finish(album);
  } catch (error) {
    if (error.name !== 'AbortError') byId('failed').textContent = `There is no PDF: ${error.message}`;
  } finally {
    album?.document.dispose();
    progress.hidden = true;
    showCount();
  }
}

const amount = (bytes) => (bytes < 1e6 ? `${Math.ceil(bytes / 1e3)} kB` : `${(bytes / 1e6).toFixed(1)} MB`);
const pages = (album) => `${album.pages} ${album.pages === 1 ? 'page' : 'pages'}`;

form.addEventListener('submit', (event) => {
  event.preventDefault();
  make(async (album) => {
    const blob = await album.document.saveBlob();
    if (url) URL.revokeObjectURL(url);
    url = URL.createObjectURL(blob);
    const link = byId('download');
    Object.assign(link, { href: url, download: fileName(), hidden: false });
    link.click();
    return `${pages(album)}, ${amount(blob.size)}.`;
  });
});

if ('showSaveFilePicker' in window) {
  byId('file').hidden = false;
  byId('file').addEventListener('click', async () => {
    if (!form.reportValidity()) return;
    let file;
    try {
      file = await showSaveFilePicker({ suggestedName: fileName(), types: [{ accept: { 'application/pdf': ['.pdf'] } }] });
    } catch {
      return;  // nothing was chosen
    }
    await make(async (album) => {
      await album.document.pipeTo(await file.createWritable());
      return `${pages(album)}, written to ${file.name}.`;
    });
  });
}

showCount();
navigator.serviceWorker?.register('worker.js').catch(() => {});  // without one the page needs the network again
