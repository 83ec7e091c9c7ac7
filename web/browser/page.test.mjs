// The page in Chromium: a game to its end, an analysis, threads on and off, no net, no fault of accessibility.
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
const shots = process.env.BRENQUIL_SHOTS; // a folder for pictures of each view
const axe = fs.readFileSync(path.join(web, 'node_modules', 'axe-core', 'axe.min.js'), 'utf8');
const patience = 60_000;

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

// A mate in four for White against any defence of a bare king, so that the game ends.
const Ladder = '7k/8/8/8/8/8/R7/1R5K w - - 0 1';

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
        // The shortest way to be mated; the engine may take longer.
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
        await shoot(page, 'play-desktop-light');
    });
});

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
        await shoot(page, 'analyse-desktop-light');
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

test('a book by its address is fetched in parts; a damaged table gives the engine\'s message', { timeout: 120_000 }, async () => {
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
            await shoot(page, `play-${name}`);
            await page.click('#tab-analyse');
            await page.check('#analysing');
            await page.waitForFunction(() => document.querySelectorAll('#lines li').length === 3);
            await page.uncheck('#analysing');
            await page.evaluate(() => document.querySelectorAll('details').forEach((each) => each.setAttribute('open', '')));
            await assertAccessible(page);
            await shoot(page, `analyse-${name}`);
            assert.ok(await page.evaluate(() => document.documentElement.scrollWidth <= innerWidth));
        });
    });
}

test('keyboard alone: tabs, board and moves', { timeout: 120_000 }, async () => {
    const { address } = await serve();
    await withPage({}, async (page) => {
        await open(page, address);
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
