#!/usr/bin/env python3
# ctest: proof timeout=1200
"""The Makefile: with make and a compiler alone, the same engine. makefile_test.py is the short form."""
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

from determinism_test import signatures
from makefile_test import VERSION, make


@unittest.skipUnless(shutil.which("make"), "make is not installed")
class MakefileBuilds(unittest.TestCase):
    def assert_builds_the_engine(self, *compilers):
        compiler = next(filter(shutil.which, compilers), None)
        if compiler is None:
            self.skipTest(f"none of {compilers} is installed")
        with tempfile.TemporaryDirectory(prefix="brenquil-make-") as name:
            folder = pathlib.Path(name)
            program = folder / "openbench-1234abcd"
            printed, status = make(f"EXE={program}", f"CXX={compiler}", f"FOLDER={folder / 'objects'}",
                                   f"-j{os.cpu_count()}")
            self.assertEqual(status, 0, printed[-4000:])
            self.assertNotIn("warning", printed)
            bench = subprocess.run([program, "bench"], cwd=folder, check=True, text=True, stdout=subprocess.PIPE)
            self.assertRegex(bench.stdout.splitlines()[-1], rf"^{signatures()[10]} nodes \d+ nps$")
            # It gives its name and version, so the version has been found.
            hello = subprocess.run([program], cwd=folder, input="uci\nquit\n", check=True, text=True,
                                   stdout=subprocess.PIPE)
            self.assertIn(f"id name Brenquil {VERSION}\n", hello.stdout)

    def test_gcc(self):
        self.assert_builds_the_engine("g++", "g++-12")

    def test_clang(self):
        self.assert_builds_the_engine("clang++", "clang++-14")


if __name__ == "__main__":
    unittest.main()
