import assert from 'node:assert/strict';
import { test } from 'node:test';

import { addAnnotation, chances, evalText, findMoments, type Evaluation } from '../src/annotate.js';
import { gameGraph } from '../src/graph.js';
import { parseGames, parsePgn, PgnError, writePgn } from '../src/pgn.js';
import { chess960Start, ChessPosition, lineText, RulesError, StartFen } from '../src/rules.js';

function perft(position: ChessPosition, depth: number): number {
    return depth === 0 ? 1 : position.legalMoves().reduce((sum, move) => sum + perft(position.play(move), depth - 1), 0);
}

function play(fen: string, ...moves: string[]): ChessPosition {
    let position = ChessPosition.fromFen(fen);
    for (const text of moves) {
        const move = position.find(text);
        assert.ok(move !== null, `${text} in ${position.fen}`);
        position = position.play(move);
    }
    return position;
}

// The counts are those of the engine's own `perft`.
test('perft counts what the engine counts', () => {
    assert.equal(perft(ChessPosition.start(), 3), 8902);
    assert.equal(perft(ChessPosition.fromFen('r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1'), 2), 2039);
    assert.equal(perft(ChessPosition.fromFen('bqnb1rkr/pp3ppp/3ppn2/2p5/5P2/P2P4/NPP1P1PP/BQ1BNRKR w HFhf - 2 9'), 3), 12189);
    assert.equal(perft(ChessPosition.fromFen('2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe - 1 9'), 2), 807);
});

test('castling in ordinary chess and in Chess960', () => {
    const ordinary = 'r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1';
    assert.equal(play(ordinary, 'O-O').fen, 'r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1');
    assert.equal(play(ordinary, 'e1c1').fen, 'r3k2r/8/8/8/8/8/8/2KR3R b kq - 1 1');
    assert.equal(play(ordinary, 'Rf1', '0-0-0').fen, '2kr3r/8/8/8/8/8/8/R3KR2 w Q - 2 2');
    assert.equal(play(ordinary, 'h1h8').fen, 'r3k2R/8/8/8/8/8/8/R3K3 b Qq - 0 1');
    const chess960 = '1r2k1r1/6p1/8/8/8/8/6P1/1R2K1R1 w GBgb - 0 1';
    assert.equal(ChessPosition.fromFen(chess960).find('O-O')?.uci, 'e1g1');
    assert.equal(play(chess960, 'e1b1').fen, '1r2k1r1/6p1/8/8/8/8/6P1/2KR2R1 b gb - 1 1');
    // The rook on b1 shields the king's new square from the rook on a1.
    assert.equal(ChessPosition.fromFen('4k3/8/8/8/8/8/8/rR1K4 w B - 0 1').find('O-O-O'), null);
    assert.equal(ChessPosition.fromFen('4k3/8/8/8/8/8/8/1R1K4 w B - 0 1').find('O-O-O')?.san, 'O-O-O');
});

test('moves in the ways in which people write them', () => {
    for (const text of ['Nf3', 'g1f3', 'Ng1f3', 'Nf3!?', 'Ng1-f3']) {
        assert.equal(ChessPosition.start().find(text)?.uci, 'g1f3', text);
    }
    assert.equal(play('8/4P1k1/8/8/8/8/8/4K3 w - - 0 1').find('e8=Q')?.uci, 'e7e8q');
    assert.equal(play('8/4P1k1/8/8/8/8/8/4K3 w - - 0 1').find('e8N')?.uci, 'e7e8n');
    assert.equal(ChessPosition.start().find('e2e5'), null);
    assert.equal(lineText(ChessPosition.start(), ['e2e4', 'e7e5', 'g1f3']), '1. e4 e5 2. Nf3');
    assert.equal(lineText(play(StartFen, 'e4'), ['e7e5', 'g1f3']), '1... e5 2. Nf3');
});

test('positions that are none, ends of games, the 960 starts', () => {
    assert.throws(() => ChessPosition.fromFen('4k3/8/8/8/8/8/8/4K3 w K - 0 1'), /castling right "K"/);
    assert.throws(() => ChessPosition.fromFen('4k3/4R3/8/8/8/8/8/4K3 w - - 0 1'), RulesError);
    assert.equal(play(StartFen, 'f3', 'e5', 'g4', 'Qh4').status(), 'checkmate');
    assert.equal(play('7k/5Q2/8/8/8/8/8/K7 b - - 0 1').status(), 'stalemate');
    assert.equal(play('7k/8/8/8/8/8/8/KB6 b - - 0 1').status(), 'insufficient material');
    assert.equal(chess960Start(518).fen.split(' ')[0], StartFen.split(' ')[0]);
    assert.equal(chess960Start(0).fen, 'bbqnnrkr/pppppppp/8/8/8/8/PPPPPPPP/BBQNNRKR w HFhf - 0 1');
    assert.equal(chess960Start(959).fen.split('/')[0], 'rkrnnqbb');
});

const Sample = `[Event "Test \\"quoted\\""]
[White "One"]
[Black "Two"]
[Result "1-0"]

{before} 1. e4 e5 $1 {open game} 2. Nf3! (2. f4 exf4 (2... d5) 3. Bc4) 2... Nc6 ; to the end
3. Bb5 a6 1-0

[White "Three"]

1. d4 *
`;

