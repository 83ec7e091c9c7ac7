/** What goes between the class Engine and its worker. */
import type { EngineErrorCode } from './errors.js';
import type { FileSource } from './files.js';
import type { Variant } from './module.js';

export type WorkerRequest =
    | string
    | { type: 'init'; variant: Variant | 'auto'; wasmUrl?: string; strict?: boolean }
    | { type: 'file'; id: number; path: string; source: FileSource }
    | { type: 'bench'; depth: number }
    | { type: 'crash' }; // for tests: the worker fails as if the engine had crashed

export type WorkerReply =
    | string
    | { type: 'ready'; variant: Variant }
    | { type: 'file'; id: number; size?: number; error?: { code: EngineErrorCode; message: string } }
    | { type: 'error'; code: EngineErrorCode; message: string }
    | { type: 'end'; status: number };
