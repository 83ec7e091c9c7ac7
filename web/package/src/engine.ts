/**
 * The engine as an object with promises, on top of the worker.
 *
 *     const engine = await Engine.create();
 *     const { bestmove } = await engine.go({ depth: 12 });
 *     for await (const info of engine.analyse({ fen })) console.log(info.score, info.pv);
 *     engine.terminate();
 *
 * Requests may be made without waiting for one another; they are carried out in order. A search
 * without a limit would never let the next one begin, so it ends when something else is asked for.
 */
import { EngineError } from './errors.js';
import { checkFen } from './fen.js';
import type { FileSource } from './files.js';
import type { Variant } from './module.js';
import {
    goLine, isLimited, parseBestMove, parseInfo, parseInfoString, parseOption, positionLine,
    type Info, type Limits, type OptionInfo,
} from './uci.js';
import type { WorkerReply, WorkerRequest } from './messages.js';

/** What the class needs of a worker, in a page or under Node. */
export interface WorkerLike {
    postMessage(message: WorkerRequest): void;
    onReply(handler: (reply: WorkerReply) => void): void;
    onFailure(handler: (message: string) => void): void;
    terminate(): void;
}

export interface EngineOptions {
    /** `auto` takes several threads where the page is cross-origin isolated. */
    variant?: Variant | 'auto';
    /** Search threads; the default is 1. */
    threads?: number;
    /** The hash table in MB; the default is 16. */
    hash?: number;
    /** Where brenquil-worker.js lies, if not beside this module. */
    workerUrl?: string | URL;
    /** Where the .wasm lies, if not beside the worker. */
    wasmUrl?: string | URL;
    /** Talk as the native program does with `--strict-uci`: options are checked, and there are some more of them. */
    strict?: boolean;
    /** Further options of the engine, by their names. */
    options?: Record<string, string | number | boolean>;
    /** Aborts the start, and later ends the engine. */
    signal?: AbortSignal;
}

/** A position: from a FEN, or the start position, and moves in the notation of UCI. */
export interface Position {
    fen?: string;
    moves?: readonly string[];
}

export interface GoRequest extends Position, Limits {
    /** Ends the search; the promise is still fulfilled, with the best move so far. */
    signal?: AbortSignal;
    /** Called with each line of figures. */
    onInfo?: (info: Info) => void;
}

export interface AnalyseRequest extends Position, Limits {
    /** Lines shown. */
    multipv?: number;
    signal?: AbortSignal;
}

export interface GoResult {
    /** null: there is no legal move, or the search was ended before its first depth. */
    bestmove: string | null;
    ponder?: string;
    /** The last line of each number of MultiPV, best first; empty when a book or table answered without one. */
    lines: Info[];
}

/** Names of events and what their listeners get. */
export interface EngineEvents {
    /** Every line of the engine. */
    line: string;
    /** Every line to the engine. */
    sent: string;
    /** What the engine says in words: the text of each `info string`. A damaged table is reported that way. */
    message: string;
    /** The worker ended by itself. */
    crash: EngineError;
}

interface Search {
    request: GoRequest;
    limited: boolean;
    lines: Info[];
    stop: boolean;
    started: boolean;
    resolve(result: GoResult): void;
    reject(error: Error): void;
}

// Without a legal move the engine says the first; in strict UCI its best move is the second.
const NoBestMove = 'No best move!';
const NoMove = '(none)';
const NoThread = 'The system gives no thread for the search';

export class Engine {
    /** The flavour that runs. */
    variant: Variant = 'single';
    name = '';
    author = '';
    /** What the engine offers, by name. */
    readonly options = new Map<string, OptionInfo>();

    readonly #makeWorker: () => WorkerLike;
    readonly #settings: EngineOptions;
    readonly #listeners = new Map<keyof EngineEvents, Set<(value: never) => void>>();
    readonly #wanted = new Map<string, string>(); // options as they were set
    readonly #files = new Map<string, FileSource>();
    #worker: WorkerLike | null = null;
    #queue: Promise<unknown> = Promise.resolve();
    #search: Search | null = null;
    #pending = 0; // requests that wait for their turn
    #stops = 0; // counts the calls of stop; a search that was asked for before one ends at once
    #awaited: ((line: string) => boolean) | null = null; // answers true when that was the line
    #failAwaited: ((error: Error) => void) | null = null;
    #fileReplies = new Map<number, { resolve(size: number): void; reject(error: Error): void }>();
    #nextFile = 1;
    #onReady: { resolve(): void; reject(error: Error): void } | null = null;
    #failure: EngineError | null = null;
    #lastWords = '';

