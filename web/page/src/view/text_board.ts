/** The board for those who cannot see it: a table of its squares and the pieces of each side, hidden from sight. */
import type { Color, PieceSymbol } from 'chess.js';

import type { ChessPosition } from '../../../package/src/rules.js';

const Names: Record<PieceSymbol, string> = { k: 'king', q: 'queen', r: 'rook', b: 'bishop', n: 'knight', p: 'pawn' };
const Sides: Record<Color, string> = { w: 'White', b: 'Black' };
const Files = [...'abcdefgh'];
const Ranks = [...'87654321'];

/** The pieces of a side in the order of their worth: "king e1, queen d1, rooks a1 h1, ... pawns a2 b2". */
export function piecesText(position: ChessPosition, color: Color): string {
    return (Object.keys(Names) as PieceSymbol[]).flatMap((type) => {
        const squares = Files.flatMap((file) => Ranks.map((rank) => file + rank)).filter((square) => {
            const piece = position.pieceAt(square);
            return piece?.type === type && piece.color === color;
        }).sort();
        return squares.length === 0 ? [] : [`${Names[type]}${squares.length > 1 ? 's' : ''} ${squares.join(' ')}`];
    }).join(', ');
}

export class TextBoardView {
    readonly #squares = new Map<string, HTMLElement>();
    readonly #pieces: Record<Color, HTMLElement>;

    constructor(element: HTMLElement) {
        const make = <Name extends keyof HTMLElementTagNameMap>(parent: HTMLElement, name: Name, text = ''): HTMLElementTagNameMap[Name] => {
            const made = document.createElement(name);
            made.textContent = text;
            parent.append(made);
            return made;
        };
        const heading = (parent: HTMLElement, text: string, scope: string): void => make(parent, 'th', text).setAttribute('scope', scope);
        make(element, 'h2', 'The position in words');
        this.#pieces = { w: make(element, 'p'), b: make(element, 'p') };
        const table = make(element, 'table');
        make(table, 'caption', 'The board');
        const top = make(table, 'tr');
        make(top, 'td');
        Files.forEach((file) => heading(top, file, 'col'));
        for (const rank of Ranks) {
            const row = make(table, 'tr');
            heading(row, rank, 'row');
            Files.forEach((file) => this.#squares.set(file + rank, make(row, 'td')));
        }
    }

    show(position: ChessPosition): void {
        for (const [square, cell] of this.#squares) {
            const piece = position.pieceAt(square);
            cell.textContent = piece === undefined ? '' : `${Sides[piece.color]} ${Names[piece.type]}`;
        }
        for (const color of ['w', 'b'] as const) {
            this.#pieces[color].textContent = `${Sides[color]}${position.turn === color ? ', to move' : ''}: ${piecesText(position, color)}.`;
        }
    }
}
