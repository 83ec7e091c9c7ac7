/** The package under Node: the same class on a worker of `node:worker_threads`. */
import { Worker } from 'node:worker_threads';

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
    const worker = new Worker(url instanceof URL || /^[a-z]+:/.test(url) ? new URL(url) : url);
    return {
        postMessage: (message) => worker.postMessage(message),
        onReply: (handler) => {
            worker.on('message', (reply: WorkerReply) => handler(reply));
        },
        onFailure: (handler) => {
            worker.on('error', (error) => handler(error.message));
        },
        terminate: () => {
            void worker.terminate();
        },
    };
}

export class Engine extends Base {
    /** Starts an engine. Rejects with an EngineError that says what to do. */
    static async create(options: EngineOptions = {}): Promise<Engine> {
        const url = options.workerUrl ?? new URL('brenquil-worker.js', BRENQUIL_HERE);
        return new Engine(() => makeWorker(url), options).start();
    }
}
