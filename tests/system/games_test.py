#!/usr/bin/env python3
# ctest: slow serial timeout=600
"""Whole games between two processes, standard and Chess960, with one and with two threads."""
import re
import subprocess
import sys
import unittest

from engine_process import ENGINE, FACTOR, ROOT, main, seconds


class Games(unittest.TestCase):
    def play(self, games, *arguments):
        """Plays, and expects that nothing goes wrong. The clock is that of the engine; what the
        machine does beside it is not its fault, so a clock may be overdrawn a little."""
        command = [sys.executable, "-B", str(ROOT / "tools" / "play_games.py"), "--engine", ENGINE,
                   "--games", str(games), "--base", "300", "--increment", "10", "--option",
                   "Hash=4", "--margin", str(int(400 * FACTOR)), *arguments]
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.STDOUT, timeout=seconds(280), check=False)
        text = done.stdout.decode("utf-8", "replace")
        self.assertEqual(done.returncode, 0, text)
        self.assertTrue(re.match(
            rf"games {games}, illegal 0, time losses 0, crashes 0, lost lines 0, white \d+, "
            r"black \d+, draws \d+$", text.splitlines()[-1]), text)


class AllGames(Games):
    def test_twenty_games_with_one_and_two_threads(self):
        self.play(20, "--mixed", "--option2", "Threads=2", "--concurrency", "2")

    def test_games_with_two_threads_on_both_sides(self):
        self.play(4, "--mixed", "--option", "Threads=2", "--seed", "2")


if __name__ == "__main__":
    main()
