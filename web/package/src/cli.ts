/**
 * The program `brenquil` under Node.
 *
 *     brenquil [--single] [--strict-uci]        the engine on standard input and output
 *     brenquil [--single] bench [DEPTH]         speed and signature
 *     brenquil annotate GAMES.pgn [OPTION...]   games with evaluations and graphs
 */
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import readline from 'node:readline';
import { fileURLToPath } from 'node:url';

import { addAnnotation, analyseGame, type Annotation } from './annotate.js';
import { gameGraph } from './graph.js';
import { makeModule, sendLine, type Factory, type Module, type Variant } from './module.js';
import { Engine } from './node.js';
import { parseGames, writePgn, type Game } from './pgn.js';

declare const BRENQUIL_HERE: string;

const Help = `Brenquil, a chess engine for the UCI protocol, as WebAssembly under Node.

    brenquil [--single | --threads] [--strict-uci]
                                               the engine on standard input and output
    brenquil [--single | --threads] bench [DEPTH]
                                               searches fixed positions; the total is the same everywhere
    brenquil annotate GAMES.pgn [OPTION...]    writes the games with evaluations, better lines and graphs

        --output FILE      the annotated games; default: GAMES-annotated.pgn beside them; - is standard output
        --graphs FOLDER    an SVG picture of each game; default: the folder of the output
        --no-graphs        no pictures
        --depth N          how deep each position is searched; default: 12
        --movetime MS      this time for each position, instead of a depth
        --threads N        search threads; default: 1, with which a depth always gives the same words
        --hash MB          default: 64

    --single takes the build with one thread. The end of the input ends the engine when it has answered.
`;

class UsageError extends Error {}

function fail(message: string, status: number): never {
    process.stderr.write(`brenquil: ${message}\n`);
    process.exit(status);
}

/** Writes all of it before it returns, even to a pipe whose reader is slow. */
function writeOut(text: string): void {
    const bytes = Buffer.from(text);
    for (let done = 0; done < bytes.length;) {
        try {
            done += fs.writeSync(1, bytes, done);
        } catch (error) {
            const { code } = error as NodeJS.ErrnoException;
            if (code === 'EPIPE') {
                process.exit(0); // nobody reads any more
            }
            if (code !== 'EAGAIN') {
                throw error;
            }
            Atomics.wait(new Int32Array(new SharedArrayBuffer(4)), 0, 0, 5);
        }
    }
}

// ---- the engine on standard input and output

function startModule(variant: Variant, onLine: (line: string) => void): Promise<Module> {
    const folder = path.dirname(fileURLToPath(BRENQUIL_HERE));
    const locate = (name: string): string => path.join(folder, name);
    return makeModule(variant, {
        // eslint-disable-next-line
        factory: require(locate(`brenquil-${variant}.js`)) as Factory,
        locate,
        wasm: async () => {
            const file = locate(`brenquil-${variant}.wasm`);
            try {
                return await WebAssembly.compile(await fs.promises.readFile(file));
            } catch (error) {
                return fail(`${file} cannot be loaded (${(error as Error).message}); please install the package again`, 1);
            }
        },
        onLine,
        onEnd: (status) => process.exit(status),
        onCrash: (message) => fail(message, 1),
    });
}

/** Paths of the system mean the same inside: its top folders are mounted under their names. */
function mountSystem(module: Module): void {
    if (process.platform === 'win32') {
        return;
    }
    for (const entry of fs.readdirSync('/', { withFileTypes: true })) {
        if (entry.name === 'dev' || entry.name === 'proc') {
            continue;
        }
        try {
            if (fs.statSync(`/${entry.name}`).isDirectory()) {
                module.FS.mkdirTree(`/${entry.name}`);
                module.FS.mount(module.NODEFS, { root: `/${entry.name}` }, `/${entry.name}`);
            }
        } catch {
            // What cannot be read cannot be opened by name either.
        }
    }
    module.FS.chdir(process.cwd());
}

/** True when, as far as the lines tell, no search is running. */
class SearchWatch {
    #running = 0;

    sent(line: string): void {
        if (/^\s*go(\s|$)/i.test(line)) {
            ++this.#running;
        }
    }

