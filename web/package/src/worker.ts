/**
 * The worker: UCI lines in by `postMessage`, answers out line by line. Runs as a Worker of a page
 * and, under Node, of `node:worker_threads`.
 *
 *     const worker = new Worker('brenquil-worker.js');
 *     worker.onmessage = (event) => console.log(event.data);
 *     worker.postMessage('uci');
 *
 * The flavour is the one that fits the page; `brenquil-worker.js#single` and `#threads` name one.
 * Loading begins with the first message. Whoever sends only strings gets only strings, and a failure
 * is an error event of the worker. The class Engine sends objects too (WorkerRequest), and is told of
 * failures by objects (WorkerReply).
 */
import { EngineError, type EngineErrorCode } from './errors.js';
import { openSource, putFile, type FileSource } from './files.js';
import type { WorkerReply, WorkerRequest } from './messages.js';
import { makeModule, pickVariant, sendLine, type Factory, type Module, type Variant } from './module.js';

/** What differs between the worker of a page and that of Node. */
interface Host {
    post(reply: WorkerReply): void;
    locate(name: string): string;
    factory(name: string): Factory;
    wasm(url: string): Promise<WebAssembly.Module>;
    canNest: boolean;
    close(): void;
    fragment: string;
}

/* The names that a worker finds. */
declare const importScripts: ((url: string) => void) | undefined;
declare const self: {
    location: { href: string; hash: string };
    onmessage: ((event: { data: WorkerRequest }) => void) | null;
    postMessage(reply: WorkerReply): void;
    close(): void;
    createBrenquil: Factory;
};

function explain(error: unknown): { code: EngineErrorCode; message: string } {
    if (error instanceof EngineError) {
        return { code: error.code, message: error.message };
    }
    if (error instanceof RangeError) {
        return { code: 'out-of-memory', message: `The engine does not get the memory that it needs: ${error.message}` };
    }
    return { code: 'crashed', message: `The engine has crashed: ${String(error)}` };
}

