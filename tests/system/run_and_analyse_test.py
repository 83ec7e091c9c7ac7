#!/usr/bin/env python3
# ctest: once release-only timeout=180
"""./run and tools/analyse.py: what they pass on to the engine, and how they fail."""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, main, seconds

sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tools"))

import analyse  # noqa: E402  pylint: disable=wrong-import-position

MATE_IN_ONE = "6k1/5ppp/8/8/8/8/8/K3R3 w - - 0 1"
KING_ALONE = "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"  # stalemate


class Script(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)

    def call(self, *words, **variables):
        """Exit code and everything that is printed."""
        done = subprocess.run(words, cwd=self.folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, text=True, timeout=seconds(60), check=False,
                              env={**os.environ, **variables})
        return done.returncode, done.stdout


class Run(Script):
    def run_script(self, *words, **variables):
        return self.call(ROOT / "run", *words, **{"ENGINE": ENGINE, "SECONDS_TO_THINK": "1", **variables})

    def fails(self, message, *words, **variables):
        code, printed = self.run_script(*words, **variables)
        self.assertEqual(code, 1, printed)
        self.assertIn(message, printed)
        self.assertNotIn("bestmove", printed)

    def test_options_reach_the_engine(self):
        code, printed = self.run_script("--option", "MultiPV=2", "--option", "Use LMR=false")
        self.assertEqual(code, 0, printed)
        self.assertIn(" multipv 2 ", printed)
        self.assertNotIn(" multipv 3 ", printed)

    def test_tables_and_threads_from_the_environment(self):
        (self.folder / "no tables").mkdir()
        code, printed = self.run_script(*MATE_IN_ONE.split(), SYZYGY_PATH="no tables", THREADS="2")
        self.assertEqual(code, 0, printed)
        self.assertIn("info string Found 0 tablebases.", printed)
        self.assertRegex(printed, r"(?m)^bestmove e1e8$")

    def test_book_from_the_environment_relative_to_the_caller(self):
        (self.folder / "a book.bin").write_bytes(bytes(16))
        code, printed = self.run_script(BOOK_PATH="a book.bin")
        self.assertEqual(code, 0, printed)
        self.assertIn('info string book "a book.bin" loaded! (1 moves)', printed)

    def test_engine_relative_to_the_caller(self):
        (self.folder / "engine").symlink_to(Path(ENGINE).resolve())
        code, printed = self.run_script(ENGINE="engine")
        self.assertEqual(code, 0, printed)
        self.assertIn("bestmove", printed)

    def test_a_position_without_a_move_ends_at_once(self):
        code, printed = self.run_script(KING_ALONE)
        self.assertEqual(code, 0, printed)
        self.assertIn("info string No best move!", printed)
        self.assertNotIn("bestmove", printed)

    def test_what_cannot_be_is_said(self):
        self.fails("no option 'Foo'", "--option", "Foo=1")
        self.fails("wants NAME=VALUE, not 'Hash'", "--option", "Hash")
        self.fails("wants NAME=VALUE, not ''", "--option")
        self.fails("unknown option '--depth'", "--depth", "3")
        self.fails("names no program", ENGINE="nowhere")
        self.fails("not a FEN", "8/8")
        self.fails("not a FEN", "8/8/8/8/8/8/8/7", "w", ENGINE="nowhere")  # said before anything is built
        self.fails("SECONDS_TO_THINK must be", SECONDS_TO_THINK="soon")
        self.fails("THREADS must be", THREADS="33")
        self.fails("did not answer", ENGINE="/bin/true")


class Analyse(Script):
    def analyse(self, *words):
        return self.call(sys.executable, "-B", ROOT / "tools" / "analyse.py", "--engine", ENGINE, *words)

    def test_a_line_for_each_position(self):
        (self.folder / "positions.txt").write_text(f"{MATE_IN_ONE}\n\n{KING_ALONE}\n")
        code, printed = self.analyse("--depth", "3", "--file", "positions.txt", "startpos moves e2e4 e7e5 e1e2")
        self.assertEqual(code, 0, printed)
        moved, mate, stalemate = printed.splitlines()
        self.assertRegex(moved, r"^[a-h][78]\w+  depth \d  score [+-]\d+\.\d\d  nodes \d+  [a-h]\d[a-h]\d ")
        self.assertEqual((mate, stalemate), ("e1e8", "no legal move"))

    def test_reports(self):
        info = analyse.parse_info("info depth 9 seldepth 21 time 7 nodes 55 nps 7857 score mate -2 hashfull 3 "
                                  "tbhits 1 pv e8d8 e1e7")
        self.assertEqual(info, {"depth": 9, "seldepth": 21, "time": 7, "nodes": 55, "nps": 7857, "hashfull": 3,
                                "tbhits": 1, "score": "mate -2", "pv": ["e8d8", "e1e7"]})
        info = analyse.parse_info("info depth 1 seldepth 0 time 0 nodes 1 nps 1 score cp -7 lowerbound hashfull 0 "
                                  "tbhits 0 multipv 2 pv e2e4")
        self.assertEqual((info["score"], info["pv"]), ("-0.07", ["e2e4"]))
        self.assertEqual(analyse.describe("e2e4", info), "e2e4  depth 1  score -0.07  nodes 1  e2e4")
        self.assertEqual(analyse.describe("d2d4", info), "d2d4")

    def test_a_program_of_ones_own(self):
        with analyse.Engine(ENGINE, {"Hash": 16}) as engine:
            best, info = engine.go("startpos moves e2e4", "depth 5")
        self.assertEqual((best, info["depth"], info["nodes"]), (info["pv"][0], 5, 5289))

    def test_failures(self):
        self.assertEqual(self.analyse("--option", "Foo=1"), (1, "analyse.py: the engine has no option 'Foo'; "
                                                                "README.md lists them all\n"))
        self.assertEqual(self.analyse("startpos", "8/8/8/8/8/8/8/9 w"),
                         (1, "analyse.py: this is not a FEN (eight ranks of eight squares, divided by '/'): "
                             "8/8/8/8/8/8/8/9 w\n"))
        code, printed = self.analyse("--option", "Foo")
        self.assertEqual(code, 2)
        self.assertIn("NAME=VALUE", printed)
        code, printed = self.call(sys.executable, "-B", ROOT / "tools" / "analyse.py", "--engine", "/bin/true")
        self.assertEqual(code, 1)
        self.assertNotIn("Traceback", printed)

    def test_no_engine_is_left_behind(self):
        """The engine goes on at the end of its input, so a failing script must end it."""
        started = []

        class Recorded(subprocess.Popen):
            def __init__(self, *arguments, **keywords):
                super().__init__(*arguments, **keywords)
                started.append(self)

        subprocess.Popen, plain = Recorded, subprocess.Popen
        self.addCleanup(setattr, subprocess, "Popen", plain)
        with self.assertRaises(ValueError):
            analyse.Engine(ENGINE, {"Foo": 1})
        with self.assertRaises(KeyError), analyse.Engine(ENGINE):
            raise KeyError
        self.assertEqual([process.poll() for process in started], [0, 0])


if __name__ == "__main__":
    main()
