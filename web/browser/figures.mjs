// Measures the figures of the page that docs/web.md gives, in Chromium, and prints them:  node web/browser/figures.mjs
//
// A machine that is busy with other work gives other figures; nothing here is a test.
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import { chromium } from 'playwright-core';

import { makeServer } from '../serve.mjs';

const web = path.dirname(path.dirname(fileURLToPath(import.meta.url)));
const server = makeServer({ folders: [path.join(web, 'page', 'dist'), path.join(web, 'package')] });
await new Promise((resolve) => server.listen(0, '127.0.0.1', resolve));
const address = `http://127.0.0.1:${server.address().port}/`;
const browser = await chromium.launch({ executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox'] });

function middle(values) {
    return [...values].sort((first, second) => first - second)[Math.floor(values.length / 2)];
}

/** Runs in a page of a context of its own. */
async function inPage(name, work) {
    const context = await browser.newContext();
    const page = await context.newPage();
    page.setDefaultTimeout(600_000);
    await page.goto(address + name);
    try {
        return await work(page);
    } finally {
        await context.close();
    }
}

// The first visit, with nothing kept from an earlier one.
const paints = [];
const readies = [];
for (let round = 0; round < 7; ++round) {
    await inPage('', async (page) => {
        await page.waitForSelector('html[data-engine]');
        const [paint, ready] = await page.evaluate(() => [
            performance.getEntriesByName('first-contentful-paint')[0].startTime,
            performance.getEntriesByName('engine-ready')[0].startTime]);
        paints.push(paint);
        readies.push(ready - paint);
    });
}
console.log(`first paint: ${middle(paints).toFixed(0)} ms, engine ready after ${middle(readies).toFixed(0)} ms more (medians of ${paints.length} first visits)`);

for (const variant of ['threads', 'single']) {
    const { delays, growth, nps } = await inPage('LICENSES.txt', (page) => page.evaluate(async (wanted) => {
        const { Engine } = await import('/dist/index.mjs');
        const engine = await Engine.create({ variant: wanted, workerUrl: '/dist/brenquil-worker.js' });
        const delays = [];
        for (let round = 0; round < 41; ++round) {
            let search;
            await new Promise((resolve) => {
                search = engine.go({ onInfo: (info) => (info.depth ?? 0) >= 8 && resolve() });
            });
            await new Promise((resolve) => {
                setTimeout(resolve, 50 + 7 * round);
            });
            const before = performance.now();
            engine.stop();
            await search;
            delays.push(performance.now() - before);
        }
        const search = async (count) => {
            for (let round = 0; round < count; ++round) {
                if (round % 10 === 0) {
                    await engine.newGame();
                }
                await engine.go({ nodes: 2000, moves: round % 2 === 0 ? [] : ['e2e4'] });
            }
        };
        // The memory of the page and its workers, where the browser can say.
        const memory = async () => (await performance.measureUserAgentSpecificMemory()).bytes;
        await search(100);
        const before = await memory();
        await search(1000);
        const growth = (await memory()) - before;
        const { lines } = await engine.go({ movetime: 5000 });
        engine.terminate();
        return { delays, growth, nps: lines[0].nps };
    }, variant));
    console.log(`${variant}: stop is answered after ${middle(delays).toFixed(1)} ms, ${Math.max(...delays).toFixed(1)} ms at most (${delays.length} searches); ` +
        `1,000 searches: ${(growth / 2 ** 20).toFixed(2)} MB more memory; ${nps} nodes a second`);
}
await browser.close();
server.close();

for (const variant of ['threads', 'single']) {
    console.log(`brenquil-${variant}.wasm: ${fs.statSync(path.join(web, 'package', 'dist', `brenquil-${variant}.wasm`)).size} bytes`);
}