    heard(line: string): void {
        if (/^bestmove |^info string (No best move!|The system gives no thread)/.test(line)) {
            this.#running = Math.max(0, this.#running - 1);
        }
    }

    get isIdle(): boolean {
        return this.#running === 0;
    }
}

async function runEngine(variant: Variant, strict: boolean): Promise<void> {
    const watch = new SearchWatch();
    let inputHasEnded = false;
    let isUci = false;
    const endWhenIdle = (): void => {
        if (inputHasEnded && (watch.isIdle || !isUci)) {
            setTimeout(() => sendLine(module, 'quit'), 0);
        }
    };
    const module = await startModule(variant, (line) => {
        writeOut(`${line}\n`);
        watch.heard(line);
        endWhenIdle();
    });
    mountSystem(module);
    module._brenquil_start(strict);
    const input = readline.createInterface({ input: process.stdin, terminal: false });
    input.on('line', (line) => {
        isUci ||= line.trim() === 'uci';
        watch.sent(line);
        sendLine(module, line);
    });
    input.on('close', () => {
        inputHasEnded = true;
        endWhenIdle();
    });
    // Keeps the program alive while only the engine's threads work.
    setInterval(() => {}, 1 << 30);
}

async function runBench(variant: Variant, depthText: string | undefined): Promise<void> {
    if (depthText !== undefined && !/^[1-9]\d{0,2}$/.test(depthText)) {
        throw new UsageError(`the depth of the bench is a number from 1 on, not "${depthText}"`);
    }
    const module = await startModule(variant, (line) => writeOut(`${line}\n`));
    setInterval(() => {}, 1 << 30);
    module._brenquil_bench(Number(depthText ?? 0));
}

// ---- annotate

interface AnnotateOptions {
    input: string;
    output: string;
    graphs: string | null;
    depth: number;
    movetime: number | null;
    threads: number;
    hash: number;
}

function parseAnnotate(words: string[]): AnnotateOptions {
    const options: Partial<AnnotateOptions> = {};
    let graphs: string | null | undefined;
    const number = (name: string, text: string | undefined, most: number): number => {
        if (text === undefined || !/^[1-9]\d*$/.test(text) || Number(text) > most) {
            throw new UsageError(`${name} wants a number from 1 to ${most}, not "${text ?? ''}"`);
        }
        return Number(text);
    };
    const file = (name: string, text: string | undefined): string => {
        if (text === undefined || text === '') {
            throw new UsageError(`${name} wants a name`);
        }
        return text;
    };
    for (let at = 0; at < words.length; ++at) {
        const word = words[at]!;
        switch (word) {
        case '--output': options.output = file(word, words[++at]); break;
        case '--graphs': graphs = file(word, words[++at]); break;
        case '--no-graphs': graphs = null; break;
        case '--depth': options.depth = number(word, words[++at], 100); break;
        case '--movetime': options.movetime = number(word, words[++at], 3_600_000); break;
        case '--threads': options.threads = number(word, words[++at], 32); break;
        case '--hash': options.hash = number(word, words[++at], 3072); break;
        default:
            if (word.startsWith('-') && word !== '-') {
                throw new UsageError(`annotate has no option ${word}`);
            }
            if (options.input !== undefined) {
                throw new UsageError(`one file at a time: ${options.input} and ${word}`);
            }
            options.input = word;
        }
    }
    const { input } = options;
    if (input === undefined) {
        throw new UsageError('annotate wants the name of a file of games');
    }
    const output = options.output ?? (input === '-' ? '-' : `${input.replace(/\.pgn$/i, '')}-annotated.pgn`);
    return {
        input,
        output,
        graphs: graphs !== undefined ? graphs : output === '-' ? null : path.dirname(output),
        depth: options.depth ?? 12,
        movetime: options.movetime ?? null,
        threads: options.threads ?? 1,
        hash: options.hash ?? 64,
    };
}

class Progress {
    readonly #isTerminal = process.stderr.isTTY === true;
    #last = 0;

    show(text: string, isLast = false): void {
        if (this.#isTerminal) {
            process.stderr.write(`\r\x1b[K${text}${isLast ? '\n' : ''}`);
        } else if (isLast || Date.now() - this.#last > 10_000) {
            this.#last = Date.now();
            process.stderr.write(`${text}\n`);
        }
    }
}

