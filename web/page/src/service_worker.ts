/**
 * Two services for the page: every file of it is kept for use offline, and every answer gets the
 * headers with which browsers allow threads, which many static hosts cannot be told to send.
 */
declare const BRENQUIL_FILES: string[];
declare const BRENQUIL_BUILD: string;

const worker = self as unknown as ServiceWorkerGlobalScope;
const cacheName = `brenquil-${BRENQUIL_BUILD}`;

interface ServiceWorkerGlobalScope {
    addEventListener(type: string, listener: (event: ExtendableEvent) => void): void;
    skipWaiting(): Promise<void>;
    clients: { claim(): Promise<void> };
    registration: { scope: string };
}
interface ExtendableEvent extends Event {
    waitUntil(work: Promise<unknown>): void;
    respondWith(answer: Promise<Response>): void;
    request: Request;
}

worker.addEventListener('install', (event) => {
    event.waitUntil(caches.open(cacheName)
        .then((cache) => cache.addAll(BRENQUIL_FILES.map((file) => new Request(file, { cache: 'reload' }))))
        .then(() => worker.skipWaiting()));
});

worker.addEventListener('activate', (event) => {
    event.waitUntil(caches.keys()
        .then((names) => Promise.all(names.filter((name) => name.startsWith('brenquil-') && name !== cacheName)
            .map((name) => caches.delete(name))))
        .then(() => worker.clients.claim()));
});

function isolated(answer: Response): Response {
    if (answer.status === 0 || answer.type === 'opaque') {
        return answer;
    }
    const headers = new Headers(answer.headers);
    headers.set('Cross-Origin-Opener-Policy', 'same-origin');
    headers.set('Cross-Origin-Embedder-Policy', 'require-corp');
    headers.set('Cross-Origin-Resource-Policy', 'same-origin');
    return new Response(answer.body, { status: answer.status, statusText: answer.statusText, headers });
}

async function answer(request: Request): Promise<Response> {
    const cache = await caches.open(cacheName);
    const known = await cache.match(request, { ignoreSearch: true });
    return isolated(known ?? await fetch(request));
}

worker.addEventListener('fetch', (event) => {
    const { request } = event;
    const isOurs = request.url.startsWith(worker.registration.scope);
    // Parts of tables go past: a cache has no parts.
    if (request.method === 'GET' && isOurs && !request.headers.has('range')) {
        event.respondWith(answer(request));
    }
});
