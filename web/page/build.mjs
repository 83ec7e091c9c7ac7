// Builds the page from its sources and the package: web/page/dist, for any static host.
import { build } from 'esbuild';
import { execFileSync } from 'node:child_process';
import { createHash } from 'node:crypto';
import fs from 'node:fs';
import path from 'node:path';

function filesBelow(folder, prefix = '') {
    return fs.readdirSync(folder, { withFileTypes: true }).flatMap((entry) => entry.isDirectory()
        ? filesBelow(path.join(folder, entry.name), `${prefix}${entry.name}/`)
        : [prefix + entry.name]).sort();
}

export async function buildPage({ here, common, makeFolder }) {
    const page = path.join(here, 'page');
    const out = path.join(page, 'dist');
    const libraries = path.join(here, 'node_modules');
    makeFolder(out);
    execFileSync(process.execPath, [path.join(libraries, 'typescript/bin/tsc'), '-p', path.join(page, 'tsconfig.json')], { stdio: 'inherit' });
    for (const name of ['index.html', 'icon.svg', 'manifest.webmanifest']) {
        fs.copyFileSync(path.join(page, name), path.join(out, name));
    }
    const board = path.join(libraries, 'cm-chessboard', 'assets');
    const styles = [path.join(page, 'page.css'), path.join(board, 'chessboard.css'), path.join(board, 'extensions/markers/markers.css'),
        path.join(board, 'extensions/arrows/arrows.css'), path.join(board, 'extensions/promotion-dialog/promotion-dialog.css'),
        path.join(libraries, 'uplot/dist/uPlot.min.css')];
    fs.writeFileSync(path.join(out, 'page.css'), styles.map((file) => fs.readFileSync(file, 'utf8').replace(/\/\*# sourceMappingURL.*?\*\//g, '')).join('\n'));
    for (const name of ['pieces/standard.svg', 'extensions/markers/markers.svg', 'extensions/arrows/arrows.svg']) {
        fs.mkdirSync(path.dirname(path.join(out, 'board', name)), { recursive: true });
        fs.copyFileSync(path.join(board, name), path.join(out, 'board', name));
    }
    const engine = path.join(here, 'package', 'dist');
    fs.mkdirSync(path.join(out, 'engine'));
    for (const name of fs.readdirSync(engine).filter((each) => each.startsWith('brenquil-'))) {
        fs.copyFileSync(path.join(engine, name), path.join(out, 'engine', name));
    }
    fs.copyFileSync(path.join(here, 'package', 'LICENSES.txt'), path.join(out, 'LICENSES.txt'));
    await build({
        ...common, entryPoints: [path.join(page, 'src', 'main.ts')], outfile: path.join(out, 'page.js'),
        platform: 'browser', format: 'esm', define: { BRENQUIL_HERE: 'document.baseURI' },
    });
    // The name of the cache is that of its contents, so that a new build takes the place of an old one.
    const files = filesBelow(out);
    const hash = createHash('sha256');
    for (const file of files) {
        hash.update(file).update(fs.readFileSync(path.join(out, file)));
    }
    await build({
        ...common, entryPoints: [path.join(page, 'src', 'service_worker.ts')], outfile: path.join(out, 'service_worker.js'),
        platform: 'browser', format: 'iife',
        define: {
            BRENQUIL_FILES: JSON.stringify(['./', ...files]),
            BRENQUIL_BUILD: JSON.stringify(hash.digest('hex').slice(0, 16)),
        },
    });
}
