// The page in Chromium: a game to its end, an analysis, threads on and off, no network, no fault of
// accessibility.
import assert from 'node:assert/strict';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { after, before, test } from 'node:test';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

import { makeServer } from '../serve.mjs';

const here = path.dirname(fileURLToPath(import.meta.url));
const web = path.dirname(here);
const root = path.dirname(web);
const pageFolder = path.join(web, 'page', 'dist');
// A folder for pictures of each view.
const shots = process.env.BRENQUIL_SHOTS === undefined ? undefined : path.resolve(root, process.env.BRENQUIL_SHOTS);
const axe = fs.readFileSync(path.join(web, 'node_modules', 'axe-core', 'axe.min.js'), 'utf8');
const patience = 60_000;
// Real tables, where the folder of shared test data has them.
const syzygy = [process.env.BRENQUIL_DATA, path.join(root, '..', 'shared', 'data')].filter((folder) => folder !== undefined)
    .map((folder) => path.join(folder, 'syzygy')).find((folder) => fs.existsSync(path.join(folder, 'KPvK.rtbw')));

let browser;
const servers = [];

async function serve(options = {}) {
    const server = makeServer({ folders: [pageFolder, here, path.join(web, 'package')], ...options });
    await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
    servers.push(server);
    return { server, address: `http://127.0.0.1:${server.address().port}/` };
}

before(async () => {
    browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox'] });
});

after(async () => {
    await browser.close();
    servers.forEach((server) => server.close());
});

/** A page in a context of its own, whose scripts' errors fail the test. */
async function withPage(options, work) {
    const context = await browser.newContext(options);
    const page = await context.newPage();
    const errors = [];
    page.on('pageerror', (error) => errors.push(error.message));
    page.setDefaultTimeout(patience);
    try {
        await work(page, context);
        assert.deepEqual(errors, []);
    } finally {
        await context.close();
    }
}

async function open(page, address) {
    await page.goto(address);
    await page.waitForSelector('html[data-engine]');
}

async function shoot(page, name) {
    if (shots !== undefined) {
        fs.mkdirSync(shots, { recursive: true });
        await page.screenshot({ path: path.join(shots, `${name}.png`), fullPage: true });
    }
}

async function assertAccessible(page) {
    await page.evaluate(axe);
    const { violations } = await page.evaluate(() => window.axe.run());
    assert.deepEqual(violations.map(({ id, nodes }) => `${id}: ${nodes.map((node) => node.html).join(' | ')}`), []);
}

async function type(page, move) {
    await page.fill('#move-text', move);
    await page.press('#move-text', 'Enter');
}

async function loadText(page, text) {
    await page.evaluate(() => document.getElementById('exchange').setAttribute('open', ''));
    await page.fill('#input-text', text);
    await page.click('#load-text');
}

test('threads with the headers, one thread without them, threads by the service worker', { timeout: 300_000 }, async () => {
    const isolated = await serve();
    const plain = await serve({ isPlain: true });
    await withPage({}, async (page) => {
        await open(page, isolated.address);
        assert.equal(await page.getAttribute('html', 'data-engine'), 'threads');
    });
    await withPage({ serviceWorkers: 'block' }, async (page) => {
        await open(page, plain.address);
        assert.equal(await page.getAttribute('html', 'data-engine'), 'single');
        await page.click('#tab-analyse');
        await page.check('#analysing');
        await page.waitForFunction(() => document.querySelectorAll('#lines li').length === 3);
    });
    await withPage({}, async (page) => {
        await page.goto(plain.address);
        await page.waitForSelector('html[data-engine=threads]');
    });
});

