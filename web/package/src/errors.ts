/** What went wrong, as a word that programs can compare. */
export type EngineErrorCode =
    | 'not-isolated' // several threads were asked for on a page that is not cross-origin isolated
    | 'file-not-found' // a part of the package, a book or a table is not where it should be
    | 'out-of-memory' // the browser gives no more memory
    | 'bad-file' // the engine did not take a book or a table
    | 'bad-position' // a FEN that is none
    | 'unknown-option'
    | 'crashed' // the worker ended by itself; `restart` brings it back
    | 'terminated'; // the engine was ended on purpose

/** An error of the engine or of its surroundings; the message says what to do about it. */
export class EngineError extends Error {
    readonly code: EngineErrorCode;

    constructor(code: EngineErrorCode, message: string) {
        super(message);
        this.name = 'EngineError';
        this.code = code;
    }
}
