// The engine under Node, through the worker of the built package, in both flavours.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { test } from 'node:test';
import { pathToFileURL } from 'node:url';
import { Worker } from 'node:worker_threads';

import type { Engine as EngineClass, EngineError as ErrorClass } from '../src/node.js';

declare const BRENQUIL_ROOT: string;
const dist = path.join(BRENQUIL_ROOT, 'web', 'package', 'dist');
const { Engine, EngineError } = await import(pathToFileURL(path.join(dist, 'node.mjs')).href) as
    { Engine: typeof EngineClass; EngineError: typeof ErrorClass };

type Variant = 'threads' | 'single';
type Running = Awaited<ReturnType<typeof EngineClass.create>>;

async function withEngine(variant: Variant, work: (engine: Running) => Promise<void>): Promise<void> {
    const engine = await Engine.create({ variant });
    try {
        await work(engine);
    } finally {
        engine.terminate();
    }
}

const wait = (milliseconds: number): Promise<void> => new Promise((resolve) => {
    setTimeout(resolve, milliseconds);
});

/** A search that has told its first line. */
async function searching(engine: Running, signal?: AbortSignal): Promise<{ result: ReturnType<Running['go']> }> {
    let result: ReturnType<Running['go']>;
    await new Promise<void>((resolve) => {
        result = engine.go({ onInfo: () => resolve(), ...(signal === undefined ? {} : { signal }) });
    });
    return { result: result! };
}

function code(expected: string): (error: unknown) => boolean {
    return (error) => error instanceof EngineError && error.code === expected;
}