function pageHost(): Host {
    const base = self.location.href.replace(/[?#].*$/, '').replace(/[^/]*$/, '');
    return {
        post: (reply) => self.postMessage(reply),
        locate: (name) => base + name,
        factory: (name) => {
            try {
                importScripts!(base + name);
            } catch (error) {
                throw new EngineError('file-not-found', `${base + name} cannot be loaded; it belongs beside brenquil-worker.js (${String(error)})`);
            }
            return self.createBrenquil;
        },
        wasm: async (url) => {
            const missing = (why: string): EngineError => new EngineError('file-not-found',
                `${url} cannot be loaded (${why}); it belongs beside brenquil-worker.js`);
            let answer: Response;
            try {
                answer = await fetch(url);
            } catch (error) {
                throw missing(String(error));
            }
            if (!answer.ok) {
                throw missing(`the host answered ${answer.status}`);
            }
            // Compiling while loading needs the right type in the answer.
            const bytes = answer.clone();
            return WebAssembly.compileStreaming(answer).catch(async () => {
                try {
                    return await WebAssembly.compile(await bytes.arrayBuffer());
                } catch (error) {
                    throw missing(`what the host sends is no program: ${String(error)}`);
                }
            });
        },
        canNest: typeof Worker !== 'undefined',
        close: () => self.close(),
        fragment: self.location.hash.slice(1),
    };
}

function nodeHost(): { host: Host; onMessage(handler: (message: WorkerRequest) => void): void } {
    const load = require;
    const { parentPort } = load('node:worker_threads') as typeof import('node:worker_threads');
    const fs = load('node:fs') as typeof import('node:fs');
    const path = load('node:path') as typeof import('node:path');
    return {
        host: {
            post: (reply) => parentPort!.postMessage(reply),
            locate: (name) => path.join(__dirname, name),
            factory: (name) => load(path.join(__dirname, name)) as Factory,
            wasm: async (file) => {
                try {
                    return await WebAssembly.compile(await fs.promises.readFile(file));
                } catch (error) {
                    throw new EngineError('file-not-found', `${file} cannot be loaded: ${(error as Error).message}`);
                }
            },
            canNest: true,
            close: () => parentPort!.close(),
            fragment: '',
        },
        onMessage: (handler) => parentPort!.on('message', handler),
    };
}

class EngineWorker {
    readonly #host: Host;
    #module: Module | null = null;
    #waiting: WorkerRequest[] = []; // until the module is there
    #isLoading = false;
    #isObjectClient = false;
    #hasEnded = false;
    #isStrict = false;

    constructor(host: Host) {
        this.#host = host;
    }

    take(message: WorkerRequest): void {
        if (typeof message !== 'string') {
            this.#isObjectClient = true;
        }
        if (this.#module !== null) {
            this.#obey(message);
            return;
        }
        const isInit = typeof message === 'object' && message.type === 'init';
        this.#isStrict ||= isInit && message.strict === true;
        if (!isInit) {
            this.#waiting.push(message);
        }
        if (!this.#isLoading) {
            this.#isLoading = true;
            const named = this.#host.fragment === 'single' || this.#host.fragment === 'threads'
                ? this.#host.fragment : 'auto';
            this.#load(isInit ? message.variant : named, isInit ? message.wasmUrl : undefined)
                .catch((error: unknown) => this.#fail(error));
        }
    }

    async #load(wanted: Variant | 'auto', wasmUrl?: string): Promise<void> {
        const host = this.#host;
        const variant = pickVariant(wanted, host.canNest);
        const name = `brenquil-${variant}`;
        const module = await makeModule(variant, {
            factory: host.factory(`${name}.js`),
            locate: (file) => host.locate(file),
            wasm: () => host.wasm(wasmUrl ?? host.locate(`${name}.wasm`)),
            onLine: (line) => host.post(line),
            onEnd: (status) => this.#end(status),
            onCrash: (message) => this.#fail(new EngineError('crashed', message)),
        });
        this.#module = module;
        if (this.#isObjectClient) {
            host.post({ type: 'ready', variant });
        }
        const first = this.#waiting[0];
        if (typeof first !== 'object' || first.type !== 'bench') {
            module._brenquil_start(this.#isStrict);
        }
        for (const message of this.#waiting) {
            this.#obey(message);
        }
        this.#waiting = [];
    }

    #obey(message: WorkerRequest): void {
        try {
            if (typeof message === 'string') {
                // One message may hold several lines.
                for (const line of message.split(/\r?\n/)) {
                    if (!this.#hasEnded) {
                        sendLine(this.#module!, line);
                    }
                }
            } else if (message.type === 'file') {
                void this.#put(message.id, message.path, message.source);
            } else if (message.type === 'bench') {
                this.#module!._brenquil_bench(message.depth);
            } else if (message.type === 'crash') {
                throw new Error('a crash was asked for');
            }
        } catch (error) {
            // The engine's way of leaving a call when it has ended itself.
            if (error !== 'unwind') {
                this.#fail(error);
            }
        }
    }

    async #put(id: number, path: string, source: FileSource): Promise<void> {
        try {
            const reader = await openSource(source);
            putFile(this.#module!.FS, path, reader);
            this.#host.post({ type: 'file', id, size: reader.size });
        } catch (error) {
            this.#host.post({ type: 'file', id, error: explain(error) });
        }
    }

    #end(status: number): void {
        if (this.#hasEnded) {
            return;
        }
        this.#hasEnded = true;
        if (this.#isObjectClient) {
            this.#host.post({ type: 'end', status });
        }
        this.#host.close();
    }

    #fail(error: unknown): void {
        const { code, message } = explain(error);
        this.#hasEnded = true;
        if (this.#isObjectClient) {
            this.#host.post({ type: 'error', code, message });
        } else {
            // Out of every promise, so that the page gets an error event.
            setTimeout(() => {
                throw new Error(message);
            }, 0);
        }
    }
}

if (typeof importScripts === 'function' && typeof self !== 'undefined') {
    const worker = new EngineWorker(pageHost());
    self.onmessage = (event) => worker.take(event.data);
} else {
    const { host, onMessage } = nodeHost();
    const worker = new EngineWorker(host);
    onMessage((message) => worker.take(message));
}
