# ctest: timeout=120
"""The console command `test`, to the byte, in its short runs."""

import unittest

from console_session import EngineTest

PERFT_FENS = [
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67",
    "8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28",
    "rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
]
CHESS960_FENS = [
    "rbbknnqr/pppppppp/8/8/8/8/PPPPPPPP/RBBKNNQR w KQkq - 0 1",
    "bnrkrnqb/pppppppp/8/8/8/8/PPPPPPPP/BNRKRNQB w KQkq - 0 1",
    "nrbbqknr/pppppppp/8/8/8/8/PPPPPPPP/NRBBQKNR w KQkq - 0 1",
    "bnrbnkrq/pppppppp/8/8/8/8/PPPPPPPP/BNRBNKRQ w KQkq - 0 1",
    "rbknqnbr/pppppppp/8/8/8/8/PPPPPPPP/RBKNQNBR w KQkq - 0 1",
    "qbrnnkbr/pppppppp/8/8/8/8/PPPPPPPP/QBRNNKBR w KQkq - 0 1",
    "nqbnrbkr/pppppppp/8/8/8/8/PPPPPPPP/NQBNRBKR w KQkq - 0 1",
    "nrnkbqrb/pppppppp/8/8/8/8/PPPPPPPP/NRNKBQRB w KQkq - 0 1",
    "2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w KQkq - 0 1",
    "nr1kqrbn/pbpppppp/1p6/8/8/1P6/PBPPPPPP/NR1KQRBN w KQkq - 0 1",
    "nr1kqrbn/pbpppppp/1p6/8/8/BP6/P1PPPPPP/NR1KQRBN b KQkq - 0 1",
    "2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w KQkq - 0 1",
    "nr1kqrbn/pbpppppp/1p6/8/8/1P6/PBPPPPPP/NR1KQRBN w KQkq - 0 1",
    "r1k1r2q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K1R2Q w KQkq - 0 1",
    "r1k2r1q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K2R1Q w KQkq - 0 1",
    "8/8/8/4B2b/6nN/8/5P2/2R1K2k w Q - 0 1",
    "2r5/8/8/8/8/8/6PP/k2KR3 w K - 0 1",
    "4r3/3k4/8/8/8/8/6PP/qR1K1R2 w KQ - 0 1",
]
HASH_ROWS = [
    ("rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", ""),
    ("rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", "e2e4"),
    ("rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2", "e2e4 d7d5"),
    ("rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2", "e2e4 d7d5 e4e5"),
    ("rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", "e2e4 d7d5 e4e5 f7f5"),
    ("rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR b kq - 0 3", "e2e4 d7d5 e4e5 f7f5 e1e2"),
    ("rnbq1bnr/ppp1pkpp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR w - - 0 4", "e2e4 d7d5 e4e5 f7f5 e1e2 e8f7"),
    ("rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3 0 3", "a2a4 b7b5 h2h4 b5b4 c2c4"),
    ("rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq - 0 4", "a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3"),
]


def run_text(title, rule, rows):
    line = "-" * rule + "\n"
    return line + title + "\n" + line + "".join(row + "\ntest ok!\n\n" for row in rows) + "test complete!\n"


def board_text(fens):
    return run_text("test board-correctness", 22, ["test fen: " + fen for fen in fens])


def evaluation_text(fens):
    return run_text("test evaluation symmetric", 25, ["test fen: " + fen for fen in fens])


HASH_TEXT = (run_text("test hash correctness (fen)", 31, ["test fen: " + fen for fen, _ in HASH_ROWS]) +
             run_text("test hash correctness (moves)", 31, ["test moves: " + moves for _, moves in HASH_ROWS]))


class SelfTest(EngineTest):
    def test_board_evaluation_and_hash(self):
        self.expect(["test -h -b -e"], board_text(PERFT_FENS) + evaluation_text(PERFT_FENS) + HASH_TEXT)

    def test_chess960_rows_come_behind_the_others(self):
        fens = PERFT_FENS + CHESS960_FENS
        self.expect(["test -960 -e"], evaluation_text(fens))
        self.expect(["test -b -960"], board_text(fens))

    def test_hash_alone_does_not_use_the_chess960_rows(self):
        self.expect(["test -960 -h"], HASH_TEXT)

    def test_unknown_words_are_ignored(self):
        self.expect(["TEST -h -960x -B nonsense"], HASH_TEXT)

    def test_game_position_stays(self):
        self.expect(["e2e4", "test -h", "fen"],
                    HASH_TEXT + "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2\n")


if __name__ == "__main__":
    unittest.main()
