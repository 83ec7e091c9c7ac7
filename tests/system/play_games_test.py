#!/usr/bin/env python3
# ctest: once release-only timeout=300
"""The tools that judge games and solutions: they know the rules and see every fault."""
import concurrent.futures
import os
import random
import re
import subprocess
import sys
import tempfile
import time
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, EngineTestCase, main, seconds
from fake_engine import MISDEEDS

sys.path.insert(0, str(ROOT / "tools"))
import chess_rules  # noqa: E402  (found through the path above)
import play_games  # noqa: E402
import solve_epd  # noqa: E402

FAKE = Path(__file__).resolve().parent / "fake_engine.py"
FAULTS = ("illegal", "time losses", "crashes", "hangs", "lost lines")
LIST_ROW = re.compile(r"^ ?\d+  (\S+) - \d+$")


def count(position, depth, chess960):
    """The number of lines of that length."""
    moves = set(position.moves(chess960).values())
    if depth == 1:
        return len(moves)
    return sum(count(position.after(move), depth - 1, chess960) for move in moves)


class Rules(unittest.TestCase):
    def test_published_counts(self):
        for fen, chess960, counts in (
                (chess_rules.START_FEN, False, (20, 400, 8902)),
                ("r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", False, (48, 2039)),
                ("8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", False, (14, 191, 2812)),
                ("r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1", False, (6, 264)),
                ("rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8", False, (44, 1486)),
                ("2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w CEce - 0 1", True, (51, 1904)),
                ("R3rkrR/8/8/8/8/8/8/r3RKRr w EGeg - 0 1", True, (25, 586)),
                ("2nnrbkr/p1qppppp/8/1ppb4/6PP/3PP3/PPP2P2/BQNNRBKR w HEhe - 1 9", True, (21, 807))):
            for depth, expected in enumerate(counts, 1):
                self.assertEqual(count(chess_rules.Position(fen), depth, chess960), expected, fen)

    def test_a_single_move_is_found_as_among_all_of_them(self):
        source = random.Random(5)
        for chess960 in (False, True):
            for _ in range(4):
                position = chess_rules.Position(
                    play_games.chess960_fen(source) if chess960 else chess_rules.START_FEN)
                for _ in range(60):
                    legal = position.moves(chess960)
                    for text in (*legal, "e1g1", "e8c8", "O-O", "O-O-O", "a7a8", "a7a8q", "e2e9", "x", "", "h5e2"):
                        self.assertEqual(position.move(text, chess960), legal.get(text), (position.fen(), text))
                    if not legal:
                        break
                    position = position.after(legal[source.choice(list(legal))])

    def test_castling_has_the_texts_of_its_kind_of_chess(self):
        position = chess_rules.Position("r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1")
        self.assertLessEqual({"e1g1", "e1c1"}, set(position.moves(False)))
        self.assertFalse({"e1h1", "O-O"} & set(position.moves(False)))
        self.assertLessEqual({"e1h1", "e1a1", "O-O", "O-O-O"}, set(position.moves(True)))
        after = position.after(position.moves(True)["O-O"])
        self.assertEqual(after.fen(), "r3k2r/8/8/8/8/8/8/R4RK1 b kq - 1 1")
        self.assertEqual(after.fen(chess960=True), "r3k2r/8/8/8/8/8/8/R4RK1 b ha - 1 1")

    def test_a_fen_comes_back(self):
        for fen in (chess_rules.START_FEN, "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 40",
                    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 b - - 17 33"):
            self.assertEqual(chess_rules.Position(fen).fen(), fen)

    def test_a_square_that_nobody_may_take_on_is_dropped(self):
        for fen in ("4k3/8/8/8/4P3/8/8/4K3 b - e3 0 1", "8/8/8/8/k2pP2R/8/8/4K3 b - e3 0 1"):
            self.assertIsNone(chess_rules.Position(fen).passant, fen)
        self.assertEqual(chess_rules.Position("8/8/8/8/3pP3/8/8/k3K3 b - e3 0 1").passant, 20)

    def verdict(self, fen, keys=(), plies=0):
        position = chess_rules.Position(fen)
        return chess_rules.verdict(position, position.moves(False), list(keys), plies, 400)

    def test_mate_and_stalemate(self):
        self.assertEqual(self.verdict("R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1"), ("1-0", "mate"))
        self.assertEqual(self.verdict("6k1/8/8/8/8/8/5PPP/r5K1 w - - 0 1"), ("0-1", "mate"))
        self.assertEqual(self.verdict("7k/5Q2/8/8/8/8/8/K7 b - - 0 1"), ("1/2-1/2", "stalemate"))

    def test_draws(self):
        fen = "4k3/p7/8/8/8/8/8/4K3 w - - 99 1"
        self.assertIsNone(self.verdict(fen))
        self.assertEqual(self.verdict(fen.replace("99", "100"))[1], "fifty moves")
        key = chess_rules.Position(fen).key()
        self.assertIsNone(self.verdict(fen, keys=[key] * 2))
        self.assertEqual(self.verdict(fen, keys=[key] * 3)[1], "threefold repetition")
        self.assertEqual(self.verdict(fen, plies=400)[1], "400 plies")

    def test_insufficient_material(self):
        for board, expected in (("4k3/8/8/8/8/8/8/4K3", True), ("4k3/8/8/8/8/8/8/4KN2", True),
                                ("4k3/8/8/8/8/8/b7/4K3", True), ("2b1k3/8/8/8/8/8/8/4KB2", True),
                                ("4kb2/8/8/8/8/8/8/4KB2", False), ("4k3/8/8/8/8/8/8/3NKN2", False),
                                ("4k3/8/8/8/8/8/8/4KR2", False), ("4k3/p7/8/8/8/8/8/4K3", False)):
            self.assertEqual(chess_rules.is_insufficient(chess_rules.board_of(board)), expected, board)

    def test_check_by_every_man(self):
        for fen, expected in (("4k3/8/8/8/8/8/3p4/4K3 w - - 0 1", True),
                              ("4k3/3P4/8/8/8/8/8/4K3 b - - 0 1", True),
                              ("4k3/3p4/8/8/8/8/3P4/4K3 w - - 0 1", False),
                              ("4k3/8/8/8/8/3n4/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/b7/8/8/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/b7/8/2P5/8/4K3 w - - 0 1", False),
                              ("4k3/8/8/8/4r3/8/8/4K3 w - - 0 1", True),
                              ("4k3/8/8/8/7q/8/8/4K3 w - - 0 1", True)):
            self.assertEqual(chess_rules.Position(fen).in_check(), expected, fen)

    def test_chess960_start_positions_are_lawful(self):
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


class EngineAndRules(EngineTestCase):
    def test_they_list_the_same_moves_and_reach_the_same_positions(self):
        source = random.Random(8)
        for chess960 in (False, True):
            engine = self.start_uci(f"setoption name UCI_Chess960 value {str(chess960).lower()}",
                                    "console")
            for _ in range(6):
                fen = play_games.chess960_fen(source) if chess960 else chess_rules.START_FEN
                position = chess_rules.Position(fen)
                engine.send("fen " + fen)
                for _ in range(60):
                    legal = {text: move for text, move in position.moves(chess960).items()
                             if not text.startswith("O")}
                    engine.send("perft 1 -d")
                    lines = engine.until(lambda line: line.startswith("nps:"))
                    rows = [found.group(1) for found in map(LIST_ROW.match, lines) if found]
                    self.assertEqual(sorted(rows), sorted(legal), position.fen(chess960))
                    if not legal:
                        break
                    text = source.choice(list(legal))
                    position = position.after(legal[text])
                    engine.send(text, "fen")
                    men, side, castling = engine.line().split()[:3]
                    self.assertEqual([men, side, set(castling)],
                                     [*position.fen().split()[:2],
                                      set(position.fen(chess960).split()[2])])


class PlayGames(unittest.TestCase):
    def play(self, *arguments):
        done = subprocess.run(
            [sys.executable, "-B", str(ROOT / "tools" / "play_games.py"), *arguments],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            timeout=seconds(150), check=False)
        return done.returncode, done.stdout.decode("utf-8", "replace")

    def test_a_match_is_counted_for_either_engine_and_written_down(self):
        with tempfile.TemporaryDirectory() as folder:
            games = Path(folder) / "games.pgn"
            code, text = self.play("--engine", ENGINE, "--games", "2", "--base", "200", "--increment",
                                   "5", "--max-plies", "60", "--mixed", "--option", "Hash=1",
                                   "--margin", str(int(seconds(500))), "--pgn", str(games))
            written = games.read_text(encoding="ascii")
        self.assertEqual(code, 0, text)
        points = re.search(r"^first ([\d.]+), second ([\d.]+)$", text, re.MULTILINE)
        self.assertEqual(sum(map(float, points.groups())), 2.0, text)
        self.assertRegex(text, r"games 2, illegal 0, time losses 0, crashes 0, hangs 0, lost lines 0, ")
        self.assertEqual(written.count("[Result "), 2)

    def test_a_fault_loses_the_game(self):
        with tempfile.TemporaryDirectory() as folder:
            fake = Path(folder) / "fake"
            fake.write_text(f"#!/bin/sh\nexec '{sys.executable}' -B '{FAKE}' 'illegal move'\n",
                            encoding="utf-8")
            os.chmod(fake, 0o755)
            code, text = self.play("--engine", ENGINE, "--engine2", str(fake), "--games", "1",
                                   "--base", "5000", "--margin", "20000", "--max-plies", "60")
        self.assertEqual(code, 1, text)
        self.assertIn("first 1, second 0", text)
        self.assertIn("games 1, illegal 1, time losses 0, ", text)
        self.assertIn("white 1, black 0, draws 0", text)


def soak(*arguments):
    return [sys.executable, "-B", str(ROOT / "tools" / "soak"), *arguments]


def summary_of(text):
    """The counts of the last line by name."""
    return {name: int(number) for name, number in
            re.findall(r"(games|" + "|".join(FAULTS) + r") (\d+)", text.splitlines()[-1])}


@unittest.skipUnless(sys.platform == "linux", "elsewhere nothing ties a process to its parent")
class KilledArbiter(unittest.TestCase):
    """Engines once went on for ever, each with a whole processor, after their arbiter was killed."""

    def test_its_engine_is_gone_as_well(self):
        program = f"""import sys, time
sys.path.insert(0, {str(ROOT / "tools")!r})
import play_games
print(play_games.UciProcess({str(ENGINE)!r}).process.pid, flush=True)
time.sleep(600)"""
        with subprocess.Popen([sys.executable, "-c", program], stdout=subprocess.PIPE) as arbiter:
            engine = int(arbiter.stdout.readline())
            os.kill(engine, 0)
            arbiter.kill()
        deadline = time.monotonic() + seconds(60)
        while self.is_running(engine):
            self.assertLess(time.monotonic(), deadline, "the engine goes on")
            time.sleep(0.01)

    @staticmethod
    def is_running(process):
        """A process that nobody has waited for yet is over as well."""
        try:
            state = Path(f"/proc/{process}/stat").read_text(encoding="latin-1").rpartition(") ")[2][0]
        except (FileNotFoundError, ProcessLookupError):
            return False
        return state not in "ZX"


class Soak(unittest.TestCase):
    """Between two fake engines, of which the second does one thing wrong."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        # All before the first game: a script that is written again while a game of another run
        # starts it is empty for a moment, and ends at once.
        self.fakes = {misdeed: self.write_fake(misdeed) for misdeed in ("none", *MISDEEDS)}

    def write_fake(self, misdeed):
        path = self.folder / misdeed.replace(" ", "_")
        path.write_text(f"#!/bin/sh\nexec '{sys.executable}' -B '{FAKE}' '{misdeed}'\n",
                        encoding="utf-8")
        os.chmod(path, 0o755)
        return str(path)

    def start(self, misdeed, *arguments):
        environment = {name: value for name, value in os.environ.items() if name != "BRENQUIL_DATA"}
        return subprocess.Popen(
            soak("--engine", self.fakes["none"], "--engine2", self.fakes[misdeed], "--games", "1",
                 "--time", "3+0.05", "--margin", "200", "--patience", "4", "--max-plies", "24",
                 "--logs", str(self.folder / "logs" / misdeed), *arguments),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            env=environment)

    def run_to_its_end(self, misdeed):
        run = self.start(misdeed)
        return run.communicate(timeout=seconds(200))[0].decode("utf-8", "replace"), run.returncode

    def test_each_misdeed_is_seen_and_counted_once(self):
        # Some at the same time, as most of them only wait.
        with concurrent.futures.ThreadPoolExecutor(4) as pool:
            runs = dict(zip(MISDEEDS, pool.map(self.run_to_its_end, MISDEEDS)))
        for misdeed, (text, code) in runs.items():
            with self.subTest(misdeed):
                self.assertEqual(code, 1, text)
                expected = {"games": 1, **dict.fromkeys(FAULTS, 0), MISDEEDS[misdeed]: 1}
                self.assertEqual(summary_of(text), expected, text)
                self.assertIn("black: ", text)
                logs = list((self.folder / "logs" / misdeed).iterdir())
                self.assertEqual([log.name for log in logs], ["game_1.log"])

    def test_games_without_a_misdeed_are_clean(self):
        run = self.start("none", "--games", "4", "--jobs", "2")
        text = run.communicate(timeout=seconds(120))[0].decode("utf-8", "replace")
        self.assertEqual(run.returncode, 0, text)
        self.assertEqual(summary_of(text), {"games": 4, **dict.fromkeys(FAULTS, 0)}, text)
        self.assertIn("settings with tables are left out", text)

    def test_a_program_that_does_not_start_is_a_crash(self):
        run = subprocess.run(
            soak("--engine", str(self.folder / "nothing"), "--games", "1", "--logs",
                 str(self.folder / "logs")),
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds(60), check=False)
        text = run.stdout.decode("utf-8", "replace")
        self.assertEqual(run.returncode, 1, text)
        self.assertEqual(summary_of(text)["crashes"], 1, text)


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
