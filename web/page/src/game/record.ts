/** The game on the page: its moves, the place that is shown, and how it ends. */
import { ChessPosition, type Move } from '../../../package/src/rules.js';
import { writePgn, type Game } from '../../../package/src/pgn.js';

export interface Outcome {
    result: '1-0' | '0-1' | '1/2-1/2';
    reason: string;
}

export class GameRecord {
    readonly start: ChessPosition;
    readonly tags: Map<string, string>;
    /** Ended by something other than the board: a clock, for example. */
    ended: Outcome | null = null;
    #moves: { move: Move; after: ChessPosition }[] = [];
    #place = 0; // moves made in the position that is looked at

    constructor(start: ChessPosition = ChessPosition.start(), tags: Iterable<readonly [string, string]> = []) {
        this.start = start;
        this.tags = new Map(tags);
    }

    static fromGame(game: Game): GameRecord {
        const record = new GameRecord(game.start, game.tags);
        for (const { move } of game.plies) {
            record.play(move);
        }
        return record;
    }

    get length(): number {
        return this.#moves.length;
    }

    get place(): number {
        return this.#place;
    }

    get isAtEnd(): boolean {
        return this.#place === this.#moves.length;
    }

    /** The position that is looked at. */
    get position(): ChessPosition {
        return this.positionAt(this.#place);
    }

    get lastMove(): Move | null {
        return this.#moves[this.#place - 1]?.move ?? null;
    }

    positionAt(place: number): ChessPosition {
        return place === 0 ? this.start : this.#moves[place - 1]!.after;
    }

    moves(): readonly Move[] {
        return this.#moves.map(({ move }) => move);
    }

    /** The moves up to a place, for the engine. */
    movesTo(place = this.#place): string[] {
        return this.#moves.slice(0, place).map(({ move }) => move.uci);
    }

    goTo(place: number): void {
        this.#place = Math.max(0, Math.min(this.#moves.length, place));
    }

    /** Plays a legal move from the place that is looked at; what came after it is dropped. */
    play(move: Move): void {
        const after = this.position.play(move);
        this.#moves.length = this.#place;
        this.#moves.push({ move, after });
        this.#place = this.#moves.length;
        this.ended = null;
    }

    takeBack(count: number): void {
        this.#moves.length = Math.max(0, this.#moves.length - count);
        this.#place = this.#moves.length;
        this.ended = null;
    }

    /** How the game ended, null while it goes on. Looks at its last position. */
    outcome(): Outcome | null {
        if (this.ended !== null) {
            return this.ended;
        }
        const last = this.positionAt(this.length);
        const status = last.status();
        if (status === 'checkmate') {
            return { result: last.turn === 'w' ? '0-1' : '1-0', reason: 'Checkmate' };
        }
        if (status !== 'playing') {
            const reasons = { 'stalemate': 'Stalemate', 'insufficient material': 'Nobody can mate', 'fifty moves': 'Fifty moves' };
            return { result: '1/2-1/2', reason: reasons[status] };
        }
        let seen = 0;
        for (let place = this.length; place >= 0; --place) {
            if (this.positionAt(place).key === last.key) {
                ++seen;
            }
        }
        return seen >= 3 ? { result: '1/2-1/2', reason: 'The position came three times' } : null;
    }

    pgn(): string {
        const tags = new Map(this.tags);
        const { chess960 } = this.start;
        const result = this.outcome()?.result ?? tags.get('Result') ?? '*';
        for (const [name, value] of [['Event', '?'], ['Site', '?'], ['Date', '????.??.??'], ['Round', '?'], ['White', '?'], ['Black', '?']] as const) {
            if (!tags.has(name)) {
                tags.set(name, value);
            }
        }
        tags.set('Result', result);
        if (chess960) {
            tags.set('Variant', 'Chess960');
        }
        if (this.start.fen !== ChessPosition.start().fen) {
            tags.set('SetUp', '1');
            tags.set('FEN', this.start.fen);
        }
        return writePgn({
            tags, start: this.start, comments: [], result,
            plies: this.#moves.map(({ move, after }, index) => ({
                move, before: this.positionAt(index), after, commentsBefore: [], comments: [], marks: [], variations: [],
            })),
        });
    }
}
