#!/usr/bin/env python3
# ctest: sanitized timeout=600
"""Sessions that end at random moments in every state: tools/end_sessions, a short run."""
import os
import subprocess
import sys
import unittest

from engine_process import ENGINE, ROOT, main, seconds

ENDS = 40


class RandomEnds(unittest.TestCase):
    def test_every_end_is_clean(self):
        done = subprocess.run(
            [sys.executable, "-B", str(ROOT / "tools" / "end_sessions"), "--engine", ENGINE, "--ends", str(ENDS),
             "--patience", str(seconds(60))],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds(580),
            check=False, env=os.environ)
        text = done.stdout.decode("utf-8", "replace")
        self.assertEqual(done.returncode, 0, text)
        self.assertEqual(text.splitlines()[-1], f"ends {ENDS}, clean {ENDS}, not clean 0")


if __name__ == "__main__":
    main()
