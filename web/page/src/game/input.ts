/** What people paste, drop or open: a FEN, or one game or more in PGN. */
import { parsePgn, PgnError } from '../../../package/src/pgn.js';
import { ChessPosition, RulesError } from '../../../package/src/rules.js';
import { GameRecord } from './record.js';

export class InputError extends Error {}

/** The games of the text; a FEN is a game without moves. Throws InputError with what is wrong and where. */
export function readGames(text: string): GameRecord[] {
    const trimmed = text.trim();
    if (trimmed === '') {
        throw new InputError('There is nothing to load: paste a FEN or a PGN');
    }
    // Only a FEN has ranks divided by slashes before its first blank.
    if (/^[^\s[{]*\/[^\s]*\/[^\s]*/.test(trimmed) && !/^1\/2-1\/2/.test(trimmed)) {
        try {
            return [new GameRecord(ChessPosition.fromFen(trimmed.replace(/\s*;[^]*$/, '')))];
        } catch (error) {
            throw error instanceof RulesError ? new InputError(`This FEN cannot be used. ${error.message}.`) : error;
        }
    }
    try {
        const games = parsePgn(text);
        if (games.length === 0 || games.every((game) => game.plies.length === 0 && game.tags.size === 0)) {
            throw new InputError('This is neither a FEN nor a PGN: no move and no tag was found');
        }
        return games.map((game) => GameRecord.fromGame(game));
    } catch (error) {
        throw error instanceof PgnError ? new InputError(`This PGN cannot be read: ${error.message}.`) : error;
    }
}
