/** The package in a page. */
import { Engine as Base, type EngineOptions, type WorkerLike } from './engine.js';
import type { WorkerReply } from './messages.js';

export { EngineError, type EngineErrorCode } from './errors.js';
export { checkFen } from './fen.js';
export type { FileSource } from './files.js';
export type { Variant } from './module.js';
export { goLine, parseBestMove, parseInfo, parseOption, positionLine } from './uci.js';
export type { Info, Limits, OptionInfo, Score } from './uci.js';
export type { AnalyseRequest, EngineEvents, EngineOptions, GoRequest, GoResult, Position } from './engine.js';

/** The address of this file; the build fills it in. */
declare const BRENQUIL_HERE: string;

function makeWorker(url: string | URL): WorkerLike {
    const worker = new Worker(url);
    return {
        postMessage: (message) => worker.postMessage(message),
        onReply: (handler) => {
            worker.onmessage = (event: MessageEvent<WorkerReply>) => handler(event.data);
        },
        onFailure: (handler) => {
            worker.onerror = (event) => {
                event.preventDefault();
                handler(event.message === undefined || event.message === ''
                    ? `${String(url)} cannot be loaded` : event.message);
            };
        },
        terminate: () => worker.terminate(),
    };
}

export class Engine extends Base {
    /** Starts an engine. Rejects with an EngineError that says what to do. */
    static async create(options: EngineOptions = {}): Promise<Engine> {
        const url = options.workerUrl ?? new URL('brenquil-worker.js', BRENQUIL_HERE);
        return new Engine(() => makeWorker(url), options).start();
    }
}
