/**
 * The lines of the engine as data. Pure functions: no engine, no worker.
 */

/** A score from the view of the side to move. */
export type Score =
    | { type: 'cp'; value: number } // hundredths of a pawn
    | { type: 'mate'; value: number }; // moves; below 0: the side to move is mated

/** One `info` line with figures. What a line does not have is undefined. */
export interface Info {
    depth?: number;
    seldepth?: number;
    multipv: number; // 1 for the best line, even when only one is asked for
    score?: Score;
    bound?: 'lower' | 'upper'; // the score is only a bound
    time?: number; // milliseconds
    nodes?: number;
    nps?: number;
    hashfull?: number; // thousandths
    tbhits?: number;
    pv: string[]; // moves in the notation of UCI
    currmove?: string;
    currmovenumber?: number;
}

/** An option as the engine describes it. */
export interface OptionInfo {
    name: string;
    type: 'spin' | 'check' | 'string' | 'combo' | 'button';
    default: string;
    min?: number;
    max?: number;
    vars: string[];
}

const Numbers = ['depth', 'seldepth', 'time', 'nodes', 'nps', 'hashfull', 'tbhits', 'currmovenumber'] as const;

/** The figures of an `info` line; null for every other line, `info string` included. */
export function parseInfo(line: string): Info | null {
    const words = line.split(' ').filter((word) => word !== '');
    if (words[0] !== 'info' || words[1] === 'string') {
        return null;
    }
    const info: Info = { multipv: 1, pv: [] };
    for (let at = 1; at < words.length; ++at) {
        const word = words[at]!;
        const number = Number(words[at + 1]);
        if ((Numbers as readonly string[]).includes(word)) {
            info[word as (typeof Numbers)[number]] = number;
            ++at;
        } else if (word === 'multipv') {
            info.multipv = number;
            ++at;
        } else if (word === 'currmove') {
            info.currmove = words[++at]!;
        } else if (word === 'score' && (words[at + 1] === 'cp' || words[at + 1] === 'mate')) {
            info.score = { type: words[at + 1] as 'cp' | 'mate', value: Number(words[at + 2]) };
            at += 2;
        } else if (word === 'lowerbound') {
            info.bound = 'lower';
        } else if (word === 'upperbound') {
            info.bound = 'upper';
        } else if (word === 'pv') {
            info.pv = words.slice(at + 1);
            break;
        } else if (['currline', 'refutation'].includes(word)) {
            break; // the rest is moves of something else
        }
    }
    return info;
}

/** The text of an `info string` line; null for every other line. */
export function parseInfoString(line: string): string | null {
    return line.startsWith('info string ') ? line.slice('info string '.length) : null;
}

/** The moves of a `bestmove` line; null for every other line. */
export function parseBestMove(line: string): { bestmove: string; ponder?: string } | null {
    const words = line.split(' ').filter((word) => word !== '');
    if (words[0] !== 'bestmove' || words[1] === undefined) {
        return null;
    }
    return words[2] === 'ponder' && words[3] !== undefined
        ? { bestmove: words[1], ponder: words[3] }
        : { bestmove: words[1] };
}

/** An `option` line; null for every other line. Names and values may hold blanks. */
export function parseOption(line: string): OptionInfo | null {
    const match = /^option name (.+?) type (spin|check|string|combo|button)(.*)$/.exec(line);
    if (match === null) {
        return null;
    }
    const rest = match[3]!;
    const option: OptionInfo = {
        name: match[1]!,
        type: match[2] as OptionInfo['type'],
        default: / default (.*?)(?= min -?\d| var |$)/.exec(rest)?.[1] ?? '',
        vars: [...rest.matchAll(/ var (.*?)(?= var |$)/g)].map((entry) => entry[1]!),
    };
    const range = / min (-?\d+) max (-?\d+)/.exec(rest);
    if (range !== null) {
        option.min = Number(range[1]);
        option.max = Number(range[2]);
    }
    return option;
}

/** The limits of a `go`. Times are milliseconds. */
export interface Limits {
    depth?: number;
    nodes?: number;
    mate?: number;
    movetime?: number;
    wtime?: number;
    btime?: number;
    winc?: number;
    binc?: number;
    movestogo?: number;
    searchmoves?: string[];
    infinite?: boolean;
}

const LimitNumbers = ['depth', 'nodes', 'mate', 'movetime', 'wtime', 'btime', 'winc', 'binc', 'movestogo'] as const;

/** True when the search ends by itself. */
export function isLimited(limits: Limits): boolean {
    return limits.infinite !== true &&
        (['depth', 'nodes', 'mate', 'movetime', 'wtime', 'btime'] as const).some((key) => limits[key] !== undefined);
}

/** The `go` line. Without any limit the search is infinite. */
export function goLine(limits: Limits): string {
    const words = ['go'];
    for (const key of LimitNumbers) {
        const value = limits[key];
        if (value !== undefined) {
            if (!Number.isFinite(value)) {
                throw new TypeError(`${key} must be a number, not ${String(value)}`);
            }
            words.push(key, String(Math.round(value)));
        }
    }
    if (!isLimited(limits)) {
        words.push('infinite');
    }
    // Last: the engine takes every word after it for a move.
    if (limits.searchmoves !== undefined && limits.searchmoves.length > 0) {
        words.push('searchmoves', ...limits.searchmoves);
    }
    return words.join(' ');
}

/** The `position` line. */
export function positionLine(fen?: string, moves?: readonly string[]): string {
    const start = fen === undefined ? 'position startpos' : `position fen ${fen}`;
    return moves === undefined || moves.length === 0 ? start : `${start} moves ${moves.join(' ')}`;
}
