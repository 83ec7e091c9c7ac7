/** The list of moves: a button each, so that keyboard and screen reader go through them as text. */
import type { GameRecord } from '../game/record.js';

export class MovesView {
    readonly #list: HTMLElement;
    readonly #onPick: (place: number) => void;

    constructor(list: HTMLElement, onPick: (place: number) => void) {
        this.#list = list;
        this.#onPick = onPick;
    }

    show(record: GameRecord): void {
        const items = record.moves().map((move, index) => {
            const before = record.positionAt(index);
            const item = document.createElement('li');
            if (before.turn === 'w' || index === 0) {
                const number = document.createElement('span');
                number.textContent = `${before.moveNumber}${before.turn === 'w' ? '.' : '…'}`;
                item.append(number);
            }
            const button = document.createElement('button');
            button.textContent = move.san;
            button.setAttribute('aria-label', `${before.moveNumber}, ${before.turn === 'w' ? 'White' : 'Black'}: ${move.san}`);
            if (index + 1 === record.place) {
                button.setAttribute('aria-current', 'true');
            }
            button.addEventListener('click', () => this.#onPick(index + 1));
            item.append(button);
            return item;
        });
        this.#list.replaceChildren(...items);
        const current = this.#list.querySelector<HTMLElement>('[aria-current]');
        if (current !== null) {
            this.#list.scrollTop = current.offsetTop - this.#list.offsetTop - this.#list.clientHeight / 2;
        }
    }
}
