// Serves the built page with the headers that threads need:  node serve.mjs [--port N] [--plain] [--folder F]
//
// --plain leaves the headers out, as many static hosts do. Port 0 takes a free one. Only this machine can reach it.
import fs from 'node:fs';
import http from 'node:http';
import path from 'node:path';
import { fileURLToPath } from 'node:url';

const types = {
    '.html': 'text/html; charset=utf-8', '.js': 'text/javascript', '.mjs': 'text/javascript', '.css': 'text/css',
    '.wasm': 'application/wasm', '.svg': 'image/svg+xml', '.txt': 'text/plain; charset=utf-8',
    '.webmanifest': 'application/manifest+json', '.json': 'application/json', '.pgn': 'text/plain; charset=utf-8',
};

/** Answers with the files of the folders, the first that has one. Tables and books are given in parts. */
export function makeServer({ folders, isPlain = false }) {
    return http.createServer((request, response) => {
        const url = new URL(request.url, 'http://localhost');
        let name;
        try {
            name = path.normalize(decodeURIComponent(url.pathname));
        } catch {
            name = '/';
        }
        const file = folders.map((folder) => path.join(folder, name.endsWith('/') ? `${name}index.html` : name))
            .find((each) => fs.statSync(each, { throwIfNoEntry: false })?.isFile());
        const headers = isPlain ? {} : {
            'Cross-Origin-Opener-Policy': 'same-origin',
            'Cross-Origin-Embedder-Policy': 'require-corp',
            'Cross-Origin-Resource-Policy': 'same-origin',
        };
        if (file === undefined) {
            response.writeHead(404, { ...headers, 'Content-Type': 'text/plain' }).end('not found\n');
            return;
        }
        const { size } = fs.statSync(file);
        Object.assign(headers, {
            'Content-Type': types[path.extname(file)] ?? 'application/octet-stream', 'Cache-Control': 'no-cache', 'Accept-Ranges': 'bytes',
        });
        const range = /^bytes=(\d+)-(\d*)$/.exec(request.headers.range ?? '');
        if (range !== null && Number(range[1]) < size) {
            const start = Number(range[1]);
            const end = Math.min(size - 1, range[2] === '' ? size - 1 : Number(range[2]));
            response.writeHead(206, { ...headers, 'Content-Range': `bytes ${start}-${end}/${size}`, 'Content-Length': end - start + 1 });
            fs.createReadStream(file, { start, end }).pipe(response);
        } else {
            response.writeHead(200, { ...headers, 'Content-Length': size });
            fs.createReadStream(file).pipe(response);
        }
    });
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
    const words = process.argv.slice(2);
    const valueOf = (name, otherwise) => (words.includes(name) ? words[words.indexOf(name) + 1] : otherwise);
    const folder = valueOf('--folder', path.join(path.dirname(fileURLToPath(import.meta.url)), 'page', 'dist'));
    const server = makeServer({ folders: [folder], isPlain: words.includes('--plain') });
    server.on('error', (error) => {
        console.error(`The page cannot be served: ${error.message}`);
        process.exit(1);
    });
    server.listen(Number(valueOf('--port', '8000')), '127.0.0.1', () => {
        console.log(`The page is at http://localhost:${server.address().port}/ (Ctrl+C ends it)`);
    });
}
