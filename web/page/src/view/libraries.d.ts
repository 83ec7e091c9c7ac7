/* cm-chessboard brings no types; these are the parts that the page uses. */
declare module 'cm-chessboard/src/Chessboard.js' {
    export const COLOR: { white: 'w'; black: 'b' };
    export const BORDER_TYPE: { none: string; thin: string; frame: string };
    export const INPUT_EVENT_TYPE: Record<'moveInputStarted' | 'validateMoveInput' | 'moveInputFinished' | 'moveInputCanceled', string>;
    export interface InputEvent {
        type: string;
        squareFrom?: string;
        squareTo?: string;
        square?: string;
    }
    export class Chessboard {
        constructor(element: HTMLElement, options: object);
        setPosition(fen: string, animated?: boolean): Promise<void>;
        setOrientation(color: 'w' | 'b', animated?: boolean): Promise<void>;
        getOrientation(): 'w' | 'b';
        enableMoveInput(handler: (event: InputEvent) => boolean | void, color?: 'w' | 'b'): void;
        disableMoveInput(): void;
        isMoveInputEnabled(): boolean;
        // by extensions
        addMarker(type: object, square: string): void;
        removeMarkers(type?: object): void;
        addArrow(type: object, from: string, to: string): void;
        removeArrows(): void;
        showPromotionDialog(square: string, color: 'w' | 'b', done: (result: { piece?: string } | null) => void): void;
    }
}
declare module 'cm-chessboard/src/extensions/markers/Markers.js' {
    export const Markers: unknown;
    export const MARKER_TYPE: Record<'square' | 'dot' | 'bevel' | 'frame', object>;
}
declare module 'cm-chessboard/src/extensions/arrows/Arrows.js' {
    export const Arrows: unknown;
    export const ARROW_TYPE: Record<'success' | 'secondary' | 'info' | 'warning' | 'danger', object>;
}
declare module 'cm-chessboard/src/extensions/promotion-dialog/PromotionDialog.js' {
    export const PromotionDialog: unknown;
}
declare module 'cm-chessboard/src/extensions/accessibility/Accessibility.js' {
    export const Accessibility: unknown;
}
