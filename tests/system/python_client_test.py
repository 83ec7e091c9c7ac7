#!/usr/bin/env python3
# ctest: sanitized timeout=300
"""The strict dialect under the Python client that most scripts and bots use.

Skipped where the client is not beside the repository.
"""
import sys
import unittest

from engine_process import ENGINE, ROOT, EngineTestCase, main, seconds

CLIENT = ROOT.parent / "shared" / "tools" / "python-chess"
sys.path.insert(0, str(CLIENT))
try:
    import chess
    import chess.engine
except ImportError:
    chess = None

MATE_IN_ONE = "6k1/5ppp/8/8/8/8/8/R6K w - - 0 1"
MATED = "7k/6Q1/6K1/8/8/8/8/8 b - - 0 1"
STALEMATED = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"


@unittest.skipUnless(chess, "the client is not there")
class PythonClient(EngineTestCase):
    def setUp(self):
        super().setUp()
        self.engine = chess.engine.SimpleEngine.popen_uci([ENGINE, "--strict-uci"], cwd=self.directory,
                                                          timeout=seconds(30))
        self.addCleanup(self.engine.close)

    def test_play_by_time_by_nodes_and_by_depth(self):
        board = chess.Board()
        limits = (chess.engine.Limit(time=0.02), chess.engine.Limit(nodes=1), chess.engine.Limit(depth=3),
                  chess.engine.Limit(white_clock=1, black_clock=1, white_inc=0.01, black_inc=0.01))
        for number in range(24):
            # With moves of a single node a game can be over soon.
            board = chess.Board() if board.is_game_over() else board
            result = self.engine.play(board, limits[number % len(limits)], info=chess.engine.INFO_ALL)
            self.assertIn(result.move, board.legal_moves)
            self.assertEqual(result.info["pv"][0], result.move)
            self.assertIn("score", result.info)
            board.push(result.move)

    def test_analysis_of_a_mate_in_one(self):
        info = self.engine.analyse(chess.Board(MATE_IN_ONE), chess.engine.Limit(time=0.2))
        self.assertEqual(info["score"].relative, chess.engine.Mate(1))

    def test_mated_and_stalemated_positions_leave_the_engine_usable(self):
        for fen in (MATED, STALEMATED):
            info = self.engine.analyse(chess.Board(fen), chess.engine.Limit(depth=3))
            self.assertIn("score", info)
            self.assertIsNone(self.engine.play(chess.Board(fen), chess.engine.Limit(time=0.05)).move)
        self.assertIsNotNone(self.engine.play(chess.Board(), chess.engine.Limit(depth=2)).move)

    def test_several_lines(self):
        infos = self.engine.analyse(chess.Board(), chess.engine.Limit(depth=4), multipv=5)
        self.assertEqual([info["multipv"] for info in infos], [1, 2, 3, 4, 5])
        scores = [info["score"].relative for info in infos]
        self.assertEqual(scores, sorted(scores, reverse=True))

    def test_endless_analysis_with_an_immediate_stop(self):
        board = chess.Board()
        for _ in range(200):
            with self.engine.analysis(board) as analysis:
                analysis.stop()
                self.assertIn(analysis.wait().move, board.legal_moves)

    def test_pondering(self):
        board = chess.Board()
        for _ in range(6):
            result = self.engine.play(board, chess.engine.Limit(time=0.05), ponder=True)
            self.assertIn(result.move, board.legal_moves)
            board.push(result.move)
            board.push(result.ponder if result.ponder in board.legal_moves else next(iter(board.legal_moves)))

    def test_options(self):
        for name in ("SyzygyPath", "Move Overhead", "Clear Hash", "UCI_ShowWDL"):
            self.assertIn(name, self.engine.options)
        self.engine.configure({"Hash": 8, "Move Overhead": 20, "Clear Hash": None, "UCI_ShowWDL": True})
        info = self.engine.analyse(chess.Board(), chess.engine.Limit(depth=3))
        chances = info["wdl"].relative
        self.assertEqual(chances.wins + chances.draws + chances.losses, 1000)

    def test_chess960(self):
        board = chess.Board.from_chess960_pos(1)
        for _ in range(10):
            result = self.engine.play(board, chess.engine.Limit(depth=4))
            self.assertIn(result.move, board.legal_moves)
            board.push(result.move)

    def test_quit_ends_the_process(self):
        self.engine.quit()
        self.assertEqual(self.engine.transport.get_returncode(), 0)


if __name__ == "__main__":
    main()
