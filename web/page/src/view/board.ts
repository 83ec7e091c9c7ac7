/** The board: cm-chessboard with the rules of the game behind it. */
import { Chessboard, INPUT_EVENT_TYPE, BORDER_TYPE, type InputEvent } from 'cm-chessboard/src/Chessboard.js';
import { Accessibility } from 'cm-chessboard/src/extensions/accessibility/Accessibility.js';
import { Arrows, ARROW_TYPE } from 'cm-chessboard/src/extensions/arrows/Arrows.js';
import { Markers, MARKER_TYPE } from 'cm-chessboard/src/extensions/markers/Markers.js';
import { PromotionDialog } from 'cm-chessboard/src/extensions/promotion-dialog/PromotionDialog.js';
import type { Color } from 'chess.js';

import type { ChessPosition, Move } from '../../../package/src/rules.js';

export class BoardView {
    readonly #board: Chessboard;
    readonly #onMove: (move: Move) => void;
    #position: ChessPosition;

    constructor(element: HTMLElement, position: ChessPosition, onMove: (move: Move) => void) {
        this.#position = position;
        this.#onMove = onMove;
        const isQuiet = matchMedia('(prefers-reduced-motion: reduce)').matches;
        this.#board = new Chessboard(element, {
            position: position.fen,
            assetsUrl: 'board/',
            style: { borderType: BORDER_TYPE.none, animationDuration: isQuiet ? 0 : 150 },
            extensions: [
                { class: Markers, props: { autoMarkers: null } },
                { class: Arrows },
                { class: PromotionDialog, props: { language: 'en' } },
                { class: Accessibility, props: { language: 'en', keyboardMoveInput: true, movePieceForm: false, boardAsTable: false, piecesAsList: false } },
            ],
        });
        // The board itself reports a cancelled move only when the mouse cancelled it.
        element.addEventListener('keydown', (event) => {
            if (event.key === 'Escape') {
                this.#clearTargets();
            }
        });
    }

    get orientation(): Color {
        return this.#board.getOrientation();
    }

    turn(color: Color): void {
        void this.#board.setOrientation(color);
    }

    /** Shows a position and the move that led to it, and takes moves of that side; null: of nobody. */
    show(position: ChessPosition, last: Move | null, mover: Color | null): void {
        this.#position = position;
        void this.#board.setPosition(position.fen, true);
        this.#board.removeMarkers();
        for (const square of last === null ? [] : [last.from, this.#target(last)]) {
            this.#board.addMarker(MARKER_TYPE.square, square);
        }
        if (this.#board.isMoveInputEnabled()) {
            this.#board.disableMoveInput();
        }
        if (mover !== null && position.turn === mover) {
            this.#board.enableMoveInput((event) => this.#take(event), mover);
        }
    }

    /** Arrows of the best moves, best first. */
    showArrows(moves: readonly Move[]): void {
        this.#board.removeArrows();
        for (const [index, move] of moves.entries()) {
            this.#board.addArrow(index === 0 ? ARROW_TYPE.success! : ARROW_TYPE.secondary!, move.from, this.#target(move));
        }
    }

    /** In Chess960, where a king may castle onto the square on which he stands, castling is the king taking his rook. */
    #target(move: Move): string {
        return this.#position.chess960 && move.castling !== undefined ? move.castling.rook : move.to;
    }

    #clearTargets(): void {
        this.#board.removeMarkers(MARKER_TYPE.dot);
        this.#board.removeMarkers(MARKER_TYPE.bevel);
    }

    #movesBetween(from: string | undefined, to: string | undefined): Move[] {
        const moves = this.#position.legalMoves().filter((move) => move.from === from);
        const direct = moves.filter((move) => move.to === to && move.castling === undefined);
        // A king castles by going to his new square or by taking his rook.
        return direct.length > 0 ? direct
            : moves.filter((move) => move.castling !== undefined && (move.castling.rook === to || move.to === to));
    }

    #take(event: InputEvent): boolean | void {
        if (event.type === INPUT_EVENT_TYPE.moveInputStarted) {
            const from = event.squareFrom ?? event.square;
            const moves = this.#position.legalMoves().filter((move) => move.from === from);
            this.#clearTargets();
            for (const move of moves) {
                this.#board.addMarker(move.captured === undefined ? MARKER_TYPE.dot! : MARKER_TYPE.bevel!, this.#target(move));
            }
            return moves.length > 0;
        }
        if (event.type === INPUT_EVENT_TYPE.validateMoveInput) {
            const moves = this.#movesBetween(event.squareFrom, event.squareTo);
            if (moves.length === 0) {
                return false;
            }
            if (moves.length === 1) {
                setTimeout(() => this.#onMove(moves[0]!), 0);
            } else {
                const color = this.#position.turn;
                setTimeout(() => this.#board.showPromotionDialog(event.squareTo!, color, (result) => {
                    const piece = result?.piece?.[1];
                    const move = moves.find((each) => each.promotion === piece);
                    if (move === undefined) {
                        void this.#board.setPosition(this.#position.fen);
                    } else {
                        this.#onMove(move);
                    }
                }), 0);
            }
            return true;
        }
        if (event.type === INPUT_EVENT_TYPE.moveInputFinished || event.type === INPUT_EVENT_TYPE.moveInputCanceled) {
            this.#clearTargets();
        }
        return undefined;
    }
}
