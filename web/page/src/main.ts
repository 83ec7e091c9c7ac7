/** The page: wires the engine, the game and the views of them. */
import type { Color } from 'chess.js';

import type { Engine, FileSource, Info } from '../../package/src/index.js';
import { chess960Start, ChessPosition, type Move } from '../../package/src/rules.js';
import { limitsOf, readPace, type Pace } from './engine/limits.js';
import { EngineService, type Question } from './engine/service.js';
import { ChessClock, clockText } from './game/clock.js';
import { readGames } from './game/input.js';
import { GameRecord } from './game/record.js';
import { BoardView } from './view/board.js';
import { GraphView } from './view/graph.js';
import { MovesView } from './view/moves.js';
import { figuresText, pawnsOf, pvText, scoreText } from './view/text.js';
import { TextBoardView } from './view/text_board.js';

const EvaluationDepth = 10;

function byId<Type extends HTMLElement = HTMLElement>(id: string): Type {
    return document.getElementById(id) as Type;
}

class Page {
    readonly #service: EngineService;
    readonly #board: BoardView;
    readonly #textBoard = new TextBoardView(byId('text-board'));
    readonly #moves: MovesView;
    readonly #graph: GraphView;
    #record = new GameRecord();
    #mode: 'play' | 'analyse' = 'play';
    #human: Color | null = null; // who plays against the engine; null: no game yet
    #pace: Pace = { kind: 'move', milliseconds: 1000 };
    #clock: ChessClock | null = null;
    #loaded: GameRecord[] = [];
    #pawns: (number | null)[] | null = null;
    #hasTables = false;

