/**
 * Positions and moves of chess and Chess960, for reading and writing games.
 *
 * chess.js knows the rules but castling in Chess960, so castling is done here for both games: the
 * rights are kept beside a chess.js board that has none. Positions are values: `play` makes a new one.
 */
import { Chess, type Color, type PieceSymbol, type Square } from 'chess.js';

import { checkFen } from './fen.js';

export const StartFen = 'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1';

/** A move that is legal in the position that gave it. */
export interface Move {
    from: Square;
    /** Where the piece goes; of a castling king, where he ends. */
    to: Square;
    piece: PieceSymbol;
    captured?: PieceSymbol;
    promotion?: PieceSymbol;
    /** The file of the rook that castles, and the side. */
    castling?: { side: 'k' | 'q'; rook: Square };
    /** With check and mate marks. */
    san: string;
    /** As the engine writes it: in Chess960 castling is the king taking his rook. */
    uci: string;
}

export type Status = 'playing' | 'checkmate' | 'stalemate' | 'insufficient material' | 'fifty moves';

interface Right {
    color: Color;
    side: 'k' | 'q';
    rook: Square;
}

/** A text that is no position or no move. The message says what and where. */
export class RulesError extends Error {
    override name = 'RulesError';
}

const Files = 'abcdefgh';

function fileOf(square: string): number {
    return Files.indexOf(square[0]!);
}

function squareAt(file: number, rank: string): Square {
    return (Files[file]! + rank) as Square;
}

function between(first: number, second: number): number[] {
    const files: number[] = [];
    for (let file = Math.min(first, second); file <= Math.max(first, second); ++file) {
        files.push(file);
    }
    return files;
}

/** The king of that colour on the rank of its rooks, or null. */
function homeKing(board: Chess, color: Color): Square | null {
    const rank = color === 'w' ? '1' : '8';
    for (let file = 0; file < 8; ++file) {
        const piece = board.get(squareAt(file, rank));
        if (piece?.type === 'k' && piece.color === color) {
            return squareAt(file, rank);
        }
    }
    return null;
}

function readRights(board: Chess, field: string): Right[] {
    const rights: Right[] = [];
    for (const letter of field === '-' ? '' : field) {
        const color: Color = letter === letter.toUpperCase() ? 'w' : 'b';
        const rank = color === 'w' ? '1' : '8';
        const king = homeKing(board, color);
        const lower = letter.toLowerCase();
        const rooks = [...Files].map((_, file) => squareAt(file, rank)).filter((square) => {
            const piece = board.get(square);
            return piece?.type === 'r' && piece.color === color;
        });
        let rook: Square | undefined;
        if (king !== null && (lower === 'k' || lower === 'q')) {
            // The outermost rook of that side.
            rook = lower === 'k'
                ? rooks.filter((square) => fileOf(square) > fileOf(king)).at(-1)
                : rooks.find((square) => fileOf(square) < fileOf(king));
        } else if (king !== null) {
            rook = rooks.find((square) => square[0] === lower);
        }
        if (king === null || rook === undefined) {
            throw new RulesError(`The castling right "${letter}" has no king and rook to it`);
        }
        rights.push({ color, side: fileOf(rook) > fileOf(king) ? 'k' : 'q', rook });
    }
    return rights;
}

export class ChessPosition {
    readonly chess960: boolean;
    readonly #board: Chess; // without castling rights, never changed
    readonly #rights: readonly Right[];
    #moves: Move[] | null = null;

    private constructor(board: Chess, rights: readonly Right[], chess960: boolean) {
        this.#board = board;
        this.#rights = rights;
        this.chess960 = chess960;
    }

    static start(): ChessPosition {
        return ChessPosition.fromFen(StartFen);
    }

    /**
     * `chess960`: castling is written as in Chess960. Detected where kings and rooks are not at home
     * or the rights are written with files.
     */
    static fromFen(text: string, chess960 = false): ChessPosition {
        const fault = checkFen(text);
        if (fault !== null) {
            throw new RulesError(fault);
        }
        const fields = text.trim().split(/\s+/);
        const castling = fields[2] ?? '-';
        const board = new Chess(
            [fields[0], fields[1] ?? 'w', '-', fields[3] ?? '-', fields[4] ?? '0', fields[5] === '0' ? '1' : fields[5] ?? '1'].join(' '),
            { skipValidation: true });
        if (board.isAttacked(board.findPiece({ type: 'k', color: other(board.turn()) })[0]!, board.turn())) {
            throw new RulesError(`${board.turn() === 'w' ? 'White' : 'Black'} could take the king`);
        }
        const rights = readRights(board, castling);
        const isOrdinary = rights.every((right) => homeKing(board, right.color)![0] === 'e' &&
            right.rook[0] === (right.side === 'k' ? 'h' : 'a'));
        return new ChessPosition(board, rights, chess960 || !isOrdinary || /[A-HA-h]/.test(castling.replace(/[KQkq]/g, '')));
    }

