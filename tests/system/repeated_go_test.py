#!/usr/bin/env python3
# ctest: sanitized timeout=300
"""No `go` is lost among many: tools/repeat_go, a short run. One search thread in some fifty was, under Wine."""
import subprocess
import sys
import unittest

from engine_process import ENGINE, ROOT, main, seconds

ROUNDS = 300


class RepeatedGo(unittest.TestCase):
    def test_every_go_is_answered(self):
        for threads in (1, 3):
            done = subprocess.run(
                [sys.executable, "-B", str(ROOT / "tools" / "repeat_go"), "--engine", ENGINE, "--rounds", str(ROUNDS),
                 "--threads", str(threads), "--patience", str(seconds(60))],
                stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds(140),
                check=False)
            # On a slow machine lines of progress come first.
            self.assertEqual(done.stdout.decode().splitlines()[-1:], [f"{ROUNDS} rounds, none lost, exit code 0"])


if __name__ == "__main__":
    main()
