// Builds the package, the page and their tests.
//
//   node build.mjs package      web/package/dist, from its sources and build/web, build/web-single
//   node build.mjs page         web/page/dist: files for any static host
//   node build.mjs tests        build/web-tests: the unit tests as programs for `node --test`
//
// Without an argument: all three. The modules of the engine have to be there: the presets web and web-single make them.
import { build } from 'esbuild';
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const root = path.dirname(here);
const packageFolder = path.join(here, 'package');
const packageOut = path.join(packageFolder, 'dist');

const modules = [
    ['web', 'brenquil-threads.js'],
    ['web', 'brenquil-threads.wasm'],
    ['web-single', 'brenquil-single.js'],
    ['web-single', 'brenquil-single.wasm'],
];

// Versions of Emscripten up to 3.1.57 have the script of the search's workers apart.
const workerScript = ['web', 'brenquil-threads.worker.js'];

const common = {
    bundle: true,
    mainFields: ['module', 'main'],
    minify: true,
    keepNames: true,
    target: ['es2022'],
    legalComments: 'none', // all licences are in LICENSES.txt
    logLevel: 'warning',
    absWorkingDir: here,
};

function makeFolder(folder) {
    fs.rmSync(folder, { recursive: true, force: true });
    fs.mkdirSync(folder, { recursive: true });
}

function copyModules(target) {
    const hasWorkerScript = fs.existsSync(path.join(root, 'build', ...workerScript));
    for (const [preset, name] of hasWorkerScript ? [...modules, workerScript] : modules) {
        const file = path.join(root, 'build', preset, name);
        if (!fs.existsSync(file)) {
            throw new Error(`${file} is missing: cmake --preset ${preset} && cmake --build --preset ${preset}`);
        }
        fs.copyFileSync(file, path.join(target, name));
        fs.chmodSync(path.join(target, name), 0o644);
    }
}

async function buildPackage() {
    makeFolder(packageOut);
    copyModules(packageOut);
    const source = (name) => path.join(packageFolder, 'src', name);
    const esm = { format: 'esm', define: { BRENQUIL_HERE: 'import.meta.url' } };
    const cjs = {
        format: 'cjs',
        define: { BRENQUIL_HERE: 'brenquilHere' },
        banner: {
            js: "const brenquilHere = typeof document === 'undefined' ? require('node:url').pathToFileURL(__filename).href : document.baseURI;",
        },
    };
    const jobs = [
        { entryPoints: [source('index.ts')], outfile: path.join(packageOut, 'index.mjs'), platform: 'browser', ...esm },
        { entryPoints: [source('index.ts')], outfile: path.join(packageOut, 'index.cjs'), platform: 'browser', external: ['node:url'], ...cjs },
        { entryPoints: [source('node.ts')], outfile: path.join(packageOut, 'node.mjs'), platform: 'node', ...esm },
        { entryPoints: [source('node.ts')], outfile: path.join(packageOut, 'node.cjs'), platform: 'node', ...cjs },
        { entryPoints: [source('chess.ts')], outfile: path.join(packageOut, 'chess.mjs'), platform: 'neutral', format: 'esm' },
        { entryPoints: [source('chess.ts')], outfile: path.join(packageOut, 'chess.cjs'), platform: 'neutral', format: 'cjs' },
        {
            entryPoints: [source('worker.ts')], outfile: path.join(packageOut, 'brenquil-worker.js'),
            platform: 'node', format: 'cjs',
        },
        {
            entryPoints: [source('cli.ts')], outfile: path.join(packageOut, 'cli.cjs'), platform: 'node', ...cjs,
            banner: { js: `#!/usr/bin/env node\n${cjs.banner.js}` },
        },
    ];
    await Promise.all(jobs.map((job) => build({ ...common, ...job })));
    fs.chmodSync(path.join(packageOut, 'cli.cjs'), 0o755);
    execFileSync(process.execPath, [path.join(here, 'node_modules/typescript/bin/tsc'), '-p', path.join(packageFolder, 'tsconfig.json')],
        { stdio: 'inherit' });
    fs.copyFileSync(path.join(root, 'LICENSE'), path.join(packageFolder, 'LICENSE'));
}

async function buildTests() {
    const out = path.join(root, 'build', 'web-tests');
    makeFolder(out);
    const tests = ['package/test', 'page/test'].flatMap((folder) => fs.existsSync(path.join(here, folder))
        ? fs.readdirSync(path.join(here, folder)).filter((name) => name.endsWith('.test.ts'))
            .map((name) => path.join(here, folder, name))
        : []);
    await build({
        ...common, minify: false, entryPoints: tests, outdir: out, outbase: here, outExtension: { '.js': '.mjs' },
        platform: 'node', format: 'esm', define: { BRENQUIL_ROOT: JSON.stringify(root) },
        external: ['playwright-core', 'jsdom'],
    });
}

const wanted = process.argv.slice(2);
const all = wanted.length === 0;
if (all || wanted.includes('package')) await buildPackage();
if (all || wanted.includes('page')) await (await import('./page/build.mjs')).buildPage({ here, common, makeFolder });
if (all || wanted.includes('tests')) await buildTests();