function nameOf(game: Game, number: number): string {
    return `game ${number} (${game.tags.get('White') ?? '?'} - ${game.tags.get('Black') ?? '?'})`;
}

async function annotate(words: string[]): Promise<number> {
    const options = parseAnnotate(words);
    let text: string;
    try {
        text = fs.readFileSync(options.input === '-' ? 0 : options.input, 'utf8');
    } catch (error) {
        return fail(`${options.input} cannot be read: ${(error as Error).message}`, 1);
    }
    const entries = [...parseGames(text)];
    if (entries.length === 0) {
        return fail(`${options.input} has no game in it`, 1);
    }
    if (options.output !== '-' && options.input !== '-' && path.resolve(options.output) === path.resolve(options.input)) {
        return fail('the output would take the place of the input; name another file', 1);
    }
    // Found out before hours of work, not after them.
    let write: (chunk: string) => void = writeOut;
    try {
        if (options.output !== '-') {
            const descriptor = fs.openSync(options.output, 'w');
            write = (chunk) => {
                fs.writeSync(descriptor, chunk);
            };
        }
        if (options.graphs !== null) {
            fs.mkdirSync(options.graphs, { recursive: true });
        }
    } catch (error) {
        return fail(`the output cannot be written: ${(error as Error).message}`, 1);
    }

    const engine = await Engine.create({ threads: Math.min(options.threads, os.cpus().length), hash: options.hash });
    const progress = new Progress();
    const stem = path.basename(options.output === '-' ? 'game' : options.output).replace(/\.pgn$/i, '');
    const limits = options.movetime === null ? { depth: options.depth } : { movetime: options.movetime };
    const title = `${engine.name}, ${options.movetime === null ? `depth ${options.depth}` : `${options.movetime} ms a move`}`;
    let bad = 0;
    for (const [index, { game, error, text: original }] of entries.entries()) {
        const number = index + 1;
        if (game === undefined) {
            ++bad;
            progress.show(`game ${number} of ${entries.length} is left as it is: ${options.input}, ${error!.message}`, true);
            write(`${original.trim()}\n\n`);
            continue;
        }
        const label = `${nameOf(game, number)} of ${entries.length}`;
        const annotation: Annotation = await analyseGame(engine, game, limits, (done) =>
            progress.show(`${label}: ${Math.round(done * 100)} %`));
        addAnnotation(game, annotation, title);
        write(`${writePgn(game)}\n`);
        let graphNote = '';
        if (options.graphs !== null) {
            const file = path.join(options.graphs, entries.length === 1 ? `${stem}.svg` : `${stem}-${number}.svg`);
            fs.writeFileSync(file, gameGraph(game, annotation));
            graphNote = `, ${file}`;
        }
        const count = annotation.moments.length;
        progress.show(`${label}: done, ${count === 0 ? 'no' : count} decisive moment${count === 1 ? '' : 's'}${graphNote}`, true);
    }
    engine.terminate();
    return bad === 0 ? 0 : 2;
}

// ---- the arguments

async function main(): Promise<void> {
    const words = process.argv.slice(2);
    if (words.includes('--help') || words.includes('-h')) {
        writeOut(Help);
        return;
    }
    if (words[0] === 'annotate') {
        process.exit(await annotate(words.slice(1)));
    }
    let variant: Variant = 'threads';
    let strict = false;
    for (; words[0] === '--single' || words[0] === '--threads' || words[0] === '--strict-uci'; words.shift()) {
        if (words[0] === '--strict-uci') {
            strict = true;
        } else {
            variant = words[0] === '--single' ? 'single' : 'threads';
        }
    }
    if (words[0] === 'bench' && words.length <= 2) {
        await runBench(variant, words[1]);
    } else if (words.length === 0) {
        await runEngine(variant, strict);
    } else {
        throw new UsageError(`there is no argument ${words[0]}; brenquil --help tells more`);
    }
}

main().catch((error: unknown) => {
    fail(error instanceof Error ? error.message : String(error), error instanceof UsageError ? 2 : 1);
});