test('a whole game against the engine, to mate', { timeout: 600_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        await page.selectOption('#strength', 'move 50');
        await page.click('#new-game');
        // A quick way to be mated; the engine may take longer.
        for (const move of ['f3', 'g4', 'a3', 'a4', 'b3', 'b4', 'h3', 'h4', 'Kf2', 'Kg3', 'c3', 'd3', 'Nh3', 'Na3']) {
            const status = await page.textContent('#status');
            if (/Checkmate/.test(status)) {
                break;
            }
            const count = await page.locator('#moves button').count();
            await type(page, move);
            const told = await page.textContent('#problem');
            if (!/no legal move/.test(told)) {
                await page.waitForFunction((least) => document.querySelectorAll('#moves button').length >= least ||
                    /Checkmate/.test(document.getElementById('status').textContent), count + 2);
            }
        }
        // Whatever is legal until the end: the page's own buttons tell what is.
        for (let round = 0; round < 120 && !/Checkmate|1\/2|Nobody/.test(await page.textContent('#status')); ++round) {
            const count = await page.locator('#moves button').count();
            for (const move of Moves) {
                await type(page, move);
                if (await page.locator('#moves button').count() > count) {
                    break;
                }
            }
            await page.waitForFunction((least) => document.querySelectorAll('#moves button').length >= least ||
                /Checkmate|1\/2/.test(document.getElementById('status').textContent), count + 2);
        }
        assert.match(await page.textContent('#status'), /Black plays .*#\. Checkmate: 0-1\./);
    });
});

// Evaluating a whole game takes a while; the pictures are worth it. Played in a box of the opera in Paris.
const ShortGame = '1. e4 e5 2. Nf3 Nc6 *';
const Game = `[White "Morphy"]
[Black "Duke of Brunswick and Count Isouard"]
[Date "1858.??.??"]
[Result "1-0"]

1. e4 e5 2. Nf3 d6 3. d4 Bg4 4. dxe5 Bxf3 5. Qxf3 dxe5 6. Bc4 Nf6 7. Qb3 Qe7 8. Nc3 c6 9. Bg5 b5 10. Nxb5 cxb5
11. Bxb5+ Nbd7 12. O-O-O Rd8 13. Rxd7 Rxd7 14. Rd1 Qe6 15. Bxd7+ Nxd7 16. Qb8+ Nxb8 17. Rd8# 1-0
`;

const Moves = [...'abcdefgh'].flatMap((file) => ['3', '4', '5', '6'].map((rank) => file + rank))
    .concat([...'abcdefgh'].flatMap((file) => ['1', '2', '3', '4'].map((rank) => `K${file}${rank}`)))
    .concat([...'abcdefgh'].flatMap((file) => ['1', '2', '3', '4', '5', '6', '7', '8'].flatMap((rank) =>
        ['N', 'R', 'B', 'Q'].flatMap((piece) => [`${piece}${file}${rank}`, `${piece}x${file}${rank}`, `Kx${file}${rank}`]))));

test('a pasted PGN is analysed and evaluated; its graph leads to the moves', { timeout: 600_000 }, async () => {
    const { address } = await serve();
    await withPage({ viewport: { width: 1280, height: 900 } }, async (page) => {
        await open(page, address);
        await loadText(page, '[White "Mouse"]\n[Black "Cat"]\n\n1. e4 e5 2. Bc4 Nc6 3. Qh5 Nf6 4. Qxf7# 1-0\n');
        assert.match(await page.textContent('#status'), /A game of 7 half-moves is loaded/);
        await page.click('#evaluate');
        await page.waitForFunction(() => /has been evaluated/.test(document.getElementById('status').textContent));
        await page.locator('#graph .u-over').click({ position: { x: 5, y: 60 } });
        await page.click('#moves button >> nth=5');
        assert.match(await page.getAttribute('#graph', 'aria-label'), /after half-move 6: 10 pawns for White/);
        await page.check('#analysing');
        await page.waitForFunction(() => /#1 4\. Qxf7#/.test(document.querySelector('#lines li')?.textContent ?? ''));
        assert.ok(await page.locator('#board .arrow, #board .arrows g').count() > 0);
        await page.click('#back');
        await page.waitForFunction(() => document.querySelectorAll('#lines li').length > 0 &&
            !/Qxf7#/.test(document.querySelector('#lines b').textContent));
    });
});

test('a wrong FEN and a wrong PGN say what is wrong and where, and lose nothing', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        await type(page, 'e4');
        for (const [text, words] of [['8/8/8/8/8/8/8/8 w - - 0 1', 'White has no king'], ['1. e4 e5 2. Ke4', 'line 1, column 13'], ['hello', 'hello']]) {
            await loadText(page, text);
            await page.waitForFunction((expected) => document.getElementById('problem').textContent.includes(expected), words);
            assert.ok(await page.locator('#moves button').count() >= 1);
        }
    });
});