    /** Use `create` of the package's entry; this one is for those who bring a worker of their own. */
    constructor(makeWorker: () => WorkerLike, settings: EngineOptions = {}) {
        this.#makeWorker = makeWorker;
        this.#settings = settings;
    }

    /** Starts the worker and waits until the engine answers. */
    async start(): Promise<this> {
        const { signal, variant, wasmUrl, threads, hash, options } = this.#settings;
        if (signal?.aborted === true) {
            throw signal.reason;
        }
        signal?.addEventListener('abort', () => this.terminate(), { once: true });
        await this.#launch(variant ?? 'auto', wasmUrl === undefined ? undefined : String(wasmUrl));
        if (hash !== undefined) {
            await this.setOption('Hash', hash);
        }
        if (threads !== undefined) {
            await this.setOption('Threads', threads);
        }
        for (const [name, value] of Object.entries(options ?? {})) {
            await this.setOption(name, value);
        }
        return this;
    }

    on<Name extends keyof EngineEvents>(name: Name, listener: (value: EngineEvents[Name]) => void): () => void {
        let all = this.#listeners.get(name);
        if (all === undefined) {
            all = new Set();
            this.#listeners.set(name, all);
        }
        const set = all;
        set.add(listener as (value: never) => void);
        return () => {
            set.delete(listener as (value: never) => void);
        };
    }

    /** True from a crash or `terminate` until `restart`. */
    get hasFailed(): boolean {
        return this.#failure !== null;
    }

    /** The most threads that make sense here. */
    get maximumThreads(): number {
        return this.variant === 'single' ? 1 : (this.options.get('Threads')?.max ?? 1);
    }

    /** Sends a line as it is. What comes back goes to the listeners of `line`. */
    send(line: string): void {
        if (this.#failure !== null || this.#worker === null) {
            throw this.#failure ?? new EngineError('terminated', 'The engine has not been started');
        }
        this.#emit('sent', line);
        this.#worker.postMessage(line);
    }