for (const variant of ['threads', 'single'] as const) {
    const both = (name: string, work: (engine: Running) => Promise<void>): void => {
        test(`${variant}: ${name}`, { timeout: 600_000 }, () => withEngine(variant, work));
    };

    both('says who it is, takes 16 MB of hash, and answers', async (engine) => {
        assert.match(engine.name, /^Brenquil \d/);
        assert.equal(engine.variant, variant);
        assert.equal(engine.options.get('Hash')!.default, '16');
        const { bestmove, lines } = await engine.go({ depth: 6 });
        assert.equal(bestmove, 'e2e4');
        assert.equal(lines[0]!.depth, 6);
        assert.equal(lines[0]!.nodes, 11469);
    });

    both('requests that do not wait for one another are done in their order', async (engine) => {
        const starts = ['e2e4', 'd2d4', 'g1f3', 'c2c4', 'b1c3'];
        const results = await Promise.all(starts.map((move) => engine.go({ moves: [move], depth: 5 })));
        const alone = [];
        for (const move of starts) {
            await engine.newGame();
            alone.push(await engine.go({ moves: [move], depth: 5 }));
        }
        assert.deepEqual(results.map((result) => result.lines[0]!.depth), starts.map(() => 5));
        assert.deepEqual(alone.map((result) => result.lines[0]!.depth), starts.map(() => 5));
        assert.ok(results.every((result) => /^[a-h][1-8][a-h][1-8]/.test(result.bestmove ?? '')));
    });

    both('stop before the first line, and a search that gives way to the next request', async (engine) => {
        const first = engine.go({});
        engine.stop();
        const { bestmove } = await first;
        assert.ok(bestmove === null || /^[a-h]/.test(bestmove));
        const endless = engine.go({});
        const next = engine.go({ depth: 4 });
        await endless;
        assert.equal((await next).lines[0]!.depth, 4);
    });

    both('stop is obeyed at once', async (engine) => {
        const delays: number[] = [];
        for (let round = 0; round < 7; ++round) {
            const search = await searching(engine);
            const before = performance.now();
            engine.stop();
            assert.ok((await search.result).bestmove !== null);
            delays.push(performance.now() - before);
        }
        // The figure is told in docs/web.md; here only a search that does not hear at all would fail.
        assert.ok(Math.min(...delays) < 2000, String(delays));
    });

    both('an analysis gives a line for each depth and ends with its loop', async (engine) => {
        const depths: number[] = [];
        for await (const info of engine.analyse({ depth: 7 })) {
            depths.push(info.depth!);
        }
        assert.deepEqual(depths, [1, 2, 3, 4, 5, 6, 7]);
        for await (const info of engine.analyse('r1bqkbnr/pppp1ppp/2n5/4p3/2B1P3/5Q2/PPPP1PPP/RNB1K1NR w KQkq - 0 1')) {
            if (info.depth === 3) {
                break;
            }
        }
        assert.ok((await engine.go({ depth: 3 })).bestmove !== null);
    });

    both('several lines, and a signal that ends the search', async (engine) => {
        await engine.setOption('MultiPV', 3);
        const { lines } = await engine.go({ depth: 6 });
        assert.deepEqual(lines.map((line) => line.multipv), [1, 2, 3]);
        assert.equal(new Set(lines.map((line) => line.pv[0])).size, 3);
        const ending = new AbortController();
        const search = await searching(engine, ending.signal);
        ending.abort();
        assert.ok((await search.result).bestmove !== null);
        assert.deepEqual(await engine.go({ signal: AbortSignal.abort() }), { bestmove: null, lines: [] });
    });

    both('mate and stalemate have no move; a mate in one is found', async (engine) => {
        assert.equal((await engine.go({ fen: '7k/5Q2/8/8/8/8/8/K7 b - - 0 1', depth: 3 })).bestmove, null);
        assert.equal((await engine.go({ fen: 'k7/8/1K6/8/8/8/8/7R w - - 0 1', depth: 5 })).bestmove, 'h1h8');
        let last;
        for await (const info of engine.analyse({ fen: 'k7/8/1K6/8/8/8/8/7R w - - 0 1', depth: 12 })) {
            last = info;
        }
        assert.deepEqual(last!.score, { type: 'mate', value: 1 });
    });

    both('errors say what to do', async (engine) => {
        await assert.rejects(engine.go({ fen: '8/8/8/8 w' }), code('bad-position'));
        await assert.rejects(engine.go({ moves: ['e9'] }), code('bad-position'));
        await assert.rejects(engine.setOption('Hashh', 5), code('unknown-option'));
        await assert.rejects(engine.setOption('Hash', 16000), (error) =>
            code('out-of-memory')(error) && /16000 MB cannot be allocated/.test((error as Error).message));
        await assert.rejects(engine.addFile('/x', 'http://127.0.0.1:9/none'), code('file-not-found'));
        assert.equal((await engine.go({ depth: 6 })).bestmove, 'e2e4');
    });

    both('a hash table of another size is had and given back', async (engine) => {
        for (const size of [64, 1, 128, 0, 16]) {
            await engine.setOption('Hash', size);
        }
        assert.equal((await engine.go({ depth: 6 })).lines[0]!.nodes, 11469);
    });

    both('a book is read, a damaged one is told', async (engine) => {
        // One record: the start position, e2e4, weight 1.
        const record = new Uint8Array(16);
        const view = new DataView(record.buffer);
        view.setBigUint64(0, 0x463b96181691fc9cn);
        view.setUint16(8, (1 << 9) | (4 << 6) | (3 << 3) | 4);
        view.setUint16(10, 1);
        assert.match(await engine.loadBook(record), /loaded! \(1 moves\)/);
        assert.equal((await engine.go({ movetime: 2000 })).bestmove, 'e2e4');
        assert.equal((await engine.go({ movetime: 2000 })).lines[0]?.nodes ?? 0, 0);
        await assert.rejects(engine.loadBook(new Uint8Array(0)), code('bad-file'));
    });

    both('a damaged table is told in the words of the engine, which goes on', async (engine) => {
        const said: string[] = [];
        engine.on('message', (text) => said.push(text));
        assert.match(await engine.loadSyzygy({ 'KQvK.rtbw': new Uint8Array(10) }), /Found 1 tablebases/);
        const queen = { fen: '8/8/8/8/8/1k6/8/6QK w - - 0 1', depth: 3 };
        assert.equal((await engine.go(queen)).lines[0]!.depth, 3);
        assert.ok(said.includes('Corrupted table.'), said.join('|'));
    });

    test(`${variant}: the strict dialect can be had`, { timeout: 60_000 }, async () => {
        const engine = await Engine.create({ variant, strict: true });
        assert.ok(engine.options.has('UCI_ShowWDL'));
        assert.deepEqual(await engine.setOption('MultiPV', 'many'), ['no value of MultiPV: many']);
        assert.equal((await engine.go({ fen: '7k/5Q2/8/8/8/8/8/K7 b - - 0 1', depth: 3 })).bestmove, null);
        assert.equal((await engine.go({ depth: 6 })).bestmove, 'e2e4');
        engine.terminate();
    });

    test(`${variant}: terminate in a search, and start again`, { timeout: 60_000 }, async () => {
        const engine = await Engine.create({ variant });
        const search = engine.go({});
        await wait(50);
        engine.terminate();
        await assert.rejects(search, code('terminated'));
        await assert.rejects(engine.go({ depth: 1 }), code('terminated'));
        await engine.restart();
        assert.equal((await engine.go({ depth: 6 })).bestmove, 'e2e4');
        engine.terminate();
    });

    test(`${variant}: two engines beside each other`, { timeout: 60_000 }, async () => {
        const engines = await Promise.all([Engine.create({ variant }), Engine.create({ variant })]);
        const results = await Promise.all(engines.map((engine) => engine.go({ depth: 7 })));
        assert.deepEqual(results[0]!.lines.map((line) => line.nodes), results[1]!.lines.map((line) => line.nodes));
        engines.forEach((engine) => engine.terminate());
    });

    both('many new games and 1,000 searches take no more memory', async (engine) => {
        const search = async (count: number): Promise<void> => {
            for (let round = 0; round < count; ++round) {
                if (round % 10 === 0) {
                    await engine.newGame();
                }
                await engine.go({ nodes: 200, moves: round % 2 === 0 ? [] : ['e2e4'] });
            }
        };
        await search(200);
        const before = process.memoryUsage().rss;
        await search(1000);
        const growth = (process.memoryUsage().rss - before) / 2 ** 20;
        assert.ok(growth < 30, `${growth} MB`);
    });

    test(`${variant}: a missing .wasm is told by its name`, { timeout: 60_000 }, async () => {
        await assert.rejects(Engine.create({ variant, wasmUrl: '/nowhere/brenquil.wasm' }), (error) =>
            code('file-not-found')(error) && /\/nowhere\/brenquil\.wasm cannot be loaded/.test((error as Error).message));
    });
}

