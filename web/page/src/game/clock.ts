/** Two chess clocks. Times are milliseconds; the caller supplies the time of day. */
import type { Color } from 'chess.js';

export class ChessClock {
    readonly increment: number;
    readonly #left: Record<Color, number>;
    #running: { color: Color; since: number } | null = null;

    constructor(base: number, increment: number) {
        this.#left = { w: base, b: base };
        this.increment = increment;
    }

    left(color: Color, now: number): number {
        const spent = this.#running?.color === color ? now - this.#running.since : 0;
        return Math.max(0, this.#left[color] - spent);
    }

    /** Starts the clock of that side and stops the other, who gets the increment for the move. */
    press(next: Color, now: number): void {
        const mover = this.#running?.color;
        this.stop(now);
        if (mover !== undefined && mover !== next) {
            this.#left[mover] += this.increment;
        }
        this.#running = { color: next, since: now };
    }

    stop(now: number): void {
        if (this.#running !== null) {
            const { color } = this.#running;
            this.#left[color] = this.left(color, now);
            this.#running = null;
        }
    }

    /** Who has overstepped the time; null: nobody. */
    fallen(now: number): Color | null {
        return this.left('w', now) === 0 ? 'w' : this.left('b', now) === 0 ? 'b' : null;
    }
}

/** 3:05, and tenths below twenty seconds. */
export function clockText(milliseconds: number): string {
    const seconds = milliseconds / 1000;
    if (seconds < 20) {
        return `0:${(Math.floor(seconds * 10) / 10).toFixed(1).padStart(4, '0')}`;
    }
    return `${Math.floor(seconds / 60)}:${String(Math.floor(seconds % 60)).padStart(2, '0')}`;
}