test('a PGN is read and written with all that is in it', () => {
    const [first, second, ...more] = parsePgn(Sample);
    assert.equal(more.length, 0);
    assert.equal(first!.tags.get('Event'), 'Test "quoted"');
    assert.deepEqual(first!.plies.map((ply) => ply.move.san), ['e4', 'e5', 'Nf3', 'Nc6', 'Bb5', 'a6']);
    assert.deepEqual(first!.plies[1]!.comments, ['open game']);
    assert.deepEqual(first!.plies[2]!.marks, [1]);
    assert.equal(first!.plies[2]!.variations[0]!.map((ply) => ply.move.san).join(' '), 'f4 exf4 Bc4');
    assert.deepEqual(first!.plies[3]!.comments, ['to the end']);
    assert.equal(first!.result, '1-0');
    assert.equal(second!.tags.get('White'), 'Three');
    const written = writePgn(first!);
    assert.equal(writePgn(parsePgn(written)[0]!), written);
    assert.match(written.replace(/\n/g, ' '), /\(2\. f4 exf4 \(2\.\.\. d5\) 3\. Bc4\) 2\.\.\. Nc6/);
    assert.ok(written.split('\n').every((line) => line.length <= 80));
});

test('a game of Chess960 castles by the FEN of its tags', () => {
    const [game] = parsePgn('[Variant "Chess960"]\n[FEN "1r2k1r1/pppppppp/8/8/8/8/PPPPPPPP/1R2K1R1 w GBgb - 0 1"]\n\n1. O-O O-O-O *\n');
    assert.equal(game!.plies[0]!.move.uci, 'e1g1');
    assert.equal(game!.plies[1]!.move.uci, 'e8b8');
});

test('a wrong PGN says what is wrong and where, and spoils no other game', () => {
    const fault = (text: string): PgnError => {
        try {
            parsePgn(text);
        } catch (error) {
            assert.ok(error instanceof PgnError);
            return error;
        }
        return assert.fail(`no fault in ${text}`);
    };
    const illegal = fault('[White "A"]\n\n1. e4 e5\n2. Nf3 Nf9 1-0\n');
    assert.deepEqual([illegal.line, illegal.column], [4, 8]);
    assert.match(illegal.message, /2\.\.\. Nf9 is no legal move for Black/);
    assert.match(fault('1. e4 {never ends').message, /line 1, column 7: this comment does not end/);
    assert.match(fault('1. e4 (1. d4 d5').message, /column 7: this variation does not end/);
    assert.match(fault('1. e4 ) e5').message, /was not begun/);
    assert.match(fault('[White One]\n\n1. e4').message, /line 1, column 1: a tag is written as/);
    assert.match(fault('[FEN "8/8 w"]\n\n1. e4').message, /line 1, column 1: the FEN of the game: The board/);
    assert.match(fault('1. e4 @').message, /"@" has no meaning here/);
    const entries = [...parseGames('[White "A"]\n\n1. e5 *\n\n[White "B"]\n\n1. e4 *\n')];
    assert.equal(entries.length, 2);
    assert.ok(entries[0]!.error instanceof PgnError);
    assert.equal(entries[0]!.text.trim(), '[White "A"]\n\n1. e5 *');
    assert.equal(entries[1]!.game!.tags.get('White'), 'B');
    assert.deepEqual(parsePgn(''), []);
});

function evaluation(pawns: number, best: string | null = null, line: string[] = []): Evaluation {
    return { pawns, best, line };
}

test('moments are moves that lose chances, and never the move that the engine would play', () => {
    const [game] = parsePgn('1. e4 e5 2. Qh5 Nf6 3. Qxe5+ *');
    const evaluations = [evaluation(0.3), evaluation(0.3), evaluation(0.2), evaluation(-0.2, 'b8c6', ['b8c6', 'f1c4']),
        evaluation(4), evaluation(4.1)];
    const moments = findMoments(game!.plies, evaluations);
    assert.deepEqual(moments.map(({ ply, kind }) => [ply, kind]), [[3, 'blunder']]);
    assert.deepEqual(findMoments(game!.plies, evaluations.map((each, index) => (index === 3 ? { ...each, best: 'g8f6' } : each))), []);
    assert.equal(chances(0), 0.5);
    assert.ok(Math.abs(chances(1) + chances(-1) - 1) < 1e-12);

    addAnnotation(game!, { evaluations, moments }, 'Tester');
    const text = writePgn(game!).replace(/\n/g, ' ');
    assert.match(text, /2\.\.\. Nf6 \$4 \{\[%eval 4\.00\] Blunder\. Better was 2\.\.\. Nc6 3\. Bc4 \(-0\.20\)\.\}/);
    assert.match(text, /1\. e4 \{\[%eval 0\.30\]\}/);
    // A second time it takes the place of the first.
    const again = parsePgn(writePgn(game!))[0]!;
    addAnnotation(again, { evaluations, moments }, 'Tester');
    assert.equal(writePgn(again), writePgn(game!));
    assert.equal(evalText({ pawns: 100, mate: 3, best: null, line: [] }), '#3');

    const picture = gameGraph(game!, { evaluations, moments });
    assert.match(picture, /^<svg [^]*2\.\.\.Nf6\?\?[^]*<\/svg>\n$/);
    assert.equal(picture.match(/<circle/g)!.length, 1);
});

test('a picture of a game without moves, and of names that need quoting', () => {
    const [game] = parsePgn('[White "A & <B>"]\n\n*');
    const picture = gameGraph(game!, { evaluations: [evaluation(0)], moments: [] });
    assert.match(picture, /A &amp; &lt;B&gt;/);
});

test('commands in comments are not divided between lines', () => {
    const shuffle = 'Nf3 {[%eval 0.10]} Nf6 {[%eval -0.25]} Ng1 {[%eval 0.10] [%clk 0:01:00] more words} Ng8 {[%eval 0.00]} ';
    const [game] = parsePgn(`${shuffle.repeat(9)}*`);
    const written = writePgn(game!);
    assert.equal(written.match(/\[%eval -?\d\.\d\d\]/g)!.length, 36);
    assert.ok(written.split('\n').every((line) => line.length <= 80));
    assert.equal(writePgn(parsePgn(written)[0]!), written);
});