    get turn(): Color {
        return this.#board.turn();
    }

    /** The number of the move, from 1. */
    get moveNumber(): number {
        return this.#board.moveNumber();
    }

    get fen(): string {
        const fields = this.#board.fen().split(' ');
        fields[2] = this.#castlingField();
        return fields.join(' ');
    }

    /** What must be equal for a repetition. */
    get key(): string {
        return this.fen.split(' ').slice(0, 4).join(' ');
    }

    get inCheck(): boolean {
        return this.#board.inCheck();
    }

    pieceAt(square: string): { type: PieceSymbol; color: Color } | undefined {
        return this.#board.get(square as Square);
    }

    legalMoves(): readonly Move[] {
        if (this.#moves === null) {
            const moves: Move[] = this.#board.moves({ verbose: true }).map((move) => ({
                from: move.from,
                to: move.to,
                piece: move.piece,
                ...(move.captured === undefined ? {} : { captured: move.captured }),
                ...(move.promotion === undefined ? {} : { promotion: move.promotion }),
                san: move.san,
                uci: move.from + move.to + (move.promotion ?? ''),
            }));
            for (const right of this.#rights) {
                const move = right.color === this.turn ? this.#castle(right) : null;
                if (move !== null) {
                    moves.push(move);
                }
            }
            this.#moves = moves;
        }
        return this.#moves;
    }

    status(): Status {
        if (this.legalMoves().length === 0) {
            return this.inCheck ? 'checkmate' : 'stalemate';
        }
        if (this.#board.isInsufficientMaterial()) {
            return 'insufficient material';
        }
        return Number(this.#board.fen().split(' ')[4]) >= 100 ? 'fifty moves' : 'playing';
    }

    /** The legal move of that text: UCI, SAN with or without marks, castling with letters or zeros. */
    find(text: string): Move | null {
        const bare = text.replace(/[+#!?]+$/, '').replace(/0/g, 'O').replace(/=(?=[QRBNqrbn]$)/, '');
        const moves = this.legalMoves();
        const plain = (san: string): string => san.replace(/[+#=]/g, '');
        return moves.find((move) => plain(move.san) === bare) ??
            moves.find((move) => move.uci === text.toLowerCase()) ??
            // A castling king may be written by where he goes, if no other move is meant.
            moves.find((move) => move.castling !== undefined &&
                (text === move.from + move.to || text === move.from + move.castling.rook)) ??
            // More letters than needed, as in "Ng1f3".
            moves.find((move) => {
                const match = /^([NBRQKP]?)([a-h]?[1-8]?)[x-]?([a-h][1-8])([QRBNqrbn]?)$/.exec(bare);
                return match !== null && (match[1] === '' ? 'p' : match[1]!.toLowerCase()) === move.piece &&
                    match[3] === move.to && (match[4] ?? '').toLowerCase() === (move.promotion ?? '') &&
                    match[2] === move.from && move.castling === undefined;
            }) ?? null;
    }

    /** The position after a move of `legalMoves` or `find`. */
    play(move: Move): ChessPosition {
        if (move.castling === undefined) {
            const board = new Chess(this.#board.fen(), { skipValidation: true });
            board.move({ from: move.from, to: move.to, ...(move.promotion === undefined ? {} : { promotion: move.promotion }) });
            const rights = this.#rights.filter((right) => right.rook !== move.from && right.rook !== move.to &&
                !(move.piece === 'k' && right.color === this.turn));
            return new ChessPosition(board, rights, this.chess960);
        }
        return new ChessPosition(this.#boardAfterCastling(move.from, move.castling.rook, move.castling.side),
            this.#rights.filter((right) => right.color !== this.turn), this.chess960);
    }

    #castlingField(): string {
        const letters = this.#rights.map((right) => {
            // The outermost rook, which "K" or "Q" would mean as well, is written plainly in ordinary chess only.
            const letter = this.chess960 ? right.rook[0]! : right.side;
            return right.color === 'w' ? letter.toUpperCase() : letter;
        });
        const order = this.chess960 ? 'HGFEDCBAhgfedcba' : 'KQkq';
        letters.sort((first, second) => order.indexOf(first) - order.indexOf(second));
        return letters.length === 0 ? '-' : letters.join('');
    }

    #boardAfterCastling(king: Square, rook: Square, side: 'k' | 'q'): Chess {
        const rank = king[1]!;
        const color = this.turn;
        const board = new Chess(this.#board.fen(), { skipValidation: true });
        board.remove(king);
        board.remove(rook);
        board.put({ type: 'k', color }, squareAt(side === 'k' ? 6 : 2, rank));
        board.put({ type: 'r', color }, squareAt(side === 'k' ? 5 : 3, rank));
        const fields = board.fen().split(' ');
        const halfMoves = Number(this.#board.fen().split(' ')[4]) + 1;
        const number = this.moveNumber + (color === 'b' ? 1 : 0);
        return new Chess(`${fields[0]} ${other(color)} - - ${halfMoves} ${number}`, { skipValidation: true });
    }

    #castle(right: Right): Move | null {
        const king = homeKing(this.#board, right.color);
        if (king === null || this.inCheck) {
            return null;
        }
        const rank = king[1]!;
        const kingTo = right.side === 'k' ? 6 : 2;
        const rookTo = right.side === 'k' ? 5 : 3;
        const path = [...between(fileOf(king), kingTo), ...between(fileOf(right.rook), rookTo)];
        const isFree = path.every((file) => {
            const square = squareAt(file, rank);
            return square === king || square === right.rook || this.#board.get(square) === undefined;
        });
        const enemy = other(right.color);
        if (!isFree || between(fileOf(king), kingTo).some((file) => squareAt(file, rank) !== king &&
            squareAt(file, rank) !== right.rook && this.#board.isAttacked(squareAt(file, rank), enemy))) {
            return null;
        }
        const after = this.#boardAfterCastling(king, right.rook, right.side);
        // The rook may have shielded the square to which the king goes.
        if (after.isAttacked(squareAt(kingTo, rank), enemy)) {
            return null;
        }
        const mark = after.isCheckmate() ? '#' : after.inCheck() ? '+' : '';
        return {
            from: king,
            to: squareAt(kingTo, rank),
            piece: 'k',
            castling: { side: right.side, rook: right.rook },
            san: (right.side === 'k' ? 'O-O' : 'O-O-O') + mark,
            uci: king + (this.chess960 ? right.rook : squareAt(kingTo, rank)),
        };
    }
}

export function other(color: Color): Color {
    return color === 'w' ? 'b' : 'w';
}

/** A line of moves in UCI as SAN with move numbers: "12. Nf3 d5 13. c4". Ends at a move that is not legal. */
export function lineText(position: ChessPosition, moves: readonly string[], most = 12): string {
    const words: string[] = [];
    let at = position;
    for (const text of moves.slice(0, most)) {
        const move = at.find(text);
        if (move === null) {
            break;
        }
        if (at.turn === 'w') {
            words.push(`${at.moveNumber}.`);
        } else if (words.length === 0) {
            words.push(`${at.moveNumber}...`);
        }
        words.push(move.san);
        at = at.play(move);
    }
    return words.join(' ');
}

/** One of the 960 starting positions by its number; 518 is the usual one. */
export function chess960Start(number: number): ChessPosition {
    const pieces: string[] = Array.from({ length: 8 }, () => '');
    let rest = number;
    const take = (count: number): number => {
        const value = rest % count;
        rest = Math.floor(rest / count);
        return value;
    };
    pieces[take(4) * 2 + 1] = 'b';
    pieces[take(4) * 2] = 'b';
    const free = (): number[] => pieces.flatMap((piece, file) => (piece === '' ? [file] : []));
    pieces[free()[take(6)]!] = 'q';
    const knights = [[0, 1], [0, 2], [0, 3], [0, 4], [1, 2], [1, 3], [1, 4], [2, 3], [2, 4], [3, 4]][rest % 10]!;
    const empty = free();
    for (const knight of knights) {
        pieces[empty[knight]!] = 'n';
    }
    const [left, middle, right] = free();
    pieces[left!] = 'r';
    pieces[middle!] = 'k';
    pieces[right!] = 'r';
    const row = pieces.join('');
    const rooks = Files[right!]! + Files[left!]!;
    return ChessPosition.fromFen(
        `${row}/pppppppp/8/8/8/8/PPPPPPPP/${row.toUpperCase()} w ${rooks.toUpperCase()}${rooks} - 0 1`, true);
}
