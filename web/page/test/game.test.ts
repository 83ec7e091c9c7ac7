import assert from 'node:assert/strict';
import { test } from 'node:test';

import { ChessPosition, type Move } from '../../package/src/rules.js';
import { limitsOf, readPace } from '../src/engine/limits.js';
import { ChessClock, clockText } from '../src/game/clock.js';
import { InputError, readGames } from '../src/game/input.js';
import { GameRecord } from '../src/game/record.js';
import { figuresText, pawnsOf, pvText, scoreText } from '../src/view/text.js';
import { piecesText } from '../src/view/text_board.js';

function play(record: GameRecord, ...moves: string[]): GameRecord {
    for (const text of moves) {
        record.play(record.position.find(text) as Move);
    }
    return record;
}

test('a game goes forward, back, and on from an earlier place', () => {
    const record = play(new GameRecord(), 'e4', 'e5', 'Nf3');
    assert.deepEqual(record.movesTo(), ['e2e4', 'e7e5', 'g1f3']);
    record.goTo(1);
    assert.equal(record.lastMove?.san, 'e4');
    assert.equal(record.isAtEnd, false);
    play(record, 'c5');
    assert.deepEqual(record.moves().map((move) => move.san), ['e4', 'c5']);
    record.takeBack(5);
    assert.equal(record.length, 0);
    record.goTo(-3);
    assert.equal(record.place, 0);
});

test('games end by mate, stalemate, repetition and what is told', () => {
    assert.deepEqual(play(new GameRecord(), 'f3', 'e5', 'g4', 'Qh4#').outcome(), { result: '0-1', reason: 'Checkmate' });
    const shuffle = ['Nf3', 'Nf6', 'Ng1', 'Ng8'];
    assert.equal(play(new GameRecord(), ...shuffle).outcome(), null);
    assert.equal(play(new GameRecord(), ...shuffle, ...shuffle).outcome()?.reason, 'The position came three times');
    const record = new GameRecord();
    record.ended = { result: '1-0', reason: 'time' };
    assert.equal(record.outcome()?.result, '1-0');
    assert.equal(play(record, 'e4').outcome(), null);
});

test('a game is written so that it can be read again', () => {
    const record = play(new GameRecord(ChessPosition.fromFen('1r2k1r1/6p1/8/8/8/8/6P1/1R2K1R1 w GBgb - 0 1'), [['White', 'A']]), 'e1b1', 'Kf7');
    const text = record.pgn();
    assert.match(text, /\[Variant "Chess960"\]/);
    assert.match(text, /1\. O-O-O Kf7 \*/);
    assert.equal(readGames(text)[0]!.positionAt(2).fen, record.position.fen);
    assert.equal(readGames(play(new GameRecord(), 'f3', 'e5', 'g4', 'Qh4').pgn())[0]!.tags.get('Result'), '0-1');
});

test('a FEN, a PGN, and what is neither', () => {
    assert.equal(readGames('4k3/8/8/8/8/8/4P3/4K3 w - - 0 1')[0]!.length, 0);
    assert.equal(readGames('1. e4 e5 1/2-1/2')[0]!.length, 2);
    assert.equal(readGames('[White "A"]\n\n1. e4 *\n\n[White "B"]\n\n1. d4 *').length, 2);
    for (const [text, words] of [['', /nothing to load/], ['4k3/8/8/8/8/8/9/4K3 w', /This FEN cannot be used\. Rank 2/],
        ['1. e4 e4', /line 1, column 7: 1\.\.\. e4 is no legal move/], ['12', /neither a FEN nor a PGN/]] as const) {
        assert.throws(() => readGames(text), (error) => error instanceof InputError && words.test(error.message));
    }
});

test('clocks run for the side to move, and get their increment', () => {
    const clock = new ChessClock(60_000, 2000);
    clock.press('w', 1000);
    assert.equal(clock.left('w', 6000), 55_000);
    clock.press('b', 6000);
    assert.equal(clock.left('w', 9000), 57_000);
    assert.equal(clock.fallen(9000), null);
    assert.equal(clock.fallen(66_000), 'b');
    clock.stop(7000);
    assert.equal(clock.left('b', 99_000), 59_000);
    assert.equal(clockText(185_000), '3:05');
    assert.equal(clockText(9_870), '0:09.8');
    assert.equal(clockText(0), '0:00.0');
});

test('the words of the page as limits', () => {
    assert.deepEqual(limitsOf(readPace('move 200'), null, 0), { movetime: 200 });
    const clock = new ChessClock(180_000, 2000);
    assert.deepEqual(limitsOf(readPace('clock 180 2'), clock, 0), { wtime: 180_000, btime: 180_000, winc: 2000, binc: 2000 });
});

test('figures as words, from White\'s view', () => {
    assert.equal(scoreText({ type: 'cp', value: 35 }, 'w'), '+0.35');
    assert.equal(scoreText({ type: 'cp', value: 120 }, 'b'), '−1.20');
    assert.equal(scoreText({ type: 'mate', value: 3 }, 'b'), '#-3');
    assert.equal(scoreText(undefined, 'w'), '?');
    assert.equal(pawnsOf({ type: 'mate', value: -1 }, 'b'), 10);
    assert.equal(pawnsOf({ type: 'cp', value: 5000 }, 'w'), 10);
    assert.equal(figuresText({ multipv: 1, pv: [], depth: 9, nodes: 1_250_000, nps: 640_000 }), 'Depth 9, 1.3 M nodes, 640 k a second');
    assert.equal(pvText(ChessPosition.start(), { multipv: 1, pv: ['e2e4', 'e7e5'] }), '1. e4 e5');
});

test('the pieces of a side in words', () => {
    const position = ChessPosition.fromFen('4k3/8/8/8/7N/1N6/P6P/4K3 w - - 0 1');
    assert.equal(piecesText(position, 'w'), 'king e1, knights b3 h4, pawns a2 h2');
    assert.equal(piecesText(position, 'b'), 'king e8');
});
