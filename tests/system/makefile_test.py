#!/usr/bin/env python3
# ctest: slow release-only timeout=1200
"""The Makefile: with make and a compiler alone, the same engine."""
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

from determinism_test import signatures

ROOT = pathlib.Path(__file__).resolve().parents[2]


def make(*arguments):
    """Runs make in the repository; standard output and error together, and the exit status."""
    done = subprocess.run(["make", "-C", str(ROOT), "--no-print-directory", *arguments], check=False, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.stdout, done.returncode


@unittest.skipUnless(shutil.which("make"), "make is not installed")
class Makefile(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-make-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def assert_builds_the_engine(self, *compilers):
        compiler = next(filter(shutil.which, compilers), None)
        if compiler is None:
            self.skipTest(f"none of {compilers} is installed")
        program = self.folder / "openbench-1234abcd"
        printed, status = make(f"EXE={program}", f"CXX={compiler}", f"FOLDER={self.folder / 'objects'}",
                               f"-j{os.cpu_count()}")
        self.assertEqual(status, 0, printed[-4000:])
        self.assertNotIn("warning", printed)
        bench = subprocess.run([program, "bench"], cwd=self.folder, check=True, text=True, stdout=subprocess.PIPE)
        self.assertRegex(bench.stdout.splitlines()[-1], rf"^{signatures()[10]} nodes \d+ nps$")
        # It says who it is, so the version has been found.
        version = re.search(r"project\(brenquil VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
        hello = subprocess.run([program], cwd=self.folder, input="uci\nquit\n", check=True, text=True,
                               stdout=subprocess.PIPE)
        self.assertIn(f"id name Brenquil {version}\n", hello.stdout)

    def test_gcc(self):
        self.assert_builds_the_engine("g++", "g++-12")

    def test_clang(self):
        self.assert_builds_the_engine("clang++", "clang++-14")

    def test_a_compiler_that_is_not_there_is_named(self):
        printed, status = make("CXX=no-such-compiler")
        self.assertNotEqual(status, 0)
        self.assertIn("'no-such-compiler' does not run", printed)

    def test_help_and_nothing_built(self):
        printed, status = make("help")
        self.assertEqual(status, 0)
        self.assertIn("make EXE=name CXX=clang++", printed)


if __name__ == "__main__":
    unittest.main()