test('a worker that crashes is told, and restarts with its options', { timeout: 60_000 }, async () => {
    const engine = await Engine.create({ variant: 'single', options: { MultiPV: 2 } });
    const told: string[] = [];
    engine.on('crash', (error) => told.push(error.code));
    const search = engine.go({});
    await wait(50);
    (engine as unknown as { send(message: object): void }).send({ type: 'crash' });
    await assert.rejects(search, code('crashed'));
    assert.deepEqual(told, ['crashed']);
    await engine.restart();
    assert.equal((await engine.go({ depth: 4 })).lines.length, 2);
    engine.terminate();
});

test('the worker alone speaks UCI line by line', { timeout: 60_000 }, async () => {
    const worker = new Worker(path.join(dist, 'brenquil-worker.js'));
    const lines: string[] = [];
    const done = new Promise<void>((resolve) => {
        worker.on('message', (line: unknown) => {
            assert.equal(typeof line, 'string');
            lines.push(line as string);
            if ((line as string).startsWith('bestmove')) {
                resolve();
            }
        });
    });
    worker.postMessage('uci');
    worker.postMessage('position startpos moves e2e4\ngo depth 5');
    await done;
    assert.ok(lines.includes('uciok'));
    await worker.terminate();
});

test('the worker alone fails with an error event when a file is missing', { timeout: 60_000 }, async () => {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'brenquil-'));
    fs.copyFileSync(path.join(dist, 'brenquil-worker.js'), path.join(folder, 'brenquil-worker.js'));
    fs.copyFileSync(path.join(dist, 'brenquil-threads.js'), path.join(folder, 'brenquil-threads.js'));
    const worker = new Worker(path.join(folder, 'brenquil-worker.js'));
    const failure = new Promise<Error>((resolve) => worker.on('error', resolve));
    worker.postMessage('uci');
    assert.match((await failure).message, /brenquil-threads\.wasm cannot be loaded/);
    fs.rmSync(folder, { recursive: true });
});
