#!/usr/bin/env python3
# ctest: timeout=180
"""The tools that judge games and solutions: they notice what goes wrong."""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine_process import ENGINE, FACTOR, ROOT, main, seconds

sys.path.insert(0, str(ROOT / "tools"))
import play_games  # noqa: E402  (found through the path above)
import solve_epd  # noqa: E402

# An engine that plays the first moves of a game and then does wrong.
FAKE = """#!{python}
import sys, time
for line in sys.stdin:
    words = line.split()
    if words[:1] == ["uci"]:
        print("uciok", flush=True)
    elif words[:1] == ["isready"]:
        print("readyok", flush=True)
    elif words[:1] == ["quit"]:
        sys.exit(0)
    elif words[:1] == ["go"]:
        {action}
"""
ACTIONS = {
    "illegal 1": 'print("bestmove a1a8", flush=True)',
    "crashes 1": "sys.exit(3)",
    "time losses 1": 'time.sleep(2); print("bestmove e7e5", flush=True)',
}


class Referee(unittest.TestCase):
    def test_faults_are_noticed_and_lose_the_game(self):
        for expected, action in ACTIONS.items():
            with tempfile.TemporaryDirectory() as directory:
                fake = Path(directory) / "fake"
                fake.write_text(FAKE.format(python=sys.executable, action=action), encoding="ascii")
                os.chmod(fake, 0o755)
                done = subprocess.run(
                    [sys.executable, "-B", str(ROOT / "tools" / "play_games.py"), "--engine", ENGINE,
                     "--engine2", str(fake), "--games", "1", "--base", "1000", "--opening-plies",
                     "0", "--margin", str(int(100 * FACTOR) if FACTOR < 5 else 500)],
                    stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds(60),
                    check=False)
            text = done.stdout.decode("utf-8", "replace")
            self.assertEqual(done.returncode, 1, text)
            self.assertIn(expected, text.splitlines()[-1])
            self.assertIn("white 1, black 0, draws 0", text.splitlines()[-1])

    def test_moves_and_fens_come_from_the_console_mode(self):
        referee = play_games.Referee(ENGINE, False)
        try:
            referee.set(play_games.START_FEN)
            self.assertEqual(len(referee.moves()), 20)
            referee.play("e2e4")
            self.assertEqual(referee.fen().split()[:2],
                             ["rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR", "b"])
        finally:
            referee.close()


class Rules(unittest.TestCase):
    def verdict(self, fen, moves=("e1e2",), keys=(), plies=0):
        return play_games.verdict(fen, list(moves), list(keys), plies, 400)

    def test_mate_and_stalemate(self):
        self.assertEqual(self.verdict("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1", ()), ("1-0", "mate"))
        self.assertEqual(self.verdict("6k1/8/8/8/8/8/5PPP/r5K1 w - - 0 1", ()), ("0-1", "mate"))
        self.assertEqual(self.verdict("7k/5Q2/8/8/8/8/8/K7 b - - 0 1", ()),
                         ("1/2-1/2", "stalemate"))

    def test_draws(self):
        fen = "4k3/p7/8/8/8/8/8/4K3 w - - 99 1"
        self.assertIsNone(self.verdict(fen))
        self.assertEqual(self.verdict(fen.replace("99", "100"))[1], "fifty moves")
        key = play_games.repetition_key(fen)
        self.assertIsNone(self.verdict(fen, keys=[key] * 2))
        self.assertEqual(self.verdict(fen, keys=[key] * 3)[1], "threefold repetition")
        self.assertEqual(self.verdict(fen, plies=400)[1], "400 plies")

    def test_insufficient_material(self):
        for board, expected in (("4k3/8/8/8/8/8/8/4K3", True), ("4k3/8/8/8/8/8/8/4KN2", True),
                                ("4k3/8/8/8/8/8/b7/4K3", True), ("2b1k3/8/8/8/8/8/8/4KB2", True),
                                ("4kb2/8/8/8/8/8/8/4KB2", False), ("4k3/8/8/8/8/8/8/3NKN2", False),
                                ("4k3/8/8/8/8/8/8/4KR2", False), ("4k3/p7/8/8/8/8/8/4K3", False)):
            self.assertEqual(play_games.is_insufficient(board + " w - - 0 1"), expected, board)

    def test_check_by_every_man(self):
        for fen, expected in (("4k3/8/8/8/8/8/3p4/4K3 w - - 0 1", True),
                              ("4k3/3P4/8/8/8/8/8/4K3 b - - 0 1", True),
                              ("4k3/3p4/8/8/8/8/3P4/4K3 w - - 0 1", False),
                              ("4k3/8/8/8/8/3n4/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/b7/8/8/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/b7/8/2P5/8/4K3 w - - 0 1", False),
                              ("4k3/8/8/8/4r3/8/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/8/7q/8/8/4K3 w - - 0 1", True)):
            self.assertEqual(play_games.in_check(fen), expected, fen)

    def test_chess960_start_positions_are_lawful(self):
        import random
        source = random.Random(4)
        seen = set()
        for _ in range(300):
            rank = play_games.chess960_fen(source).split("/")[-1].split()[0]
            seen.add(rank)
            self.assertEqual(sorted(rank), sorted("RNBQKBNR"))
            self.assertLess(rank.index("R"), rank.index("K"))
            self.assertLess(rank.index("K"), rank.rindex("R"))
            self.assertNotEqual(rank.index("B") % 2, rank.rindex("B") % 2)
        self.assertGreater(len(seen), 200)


class AlgebraicForms(unittest.TestCase):
    def test_forms(self):
        fen = "r3k3/1P5p/8/4pP2/1N3N2/8/8/R3K2R w KQ e6 0 1"
        legal = ["b7b8q", "b7a8n", "f5e6", "f5f6", "e1g1", "e1c1", "b4d5", "f4d5", "a1a8", "h1h7",
                 "e1e2", "a1b1"]
        for move, san in (("b7b8q", "b8=Q"), ("b7a8n", "bxa8=N"), ("f5e6", "fxe6"),
                          ("f5f6", "f6"), ("e1g1", "O-O"), ("e1c1", "O-O-O"), ("b4d5", "Nbd5"),
                          ("f4d5", "Nfd5"), ("a1a8", "Rxa8"), ("h1h7", "Rxh7"), ("e1e2", "Ke2")):
            self.assertEqual(solve_epd.san_of(fen, move, legal), san)

    def test_rivals_on_a_file_and_on_both_lines(self):
        self.assertEqual(solve_epd.san_of("4k3/8/8/R7/8/8/8/R3K3 w - - 0 1", "a1a3",
                                          ["a1a3", "a5a3"]), "R1a3")
        fen = "4k3/8/8/Q6Q/8/8/8/Q3K3 w - - 0 1"
        self.assertEqual(solve_epd.san_of(fen, "a5e1", ["a5e1", "h5e1", "a1e1"]), "Qa5xe1")

    def test_solutions(self):
        self.assertTrue(solve_epd.is_solved("Qg6", ["Qg6+"], []))
        self.assertTrue(solve_epd.is_solved("b8=Q", ["b8Q", "Kd2"], []))
        self.assertFalse(solve_epd.is_solved("Qg7", ["Qg6"], []))
        self.assertFalse(solve_epd.is_solved("Qg6", [], ["Qg6"]))
        self.assertTrue(solve_epd.is_solved("Qg7", [], ["Qg6"]))
        self.assertTrue(solve_epd.is_solved("O-O", ["0-0"], []))


if __name__ == "__main__":
    main()
