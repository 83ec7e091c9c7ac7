// Runs the tests that build.mjs has made:  node test.mjs unit|browser
import { spawnSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const here = path.dirname(fileURLToPath(import.meta.url));
const built = path.join(here, '..', 'build', 'web-tests');

function filesBelow(folder) {
    return fs.readdirSync(folder, { withFileTypes: true }).flatMap((entry) => entry.isDirectory()
        ? filesBelow(path.join(folder, entry.name))
        : entry.name.endsWith('.test.mjs') ? [path.join(folder, entry.name)] : []).sort();
}

const kind = process.argv[2];
const files = kind === 'browser'
    ? filesBelow(path.join(here, 'browser'))
    : filesBelow(built);
// One after the other: several engines at once would take the machine from one another.
const done = spawnSync(process.execPath, ['--test', '--test-concurrency=1', ...process.argv.slice(3), ...files], { stdio: 'inherit', cwd: here });
process.exit(done.status ?? 1);
