#!/usr/bin/env python3
# ctest: sanitized timeout=300
"""Games between two processes over a mix of settings."""
import subprocess
import sys
import tempfile
import unittest

from engine_process import ENGINE, FACTOR, ROOT, main, seconds


class Games(unittest.TestCase):
    def test_twelve_games_over_a_mix_of_settings(self):
        """The clock is that of the engine; what the machine does beside it is not its fault, so a
        clock may be overdrawn a little."""
        with tempfile.TemporaryDirectory() as logs:
            done = subprocess.run(
                [sys.executable, "-B", str(ROOT / "tools" / "soak"), "--engine", ENGINE, "--games",
                 "12", "--time", "0.3+0.005", "--margin", str(int(500 * FACTOR)), "--max-plies",
                 "160", "--patience", str(seconds(60)), "--logs", logs],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                timeout=seconds(280), check=False)
        text = done.stdout.decode("utf-8", "replace")
        self.assertEqual(done.returncode, 0, text)
        self.assertTrue(text.splitlines()[-1].startswith(
            "games 12, illegal 0, time losses 0, crashes 0, hangs 0, lost lines 0, "), text)
        for words in ("standard", "Chess960", "1 thread,", "2 threads", "hash 1", "hash 16"):
            self.assertIn(words, text)


if __name__ == "__main__":
    main()
