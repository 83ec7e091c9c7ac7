/**
 * Files for the engine inside the worker: what a page hands over (a File, a Blob, bytes or a URL)
 * under a path of the engine's own file system.
 *
 * Nothing is copied whole that can be read in parts. A File is read where the engine asks, and so
 * is a URL whose host answers ranges; other hosts send the file once, when it is named. The engine
 * reads without waiting for promises, so the parts come by the synchronous interfaces that workers have:
 * FileReaderSync and XMLHttpRequest.
 */
import { EngineError } from './errors.js';

/* Workers have it, pages do not. */
declare const FileReaderSync: { new (): { readAsArrayBuffer(blob: Blob): ArrayBuffer } };

/** Where the bytes of a file come from. */
export type FileSource = Blob | ArrayBuffer | ArrayBufferView | string | URL;

/** Reads bytes [start, end) of something; end is within its size. */
export interface PartReader {
    readonly size: number;
    read(start: number, end: number): Uint8Array;
}

/** Whole parts of 64 KiB in the order of their last use: at most 4 MiB of a file stay in memory. */
export class CachedReader implements PartReader {
    static readonly PartSize = 64 * 1024;
    static readonly MaxParts = 64;
    readonly size: number;
    readonly #source: PartReader;
    readonly #parts = new Map<number, Uint8Array>();

    constructor(source: PartReader) {
        this.size = source.size;
        this.#source = source;
    }

    read(start: number, end: number): Uint8Array {
        const result = new Uint8Array(end - start);
        for (let place = start; place < end;) {
            const index = Math.floor(place / CachedReader.PartSize);
            const part = this.#part(index, end);
            const offset = place - index * CachedReader.PartSize;
            const piece = part.subarray(offset, Math.min(part.length, offset + end - place));
            result.set(piece, place - start);
            place += piece.length;
        }
        return result;
    }

    /** A part, and in the same request all that follow it before `end` and are not there. */
    #part(index: number, end: number): Uint8Array {
        const known = this.#parts.get(index);
        if (known !== undefined) {
            this.#parts.delete(index);
            this.#parts.set(index, known);
            return known;
        }
        let last = index;
        while ((last + 1) * CachedReader.PartSize < end && !this.#parts.has(last + 1) &&
            last + 1 - index < CachedReader.MaxParts) {
            ++last;
        }
        const from = index * CachedReader.PartSize;
        const bytes = this.#source.read(from, Math.min(this.size, (last + 1) * CachedReader.PartSize));
        for (let each = last; each >= index; --each) {
            const offset = (each - index) * CachedReader.PartSize;
            this.#parts.set(each, bytes.subarray(offset, offset + CachedReader.PartSize));
        }
        for (const oldest of this.#parts.keys()) {
            if (this.#parts.size <= CachedReader.MaxParts) {
                break;
            }
            if (oldest !== index) {
                this.#parts.delete(oldest);
            }
        }
        return this.#parts.get(index)!;
    }
}

class BlobReader implements PartReader {
    readonly size: number;
    readonly #blob: Blob;

    constructor(blob: Blob) {
        this.size = blob.size;
        this.#blob = blob;
    }

    read(start: number, end: number): Uint8Array {
        return new Uint8Array(new FileReaderSync().readAsArrayBuffer(this.#blob.slice(start, end)));
    }
}

class BytesReader implements PartReader {
    readonly size: number;
    readonly #bytes: Uint8Array;

    constructor(bytes: Uint8Array) {
        this.size = bytes.length;
        this.#bytes = bytes;
    }

    read(start: number, end: number): Uint8Array {
        return this.#bytes.subarray(start, end);
    }
}

class RangeReader implements PartReader {
    readonly size: number;
    readonly #url: string;

    constructor(url: string, size: number) {
        this.size = size;
        this.#url = url;
    }

    read(start: number, end: number): Uint8Array {
        const request = new XMLHttpRequest();
        request.open('GET', this.#url, false);
        request.responseType = 'arraybuffer';
        request.setRequestHeader('Range', `bytes=${start}-${end - 1}`);
        request.send();
        const bytes = new Uint8Array(request.response as ArrayBuffer);
        if (request.status !== 206 || bytes.length !== end - start) {
            throw new EngineError('file-not-found',
                `${this.#url}: the host answered ${request.status} for bytes ${start} to ${end - 1}`);
        }
        return bytes;
    }
}

async function readerOfUrl(url: string): Promise<PartReader> {
    let answer: Response;
    try {
        answer = await fetch(url, { headers: { Range: `bytes=0-${CachedReader.PartSize - 1}` } });
    } catch (error) {
        throw new EngineError('file-not-found', `${url} cannot be fetched: ${String(error)}`);
    }
    if (!answer.ok) {
        throw new EngineError('file-not-found', `${url} cannot be fetched: the host answered ${answer.status}`);
    }
    const total = /\/(\d+)$/.exec(answer.headers.get('Content-Range') ?? '')?.[1];
    if (answer.status === 206 && total !== undefined && typeof XMLHttpRequest !== 'undefined') {
        await answer.body?.cancel();
        return new CachedReader(new RangeReader(url, Number(total)));
    }
    if (answer.status === 206) {
        answer = await fetch(url);
    }
    return new BytesReader(new Uint8Array(await answer.arrayBuffer()));
}

/** A reader of the source. Rejects with an EngineError when there is nothing to read. */
export async function openSource(source: FileSource): Promise<PartReader> {
    if (typeof source === 'string' || source instanceof URL) {
        return readerOfUrl(String(source));
    }
    if (source instanceof ArrayBuffer) {
        return new BytesReader(new Uint8Array(source));
    }
    if (ArrayBuffer.isView(source)) {
        return new BytesReader(new Uint8Array(source.buffer, source.byteOffset, source.byteLength));
    }
    return typeof FileReaderSync === 'undefined'
        ? new BytesReader(new Uint8Array(await source.arrayBuffer()))
        : new CachedReader(new BlobReader(source));
}

/* The little of Emscripten's file system that is used. */
interface Node {
    stream_ops: Record<string, unknown>;
    contents: unknown;
    usedBytes: number;
}
interface Stream {
    position: number;
}
export interface FileSystem {
    mkdirTree(path: string): void;
    writeFile(path: string, data: Uint8Array): void;
    unlink(path: string): void;
    analyzePath(path: string): { exists: boolean };
    lookupPath(path: string): { node: Node };
    ErrnoError: new (errno: number) => Error;
}

const InputOutputError = 29; // EIO in the numbering of WASI

/** Puts a file under a path, in place of one that is there. */
export function putFile(fs: FileSystem, path: string, reader: PartReader): void {
    const folder = path.slice(0, path.lastIndexOf('/'));
    if (folder !== '') {
        fs.mkdirTree(folder);
    }
    if (fs.analyzePath(path).exists) {
        fs.unlink(path);
    }
    fs.writeFile(path, new Uint8Array(0));
    const { node } = fs.lookupPath(path);
    Object.defineProperty(node, 'usedBytes', { get: () => reader.size });
    node.stream_ops = {
        ...node.stream_ops,
        read(_stream: Stream, buffer: Uint8Array, offset: number, length: number, position: number): number {
            const end = Math.min(reader.size, position + length);
            if (end <= position) {
                return 0;
            }
            try {
                buffer.set(reader.read(position, end), offset);
            } catch {
                throw new fs.ErrnoError(InputOutputError);
            }
            return end - position;
        },
    };
}
