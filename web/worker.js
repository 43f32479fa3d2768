// The service worker: keeps the page's files, so that it works without a network.
const VERSION = 'VERSION';
const FILES = ['FILES'];

addEventListener('install', (event) => {
  event.waitUntil(caches.open(VERSION).then((cache) => cache.addAll(FILES)).then(() => skipWaiting()));
});

addEventListener('activate', (event) => {
  event.waitUntil((async () => {
    for (const name of await caches.keys()) {
      if (name.startsWith('pictures-') && name !== VERSION) await caches.delete(name);
    }
    await clients.claim();
  })());
});

addEventListener('fetch', (event) => {
  event.respondWith(caches.match(event.request, { ignoreSearch: true, cacheName: VERSION })
    .then((kept) => kept ?? fetch(event.request)));
});
