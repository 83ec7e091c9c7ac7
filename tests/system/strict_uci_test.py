#!/usr/bin/env python3
# ctest: sanitized timeout=300
"""Strict UCI with the real program: the switch, the name, the end of input, and bad input in both dialects."""
import os
import shutil
import subprocess
import time

from engine_process import ENGINE, SYSTEM, EngineTestCase, is_end, main, seconds

MATED = "position fen 7k/6Q1/6K1/8/8/8/8/8 b - - 0 1"
STALEMATED = "position fen 7k/5Q2/6K1/8/8/8/8/8 b - - 0 1"

# What clients send by mistake; after each the engine answers as before.
BAD_LINES = (
    "go depth 0", "go depth -1", "go depth many", "go depth", "go nodes 0", "go nodes -5", "go wtime -1 btime -1",
    "go wtime 0 btime 0", "go movetime -5", "go movetime 0", "go fast", "go mate 0", "go mate -2",
    "go depth 2 searchmoves", "go depth 2 searchmoves e2e5 x9", "go depth 2 movestogo 0", "go depth 99999999999 nodes 9",
    "setoption", "setoption name", "setoption name Hash", "setoption name Hash value", "setoption name Hash value -1",
    "setoption name Threads value 0", "setoption name MultiPV value x", "setoption value 3", "setoption name Nonsense value 1",
    "position", "position fen", "position fen x y z", "position startpos moves e2e5 a9a9",
    "position fen 4k3/8/8/8/8/8/8/4K3 w - - 0 100000", "ponderhit", "stop", "debug", "go\t", "", "   ", "register later",
)


def run(*arguments, program=ENGINE, text=""):
    return subprocess.run([program, *arguments], input=text, capture_output=True, text=True, timeout=seconds(60))


class Arguments(EngineTestCase):
    def test_version_and_help_go_to_standard_output(self):
        version = run("--version")
        self.assertEqual((version.stdout, version.stderr, version.returncode), ("Brenquil 3.00\n", "", 0))
        usage = run("--help")
        self.assertEqual((usage.stderr, usage.returncode), ("", 0))
        for word in ("--strict-uci", "bench", "--version", "man 6 brenquil"):
            self.assertIn(word, usage.stdout)

    def test_unknown_argument_is_an_error_of_status_two(self):
        for words in (["--strict"], ["benchmark"], ["--strict-uci", "-x"], ["bench", "x"], ["bench", "3", "0"],
                      ["bench", "3", "1", "-1"], ["bench", "3", "1", "1", "1"]):
            with self.subTest(words=words):
                refused = run(*words)
                self.assertEqual((refused.stdout, refused.returncode), ("", 2))
                self.assertTrue(refused.stderr.startswith("brenquil: "))

    def test_bench_counts_the_same_nodes_in_both_dialects(self):
        totals = {run(*words).stdout.splitlines()[-1].split()[0]
                  for words in (["bench", "4"], ["--strict-uci", "bench", "4"], ["bench", "4", "1", "16"])}
        self.assertEqual(len(totals), 1)


class Switch(EngineTestCase):
    def test_end_of_input_ends_the_program(self):
        ended = run("--strict-uci", text="uci\nisready\n")
        self.assertEqual(ended.returncode, 0)
        self.assertTrue(ended.stdout.endswith("uciok\nreadyok\n"))

    def test_end_of_input_in_the_middle_of_a_search_ends_the_program(self):
        begin = time.monotonic()
        ended = run("--strict-uci", text="uci\nsetoption name Threads value 2\ngo infinite\n")
        self.assertEqual(ended.returncode, 0)
        self.assertLess(time.monotonic() - begin, seconds(30))

    def test_client_that_dies_in_the_middle_of_a_perft_leaves_no_process(self):
        if SYSTEM != "Linux":
            self.skipTest("only there it is known before something is written")
        with subprocess.Popen([ENGINE, "--strict-uci"], cwd=self.directory, stdin=subprocess.PIPE,
                              stdout=subprocess.PIPE) as engine:
            engine.stdin.write(b"uci\nisready\ngo perft 12\n")
            engine.stdin.flush()
            while engine.stdout.readline() != b"readyok\n":
                pass
            engine.stdout.close()
            engine.stdin.close()
            try:
                self.assertEqual(engine.wait(seconds(30)), 0)
            finally:
                engine.kill()

    def test_perft_of_a_client_that_has_no_more_to_say_is_answered(self):
        self.assertTrue(run("--strict-uci", text="uci\ngo perft 5\n").stdout.endswith("Nodes searched: 4865609\n"))

    def test_name_of_the_program_is_the_switch(self):
        if SYSTEM != "Linux":
            self.skipTest("the emulator starts a program by another name")
        copy = os.path.join(self.directory, "my-strict")
        shutil.copy(ENGINE, copy)
        self.assertIn("UCI_ShowWDL", run(program=copy, text="uci\n").stdout)
        self.assertNotIn("UCI_ShowWDL", run(text="uci\nquit\n").stdout)

    def test_options_are_those_of_the_settled_dialect_and_four_more(self):
        settled = run(text="uci\nquit\n").stdout.splitlines()
        strict = run("--strict-uci", text="uci\nquit\n").stdout.splitlines()
        added = [line.split(" type ")[0] for line in strict if line not in settled]
        self.assertEqual(added, ["option name SyzygyPath", "option name Move Overhead", "option name Clear Hash",
                                 "option name UCI_ShowWDL"])
        self.assertEqual([line for line in settled if line not in strict], [])