test('a crash of the worker is told; the engine comes back with the position', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await page.addInitScript(() => {
            const Original = Worker;
            window.Worker = class extends Original {
                constructor(...words) {
                    super(...words);
                    window.lastWorker = this;
                }
            };
        });
        await open(page, address);
        await loadText(page, 'r1bqkbnr/pppp1ppp/2n5/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3');
        await page.check('#analysing');
        await page.waitForSelector('#lines li');
        await page.evaluate(() => window.lastWorker.postMessage({ type: 'crash' }));
        await page.waitForFunction(() => /started again/.test(document.getElementById('problem').textContent));
        await page.waitForFunction(() => document.querySelectorAll('#lines li').length > 0);
        assert.match(await page.inputValue('#fen-out'), /^r1bqkbnr\/pppp1ppp/);
    });
});

test('without a net the page is there after the first visit', { timeout: 120_000 }, async () => {
    const { server, address } = await serve();
    await withPage({}, async (page, context) => {
        await open(page, address);
        await page.evaluate(() => navigator.serviceWorker.ready);
        await page.reload();
        await context.setOffline(true);
        server.closeAllConnections();
        server.close();
        await page.reload();
        await page.waitForSelector('html[data-engine]');
        await type(page, 'e4');
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 2);
    });
});

test('a book from a file; a damaged table gives the engine\'s message', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        const record = Buffer.alloc(16);
        record.writeBigUInt64BE(0x463b96181691fc9cn, 0);
        record.writeUInt16BE((1 << 9) | (4 << 6) | (3 << 3) | 4, 8);
        record.writeUInt16BE(1, 10);
        await page.evaluate(() => document.getElementById('tables').setAttribute('open', ''));
        await page.setInputFiles('#table-files', { name: 'one.bin', mimeType: 'application/octet-stream', buffer: record });
        await page.waitForFunction(() => /loaded! \(1 moves\)/.test(document.getElementById('table-message').textContent));
        await page.setInputFiles('#table-files', { name: 'KQvK.rtbw', mimeType: 'application/octet-stream', buffer: Buffer.alloc(100) });
        await page.waitForFunction(() => /Found 1 tablebases/.test(document.getElementById('table-message').textContent));
        await loadText(page, '8/8/8/8/8/1k6/8/6QK w - - 0 1');
        await page.waitForFunction(() => /Corrupted table/.test(document.getElementById('problem').textContent));
        await page.fill('#table-url', `${address}missing.rtbw`);
        await page.click('#load-url');
        await page.waitForFunction(() => /404/.test(document.getElementById('problem').textContent));
    });
});

test('a book by its address is read in parts where the host has them', { timeout: 120_000 }, async () => {
    const { server, address } = await serve({ folders: [pageFolder, bookFolder()] });
    const ranges = [];
    server.on('request', (request) => {
        if (request.url.endsWith('.bin')) {
            ranges.push(request.headers.range);
        }
    });
    await withPage({}, async (page) => {
        await open(page, address);
        await page.evaluate(() => document.getElementById('tables').setAttribute('open', ''));
        await page.fill('#table-url', `${address}large.bin`);
        await page.click('#load-url');
        await page.waitForFunction(() => /loaded! \(100001 moves\)/.test(document.getElementById('table-message').textContent));
        await type(page, 'e4');
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 2);
    });
    assert.ok(ranges.length >= 2 && ranges.every((range) => /^bytes=\d+-\d+$/.test(range)), String(ranges));
    const bytes = ranges.map((range) => range.match(/\d+/g).map(Number)).reduce((sum, [start, end]) => sum + end - start + 1, 0);
    assert.ok(bytes < 800_000, `${bytes} of 1,600,016 bytes`);
});