    /** `onStarted`: called once, when the engine is there or has failed to start. */
    constructor(onStarted: () => void = () => {}) {
        const fragment = new URLSearchParams(location.hash.slice(1));
        const wanted = fragment.get('variant');
        this.#service = new EngineService({
            onReady: (engine) => this.#engineIsReady(engine),
            onProblem: (message) => this.#problem(message),
        }, wanted === 'single' || wanted === 'threads' ? wanted : 'auto');
        this.#board = new BoardView(byId('board'), this.#record.position, (move) => this.#humanMoves(move));
        this.#moves = new MovesView(byId('moves'), (place) => this.#goTo(place));
        this.#graph = new GraphView(byId('graph'), (place) => this.#goTo(place));
        this.#bind();
        this.#show();
        void this.#service.start().then(onStarted);
    }

    // ---- what is seen

    #show(): void {
        const record = this.#record;
        const outcome = record.isAtEnd ? record.outcome() : null;
        const mayMove = outcome === null && (this.#mode === 'analyse' || this.#human === null ||
            (record.isAtEnd && record.position.turn === this.#human));
        this.#board.show(record.position, record.lastMove, mayMove ? record.position.turn : null);
        this.#textBoard.show(record.position);
        this.#moves.show(record);
        byId<HTMLInputElement>('fen-out').value = record.position.fen;
        byId<HTMLButtonElement>('take-back').disabled = record.length === 0;
        for (const [id, isOff] of [['to-start', record.place === 0], ['back', record.place === 0],
            ['to-end', record.isAtEnd], ['forward', record.isAtEnd]] as const) {
            byId<HTMLButtonElement>(id).disabled = isOff;
        }
        if (this.#pawns !== null) {
            this.#graph.mark(record.place);
        }
        this.#showClock();
        if (this.#mode === 'analyse') {
            void this.#analyse();
        }
    }

    #status(text: string): void {
        byId('status').textContent = text;
    }

    #problem(message: string): void {
        byId('problem').textContent = message;
        if (this.#service.engine === null) {
            byId('engine-state').textContent = 'The engine does not run';
        }
    }

    #showClock(): void {
        const now = performance.now();
        const bottom = this.#board.orientation;
        const text = (color: Color): string => this.#clock === null ? ''
            : `${color === 'w' ? 'White' : 'Black'} ${clockText(this.#clock.left(color, now))}`;
        byId('clock-bottom').textContent = text(bottom);
        byId('clock-top').textContent = text(bottom === 'w' ? 'b' : 'w');
    }

    #sayMove(move: Move, before: ChessPosition): void {
        const outcome = this.#record.outcome();
        const who = before.turn === 'w' ? 'White' : 'Black';
        this.#status(`${who} plays ${move.san}.` + (outcome === null ? '' : ` ${outcome.reason}: ${outcome.result}.`));
    }

    #engineIsReady(engine: Engine): void {
        const threads = byId<HTMLSelectElement>('threads');
        const most = Math.min(engine.maximumThreads, navigator.hardwareConcurrency || 1);
        threads.replaceChildren(...Array.from({ length: most }, (_, index) => new Option(String(index + 1))));
        byId('engine-state').textContent = `${engine.name}, ${engine.variant === 'threads' ? `up to ${most} thread${most === 1 ? '' : 's'}` : 'one thread'}`;
        document.documentElement.dataset['engine'] = engine.variant;
        performance.mark('engine-ready');
        this.#show();
        if (this.#mode === 'play') {
            void this.#engineMoves();
        }
    }

    // ---- the game

    #newGame(): void {
        const choice = byId<HTMLSelectElement>('colour').value;
        this.#human = choice === 'random' ? (Math.random() < 0.5 ? 'w' : 'b') : (choice as Color);
        this.#pace = readPace(byId<HTMLSelectElement>('strength').value);
        const start = byId<HTMLSelectElement>('variant').value === 'chess960'
            ? chess960Start(Math.floor(Math.random() * 960)) : ChessPosition.start();
        const me = 'Player';
        const engine = this.#service.engine?.name ?? 'Brenquil';
        const date = new Date().toISOString().slice(0, 10).replaceAll('-', '.');
        this.#setRecord(new GameRecord(start, [['Event', 'Game in the browser'], ['Date', date],
            ['White', this.#human === 'w' ? me : engine], ['Black', this.#human === 'w' ? engine : me]]));
        this.#clock = this.#pace.kind === 'clock' ? new ChessClock(this.#pace.base, this.#pace.increment) : null;
        this.#clock?.press('w', performance.now());
        this.#board.turn(this.#human);
        this.#status(`New game. You play ${this.#human === 'w' ? 'White' : 'Black'}.`);
        void this.#service.newGame().then(() => {
            this.#show();
            void this.#engineMoves();
        });
    }

    #setRecord(record: GameRecord): void {
        this.#service.rest();
        this.#record = record;
        this.#clock = null;
        this.#pawns = null;
        this.#graph.clear();
        byId('problem').textContent = '';
        this.#show();
    }

    #humanMoves(move: Move): void {
        if (this.#mode === 'play' && this.#human === null) {
            this.#human = this.#record.position.turn; // whoever simply moves first plays that side
            this.#pace = readPace(byId<HTMLSelectElement>('strength').value);
        }
        byId('problem').textContent = '';
        this.#play(move);
        void this.#engineMoves();
    }

    #play(move: Move): void {
        const before = this.#record.position;
        this.#service.rest();
        this.#record.play(move);
        if (this.#pawns !== null) {
            this.#pawns = null;
            this.#graph.clear();
        }
        this.#clock?.press(this.#record.position.turn, performance.now());
        if (this.#record.outcome() !== null) {
            this.#clock?.stop(performance.now());
        }
        this.#sayMove(move, before);
        this.#show();
    }

    async #engineMoves(): Promise<void> {
        const record = this.#record;
        const { position } = record;
        if (this.#mode !== 'play' || this.#human === null || position.turn === this.#human || !record.isAtEnd ||
            record.outcome() !== null) {
            return;
        }
        const text = await this.#service.move(this.#question(), limitsOf(this.#pace, this.#clock, performance.now()));
        const isStill = this.#mode === 'play' && record === this.#record && record.isAtEnd && record.position === position;
        const move = text === null || !isStill ? null : position.find(text);
        if (move !== null) {
            this.#play(move);
        }
    }

    /** The engine plays the side to move from now on, also from a position that was loaded. */
    #letEngineMove(): void {
        const { position, isAtEnd, length } = this.#record;
        if (this.#record.outcome() !== null && isAtEnd) {
            this.#problem('The game has ended.');
            return;
        }
        byId('problem').textContent = '';
        if (!isAtEnd) {
            this.#record.takeBack(length - this.#record.place);
            this.#pawns = null;
            this.#graph.clear();
        }
        this.#human = position.turn === 'w' ? 'b' : 'w';
        this.#pace = this.#clock === null ? readPace(byId<HTMLSelectElement>('strength').value) : this.#pace;
        this.#show();
        void this.#engineMoves();
    }

    #takeBack(): void {
        this.#service.rest();
        const { position, length } = this.#record;
        // With the engine's answer, so that it is the player's turn again.
        const isAnswered = this.#mode === 'play' && this.#human !== null && position.turn === this.#human;
        this.#record.takeBack(Math.min(length, isAnswered ? 2 : 1));
        this.#pawns = null;
        this.#graph.clear();
        this.#clock?.press(this.#record.position.turn, performance.now());
        this.#status('Taken back.');
        this.#show();
        void this.#engineMoves();
    }

    #goTo(place: number): void {
        if (place !== this.#record.place) {
            this.#service.rest();
            this.#record.goTo(place);
            const move = this.#record.lastMove;
            this.#status(move === null ? 'The start.' : `After ${move.san}.`);
            this.#show();
            void this.#engineMoves();
        }
    }

    #tick(): void {
        if (this.#clock === null) {
            return;
        }
        const fallen = this.#clock.fallen(performance.now());
        if (fallen !== null && this.#record.ended === null && this.#record.outcome() === null) {
            this.#clock.stop(performance.now());
            this.#service.rest();
            this.#record.ended = { result: fallen === 'w' ? '0-1' : '1-0', reason: `${fallen === 'w' ? 'White' : 'Black'} has overstepped the time` };
            this.#status(`${this.#record.ended.reason}: ${this.#record.ended.result}.`);
            this.#show();
        }
        this.#showClock();
    }

    // ---- analysis

    #question(place = this.#record.place): Question {
        return { start: this.#record.start, moves: this.#record.movesTo(place) };
    }

    async #analyse(): Promise<void> {
        const list = byId('lines');
        const { position } = this.#record;
        list.replaceChildren();
        byId('figures').textContent = '';
        byId('verdict').textContent = '';
        this.#board.showArrows([]);
        if (this.#hasTables) {
            await this.#showVerdict(position);
        }
        if (!byId<HTMLInputElement>('analysing').checked || this.#mode !== 'analyse' || position !== this.#record.position) {
            return;
        }
        const count = Number(byId<HTMLSelectElement>('line-count').value);
        const lines: Info[] = [];
        await this.#service.analyse(this.#question(), count, (info) => {
            if (position !== this.#record.position) {
                return;
            }
            lines[info.multipv - 1] = info;
            this.#showLines(position, lines);
        });
    }

    #showLines(position: ChessPosition, lines: readonly Info[]): void {
        byId('lines').replaceChildren(...lines.filter(Boolean).map((info) => {
            const item = document.createElement('li');
            const score = document.createElement('b');
            score.textContent = scoreText(info.score, position.turn);
            item.append(score, ` ${pvText(position, info)}`);
            return item;
        }));
        const best = lines[0];
        if (best !== undefined) {
            byId('figures').textContent = figuresText(best);
        }
        const moves = lines.filter(Boolean).map((info) => position.find(info.pv[0] ?? '')).filter((move) => move !== null);
        this.#board.showArrows(moves);
    }

    async #showVerdict(position: ChessPosition): Promise<void> {
        const verdict = await this.#service.verdict(this.#question());
        if (verdict === null || position !== this.#record.position) {
            return;
        }
        const side = position.turn === 'w' ? 'White' : 'Black';
        const what = verdict.result === 'draw' ? 'a draw' : `${side} ${verdict.result === 'win' ? 'wins' : 'loses'}`;
        const mate = verdict.mateIn === undefined ? '' : `, mate in ${verdict.mateIn}`;
        byId('verdict').textContent = `Tables: ${what}${mate}; best is ${position.find(verdict.move)?.san ?? verdict.move}.`;
    }

    async #evaluate(): Promise<void> {
        const record = this.#record;
        const progress = byId<HTMLProgressElement>('progress');
        byId<HTMLInputElement>('analysing').checked = false;
        const ticket = this.#service.begin();
        const pawns: (number | null)[] = Array.from({ length: record.length + 1 }, () => null);
        this.#pawns = pawns;
        progress.hidden = false;
        for (let place = 0; place <= record.length && this.#service.isCurrent(ticket); ++place) {
            const position = record.positionAt(place);
            const status = position.status();
            if (status === 'checkmate') {
                pawns[place] = position.turn === 'w' ? -10 : 10;
            } else if (status === 'stalemate') {
                pawns[place] = 0;
            } else {
                const info = await this.#service.evaluate(this.#question(place), EvaluationDepth, ticket);
                pawns[place] = pawnsOf(info?.score, position.turn);
            }
            if (record !== this.#record || this.#pawns !== pawns) {
                break;
            }
            progress.value = (place + 1) / (record.length + 1);
            this.#graph.show(pawns, record.place);
        }
        progress.hidden = true;
        if (record === this.#record && this.#service.isCurrent(ticket)) {
            this.#status('The game has been evaluated.');
        }
    }

    // ---- in and out

    #load(text: string): void {
        try {
            this.#loaded = readGames(text);
        } catch (error) {
            this.#problem((error as Error).message);
            return;
        }
        const choice = byId<HTMLSelectElement>('game-number');
        choice.replaceChildren(...this.#loaded.map((record, index) =>
            new Option(`${index + 1}. ${record.tags.get('White') ?? '?'} – ${record.tags.get('Black') ?? '?'}`, String(index))));
        byId('game-choice').hidden = this.#loaded.length < 2;
        this.#take(0);
    }

    #take(index: number): void {
        const record = this.#loaded[index]!;
        this.#human = null;
        this.#setMode('analyse');
        this.#setRecord(record);
        this.#status(record.length === 0 ? 'The position is loaded.'
            : `A game of ${record.length} half-moves is loaded${this.#loaded.length > 1 ? `, number ${index + 1} of ${this.#loaded.length}` : ''}.`);
        record.goTo(0);
        this.#show();
    }

    async #loadTables(files: { name: string; source: FileSource }[]): Promise<void> {
        const message = byId('table-message');
        message.textContent = 'Loading …';
        try {
            const said = await this.#service.loadFiles(files);
            this.#hasTables ||= files.some(({ name }) => /\.(rtb[wz]|nb[wb]|emd)$/i.test(name));
            message.textContent = said;
            this.#show();
        } catch (error) {
            message.textContent = '';
            this.#problem((error as Error).message);
        }
    }

    #setMode(mode: 'play' | 'analyse'): void {
        this.#mode = mode;
        for (const each of ['play', 'analyse'] as const) {
            const tab = byId(`tab-${each}`);
            tab.setAttribute('aria-selected', String(each === mode));
            tab.tabIndex = each === mode ? 0 : -1;
            byId(`panel-${each}`).hidden = each !== mode;
        }
        this.#service.rest();
        this.#board.showArrows([]);
    }

    #bind(): void {
        const click = (id: string, work: () => void): void => byId(id).addEventListener('click', work);
        for (const mode of ['play', 'analyse'] as const) {
            click(`tab-${mode}`, () => {
                this.#setMode(mode);
                this.#show();
                void this.#engineMoves();
            });
        }
        document.querySelector('[role=tablist]')!.addEventListener('keydown', (event) => {
            const { key } = event as KeyboardEvent;
            if (key === 'ArrowLeft' || key === 'ArrowRight') {
                const next = byId(this.#mode === 'play' ? 'tab-analyse' : 'tab-play');
                next.click();
                next.focus();
            }
        });
        click('new-game', () => this.#newGame());
        click('take-back', () => this.#takeBack());
        click('engine-move', () => this.#letEngineMove());
        click('to-start', () => this.#goTo(0));
        click('back', () => this.#goTo(this.#record.place - 1));
        click('forward', () => this.#goTo(this.#record.place + 1));
        click('to-end', () => this.#goTo(this.#record.length));
        click('flip', () => {
            this.#board.turn(this.#board.orientation === 'w' ? 'b' : 'w');
            this.#showClock();
        });
        click('evaluate', () => void this.#evaluate());
        byId('move-form').addEventListener('submit', (event) => {
            event.preventDefault();
            this.#typedMove();
        });
        byId('analysing').addEventListener('change', () => {
            this.#service.rest();
            this.#show();
        });
        byId('strength').addEventListener('change', (event) => {
            const pace = readPace((event.target as HTMLSelectElement).value);
            // A clock cannot be changed in the middle of a game.
            if (this.#clock === null && pace.kind === 'move') {
                this.#pace = pace;
            }
        });
        byId('line-count').addEventListener('change', () => this.#show());
        for (const [id, option] of [['threads', 'Threads'], ['hash', 'Hash']] as const) {
            byId<HTMLSelectElement>(id).addEventListener('change', (event) => {
                byId('problem').textContent = '';
                void this.#service.setOption(option, (event.target as HTMLSelectElement).value).then(() => this.#show());
            });
        }
        click('load-text', () => this.#load(byId<HTMLTextAreaElement>('input-text').value));
        byId<HTMLInputElement>('load-file').addEventListener('change', (event) => {
            const file = (event.target as HTMLInputElement).files?.[0];
            void file?.text().then((text) => this.#load(text));
        });
        byId<HTMLSelectElement>('game-number').addEventListener('change', (event) => this.#take(Number((event.target as HTMLSelectElement).value)));
        click('copy-fen', () => void this.#copy(this.#record.position.fen, 'The FEN'));
        click('copy-pgn', () => void this.#copy(this.#record.pgn(), 'The PGN'));
        click('save-pgn', () => this.#save());
        byId<HTMLInputElement>('table-files').addEventListener('change', (event) => {
            const files = [...((event.target as HTMLInputElement).files ?? [])];
            void this.#loadTables(files.map((file) => ({ name: file.name, source: file })));
        });
        click('load-url', () => {
            const url = byId<HTMLInputElement>('table-url').value;
            if (!URL.canParse(url, document.baseURI)) {
                this.#problem(`"${url}" is no address`);
                return;
            }
            const full = new URL(url, document.baseURI);
            void this.#loadTables([{ name: decodeURIComponent(full.pathname.split('/').at(-1) ?? ''), source: full.href }]);
        });
        document.addEventListener('dragover', (event) => event.preventDefault());
        document.addEventListener('drop', (event) => {
            event.preventDefault();
            void this.#drop(event.dataTransfer);
        });
        setInterval(() => this.#tick(), 100);
    }

    async #drop(data: DataTransfer | null): Promise<void> {
        const files = [...(data?.files ?? [])];
        const tables = files.filter((file) => /\.(bin|rtb[wz]|nb[wb]|emd)$/i.test(file.name));
        if (tables.length > 0) {
            await this.#loadTables(tables.map((file) => ({ name: file.name, source: file })));
        } else {
            this.#load(files[0] === undefined ? (data?.getData('text/plain') ?? '') : await files[0].text());
        }
    }

    #typedMove(): void {
        const field = byId<HTMLInputElement>('move-text');
        const { position } = this.#record;
        if (this.#mode === 'play' && this.#human !== null && (position.turn !== this.#human || !this.#record.isAtEnd)) {
            this.#problem('It is not your move.');
            return;
        }
        const move = position.find(field.value.trim());
        if (move === null || this.#record.outcome() !== null) {
            this.#problem(`"${field.value}" is no legal move here.`);
            return;
        }
        field.value = '';
        this.#humanMoves(move);
    }

    async #copy(text: string, what: string): Promise<void> {
        try {
            await navigator.clipboard.writeText(text);
            this.#status(`${what} is in the clipboard.`);
        } catch {
            this.#problem('The browser does not let the page use the clipboard.');
        }
    }

    #save(): void {
        const link = document.createElement('a');
        link.href = URL.createObjectURL(new Blob([this.#record.pgn()], { type: 'application/x-chess-pgn' }));
        link.download = 'game.pgn';
        link.click();
        URL.revokeObjectURL(link.href);
    }
}

/** The service worker adds the headers for isolation and keeps the page for use offline. */
async function registerServiceWorker(): Promise<void> {
    if (!('serviceWorker' in navigator) || new URLSearchParams(location.hash.slice(1)).has('plain')) {
        return;
    }
    try {
        await navigator.serviceWorker.register('service_worker.js');
        await navigator.serviceWorker.ready;
        // Once: a host that sends no headers is isolated by the worker from the next load on.
        if (!crossOriginIsolated && sessionStorage.getItem('brenquil-isolated') === null) {
            sessionStorage.setItem('brenquil-isolated', 'tried');
            location.reload();
        }
    } catch {
        // The page works without it: with one thread, and online.
    }
}

// On a page that is isolated anyway the engine comes first, and what is kept for offline use later.
if (crossOriginIsolated) {
    new Page(() => void registerServiceWorker());
} else {
    void registerServiceWorker();
    new Page();
}
