#!/usr/bin/env python3
# ctest: slow timeout=400
"""All sample answers: moves in their order, evaluations, exchanges, whole searches."""
import os
import subprocess
import sys
import unittest
from pathlib import Path

from engine_process import ENGINE, main, seconds

CHECKER = Path(os.environ.get("BRENQUIL_DATA", "nowhere")).parent / "vectors" / "check.py"


@unittest.skipUnless(CHECKER.is_file(), "the sample answers do not lie beside the repository")
class SampleAnswers(unittest.TestCase):
    QUICK = False

    def test_all_agree(self):
        command = [sys.executable, "-B", str(CHECKER), "--engine", ENGINE]
        done = subprocess.run(command + (["--quick"] if self.QUICK else []),
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=seconds(380), check=False)
        text = done.stdout.decode("utf-8", "replace")
        self.assertEqual(done.returncode, 0, text)
        self.assertRegex(text.splitlines()[-1], r"^[1-9]\d* passed, 0 failed$")


if __name__ == "__main__":
    main()