class Strict(EngineTestCase):
    arguments = ("--strict-uci",)

    def assert_answer(self, lines):
        """The best move is the first of the last line, which has a score."""
        shown = [line for line in lines if " pv " in line]
        self.assertTrue(shown, lines)
        self.assertIn(" score ", shown[-1])
        self.assertEqual(lines[-1].split()[1], shown[-1].split(" pv ")[1].split()[0])

    def test_every_search_shows_its_last_line(self):
        engine = self.start_uci()
        for line in ("go depth 1", "go depth 9", "go nodes 1", "go nodes 5000", "go movetime 1", "go movetime 60",
                     "go wtime 1 btime 1", "go wtime 1000 btime 1000 winc 10 binc 10", "go mate 1"):
            for position in ("position startpos", "position fen 6k1/5ppp/8/8/8/8/8/R6K w - - 0 1",
                             "position fen 8/8/8/8/8/5k2/6p1/6K1 w - - 0 1"):
                self.assert_answer(engine.search("ucinewgame", position, line))
        self.assert_quits(engine)

    def test_infinite_and_an_immediate_stop_two_hundred_times(self):
        engine = self.start_uci()
        for _ in range(200):
            self.assert_answer(engine.search("go infinite", "stop"))
        self.assert_quits(engine)

    def test_positions_without_moves(self):
        engine = self.start_uci()
        for _ in range(3):
            self.assertEqual(engine.search(MATED, "go movetime 100"), ["info depth 0 score mate 0", "bestmove (none)"])
            self.assertEqual(engine.search(STALEMATED, "go depth 3"), ["info depth 0 score cp 0", "bestmove (none)"])
        self.assert_answer(engine.search("position startpos", "go depth 2"))
        engine.send(MATED, "go infinite")
        self.assertEqual(engine.ready(), [])
        self.assertEqual(engine.search("stop")[-1], "bestmove (none)")
        self.assert_quits(engine)

    def test_pondering_waits_for_the_hit_and_then_has_its_clock(self):
        engine = self.start_uci()
        engine.send("position startpos", "go ponder wtime 2000 btime 2000")
        time.sleep(0.5)
        before = engine.ready()
        self.assertFalse([line for line in before if is_end(line)])
        self.assert_answer(before + engine.search("ponderhit", limit=10))
        engine.send("go ponder depth 1")
        self.assertFalse([line for line in engine.ready() if is_end(line)])
        self.assertTrue(is_end(engine.search("ponderhit")[-1]))
        engine.send("go ponder")
        self.assert_answer(engine.search("stop"))
        self.assert_quits(engine)

    def test_game_of_a_thousand_moves_and_late_move_numbers(self):
        engine = self.start_uci()
        moves = " ".join(["g1f3 g8f6 f3g1 f6g8"] * 500)
        lines = engine.search(f"position startpos moves {moves}", "go depth 4")
        self.assertFalse([line for line in lines if "Illegal" in line])
        self.assert_answer(lines)
        self.assert_answer(engine.search("position fen 4k3/8/8/8/8/8/4P3/4K3 w - - 0 9000 moves e2e4", "go depth 4"))
        self.assert_quits(engine)

    def test_repeated_search_shows_as_long_a_line(self):
        engine = self.start_uci()
        length = lambda lines: len([line for line in lines if " pv " in line][-1].split(" pv ")[1].split())
        first = engine.search("position startpos", "go depth 9")
        again = engine.search("go depth 9")
        self.assertGreaterEqual(length(again), min(9, length(first)))
        self.assert_answer(again)
        self.assert_quits(engine)


class BadInput(EngineTestCase):
    """Every answer is there afterwards, in either dialect."""

    def obey_all(self, engine):
        for line in BAD_LINES:
            engine.send("position startpos", line, "stop")
            engine.ready()
        lines = engine.search("position startpos", "go depth 3")
        self.assertTrue(lines[-1].startswith("bestmove "), lines)
        self.assert_quits(engine)

    def test_in_the_settled_dialect(self):
        self.obey_all(self.start_uci())

    def test_in_strict_uci(self):
        self.arguments = ("--strict-uci",)
        engine = self.start_uci()
        for line in BAD_LINES:
            if line.split(" ")[0] == "go":
                with self.subTest(line=line):
                    self.assertTrue(engine.search("position startpos", line)[-1].startswith("bestmove "))
        self.obey_all(engine)


if __name__ == "__main__":
    main()
