// Keeps the whole application for the time without a network. A new version is fetched beside the
// old one and takes over when no page shows the old one any more.
const version = "VERSION";
const files = ["FILES"];
// One host may serve several copies, each from a folder of its own; no path contains a space.
const cachePrefix = `veyla ${new URL(self.registration.scope).pathname} `;
const cacheName = cachePrefix + version;

self.addEventListener("install", (event) => {
  // An old file must not become part of a new version: the browser's own cache is asked for those alone that
  // bear what they contain in their names, and the host whether the others have changed.
  const requests = files.map(
    (file) => new Request(file, { cache: file.startsWith("assets/") ? "default" : "no-cache" }),
  );
  event.waitUntil(caches.open(cacheName).then((cache) => cache.addAll(requests)));
});

self.addEventListener("activate", (event) => {
  event.waitUntil(
    caches
      .keys()
      .then((names) => names.filter((name) => name.startsWith(cachePrefix) && name !== cacheName))
      .then((old) => Promise.all(old.map((name) => caches.delete(name))))
      .then(() => self.clients.claim()),
  );
});

self.addEventListener("fetch", (event) => {
  const request = event.request;
  if (request.method !== "GET" || new URL(request.url).origin !== self.location.origin) return;
  const wanted = request.mode === "navigate" ? "./" : request;
  event.respondWith(
    caches
      .open(cacheName)
      // What a file is does not depend on who asks for it.
      .then((cache) => cache.match(wanted, { ignoreSearch: true, ignoreVary: true }))
      .then((kept) => kept ?? fetch(request)),
  );
});