// A book of 100,001 records, most of them of positions that do not come.
function bookFolder() {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'brenquil-'));
    after(() => fs.rmSync(folder, { recursive: true }));
    const book = Buffer.alloc(16 * 100_001);
    for (let record = 0; record <= 100_000; ++record) {
        book.writeBigUInt64BE((BigInt(record) * 0xffff_ffff_ffff_ffffn) / 100_000n, 16 * record);
        book.writeUInt16BE(1, 16 * record + 10);
    }
    fs.writeFileSync(path.join(folder, 'large.bin'), book);
    return folder;
}

test('the verdict of tables, where they are loaded', { timeout: 120_000, skip: syzygy === undefined && 'no tables beside the repository' }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        await page.evaluate(() => document.getElementById('tables').setAttribute('open', ''));
        await page.setInputFiles('#table-files', ['KPvK.rtbw', 'KPvK.rtbz', 'KQvK.rtbw', 'KQvK.rtbz'].map((name) => path.join(syzygy, name)));
        await page.waitForFunction(() => /Found \d+ tablebases/.test(document.getElementById('table-message').textContent));
        for (const [fen, words] of [['8/8/8/8/4k3/8/4P3/4K3 w - - 0 1', 'Tables: a draw'], ['8/8/8/4K3/8/4P3/8/4k3 w - - 0 1', 'Tables: White wins'],
            ['8/8/8/4K3/8/4P3/8/4k3 b - - 0 1', 'Tables: Black loses']]) {
            await loadText(page, fen);
            await page.waitForFunction((expected) => document.getElementById('verdict').textContent.startsWith(expected), words);
        }
    });
});

test('Chess960, the other colour, a clock, and a game from a position', { timeout: 180_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        await page.selectOption('#colour', 'b');
        await page.selectOption('#variant', 'chess960');
        await page.selectOption('#strength', 'clock 60 0');
        await page.click('#new-game');
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 1);
        assert.match(await page.textContent('#clock-bottom'), /^Black (1:00|0:5\d)$/);
        assert.match(await page.inputValue('#fen-out'), /^[nbrqk]{8}\/pppppppp\/.* b [A-H]{2}[a-h]{2} /);
        for (const pawn of ['a6', 'h6', 'e6']) {
            const count = await page.locator('#moves button').count();
            await type(page, pawn);
            await page.waitForFunction((least) => document.querySelectorAll('#moves button').length >= least, count + 2);
        }
        // Without a clock, from a position that was loaded: the engine takes the side to move.
        await loadText(page, 'k7/8/1K6/8/8/8/8/7R w - - 0 1');
        await page.click('#tab-play');
        await page.click('#engine-move');
        await page.waitForFunction(() => /White plays Rh8#\. Checkmate: 1-0\./.test(document.getElementById('status').textContent));
    });
});

test('a PGN by file and by drop, and what is copied reads back', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({ permissions: ['clipboard-read', 'clipboard-write'] }, async (page) => {
        await open(page, address);
        await page.evaluate(() => document.getElementById('exchange').setAttribute('open', ''));
        const games = '[White "A"]\n\n1. e4 *\n\n[White "B"]\n\n1. d4 d5 2. c4 *\n';
        await page.setInputFiles('#load-file', { name: 'two.pgn', mimeType: 'text/plain', buffer: Buffer.from(games) });
        await page.waitForSelector('#game-choice:not([hidden])');
        await page.selectOption('#game-number', '1');
        assert.equal(await page.locator('#moves button').count(), 3);
        await page.click('#copy-pgn');
        await page.waitForFunction(() => /clipboard/.test(document.getElementById('status').textContent));
        assert.match(await page.evaluate(() => navigator.clipboard.readText()), /\[White "B"\][^]*1\. d4 d5 2\. c4 \*/);
        await page.evaluate(() => {
            const data = new DataTransfer();
            data.items.add(new File(['1. c4 e5 *'], 'one.pgn'));
            document.body.dispatchEvent(new DragEvent('drop', { dataTransfer: data, bubbles: true, cancelable: true }));
        });
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 2);
    });
});