    /**
     * Sets an option; ends a search without a limit. Resolves with what the engine says to it.
     * Rejects when there is no such option, and when there is no memory for it.
     */
    setOption(name: string, value: string | number | boolean): Promise<string[]> {
        return this.#inTurn(async () => {
            if (!this.options.has(name)) {
                throw new EngineError('unknown-option',
                    `The engine has no option "${name}"; it has ${[...this.options.keys()].join(', ')}`);
            }
            const text = String(value);
            if (/[\r\n]/.test(text)) {
                throw new TypeError(`The value of ${name} must be one line`);
            }
            const said = await this.#sendAndHear(`setoption name ${name} value ${text}`);
            const refusal = said.find((line) => line.includes('cannot be allocated'));
            if (refusal !== undefined) {
                throw new EngineError('out-of-memory', `${refusal}; ask for less`);
            }
            this.#wanted.set(name, text);
            return said;
        });
    }

    /** Tells the engine that the next position is of another game. */
    newGame(): Promise<void> {
        return this.#inTurn(async () => {
            await this.#sendAndHear('ucinewgame');
        });
    }

    /** Resolves when everything asked for before has been done. */
    isReady(): Promise<void> {
        return this.#inTurn(async () => {
            await this.#sendAndHear(null);
        });
    }

    /** Searches. Without a limit it goes on until `stop`, the signal, or the next request. */
    go(request: GoRequest = {}): Promise<GoResult> {
        let command: string;
        let position: string;
        try {
            position = this.#positionOf(request);
            command = goLine(request);
        } catch (error) {
            return Promise.reject(error as Error);
        }
        const stops = this.#stops;
        return this.#inTurn(() => this.#run(request, position, command, isLimited(request), stops));
    }

    /**
     * Searches like `go`, but every finished depth has its line. (A plain `go` that ends by its time
     * or with a mate does not show the last one.) Neither book nor tables answer for the search.
     */
    #look(request: GoRequest): Promise<GoResult> {
        let command: string;
        let position: string;
        try {
            position = this.#positionOf(request);
            command = goLine({
                infinite: true,
                ...(request.depth === undefined ? {} : { depth: request.depth }),
                ...(request.searchmoves === undefined ? {} : { searchmoves: request.searchmoves }),
            });
        } catch (error) {
            return Promise.reject(error as Error);
        }
        const { depth = Infinity, nodes = Infinity, movetime } = request;
        const stops = this.#stops;
        return this.#inTurn(() => {
            let timer: ReturnType<typeof setTimeout> | undefined;
            const searching = this.#run({
                ...request,
                onInfo: (info) => {
                    request.onInfo?.(info);
                    const isMate = info.score?.type === 'mate' && info.depth !== undefined &&
                        info.depth >= 2 * Math.abs(info.score.value) && info.multipv === 1;
                    if ((info.score !== undefined && (info.depth ?? 0) >= depth) || (info.nodes ?? 0) >= nodes ||
                        (isMate && isLimited(request))) {
                        this.#stopCurrent();
                    }
                },
            }, position, command, isLimited(request), stops);
            if (movetime !== undefined) {
                timer = setTimeout(() => this.#stopCurrent(), movetime);
            }
            return searching.finally(() => clearTimeout(timer));
        });
    }

    /**
     * Searches and gives each finished line of figures as it comes. Leaving the loop ends the search.
     *
     *     for await (const info of engine.analyse({ fen, multipv: 3, depth: 20 })) { ... }
     */
    async *analyse(what: string | AnalyseRequest = {}): AsyncGenerator<Info, GoResult, void> {
        const request = typeof what === 'string' ? { fen: what } : what;
        const waiting: Info[] = [];
        let wake: () => void = () => {};
        let result: GoResult | null = null;
        let failure: Error | null = null;
        const leaving = new AbortController();
        request.signal?.addEventListener('abort', () => leaving.abort(), { once: true });
        if (request.signal?.aborted === true) {
            leaving.abort();
        }
        if (request.multipv !== undefined) {
            await this.setOption('MultiPV', request.multipv);
        }
        this.#look({
            ...request,
            signal: leaving.signal,
            onInfo: (info) => {
                if (info.pv.length > 0) {
                    waiting.push(info);
                    wake();
                }
            },
        }).then((value) => {
            result = value;
            wake();
        }, (error: Error) => {
            failure = error;
            wake();
        });
        try {
            for (;;) {
                while (waiting.length > 0) {
                    yield waiting.shift()!;
                }
                if (failure !== null) {
                    throw failure as Error;
                }
                if (result !== null) {
                    return result;
                }
                await new Promise<void>((resolve) => {
                    wake = resolve;
                });
            }
        } finally {
            leaving.abort();
        }
    }

    /**
     * Ends the search that runs, and those that wait for their turn, as soon as they begin. Their
     * promises are fulfilled with the best moves so far.
     */
    stop(): void {
        ++this.#stops;
        this.#stopCurrent();
    }

    #stopCurrent(): void {
        const search = this.#search;
        if (search !== null && !search.stop) {
            search.stop = true;
            if (search.started) {
                this.send('stop');
            }
        }
    }

    /**
     * Gives the engine a file under a path of its own file system: a File, a Blob, bytes, or a URL,
     * which is fetched in parts where its host allows that. Resolves with its size.
     */
    addFile(path: string, source: FileSource): Promise<number> {
        return this.#inTurn(() => this.#putFile(path, source));
    }

    /** Takes a Polyglot book. Resolves with the engine's message. */
    async loadBook(source: FileSource, name = 'book.bin'): Promise<string> {
        const path = `/books/${name}`;
        await this.addFile(path, source);
        await this.setOption('Book Path', '<empty>');
        const said = await this.setOption('Book Path', path);
        return this.#expectMessage(said, /loaded! \([1-9]/, path);
    }

    /** Takes Syzygy tables, `.rtbw` and `.rtbz`, by their names. Resolves with the engine's message. */
    async loadSyzygy(files: Record<string, FileSource>): Promise<string> {
        return this.#loadTables('/syzygy', 'Syzygy Path', files, /^Found [1-9]/);
    }

    /** Takes Nalimov tables by their names. Resolves with the engine's message. */
    async loadNalimov(files: Record<string, FileSource>): Promise<string> {
        return this.#loadTables('/nalimov', 'NalimovPath', files, /loaded!/);
    }

    /**
     * After a crash or `terminate`: a new worker with the same options and files; without those of
     * books and tables when `withFiles` is false.
     */
    async restart(withFiles = true): Promise<void> {
        this.terminate();
        this.#queue = Promise.resolve();
        this.#failure = null;
        await this.#launch(this.#settings.variant ?? 'auto',
            this.#settings.wasmUrl === undefined ? undefined : String(this.#settings.wasmUrl));
        if (!withFiles) {
            this.#files.clear();
            for (const name of ['Book Path', 'Syzygy Path', 'NalimovPath']) {
                this.#wanted.delete(name);
            }
        }
        for (const [path, source] of [...this.#files]) {
            await this.addFile(path, source);
        }
        for (const [name, value] of this.#wanted) {
            await this.setOption(name, value);
        }
    }

    /** Ends the worker at once, whatever it is doing. Open promises are rejected. */
    terminate(): void {
        if (this.#failure === null) {
            this.#fail(new EngineError('terminated', 'The engine was terminated'), false);
        }
    }

    // ---- the worker

    #launch(variant: Variant | 'auto', wasmUrl?: string): Promise<void> {
        const worker = this.#makeWorker();
        this.#worker = worker;
        worker.onReply((reply) => {
            if (this.#worker === worker) {
                this.#take(reply);
            }
        });
        worker.onFailure((message) => {
            if (this.#worker === worker) {
                this.#fail(new EngineError('crashed', `The engine has crashed: ${message}`), true);
            }
        });
        const ready = new Promise<void>((resolve, reject) => {
            this.#onReady = { resolve, reject };
        });
        worker.postMessage({
            type: 'init', variant, strict: this.#settings.strict === true, ...(wasmUrl === undefined ? {} : { wasmUrl }),
        });
        return this.#inTurn(async () => {
            await ready;
            this.options.clear();
            await this.#hear('uci', (line) => {
                const option = parseOption(line);
                if (option !== null) {
                    this.options.set(option.name, option);
                } else if (line.startsWith('id name ')) {
                    this.name = line.slice('id name '.length);
                } else if (line.startsWith('id author ')) {
                    this.author = line.slice('id author '.length);
                }
                return line === 'uciok';
            });
        });
    }

    #take(reply: WorkerReply): void {
        if (typeof reply === 'string') {
            this.#emit('line', reply);
            const message = parseInfoString(reply);
            if (message !== null) {
                this.#emit('message', message);
            }
            this.#lastWords = reply;
            if (this.#awaited !== null && this.#awaited(reply)) {
                this.#awaited = null;
            }
            this.#hearSearch(reply);
        } else if (reply.type === 'ready') {
            this.variant = reply.variant;
            this.#onReady?.resolve();
            this.#onReady = null;
        } else if (reply.type === 'file') {
            const open = this.#fileReplies.get(reply.id);
            this.#fileReplies.delete(reply.id);
            if (reply.error === undefined) {
                open?.resolve(reply.size ?? 0);
            } else {
                open?.reject(new EngineError(reply.error.code, reply.error.message));
            }
        } else if (reply.type === 'error') {
            this.#fail(new EngineError(reply.code, reply.message), true);
        } else if (reply.status !== 0) {
            const words = parseInfoString(this.#lastWords) ?? this.#lastWords;
            this.#fail(new EngineError('bad-file', `The engine has ended: ${words}`), true);
        } else {
            this.#fail(new EngineError('terminated', 'The engine was told to quit'), false);
        }
    }

    #fail(error: EngineError, isCrash: boolean): void {
        if (this.#failure !== null) {
            return;
        }
        this.#failure = error;
        this.#worker?.terminate();
        this.#worker = null;
        this.#onReady?.reject(error);
        this.#onReady = null;
        this.#failAwaited?.(error);
        this.#failAwaited = null;
        this.#awaited = null;
        for (const open of this.#fileReplies.values()) {
            open.reject(error);
        }
        this.#fileReplies.clear();
        const search = this.#search;
        this.#search = null;
        search?.reject(error);
        if (isCrash) {
            this.#emit('crash', error);
        }
    }

    #emit<Name extends keyof EngineEvents>(name: Name, value: EngineEvents[Name]): void {
        for (const listener of this.#listeners.get(name) ?? []) {
            (listener as (value: EngineEvents[Name]) => void)(value);
        }
    }

    // ---- one thing after the other

    #inTurn<T>(work: () => Promise<T>): Promise<T> {
        ++this.#pending;
        this.#endUnlimited();
        const turn = this.#queue.then(() => {
            --this.#pending;
            if (this.#failure !== null) {
                throw this.#failure;
            }
            return work();
        });
        this.#queue = turn.catch(() => {});
        return turn;
    }

    /** A search without a limit ends when others wait. */
    #endUnlimited(): void {
        if (this.#search !== null && !this.#search.limited && this.#pending > 0) {
            this.#stopCurrent();
        }
    }

    /** Sends a line and hands every answer to the function until that returns true. */
    #hear(line: string, isLast: (answer: string) => boolean): Promise<void> {
        return new Promise((resolve, reject) => {
            this.#failAwaited = reject;
            this.#awaited = (answer) => {
                const last = isLast(answer);
                if (last) {
                    this.#failAwaited = null;
                    resolve();
                }
                return last;
            };
            this.send(line);
        });
    }

    /** Sends a line and resolves with the messages that come until the engine is ready again. */
    async #sendAndHear(line: string | null): Promise<string[]> {
        const said: string[] = [];
        if (line !== null) {
            this.send(line);
        }
        await this.#hear('isready', (answer) => {
            const message = parseInfoString(answer);
            if (message !== null) {
                said.push(message);
            }
            return answer === 'readyok';
        });
        return said;
    }

    // ---- the search

    #positionOf(request: Position): string {
        if (request.fen !== undefined) {
            const fault = checkFen(request.fen);
            if (fault !== null) {
                throw new EngineError('bad-position', fault);
            }
        }
        for (const move of request.moves ?? []) {
            if (!/^([a-h][1-8][a-h][1-8][nbrqNBRQ]?|O-O(-O)?)$/.test(move)) {
                throw new EngineError('bad-position', `"${move}" is no move in the notation of UCI, as e2e4`);
            }
        }
        return positionLine(request.fen, request.moves);
    }

    #run(request: GoRequest, position: string, command: string, limited: boolean, stops: number): Promise<GoResult> {
        return new Promise((resolve, reject) => {
            const { signal } = request;
            const onAbort = (): void => this.#stopCurrent();
            const done = (): void => signal?.removeEventListener('abort', onAbort);
            const search: Search = {
                request,
                limited,
                lines: [],
                stop: false,
                started: false,
                resolve: (result) => {
                    done();
                    resolve(result);
                },
                reject: (error) => {
                    done();
                    reject(error);
                },
            };
            if (signal?.aborted === true) {
                search.resolve({ bestmove: null, lines: [] });
                return;
            }
            signal?.addEventListener('abort', onAbort);
            this.#search = search;
            this.send(position);
            this.send(command);
            search.started = true;
            if (stops !== this.#stops) {
                this.#stopCurrent();
            }
            this.#endUnlimited();
        });
    }

    #hearSearch(line: string): void {
        const search = this.#search;
        if (search === null || !search.started) {
            return;
        }
        const info = parseInfo(line);
        if (info !== null) {
            if (info.pv.length > 0 && info.score !== undefined) {
                search.lines[info.multipv - 1] = info;
            }
            search.request.onInfo?.(info);
            return;
        }
        const best = parseBestMove(line);
        const message = parseInfoString(line);
        if (best === null && message !== NoBestMove && message !== NoThread) {
            return;
        }
        this.#search = null;
        if (message === NoThread) {
            search.reject(new EngineError('out-of-memory', `${NoThread}; close other pages and try again`));
            return;
        }
        search.resolve({ ...(best === null || best.bestmove === NoMove ? { bestmove: null } : best), lines: search.lines.filter(Boolean) });
    }

    // ---- files

    #putFile(path: string, source: FileSource): Promise<number> {
        return new Promise((resolve, reject) => {
            const id = this.#nextFile++;
            this.#fileReplies.set(id, {
                resolve: (size) => {
                    this.#files.set(path, source);
                    resolve(size);
                },
                reject,
            });
            this.#worker!.postMessage({ type: 'file', id, path, source: source instanceof URL ? String(source) : source });
        });
    }

    async #loadTables(
        folder: string, option: string, files: Record<string, FileSource>, success: RegExp,
    ): Promise<string> {
        for (const [name, source] of Object.entries(files)) {
            await this.addFile(`${folder}/${name}`, source);
        }
        // The same path again would change nothing, and there may be more tables in it now.
        await this.setOption(option, '<empty>');
        return this.#expectMessage(await this.setOption(option, folder), success, folder);
    }

    #expectMessage(said: string[], success: RegExp, path: string): string {
        const message = said.find((line) => success.test(line));
        if (message === undefined) {
            throw new EngineError('bad-file',
                said.length > 0 ? said.join('; ') : `The engine can use nothing of what is in ${path}`);
        }
        return message;
    }
}
