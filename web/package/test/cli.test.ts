// The program `brenquil` of the package, and the package as npm packs it.
import assert from 'node:assert/strict';
import { execFileSync, spawn, spawnSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import { test } from 'node:test';

declare const BRENQUIL_ROOT: string;
const packageFolder = path.join(BRENQUIL_ROOT, 'web', 'package');
const program = path.join(packageFolder, 'dist', 'cli.cjs');

function run(words: string[], input = '', cwd?: string): { status: number | null; out: string; err: string } {
    const done = spawnSync(process.execPath, [program, ...words], { input, encoding: 'utf8', timeout: 120_000, ...(cwd === undefined ? {} : { cwd }) });
    return { status: done.status, out: done.stdout, err: done.stderr };
}

function withFolder(work: (folder: string) => void): void {
    const folder = fs.mkdtempSync(path.join(os.tmpdir(), 'brenquil-'));
    try {
        work(folder);
    } finally {
        fs.rmSync(folder, { recursive: true });
    }
}

for (const variant of ['--threads', '--single']) {
    test(`${variant}: the engine on standard input and output, to the end of the input`, () => {
        const { status, out } = run([variant], 'uci\nposition startpos\ngo depth 6\n');
        assert.equal(status, 0);
        assert.match(out, /^uciok$/m);
        assert.match(out, /nodes 11469 .*\nbestmove e2e4/s);
    });

    test(`${variant}: quit in a search ends it`, async () => {
        const child = spawn(process.execPath, [program, variant], { stdio: ['pipe', 'pipe', 'inherit'] });
        const ended = new Promise<number | null>((resolve) => child.on('exit', resolve));
        child.stdout.resume();
        child.stdin.write('uci\ngo infinite\n');
        setTimeout(() => child.stdin.write('quit\n'), 500);
        assert.equal(await ended, 0);
    });

    test(`${variant}: a short bench`, () => {
        assert.match(run([variant, 'bench', '4']).out, /nodes: \d+\ntime:.*\n\d+ nodes \d+ nps\n$/);
    });
}

test('paths mean what they mean outside', () => withFolder((folder) => {
    fs.writeFileSync(path.join(folder, 'one.bin'), new Uint8Array(32));
    for (const name of ['one.bin', path.join(folder, 'one.bin')]) {
        const { out } = run([], `uci\nsetoption name Book Path value ${name}\nquit\n`, folder);
        assert.match(out, /book ".*one\.bin" loaded! \(2 moves\)/);
    }
}));

test('wrong arguments are told, with status 2', () => {
    for (const words of [['--nonsense'], ['bench', 'x'], ['annotate'], ['annotate', '--depth', '0', 'x.pgn'], ['annotate', '--what']]) {
        const { status, err } = run(words);
        assert.equal(status, 2, words.join(' '));
        assert.match(err, /^brenquil: /);
    }
    assert.match(run(['--help']).out, /annotate GAMES\.pgn/);
    const missing = run(['annotate', '/nowhere.pgn']);
    assert.equal(missing.status, 1);
    assert.match(missing.err, /nowhere\.pgn cannot be read/);
});

test('annotate writes evaluations, better lines and a picture, and keeps a bad game as it is', () => withFolder((folder) => {
    const games = '[White "A"]\n[Black "B"]\n\n1. e4 e5 2. Qh5 Ke7 3. Qxe5# 1-0\n\n[White "C"]\n\n1. e9 *\n';
    fs.writeFileSync(path.join(folder, 'two.pgn'), games);
    const { status, err } = run(['annotate', 'two.pgn', '--depth', '6'], '', folder);
    assert.equal(status, 2);
    assert.match(err, /game 2 of 2 is left as it is: two\.pgn, line 8, column 4/);
    assert.match(err, /game 1 \(A - B\) of 2: done, 1 decisive moment, two-annotated-1\.svg/);
    const written = fs.readFileSync(path.join(folder, 'two-annotated.pgn'), 'utf8');
    assert.match(written.replace(/\n/g, ' '), /2\.\.\. Ke7 \$4 \{\[%eval #1\] Blunder\. Better was 2\.\.\. /);
    assert.match(written, /1\. e9 \*/);
    assert.match(fs.readFileSync(path.join(folder, 'two-annotated-1.svg'), 'utf8'), /2\.\.\.Ke7\?\?/);
    // The same words a second time.
    run(['annotate', 'two.pgn', '--depth', '6', '--no-graphs', '--output', 'again.pgn'], '', folder);
    assert.equal(fs.readFileSync(path.join(folder, 'again.pgn'), 'utf8'), written);
}));

test('npm packs the same bytes twice, with all that is needed and nothing else', () => withFolder((folder) => {
    const hashes = ['first', 'second'].map((name) => {
        const target = path.join(folder, name);
        fs.mkdirSync(target);
        execFileSync('npm', ['pack', '--silent', '--pack-destination', target], { cwd: packageFolder });
        const [file] = fs.readdirSync(target);
        return createHash('sha256').update(fs.readFileSync(path.join(target, file!))).digest('hex');
    });
    assert.equal(hashes[0], hashes[1]);
    const listing = JSON.parse(execFileSync('npm', ['pack', '--dry-run', '--json'], { cwd: packageFolder, encoding: 'utf8', stdio: ['ignore', 'pipe', 'ignore'] })) as
        [{ files: { path: string }[] }];
    const files = listing[0].files.map((file) => file.path);
    for (const name of ['dist/node.mjs', 'dist/node.cjs', 'dist/index.mjs', 'dist/index.cjs', 'dist/cli.cjs', 'dist/brenquil-worker.js',
        'dist/brenquil-threads.wasm', 'dist/brenquil-single.wasm', 'dist/types/index.d.ts', 'LICENSE', 'LICENSES.txt', 'README.md']) {
        assert.ok(files.includes(name), name);
    }
    assert.deepEqual(files.filter((file) => !/^(dist\/|LICENSE|README\.md$|package\.json$)/.test(file)), []);
}));

test('the .wasm files are as small as promised', () => {
    for (const variant of ['threads', 'single']) {
        const file = path.join(packageFolder, 'dist', `brenquil-${variant}.wasm`);
        assert.ok(fs.statSync(file).size <= 500_000, `${file}: ${fs.statSync(file).size}`);
        assert.ok(execFileSync('gzip', ['-9c', file], { maxBuffer: 1 << 24 }).length <= 200_000);
    }
});

test('the package is found by its name, as CommonJS and as an ES module', () => withFolder((folder) => {
    fs.mkdirSync(path.join(folder, 'node_modules'));
    fs.symlinkSync(packageFolder, path.join(folder, 'node_modules', 'brenquil'));
    const rest = 'const e = await Engine.create(); console.log((await e.go({ depth: 5 })).bestmove); e.terminate();';
    fs.writeFileSync(path.join(folder, 'old.cjs'), `const { Engine } = require('brenquil'); (async () => { ${rest} })();`);
    fs.writeFileSync(path.join(folder, 'new.mjs'), `import { Engine } from 'brenquil'; import { parsePgn } from 'brenquil/chess'; parsePgn('1. e4 *'); ${rest}`);
    for (const name of ['old.cjs', 'new.mjs']) {
        assert.match(execFileSync(process.execPath, [name], { cwd: folder, encoding: 'utf8', timeout: 60_000 }), /^[a-h][1-8][a-h][1-8]/);
    }
}));