for (const [name, options] of Object.entries({
    'desktop-light': { viewport: { width: 1280, height: 900 }, colorScheme: 'light' },
    'desktop-dark': { viewport: { width: 1280, height: 900 }, colorScheme: 'dark' },
    'phone-light': { viewport: { width: 390, height: 844 }, colorScheme: 'light', hasTouch: true, isMobile: true },
    'phone-dark': { viewport: { width: 390, height: 844 }, colorScheme: 'dark', hasTouch: true, isMobile: true },
})) {
    test(`no finding of accessibility, no sideways scrolling: ${name}`, { timeout: 180_000 }, async () => {
        const { address } = await serve();
        await withPage(options, async (page) => {
            await open(page, address);
            await type(page, 'e4');
            await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 2);
            await assertAccessible(page);
            await page.evaluate(() => document.activeElement.blur());
            await shoot(page, `play-${name}`);
            await loadText(page, shots === undefined ? ShortGame : Game);
            await page.click('#evaluate');
            await page.waitForFunction(() => /has been evaluated/.test(document.getElementById('status').textContent));
            await page.click(`#moves button >> nth=${shots === undefined ? 3 : 13}`);
            await page.check('#analysing');
            await page.waitForFunction(() => /^Depth (8|9|\d\d)/.test(document.getElementById('figures').textContent) &&
                document.querySelectorAll('#lines li').length === 3);
            await page.evaluate(() => document.getElementById('exchange').removeAttribute('open'));
            await shoot(page, `analyse-${name}`);
            await page.uncheck('#analysing');
            await page.evaluate(() => document.querySelectorAll('details').forEach((each) => each.setAttribute('open', '')));
            await page.evaluate(() => {
                document.getElementById('problem').textContent = 'Something is wrong.';
            });
            await assertAccessible(page);
            assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
        });
    });
}

test('keyboard alone: tabs, board and moves', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
        // On the board from a1: the knight from g1 to f3.
        await page.focus('#board svg.cm-chessboard');
        const press = async (key, times) => {
            for (let round = 0; round < times; ++round) {
                await page.keyboard.press(key);
            }
        };
        await press('ArrowRight', 6);
        await press('Enter', 1);
        await press('ArrowUp', 2);
        await press('ArrowLeft', 1);
        await press('Enter', 1);
        await page.waitForFunction(() => document.querySelector('#moves button')?.textContent === 'Nf3');
        assert.match(await page.textContent('#text-board'), /White(, to move)?: king e1, .* knights b1 f3/);
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 2);
        await page.click('#take-back');
        await page.waitForFunction(() => document.querySelectorAll('#moves button').length === 0);
        await page.focus('#tab-play');
        await page.keyboard.press('ArrowRight');
        assert.equal(await page.getAttribute('#tab-analyse', 'aria-selected'), 'true');
        await page.focus('#move-text');
        await page.keyboard.type('d4');
        await page.keyboard.press('Enter');
        await page.focus('#moves button');
        await page.keyboard.press('Enter');
        assert.match(await page.textContent('#status'), /d4/);
    });
});

test('the ten lines of docs/web.md work', { timeout: 120_000 }, async () => {
    const text = fs.readFileSync(path.join(root, 'docs', 'web.md'), 'utf8');
    const html = /```html\n([^]*?)```/.exec(text)[1];
    assert.ok(html.trim().split('\n').length <= 10);
    // As the text says: the folder of the package as `engine` beside the page.
    const site = fs.mkdtempSync(path.join(os.tmpdir(), 'brenquil-'));
    after(() => fs.rmSync(site, { recursive: true }));
    fs.cpSync(path.join(web, 'package', 'dist'), path.join(site, 'engine'), { recursive: true });
    const { address } = await serve({ folders: [site] });
    await withPage({}, async (page) => {
        await page.route('**/embedded.html', (route) => route.fulfill({ body: html, contentType: 'text/html' }));
        await page.goto(`${address}embedded.html`);
        await page.waitForFunction(() => /^[a-h][1-8][a-h][1-8]/.test(document.getElementById('move')?.textContent ?? ''));
    });
});

