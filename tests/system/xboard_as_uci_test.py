#!/usr/bin/env python3
# ctest: once timeout=300
"""The adapter that lets an engine of XBoard's protocol play in matches: what each side is told, and how it ends."""
import os
import queue
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools" / "xboard_as_uci"
FAKE = ROOT / "tests" / "system" / "fake_xboard_engine.py"
LONGEST_WAIT = 60  # seconds


class Adapter(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-xboard-")
        self.addCleanup(folder.cleanup)
        self.log = Path(folder.name) / "told"

    def start(self, misdeed="", command=None):
        command = command or [sys.executable, "-B", str(FAKE), str(self.log), misdeed]
        self.process = subprocess.Popen([sys.executable, "-B", str(TOOL), *command], stdin=subprocess.PIPE, text=True,
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, bufsize=1)
        self.lines = queue.Queue()
        reader = threading.Thread(target=self.read, args=(self.process, self.lines), daemon=True)
        reader.start()
        self.addCleanup(self.end, self.process, reader)

    @staticmethod
    def read(process, lines):
        for line in process.stdout:
            lines.put(line.strip())
        lines.put(None)

    @staticmethod
    def end(process, reader):
        process.kill()
        process.wait()
        reader.join(LONGEST_WAIT)
        for stream in (process.stdin, process.stdout, process.stderr):
            stream.close()

    def send(self, *lines):
        self.process.stdin.write("".join(line + "\n" for line in lines))
        self.process.stdin.flush()

    def until(self, beginning):
        """All lines up to one that begins so."""
        lines = []
        while not lines or not lines[-1].startswith(beginning):
            line = self.lines.get(timeout=LONGEST_WAIT)
            self.assertIsNotNone(line, lines)
            lines.append(line)
        return lines

    def play(self, position, go="go wtime 5000 btime 3000 winc 50 binc 50"):
        self.send(f"position {position}", go)
        return self.until("bestmove")

    def told(self):
        return self.log.read_text().splitlines()

    def test_client_is_told_name_options_thinking_and_move(self):
        self.start()
        self.send("uci")
        self.assertEqual(self.until("uciok"), ["id name Fake One", "option name Hash type spin default 64 min 1 max 65536",
                                               "uciok"])
        self.send("setoption name Hash value 32", "isready")
        self.assertEqual(self.until("readyok"), ["readyok"])
        self.assertEqual(self.play("startpos"), ["info depth 3 score cp -22 time 10 nodes 1588", "bestmove a2a3"])
        self.assertEqual(self.told()[:4], ["xboard", "protover 2", "memory 32", "ping 1"])

    def test_engine_is_told_the_position_once_and_then_the_moves(self):
        self.start()
        self.send("uci")
        self.assertEqual(self.play("startpos moves e2e4")[-1], "bestmove a7a5")
        self.assertEqual(self.play("startpos moves e2e4 a7a5 d2d4")[-1], "bestmove a5a4")
        start = "setboard rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
        self.assertEqual(self.told()[2:17], ["new", "easy", "post", "force", start, "e2e4", "level 0 0:03 0", "time 300",
                                           "otim 500", "go", "force", "d2d4", "time 300", "otim 500", "go"])

    def test_another_game_is_set_up_anew(self):
        self.start()
        self.send("uci")
        self.play("startpos moves e2e4")
        self.assertEqual(self.play("startpos moves d2d4")[-1], "bestmove a7a5")  # a move that was taken back
        self.send("ucinewgame")
        self.play("startpos moves d2d4 a7a5 e2e4")
        self.assertEqual(len([line for line in self.told() if line.startswith("setboard ")]), 3)
        self.assertEqual(len([line for line in self.told() if line.startswith("level ")]), 3)

    def test_castling_is_written_as_uci_has_it_and_goes_on(self):
        self.start()
        self.send("uci")
        for fen, castling, reply in (("4k3/8/8/8/8/8/8/4K2R w K - 0 1", "e1g1", "e8e7"),
                                     ("r3k3/8/8/8/8/8/8/4K3 b q - 0 1", "e8c8", "e1e2")):
            self.assertEqual(self.play(f"fen {fen}")[-1], f"bestmove {castling}")
            self.assertRegex(self.play(f"fen {fen} moves {castling} {reply}")[-1], "^bestmove [a-h][1-8][a-h][1-8]$")
        self.assertEqual(len([line for line in self.told() if line.startswith("setboard ")]), 2)

    def test_other_limits(self):
        self.start()
        self.send("uci")
        self.play("startpos", "go movetime 2500")
        self.play("startpos", "go depth 7")
        self.play("startpos moves a2a3 a7a5", "go wtime 61000 btime 5 winc 2000 movestogo 40")
        told = " ".join(line for line in self.told() if line.split()[0] in ("st", "sd", "level", "time", "otim"))
        # What one search was told does not hold for the next. A day of 24 hours stands for no limit.
        self.assertEqual(told, "st 2 sd 7 level 0 1440:00 0 time 8640000 otim 8640000 sd 99 level 40 1:01 2 time 6100 otim 1")

    def test_limits_of_one_search_are_lifted_for_the_next(self):
        self.start()
        self.send("uci")
        moves = ""
        for go, reply in (("wtime 4000", " e7e5"), ("depth 7 movetime 1000", " d7d5"), ("wtime 4000", "")):
            moves += " " + self.play(f"startpos moves{moves}", f"go {go}")[-1].split()[1] + reply
        told = " ".join(line for line in self.told() if line.split()[0] in ("st", "sd", "level"))
        self.assertEqual(told, "level 0 0:04 0 sd 7 st 1 sd 99 level 0 0:04 0")

    def test_stop_makes_it_move(self):
        self.start()
        self.send("uci", "position startpos", "go infinite")
        self.until("info depth")
        self.send("isready")
        self.assertEqual(self.until("readyok"), ["readyok"])
        self.send("stop")
        self.assertEqual(self.until("bestmove"), ["bestmove a2a3"])
        self.assertIn("?", self.told())

    def test_engine_that_dies_ends_the_adapter(self):
        self.start("dies")
        self.send("uci", "position startpos", "go movetime 1000")
        self.assertIn("status 3", self.until("info string")[-1])
        self.assertEqual(self.process.wait(LONGEST_WAIT), 1)

    def test_engine_that_tells_no_features_is_called_by_its_program(self):
        self.start("no features")
        self.send("uci")
        self.assertEqual(self.until("uciok")[0], f"id name {sys.executable}")

    def test_quit_and_the_end_of_input_leave_no_engine(self):
        for misdeed, last in (("", ["quit"]), ("", []), ("stays", [])):
            with self.subTest(misdeed=misdeed, last=last):
                self.start(misdeed)
                self.send("uci", *last)
                self.process.stdin.close()
                self.assertEqual(self.process.wait(LONGEST_WAIT), 0)
                self.assertEqual(self.told()[-1], "quit")
                self.assertEqual(self.engines(), [])

    def engines(self):
        """Processes of the fake that are still running."""
        found = []
        for path in Path("/proc").glob("[0-9]*/cmdline"):
            try:
                if str(self.log).encode() in path.read_bytes().split(b"\0"):
                    found.append(path.parent.name)
            except OSError:
                pass  # it has ended in the meantime
        return found

    def test_program_that_is_not_there_is_an_error_of_status_two(self):
        for words in (["/no/such/engine"], []):
            done = subprocess.run([sys.executable, "-B", str(TOOL), *words], capture_output=True, text=True,
                                  stdin=subprocess.DEVNULL, timeout=LONGEST_WAIT, check=False)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertNotIn("Traceback", done.stderr)

    def test_real_engine_plays_on(self):
        phalanx = shutil.which("phalanx", path=os.environ.get("PATH", "") + ":/usr/games")
        if not phalanx:
            self.skipTest("phalanx is not installed")
        self.start(command=[phalanx, "-b-", "-l-"])
        self.send("uci", "isready")
        self.assertIn("id name Phalanx XXV", self.until("readyok"))
        first = self.play("startpos moves e2e4")
        move = first[-1].split()[1]
        self.assertRegex(move, "^[a-h][1-8][a-h][1-8]$")
        self.assertTrue(any(line.startswith("info depth ") for line in first))
        reply = "d2d4" if move != "d7d5" else "e4d5"
        self.assertRegex(self.play(f"startpos moves e2e4 {move} {reply}")[-1], "^bestmove [a-h][1-8][a-h][1-8]$")
        begin = time.monotonic()
        self.send("quit")
        self.assertEqual(self.process.wait(LONGEST_WAIT), 0)
        self.assertLess(time.monotonic() - begin, LONGEST_WAIT)


if __name__ == "__main__":
    unittest.main()
