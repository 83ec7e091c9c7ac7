/**
 * The engine of the page: started once, restarted when its worker crashes, asked by the page in its
 * own terms. Only one thing is asked at a time; a newer question ends an older one.
 */
import { Engine, EngineError, type FileSource, type GoResult, type Info, type Limits } from '../../../package/src/index.js';
import type { ChessPosition } from '../../../package/src/rules.js';

export interface Question {
    start: ChessPosition;
    moves: string[];
}

export interface ServiceEvents {
    /** The engine is there, again or for the first time. */
    onReady(engine: Engine): void;
    /** It is not, and why. */
    onProblem(message: string): void;
}

/** What tables say of a position: half-moves of the score are the engine's, from the view of the side to move. */
export interface Verdict {
    result: 'win' | 'draw' | 'loss';
    move: string;
    mateIn?: number;
}

export class EngineService {
    engine: Engine | null = null;
    readonly #events: ServiceEvents;
    readonly #variant: 'auto' | 'single' | 'threads';
    #asked = 0;
    #chess960 = false;

    constructor(events: ServiceEvents, variant: 'auto' | 'single' | 'threads' = 'auto') {
        this.#events = events;
        this.#variant = variant;
    }

    async start(): Promise<void> {
        try {
            const engine = await Engine.create({
                variant: this.#variant, workerUrl: new URL('engine/brenquil-worker.js', document.baseURI),
            });
            engine.on('crash', (error) => {
                void this.#recover(error);
            });
            // Noticed in the middle of a search, when nobody waits for an answer about a file.
            engine.on('message', (text) => {
                if (/corrupt/i.test(text)) {
                    this.#events.onProblem(`A table is damaged and is not used. The engine says: ${text}`);
                }
            });
            this.engine = engine;
            this.#events.onReady(engine);
        } catch (error) {
            this.#events.onProblem((error as Error).message);
        }
    }

    /** The move that the engine plays; null when another question came or there is none. */
    async move(question: Question, limits: Limits): Promise<string | null> {
        const ticket = ++this.#asked;
        const result = await this.#ask(ticket, question, (engine) => engine.go({ ...this.#position(question), ...limits }));
        return ticket === this.#asked ? (result?.bestmove ?? null) : null;
    }

    /** Lines until a newer question or `rest`. */
    async analyse(question: Question, lines: number, onInfo: (info: Info) => void): Promise<void> {
        const ticket = ++this.#asked;
        await this.#ask(ticket, question, async (engine) => {
            const ending = new AbortController();
            for await (const info of engine.analyse({ ...this.#position(question), multipv: lines, signal: ending.signal })) {
                if (ticket !== this.#asked) {
                    break;
                }
                onInfo(info);
            }
        });
    }

    /** The last line of a search to that depth, or null when something else was asked meanwhile. */
    async evaluate(question: Question, depth: number, ticket: number): Promise<Info | null> {
        let last: Info | null = null;
        await this.#ask(ticket, question, async (engine) => {
            for await (const info of engine.analyse({ ...this.#position(question), multipv: 1, depth })) {
                if (ticket !== this.#asked) {
                    break;
                }
                last = info;
            }
        });
        return ticket === this.#asked ? last : null;
    }

    /** What the tables say; null when they do not know the position. */
    async verdict(question: Question): Promise<Verdict | null> {
        const ticket = ++this.#asked;
        const result = await this.#ask(ticket, question, async (engine): Promise<GoResult> => {
            await engine.setOption('OwnBook', false);
            try {
                return await engine.go({ ...this.#position(question), depth: 1 });
            } finally {
                await engine.setOption('OwnBook', true);
            }
        });
        const line = result?.lines[0];
        // An answer that cost no node is that of a table.
        if (ticket !== this.#asked || line?.score === undefined || line.nodes !== 0 || result?.bestmove == null) {
            return null;
        }
        const { score } = line;
        return {
            result: score.value > 0 ? 'win' : score.value < 0 ? 'loss' : 'draw',
            move: result.bestmove,
            ...(score.type === 'mate' ? { mateIn: Math.abs(score.value) } : {}),
        };
    }