test('the class Engine in a page: two at once, an end in a search, and errors that say what to do', { timeout: 120_000 }, async () => {
    const isolated = await serve();
    const plain = await serve({ isPlain: true });
    for (const { address, variants } of [{ address: isolated.address, variants: ['threads', 'single'] }, { address: plain.address, variants: ['single'] }]) {
        await withPage({ serviceWorkers: 'block' }, async (page) => {
            await page.goto(`${address}LICENSES.txt`);
            const told = await page.evaluate(async ({ names, mayThread }) => {
                const { Engine } = await import('/dist/index.mjs');
                const create = (options) => Engine.create({ workerUrl: '/dist/brenquil-worker.js', ...options });
                const codeOf = (promise) => promise.then(() => 'none', (error) => `${error.code}: ${error.message}`);
                const all = [];
                for (const variant of names) {
                    const engines = await Promise.all([create({ variant }), create({ variant })]);
                    const results = await Promise.all(engines.map((engine) => engine.go({ depth: 6 })));
                    all.push(results.map((result) => result.lines[0].nodes).join());
                    const search = engines[0].go({});
                    engines[0].terminate();
                    all.push(await codeOf(search), await codeOf(engines[1].setOption('Hash', 16000)));
                    all.push((await engines[1].go({ depth: 6 })).bestmove);
                    engines[1].terminate();
                    all.push(await codeOf(create({ variant, wasmUrl: '/nowhere.wasm' })));
                }
                all.push(await codeOf(create({ workerUrl: '/nowhere.js' })));
                if (!mayThread) {
                    all.push(await codeOf(create({ variant: 'threads' })), (await create({})).variant);
                }
                return all;
            }, { names: variants, mayThread: variants.length === 2 });
            for (const expected of variants) {
                assert.equal(told.shift(), '11469,11469', expected);
                assert.match(told.shift(), /^terminated: /);
                assert.match(told.shift(), /^out-of-memory: .*16000 MB cannot be allocated/);
                assert.equal(told.shift(), 'e2e4');
                assert.match(told.shift(), /^file-not-found: .*nowhere\.wasm cannot be loaded/);
            }
            assert.match(told.shift(), /nowhere\.js cannot be loaded/);
            if (variants.length === 1) {
                assert.match(told.shift(), /^not-isolated: .*Cross-Origin-Opener-Policy: same-origin/);
                assert.equal(told.shift(), 'single');
            }
            assert.deepEqual(told, []);
        });
    }
});

test('bench searches the same nodes in Chromium, in both flavours', { timeout: 900_000 }, async () => {
    const expected = /^10 (\d+)$/m.exec(fs.readFileSync(path.join(root, 'tests', 'system', 'bench_signature.txt'), 'utf8'))[1];
    const { address } = await serve();
    for (const variant of ['threads', 'single']) {
        await withPage({}, async (page) => {
            page.setDefaultTimeout(600_000);
            await page.goto(`${address}LICENSES.txt`);
            const lines = await page.evaluate((name) => new Promise((resolve, reject) => {
                const worker = new Worker('engine/brenquil-worker.js');
                const all = [];
                worker.onerror = (event) => reject(new Error(event.message));
                worker.onmessage = ({ data }) => {
                    if (typeof data === 'string') {
                        all.push(data);
                    } else if (data.type === 'error') {
                        reject(new Error(data.message));
                    } else if (data.type === 'end') {
                        resolve(all);
                    }
                };
                worker.postMessage({ type: 'init', variant: name });
                worker.postMessage({ type: 'bench', depth: 0 });
            }), variant);
            console.log(`${variant}: ${lines.at(-1)}`);
            assert.equal(lines.at(-1).split(' ')[0], expected);
        });
    }
});
