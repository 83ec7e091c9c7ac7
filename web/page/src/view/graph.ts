/** The course of a game: uPlot, a click goes to the move. */
import uPlot from 'uplot';

export class GraphView {
    readonly #element: HTMLElement;
    readonly #onPick: (place: number) => void;
    #plot: uPlot | null = null;

    constructor(element: HTMLElement, onPick: (place: number) => void) {
        this.#element = element;
        this.#onPick = onPick;
    }

    /** `pawns`: White's advantage after each number of half-moves; null where it is not known yet. */
    show(pawns: readonly (number | null)[], place: number): void {
        this.#element.hidden = false;
        const data: uPlot.AlignedData = [pawns.map((_, index) => index), [...pawns]];
        if (this.#plot === null) {
            const css = getComputedStyle(document.documentElement);
            const ink = css.getPropertyValue('--soft').trim();
            const line = css.getPropertyValue('--line').trim();
            const accent = css.getPropertyValue('--accent').trim();
            this.#plot = new uPlot({
                width: Math.max(200, this.#element.clientWidth), height: 180,
                cursor: { drag: { x: false, y: false } },
                legend: { show: false },
                scales: { x: { time: false }, y: { range: [-10, 10] } },
                axes: [
                    { stroke: ink, grid: { stroke: line, width: 1 }, values: (_plot, ticks) => ticks.map((tick) => (Number.isInteger(tick / 2) ? String(tick / 2) : '')) },
                    { stroke: ink, grid: { stroke: line, width: 1 }, size: 40, splits: () => [-10, -5, 0, 5, 10] },
                ],
                series: [{}, { stroke: accent, width: 2, fill: `${accent}33`, fillTo: 0, spanGaps: false, points: { size: 5 } }],
            }, data, this.#element);
            this.#plot.over.addEventListener('click', () => {
                const index = this.#plot?.cursor.idx;
                if (index !== null && index !== undefined) {
                    this.#onPick(index);
                }
            });
            this.#element.setAttribute('role', 'img');
            new ResizeObserver(() => {
                this.#plot?.setSize({ width: Math.max(200, this.#element.clientWidth), height: 180 });
            }).observe(this.#element);
        } else {
            this.#plot.setData(data);
        }
        this.mark(place);
    }

    /** Shows which move is looked at. */
    mark(place: number): void {
        const plot = this.#plot;
        const value = plot?.data[1]?.[place];
        if (plot !== null && value !== null && value !== undefined) {
            plot.setCursor({ left: plot.valToPos(place, 'x'), top: plot.valToPos(value, 'y') });
        }
        this.#element.setAttribute('aria-label', `Evaluation of the game; after half-move ${place}: ${value ?? 'not known'} pawns for White`);
    }

    clear(): void {
        this.#plot?.destroy();
        this.#plot = null;
        this.#element.hidden = true;
        this.#element.replaceChildren();
    }
}
