/** How long the engine thinks in a game: the words of the page's choice as limits of a search. */
import { ChessClock } from '../game/clock.js';
import type { Limits } from '../../../package/src/uci.js';

export type Pace = { kind: 'move'; milliseconds: number } | { kind: 'clock'; base: number; increment: number };

/** "move 1000" or "clock 180 2", times of clocks in seconds. */
export function readPace(text: string): Pace {
    const [kind, first, second] = text.split(' ');
    return kind === 'clock'
        ? { kind, base: Number(first) * 1000, increment: Number(second) * 1000 }
        : { kind: 'move', milliseconds: Number(first) };
}

export function limitsOf(pace: Pace, clock: ChessClock | null, now: number): Limits {
    if (pace.kind === 'move' || clock === null) {
        return { movetime: pace.kind === 'move' ? pace.milliseconds : 1000 };
    }
    // A clock that stands at zero would be none.
    return {
        wtime: Math.max(1, clock.left('w', now)), btime: Math.max(1, clock.left('b', now)),
        winc: clock.increment, binc: clock.increment,
    };
}