    /** A ticket for several `evaluate` that belong together. */
    begin(): number {
        return ++this.#asked;
    }

    isCurrent(ticket: number): boolean {
        return ticket === this.#asked;
    }

    /** Ends whatever is asked. */
    rest(): void {
        ++this.#asked;
        if (this.engine !== null && !this.engine.hasFailed) {
            this.engine.stop();
        }
    }

    async newGame(): Promise<void> {
        await this.#attempt((engine) => engine.newGame());
    }

    async setOption(name: string, value: string | number | boolean): Promise<void> {
        await this.#attempt((engine) => engine.setOption(name, value));
    }

    /** Loads books and tables by the ends of their names; resolves with the engine's words. */
    async loadFiles(files: { name: string; source: FileSource }[]): Promise<string> {
        const { engine } = this;
        if (engine === null || engine.hasFailed) {
            throw new EngineError('terminated', 'The engine does not run');
        }
        this.rest();
        const said: string[] = [];
        const pick = (pattern: RegExp): Record<string, FileSource> => Object.fromEntries(
            files.filter(({ name }) => pattern.test(name)).map(({ name, source }) => [name, source]));
        for (const [name, source] of Object.entries(pick(/\.bin$/i))) {
            said.push(await engine.loadBook(source, name));
        }
        const syzygy = pick(/\.rtb[wz]$/i);
        if (Object.keys(syzygy).length > 0) {
            said.push(await engine.loadSyzygy(syzygy));
        }
        const nalimov = pick(/\.(nb[wb])(\.emd)?$/i);
        if (Object.keys(nalimov).length > 0) {
            said.push(await engine.loadNalimov(nalimov));
        }
        const others = files.filter(({ name }) => !/\.(bin|rtb[wz]|nb[wb](\.emd)?)$/i.test(name));
        if (others.length > 0) {
            throw new EngineError('bad-file', `${others.map(({ name }) => name).join(', ')}: neither a book nor a table by its name`);
        }
        return said.join('; ');
    }

    #position({ start, moves }: Question): { fen: string; moves: string[] } {
        return { fen: start.fen, moves };
    }

    async #ask<T>(ticket: number, question: Question, work: (engine: Engine) => Promise<T>): Promise<T | null> {
        const { engine } = this;
        if (engine === null || engine.hasFailed) {
            return null;
        }
        if (ticket === this.#asked) {
            engine.stop();
        }
        try {
            const { chess960 } = question.start;
            if (chess960 !== this.#chess960) {
                this.#chess960 = chess960;
                await engine.setOption('UCI_Chess960', chess960);
            }
            return ticket === this.#asked ? await work(engine) : null;
        } catch (error) {
            // A crash has its own event, and an end on purpose needs none.
            if (!(error instanceof EngineError && ['crashed', 'terminated'].includes(error.code))) {
                this.#events.onProblem((error as Error).message);
            }
            return null;
        }
    }

    async #attempt(work: (engine: Engine) => Promise<unknown>): Promise<void> {
        const { engine } = this;
        if (engine === null || engine.hasFailed) {
            return;
        }
        this.rest();
        try {
            await work(engine);
        } catch (error) {
            this.#events.onProblem((error as Error).message);
        }
    }

    async #recover(error: EngineError): Promise<void> {
        this.#events.onProblem(`${error.message}. It is started again; the game is kept.`);
        const engine = this.engine!;
        try {
            // What it has crashed on is not loaded a second time.
            await engine.restart(error.code !== 'bad-file');
            this.#chess960 = false;
            this.#events.onReady(engine);
        } catch (second) {
            this.#events.onProblem(`The engine does not start again: ${(second as Error).message}. Reload the page.`);
        }
    }
}
