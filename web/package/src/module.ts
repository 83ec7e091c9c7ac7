/**
 * Makes the WebAssembly module: picks the flavour, finds its files, says clearly what is missing.
 */
import { EngineError } from './errors.js';
import type { FileSystem } from './files.js';

/** The one with several threads, or the one that needs no isolation. */
export type Variant = 'threads' | 'single';

/** What web/engine offers; see web/engine/main.cpp. */
export interface Module {
    FS: FileSystem & { mount(type: unknown, options: object, at: string): void; chdir(path: string): void };
    NODEFS: unknown;
    /** `strict`: the dialect of --strict-uci. */
    _brenquil_start(strict: boolean): void;
    _brenquil_line(line: number): void;
    _brenquil_bench(depth: number): void;
    _malloc(bytes: number): number;
    _free(address: number): void;
    stringToUTF8(text: string, address: number, bytes: number): void;
    lengthBytesUTF8(text: string): number;
}

export type Factory = (settings: object) => Promise<Module>;

export interface Surroundings {
    factory: Factory;
    /** Where the module finds its own files. */
    locate(name: string): string;
    /** The bytes of the .wasm file, or a response that brings them. */
    wasm(): Promise<WebAssembly.Module>;
    onLine(line: string): void;
    onEnd(status: number): void;
    onCrash(message: string): void;
}

/** Whether threads can share memory here. */
export function hasSharedMemory(): boolean {
    const isolated = (globalThis as { crossOriginIsolated?: boolean }).crossOriginIsolated;
    return typeof SharedArrayBuffer === 'function' && isolated !== false;
}

/** The flavour for this place; throws when several threads are wanted and cannot be had. */
export function pickVariant(wanted: Variant | 'auto', canNest: boolean): Variant {
    const possible = hasSharedMemory() && canNest;
    if (wanted === 'threads' && !possible) {
        throw new EngineError('not-isolated',
            'Several threads need a cross-origin isolated page: serve it with the headers ' +
            '"Cross-Origin-Opener-Policy: same-origin" and "Cross-Origin-Embedder-Policy: require-corp", ' +
            'or ask for the variant "single" (or "auto", which takes what there is)');
    }
    return wanted === 'auto' ? (possible ? 'threads' : 'single') : wanted;
}

const PagesPerGibibyte = 16384;

/**
 * The shared memory has to name its largest size at the start, and phones refuse sizes that they
 * would never give.
 */
function makeSharedMemory(): WebAssembly.Memory {
    for (let maximum = 4 * PagesPerGibibyte; ; maximum /= 2) {
        try {
            return new WebAssembly.Memory({ initial: 256, maximum, shared: true });
        } catch (error) {
            if (maximum <= PagesPerGibibyte / 8) {
                throw new EngineError('out-of-memory',
                    `The browser gives no memory that threads can share: ${String(error)}`);
            }
        }
    }
}

/** Makes the module of a flavour. Rejects with an EngineError. */
export async function makeModule(variant: Variant, around: Surroundings): Promise<Module> {
    const compiled = await around.wasm();
    let fail: (error: Error) => void = () => {};
    const failed = new Promise<never>((_, reject) => {
        fail = reject;
    });
    const settings = {
        ...(variant === 'threads' ? { wasmMemory: makeSharedMemory() } : {}),
        mainScriptUrlOrBlob: around.locate(`brenquil-${variant}.js`),
        locateFile: (name: string) => around.locate(name),
        instantiateWasm: (imports: WebAssembly.Imports, done: (i: WebAssembly.Instance, m: WebAssembly.Module) => void) => {
            WebAssembly.instantiate(compiled, imports).then(
                (instance) => done(instance, compiled),
                (error: unknown) => fail(error instanceof RangeError
                    ? new EngineError('out-of-memory', `The browser gives the engine no memory: ${error.message}`)
                    : (error as Error)));
            return {};
        },
        onLine: (line: string) => around.onLine(line),
        onEnd: (status: number) => around.onEnd(status),
        onAbort: (what: unknown) => around.onCrash(`The engine has crashed: ${String(what)}`),
        onExit: (status: number) => around.onEnd(status),
        print: (line: string) => around.onLine(line),
        printErr: (line: string) => around.onLine(`info string ${line}`),
    };
    return Promise.race([around.factory(settings), failed]);
}

/** Hands a line of input to the engine. */
export function sendLine(module: Module, line: string): void {
    const bytes = module.lengthBytesUTF8(line) + 1;
    const address = module._malloc(bytes);
    module.stringToUTF8(line, address, bytes);
    module._brenquil_line(address);
    module._free(address);
}
