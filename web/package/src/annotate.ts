/**
 * Annotation of a game: an evaluation for each position, a better line where a move gives much
 * away, and the moments that decided the game.
 */
import type { Engine } from './engine.js';
import type { Game, Ply } from './pgn.js';
import { lineText, type ChessPosition } from './rules.js';
import type { Info, Limits, Score } from './uci.js';

/** The engine's word on one position, from White's view. */
export interface Evaluation {
    /** Pawns; a mate counts as far outside the range of evaluations. */
    pawns: number;
    mate?: number; // moves; below 0: Black mates
    best: string | null; // in UCI
    line: string[];
}

/** A move after which the chances of the side that made it are clearly worse. */
export interface Moment {
    ply: number; // counted from 0
    kind: 'inaccuracy' | 'mistake' | 'blunder';
    /** Chances lost, 0 to 1. */
    loss: number;
}

export interface Annotation {
    /** Before the first move and after each. */
    evaluations: Evaluation[];
    moments: Moment[];
}

const MatePawns = 100;

/** Scores above this are mates by their distance; the engine writes them as centipawns to the mate score. */
export function evaluationOf(position: ChessPosition, score: Score | undefined, line: string[], best: string | null): Evaluation {
    const sign = position.turn === 'w' ? 1 : -1;
    if (score === undefined) {
        return { pawns: 0, best, line };
    }
    if (score.type === 'mate') {
        const wins = score.value > 0;
        return { pawns: sign * (wins ? MatePawns : -MatePawns), mate: sign * score.value, best, line };
    }
    return { pawns: (sign * score.value) / 100, best, line };
}

/** The evaluation of a position in which the game has ended, or null. */
export function evaluationOfEnd(position: ChessPosition): Evaluation | null {
    const status = position.status();
    if (status === 'playing' || status === 'fifty moves') {
        return null;
    }
    const pawns = status !== 'checkmate' ? 0 : position.turn === 'w' ? -MatePawns : MatePawns;
    return { pawns, ...(status === 'checkmate' ? { mate: 0 } : {}), best: null, line: [] };
}

/**
 * White's chances, 0 to 1, by the usual logistic curve: one pawn is about 59 of 100 points, three
 * about 75.
 */
export function chances(pawns: number): number {
    return 1 / (1 + Math.exp(-0.368 * pawns));
}

const Kinds = [['blunder', 0.3], ['mistake', 0.2], ['inaccuracy', 0.1]] as const;

/** The moves that lost much. `evaluations` has one entry more than there are moves. */
export function findMoments(plies: readonly Ply[], evaluations: readonly Evaluation[]): Moment[] {
    const moments: Moment[] = [];
    for (const [index, ply] of plies.entries()) {
        const before = chances(evaluations[index]!.pawns);
        const after = chances(evaluations[index + 1]!.pawns);
        const loss = ply.before.turn === 'w' ? before - after : after - before;
        const kind = Kinds.find(([, least]) => loss >= least)?.[0];
        if (kind !== undefined && ply.move.uci !== evaluations[index]!.best) {
            moments.push({ ply: index, kind, loss });
        }
    }
    return moments;
}

/** Asks the engine about every position of the main line. `onProgress` gets 0 to 1. */
export async function analyseGame(
    engine: Engine, game: Game, limits: Limits, onProgress: (done: number) => void = () => {},
): Promise<Annotation> {
    const positions = [game.start, ...game.plies.map((ply) => ply.after)];
    const evaluations: Evaluation[] = [];
    await engine.newGame();
    if (game.start.chess960 && engine.options.has('UCI_Chess960')) {
        await engine.setOption('UCI_Chess960', true);
    }
    for (const [index, position] of positions.entries()) {
        const end = evaluationOfEnd(position);
        if (end === null) {
            let last: Info | undefined;
            for await (const info of engine.analyse({
                fen: game.start.fen, moves: game.plies.slice(0, index).map((ply) => ply.move.uci), ...limits,
            })) {
                last = info;
            }
            evaluations.push(evaluationOf(position, last?.score, last?.pv ?? [], last?.pv[0] ?? null));
        } else {
            evaluations.push(end);
        }
        onProgress((index + 1) / positions.length);
    }
    if (game.start.chess960 && engine.options.has('UCI_Chess960')) {
        await engine.setOption('UCI_Chess960', false);
    }
    return { evaluations, moments: findMoments(game.plies, evaluations) };
}

/** An evaluation as `[%eval ...]` has it. */
export function evalText(evaluation: Evaluation): string {
    return evaluation.mate === undefined || evaluation.mate === 0
        ? evaluation.pawns.toFixed(2) : `#${evaluation.mate}`;
}

const Marks = { inaccuracy: 6, mistake: 2, blunder: 4 } as const;
/** What is written here, from an earlier run or by others. */
const Evaluations = /\[%eval [^\]]*\]\s*(?:(?:Inaccuracy|Mistake|Blunder)\.(?: Better was [^()]*\([^()]*\)\.)?)?/g;

/** Writes the annotation into the game, in place of older evaluations; everything else in it stays. */
export function addAnnotation(game: Game, { evaluations, moments }: Annotation, title: string): void {
    game.tags.set('Annotator', title);
    const byPly = new Map(moments.map((moment) => [moment.ply, moment]));
    for (const [index, ply] of game.plies.entries()) {
        const evaluation = evaluations[index + 1]!;
        ply.comments = ply.comments.map((text) => text.replace(Evaluations, '').trim()).filter((text) => text !== '');
        const parts = ply.after.status() === 'checkmate' ? [] : [`[%eval ${evalText(evaluation)}]`];
        const moment = byPly.get(index);
        if (moment !== undefined) {
            const before = evaluations[index]!;
            const better = lineText(ply.before, before.best === null ? before.line
                : before.line[0] === before.best ? before.line : [before.best]);
            parts.push(`${moment.kind[0]!.toUpperCase()}${moment.kind.slice(1)}.`);
            if (better !== '') {
                parts.push(`Better was ${better} (${evalText(before)}).`);
            }
            if (!ply.marks.some((mark) => mark <= 6)) {
                ply.marks.push(Marks[moment.kind]);
            }
        }
        if (parts.length > 0) {
            ply.comments.unshift(parts.join(' '));
        }
    }
}
