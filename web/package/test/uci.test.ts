import assert from 'node:assert/strict';
import { test } from 'node:test';

import { checkFen } from '../src/fen.js';
import { goLine, isLimited, parseBestMove, parseInfo, parseInfoString, parseOption, positionLine } from '../src/uci.js';

test('a line of figures is read whole', () => {
    assert.deepEqual(
        parseInfo('info depth 4 seldepth 16 time 2 nodes 2750 nps 1375000 score cp -29 hashfull 3 tbhits 1 multipv 2 pv g1f3 d7d5'),
        {
            depth: 4, seldepth: 16, time: 2, nodes: 2750, nps: 1375000, score: { type: 'cp', value: -29 },
            hashfull: 3, tbhits: 1, multipv: 2, pv: ['g1f3', 'd7d5'],
        });
});

test('mates, bounds, current moves and lines of other kinds', () => {
    assert.deepEqual(parseInfo('info depth 3 score mate -2 upperbound pv a1a2')?.score, { type: 'mate', value: -2 });
    assert.equal(parseInfo('info depth 3 score cp 5 upperbound pv a1a2')?.bound, 'upper');
    assert.deepEqual(parseInfo('info currmove e2e4 currmovenumber 7'), { multipv: 1, pv: [], currmove: 'e2e4', currmovenumber: 7 });
    assert.deepEqual(parseInfo('info currline e2e4 e7e5')?.pv, []);
    assert.equal(parseInfo('info string depth 3'), null);
    assert.equal(parseInfo('bestmove e2e4'), null);
    assert.equal(parseInfoString('info string No best move!'), 'No best move!');
    assert.equal(parseInfoString('info depth 3'), null);
});

test('best moves', () => {
    assert.deepEqual(parseBestMove('bestmove e2e4 ponder e7e5'), { bestmove: 'e2e4', ponder: 'e7e5' });
    assert.deepEqual(parseBestMove('bestmove e7e8q'), { bestmove: 'e7e8q' });
    assert.equal(parseBestMove('bestmove'), null);
    assert.equal(parseBestMove('readyok'), null);
});

test('options, whose names and values may hold blanks', () => {
    assert.deepEqual(parseOption('option name MultiPV Delta type spin default 500 min 1 max 2000'),
        { name: 'MultiPV Delta', type: 'spin', default: '500', min: 1, max: 2000, vars: [] });
    assert.deepEqual(parseOption('option name Book Mode type combo default Wide var Wide var Best Move'),
        { name: 'Book Mode', type: 'combo', default: 'Wide', vars: ['Wide', 'Best Move'] });
    assert.deepEqual(parseOption('option name Book Path type string default <empty>'),
        { name: 'Book Path', type: 'string', default: '<empty>', vars: [] });
    assert.equal(parseOption('uciok'), null);
});

test('lines for the engine', () => {
    assert.equal(goLine({}), 'go infinite');
    assert.equal(goLine({ depth: 12 }), 'go depth 12');
    assert.equal(goLine({ depth: 12, infinite: true }), 'go depth 12 infinite');
    assert.equal(goLine({ wtime: 1000.4, btime: 900, winc: 10, binc: 0 }), 'go wtime 1000 btime 900 winc 10 binc 0');
    assert.equal(goLine({ searchmoves: ['e2e4'], depth: 3 }), 'go depth 3 searchmoves e2e4');
    assert.throws(() => goLine({ depth: NaN }), /depth must be a number/);
    assert.equal(isLimited({ searchmoves: ['e2e4'] }), false);
    assert.equal(positionLine(undefined, []), 'position startpos');
    assert.equal(positionLine('8/8/8/8/8/8/8/8 w', ['e2e4']), 'position fen 8/8/8/8/8/8/8/8 w moves e2e4');
});

test('a wrong FEN is told with what and where', () => {
    assert.equal(checkFen('rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1'), null);
    assert.equal(checkFen('4k3/8/8/8/8/8/8/4K3'), null);
    for (const [fen, words] of [
        ['', 'begins with the board'],
        ['rnbqkbnr/pppppppp/8/8/8/8/RNBQKBNR w', 'here there are 7'],
        ['rnbqkbnr/pppppppp/8/8/8/7/PPPPPPPP/RNBQKBNR w', 'Rank 3 of the board ("7") has 7 squares'],
        ['rnbqkbnr/pppxpppp/8/8/8/8/PPPPPPPP/RNBQKBNR w', 'Rank 7 of the board, letter 4: "x"'],
        ['rnbqqbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w', 'Black has no king'],
        ['4k3/8/8/8/8/8/8/4K2P w', 'A pawn stands on rank 1'],
        ['4k3/8/8/8/8/8/8/4K3 x', 'The second field'],
        ['4k3/8/8/8/8/8/8/4K3 w XX', 'The third field'],
        ['4k3/8/8/8/8/8/8/4K3 w - e4', 'The fourth field'],
        ['4k3/8/8/8/8/8/8/4K3 w - - x', 'The fifth field'],
        ['4k3/8/8/8/8/8/8/4K3 w - - 0 x', 'The sixth field'],
    ] as const) {
        assert.ok(checkFen(fen)?.includes(words), `${fen}: ${String(checkFen(fen))}`);
    }
});
