#!/usr/bin/env python3
# ctest: once release-only
"""The tool that compares the speed of two builds."""
import importlib.machinery
import importlib.util
import os
import stat
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine_process import ENGINE, ROOT, main

TOOL = ROOT / "tools" / "compare_speed"

# A build that searches another tree: the depth of each search is one more.
OTHER_TREE = """#!/bin/sh
if [ "$1" = bench ]; then exec '{engine}' "$@"; fi
sed -u 's/^go depth 2$/go depth 3/' | '{engine}'
"""

# A build that has something to do before it reads its first line.
SLOW_START = """#!/bin/sh
i=0
while [ $i -lt 30000 ]; do i=$((i + 1)); done
exec '{engine}' "$@"
"""


def load():
    loader = importlib.machinery.SourceFileLoader("compare_speed", str(TOOL))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader("compare_speed",
                                                                            loader))
    loader.exec_module(module)
    return module


def compare(*arguments):
    return subprocess.run([sys.executable, TOOL, *arguments], capture_output=True, text=True,
                          timeout=240, check=False)


@unittest.skipUnless(sys.platform == "linux", "reads the clock of another process as Linux does")
class CompareSpeed(unittest.TestCase):
    def test_a_build_against_itself(self):
        run = compare("--rounds", "1", "--depth", "2", ENGINE, ENGINE)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertRegex(run.stdout, r"^new over old: \d\.\d{4}, 95 % \d+\.\d{4} to \d+\.\d{4}, "
                                     r"\d\d pairs at depth 2\n")

    def test_processes(self):
        run = compare("--processes", "--rounds", "1", "--depth", "2", ENGINE, ENGINE)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertRegex(run.stdout, r"^new over old: \d\.\d{4}, from \d\.\d{4} to \d+\.\d{4}, \d\d positions in "
                                     r"processes of their own at depth 2\n$")

    def test_the_time_of_a_process_is_counted_from_its_start(self):
        with tempfile.TemporaryDirectory() as folder:
            slow = Path(folder) / "slow"
            slow.write_text(SLOW_START.format(engine=ENGINE), encoding="utf-8")
            slow.chmod(slow.stat().st_mode | stat.S_IXUSR)
            run = compare("--processes", "--rounds", "1", "--depth", "1", ENGINE, str(slow))
            self.assertEqual(run.returncode, 0, run.stderr)
            self.assertGreater(float(run.stdout.split()[3].strip(",")), 2)

    @unittest.skipIf((os.cpu_count() or 1) < 2, "one processor")
    def test_threads_against_one(self):
        run = compare("--rounds", "1", "--depth", "4", "--threads", "2", ENGINE, ENGINE)
        self.assertEqual(run.returncode, 0, run.stderr)
        self.assertRegex(run.stdout, r"nodes a second with 2 threads: \d+\.\d{4}, 95 % ")

    def test_more_threads_than_processors_are_refused(self):
        run = compare("--threads", "100000", ENGINE, ENGINE)
        self.assertIn("--threads goes from 1 to ", run.stderr)

    def test_another_tree_is_refused(self):
        with tempfile.TemporaryDirectory() as folder:
            other = Path(folder) / "other"
            other.write_text(OTHER_TREE.format(engine=ENGINE), encoding="utf-8")
            other.chmod(other.stat().st_mode | stat.S_IXUSR)
            for more in ([], ["--processes"]):
                run = compare(*more, "--rounds", "1", "--depth", "2", ENGINE, str(other))
                self.assertNotEqual(run.returncode, 0)
                self.assertRegex(run.stderr, r"compare_speed: \d+ nodes against \d+ in \S+ [wb] ")

    def test_what_is_no_engine_is_named(self):
        self.assertIn("/no/engine is no program", compare("/no/engine", ENGINE).stderr)
        self.assertIn("names no positions", compare(ENGINE, "/bin/true").stderr)


class Interval(unittest.TestCase):
    def test_of_the_median_is_that_of_the_signs(self):
        module = load()
        self.assertEqual(module.median_interval([3, 1, 2]), (1, 3))
        # 100 values: the 40th and 62nd in order, a little more than 95 %.
        self.assertEqual(module.median_interval(range(1, 101)), (41, 61))


if __name__ == "__main__":
    main()
