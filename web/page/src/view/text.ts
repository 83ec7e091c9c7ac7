/** Figures of the engine as words. Pure functions. */
import type { Info, Score } from '../../../package/src/uci.js';
import { lineText, type ChessPosition } from '../../../package/src/rules.js';

/** "+0.35", "-1.20", "mate in 3", from White's view. */
export function scoreText(score: Score | undefined, turn: 'w' | 'b'): string {
    if (score === undefined) {
        return '?';
    }
    const value = turn === 'w' ? score.value : -score.value;
    if (score.type === 'mate') {
        return `#${value}`;
    }
    return `${value > 0 ? '+' : value < 0 ? '−' : ''}${(Math.abs(value) / 100).toFixed(2)}`;
}

/** Pawns from White's view for a graph; mates at its edge. */
export function pawnsOf(score: Score | undefined, turn: 'w' | 'b'): number | null {
    if (score === undefined) {
        return null;
    }
    const value = turn === 'w' ? score.value : -score.value;
    return score.type === 'mate' ? (value > 0 ? 10 : -10) : Math.max(-10, Math.min(10, value / 100));
}

function short(count: number): string {
    return count >= 1e9 ? `${(count / 1e9).toFixed(1)} G` : count >= 1e6 ? `${(count / 1e6).toFixed(1)} M`
        : count >= 1e3 ? `${Math.round(count / 1e3)} k` : String(count);
}

export function figuresText(info: Info): string {
    const parts = [`Depth ${info.depth ?? 0}`];
    if (info.nodes !== undefined) {
        parts.push(`${short(info.nodes)} nodes`);
    }
    if (info.nps !== undefined) {
        parts.push(`${short(info.nps)} a second`);
    }
    if (info.tbhits !== undefined && info.tbhits > 0) {
        parts.push(`${short(info.tbhits)} table hits`);
    }
    return parts.join(', ');
}

export function pvText(position: ChessPosition, info: Info): string {
    return lineText(position, info.pv, 12);
}
