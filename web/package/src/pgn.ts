/**
 * Games in PGN: reading with the place of every fault, and writing. Keeps tags, comments, marks and
 * variations; reads Chess960 by the tags `Variant` and `FEN`.
 */
import { ChessPosition, RulesError, type Move } from './rules.js';

/** One half-move of a game. Its position is the one before it. */
export interface Ply {
    move: Move;
    before: ChessPosition;
    after: ChessPosition;
    /** Comments between the move before and this one, and after this one. */
    commentsBefore: string[];
    comments: string[];
    /** Marks as numbers: 1 is "!", 2 is "?". */
    marks: number[];
    /** Other moves in place of this one, each with what follows. */
    variations: Ply[][];
}

export interface Game {
    tags: Map<string, string>;
    start: ChessPosition;
    /** Comments in front of the first move. */
    comments: string[];
    plies: Ply[];
    result: string;
}

/** A fault in a PGN. Lines and columns count from 1. */
export class PgnError extends Error {
    override name = 'PgnError';
    readonly line: number;
    readonly column: number;

    constructor(message: string, line: number, column: number) {
        super(`line ${line}, column ${column}: ${message}`);
        this.line = line;
        this.column = column;
    }
}

interface Token {
    kind: 'tag' | 'comment' | 'mark' | 'open' | 'close' | 'result' | 'move' | 'number';
    text: string;
    value?: string; // of a tag
    at: number;
}

const Results = ['1-0', '0-1', '1/2-1/2', '*'];
const Glyphs: Record<string, number> = { '!': 1, '?': 2, '!!': 3, '??': 4, '!?': 5, '?!': 6 };

/** The tokens of the text from `at` on, up to the end of one game. Throws PgnError. */
class Reader {
    at = 0;
    readonly text: string;
    readonly #lineStarts: number[] = [0];

    constructor(text: string) {
        this.text = text;
        for (let place = text.indexOf('\n'); place >= 0; place = text.indexOf('\n', place + 1)) {
            this.#lineStarts.push(place + 1);
        }
    }

    fault(message: string, at: number): PgnError {
        let low = 0;
        let high = this.#lineStarts.length - 1;
        while (low < high) {
            const middle = (low + high + 1) >> 1;
            if (this.#lineStarts[middle]! <= at) {
                low = middle;
            } else {
                high = middle - 1;
            }
        }
        return new PgnError(message, low + 1, at - this.#lineStarts[low]! + 1);
    }

    #atLineStart(at: number): boolean {
        return at === 0 || this.text[at - 1] === '\n';
    }

