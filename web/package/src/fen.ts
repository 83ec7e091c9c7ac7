/**
 * Checks a FEN before the engine gets it: the engine itself takes any text and makes the best of it.
 */

const Pieces = 'pnbrqkPNBRQK';

/** What is wrong with a FEN, and where; null when it can be played from. */
export function checkFen(fen: string): string | null {
    const fields = fen.trim().split(/\s+/);
    const ranks = fields[0]!.split('/');
    if (fields[0] === '' || /[\r\n]/.test(fen.trim())) {
        return 'A FEN is one line that begins with the board';
    }
    if (ranks.length !== 8) {
        return `The board of a FEN has 8 ranks divided by "/"; here there are ${ranks.length}: "${fields[0]}"`;
    }
    for (const [index, rank] of ranks.entries()) {
        let squares = 0;
        for (const [place, letter] of [...rank].entries()) {
            if (/[1-8]/.test(letter)) {
                squares += Number(letter);
            } else if (Pieces.includes(letter)) {
                squares += 1;
            } else {
                return `Rank ${8 - index} of the board, letter ${place + 1}: "${letter}" is no piece and no number of empty squares`;
            }
        }
        if (squares !== 8) {
            return `Rank ${8 - index} of the board ("${rank}") has ${squares} squares instead of 8`;
        }
    }
    for (const [king, name] of [['K', 'White'], ['k', 'Black']] as const) {
        const count = fields[0]!.split(king).length - 1;
        if (count !== 1) {
            return `${name} has ${count === 0 ? 'no king' : `${count} kings`}`;
        }
    }
    if (/[pP]/.test(ranks[0]!) || /[pP]/.test(ranks[7]!)) {
        return `A pawn stands on rank ${/[pP]/.test(ranks[0]!) ? 8 : 1}`;
    }
    const [, side, castling, enPassant, halfMoves, move] = fields;
    if (side !== undefined && !/^[wb]$/.test(side)) {
        return `The second field says whose move it is, "w" or "b"; here it is "${side}"`;
    }
    if (castling !== undefined && !/^(-|[KQkqA-Ha-h]{1,4})$/.test(castling)) {
        return `The third field is the castling rights, as "KQkq" or "-"; here it is "${castling}"`;
    }
    if (enPassant !== undefined && !/^(-|[a-h][36])$/.test(enPassant)) {
        return `The fourth field is the square of en passant, as "e3" or "-"; here it is "${enPassant}"`;
    }
    if (halfMoves !== undefined && !/^\d+$/.test(halfMoves)) {
        return `The fifth field counts half-moves; here it is "${halfMoves}"`;
    }
    if (move !== undefined && !/^\d+$/.test(move)) {
        return `The sixth field is the number of the move; here it is "${move}"`;
    }
    return null;
}