    /** null at the end of the text. */
    next(): Token | null {
        const { text } = this;
        for (;;) {
            while (/\s|\ufeff/.test(text[this.at] ?? '')) {
                ++this.at;
            }
            const isEscape = text[this.at] === '%' && this.#atLineStart(this.at);
            if (!isEscape) {
                break;
            }
            const end = text.indexOf('\n', this.at);
            this.at = end < 0 ? text.length : end;
        }
        const at = this.at;
        const letter = text[at];
        if (letter === undefined) {
            return null;
        }
        const take = (kind: Token['kind'], length: number, value?: string): Token => {
            this.at = at + length;
            return { kind, text: text.slice(at, at + length), at, ...(value === undefined ? {} : { value }) };
        };
        if (letter === '[') {
            const match = /^\[\s*(\w+)\s*"((?:[^"\\\r\n]|\\.)*)"\s*\]/.exec(text.slice(at, at + 4096));
            if (match === null) {
                throw this.fault('a tag is written as [Name "value"]', at);
            }
            const token = take('tag', match[0].length, match[2]!.replace(/\\(["\\])/g, '$1'));
            token.text = match[1]!;
            return token;
        }
        if (letter === '{' || letter === ';') {
            const end = text.indexOf(letter === '{' ? '}' : '\n', at);
            if (end < 0 && letter === '{') {
                throw this.fault('this comment does not end', at);
            }
            const stop = end < 0 ? text.length : end;
            const token = take('comment', stop - at + (letter === '{' ? 1 : 0));
            token.text = text.slice(at + 1, stop).replace(/\s+/g, ' ').trim();
            return token;
        }
        if (letter === '(') {
            return take('open', 1);
        }
        if (letter === ')') {
            return take('close', 1);
        }
        const rest = text.slice(at, at + 64);
        const mark = /^(?:\$(\d+)|([!?]{1,2}))/.exec(rest);
        if (mark !== null) {
            const token = take('mark', mark[0].length);
            token.text = mark[1] ?? String(Glyphs[mark[2]!]);
            return token;
        }
        const result = Results.find((each) => rest.startsWith(each) && !/[\w/-]/.test(rest[each.length] ?? ' '));
        if (result !== undefined) {
            return take('result', result.length);
        }
        const castling = /^[0O]-[0O](-[0O])?[+#]?/.exec(rest);
        if (castling !== null) {
            return take('move', castling[0].length);
        }
        const number = /^\d+\s*\.*|^\.+/.exec(rest);
        if (number !== null) {
            return take('number', number[0].length);
        }
        const move = /^[A-Za-z][A-Za-z0-9=+#-]*/.exec(rest);
        if (move !== null) {
            return take('move', move[0].length);
        }
        throw this.fault(`"${letter}" has no meaning here`, at);
    }
}

function startOf(tags: Map<string, string>): ChessPosition {
    const isChess960 = /960|fischer/i.test(tags.get('Variant') ?? '');
    const fen = tags.get('FEN');
    return fen === undefined ? ChessPosition.start() : ChessPosition.fromFen(fen, isChess960);
}

/** Reads one game at the reader's place; null when there is none. */
function readGame(reader: Reader): Game | null {
    const game: Game = { tags: new Map(), start: ChessPosition.start(), comments: [], plies: [], result: '*' };
    let line = game.plies;
    let position: ChessPosition | null = null;
    let pending: string[] = [];
    const stack: { line: Ply[]; position: ChessPosition; at: number }[] = [];
    let any = false;
    let fenAt = 0;

    for (;;) {
        const start = reader.at;
        const token = reader.next();
        if (token === null || (token.kind === 'tag' && position !== null)) {
            reader.at = token === null ? reader.at : start;
            if (stack.length > 0) {
                throw reader.fault('this variation does not end', stack.at(-1)!.at);
            }
            break;
        }
        any = true;
        if (token.kind === 'tag') {
            game.tags.set(token.text, token.value!);
            if (token.text === 'FEN') {
                fenAt = token.at;
            }
            continue;
        }
        if (position === null && token.kind !== 'comment') {
            try {
                position = startOf(game.tags);
            } catch (error) {
                throw error instanceof RulesError ? reader.fault(`the FEN of the game: ${error.message}`, fenAt) : error;
            }
            game.start = position;
        }
        if (token.kind === 'comment') {
            const last = line.at(-1);
            if (last !== undefined) {
                last.comments.push(token.text);
            } else if (stack.length === 0) {
                game.comments.push(token.text);
            } else {
                pending.push(token.text);
            }
        } else if (token.kind === 'mark') {
            line.at(-1)?.marks.push(Number(token.text));
        } else if (token.kind === 'open') {
            const last = line.at(-1);
            if (last === undefined) {
                throw reader.fault('a variation stands after the move that it replaces', token.at);
            }
            stack.push({ line, position: position!, at: token.at });
            line = [];
            last.variations.push(line);
            position = last.before;
        } else if (token.kind === 'close') {
            const outer = stack.pop();
            if (outer === undefined) {
                throw reader.fault('this variation was not begun', token.at);
            }
            ({ line, position } = outer);
        } else if (token.kind === 'result') {
            if (stack.length > 0) {
                throw reader.fault('this variation does not end', stack.at(-1)!.at);
            }
            game.result = token.text;
            break;
        } else if (token.kind === 'move') {
            const move = position!.find(token.text);
            if (move === null) {
                const number = `${position!.moveNumber}${position!.turn === 'w' ? '.' : '...'}`;
                throw reader.fault(
                    `${number} ${token.text} is no legal move for ${position!.turn === 'w' ? 'White' : 'Black'} (${position!.fen})`,
                    token.at);
            }
            const after: ChessPosition = position!.play(move);
            line.push({ move, before: position!, after, commentsBefore: pending, comments: [], marks: [], variations: [] });
            pending = [];
            position = after;
        }
    }
    if (!any) {
        return null;
    }
    if (position === null) {
        try {
            game.start = startOf(game.tags);
        } catch (error) {
            throw error instanceof RulesError ? reader.fault(`the FEN of the game: ${error.message}`, fenAt) : error;
        }
    }
    const told = game.tags.get('Result');
    if (game.result === '*' && told !== undefined && Results.includes(told)) {
        game.result = told;
    }
    return game;
}

/** All games of a text. Throws PgnError at the first fault. */
export function parsePgn(text: string): Game[] {
    const games: Game[] = [];
    const reader = new Reader(text);
    for (let game = readGame(reader); game !== null; game = readGame(reader)) {
        games.push(game);
    }
    return games;
}

/** Each game of a text, or its fault with its own text, so that one bad game spoils no other. */
export function* parseGames(text: string): Generator<{ text: string; game?: Game; error?: PgnError }> {
    const reader = new Reader(text);
    for (;;) {
        const start = reader.at;
        try {
            const game = readGame(reader);
            if (game === null) {
                return;
            }
            yield { text: text.slice(start, reader.at), game };
        } catch (error) {
            if (!(error instanceof PgnError)) {
                throw error;
            }
            // The next game begins with a tag after an empty line that follows moves.
            const search = /\n[ \t]*\r?\n(?=\[)/g;
            search.lastIndex = Math.max(reader.at, start + 1);
            const place = search.exec(text);
            reader.at = place === null ? text.length : place.index + place[0].length;
            yield { text: text.slice(start, reader.at), error };
        }
    }
}

/** A place in a game for a new comment: braces would end it early. */
function commentText(text: string): string {
    return `{${text.replace(/[{}]/g, (brace) => (brace === '{' ? '(' : ')'))}}`;
}

function writeLine(plies: readonly Ply[], words: string[]): void {
    let numberNeeded = true;
    for (const ply of plies) {
        for (const comment of ply.commentsBefore) {
            words.push(commentText(comment));
            numberNeeded = true;
        }
        if (ply.before.turn === 'w') {
            words.push(`${ply.before.moveNumber}.`);
        } else if (numberNeeded) {
            words.push(`${ply.before.moveNumber}...`);
        }
        words.push(ply.move.san);
        numberNeeded = false;
        for (const mark of ply.marks) {
            words.push(`$${mark}`);
        }
        for (const comment of ply.comments) {
            words.push(commentText(comment));
            numberNeeded = true;
        }
        for (const variation of ply.variations) {
            const inner: string[] = [];
            writeLine(variation, inner);
            if (inner.length > 0) {
                words.push(`(${inner.shift()!}`, ...inner.slice(0, -1));
                words.push(inner.length > 0 ? `${inner.at(-1)!})` : `${words.pop()!})`);
                numberNeeded = true;
            }
        }
    }
}

/** The game as PGN, in lines of at most 80 letters where words allow it. */
export function writePgn(game: Game): string {
    const tags = [...game.tags].map(([name, value]) => `[${name} "${value.replace(/(["\\])/g, '\\$1')}"]`);
    const words = game.comments.map(commentText);
    writeLine(game.plies, words);
    words.push(game.result);
    const lines: string[] = [];
    let line = '';
    // What a program reads out of a comment, "[%eval 0.25]", stays on one line: many look for its blank.
    for (const word of words.join(' ').match(/(?:\[%\w+ [^\]\n]*\]|\S)+/g) ?? []) {
        if (line !== '' && line.length + 1 + word.length > 80) {
            lines.push(line);
            line = '';
        }
        line += (line === '' ? '' : ' ') + word;
    }
    lines.push(line);
    return `${tags.join('\n')}${tags.length > 0 ? '\n\n' : ''}${lines.join('\n')}\n`;
}
