#!/usr/bin/env python3
# ctest: once release-only
"""Every script and tool tells what it does when it is asked, and refuses what it does not know.

Once `tools/pgo --help` began to build, and some scripts took no notice of a wrong word. Nothing is built
or installed here: the programs that would do it are replaced by one that writes down that it was called.
"""
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

from engine_process import ROOT, main, seconds

# Scripts that people or ./test start by other ways than their name.
BY_PYTHON = ["tests/packaging/packages_check.py"]
STUBBED = ["cmake", "ctest", "ninja", "make", "g++", "gcc", "clang++", "apt-get", "sudo", "dpkg", "wine", "wineboot",
           "qemu-aarch64", "debootstrap", "valgrind"]
STUB = """#!/bin/sh
echo "$0 $*" >>'{calls}'
exit 97
"""


def scripts():
    """The programs of the repository that people start, each as the words that start it."""
    folders = [ROOT, ROOT / ".ci", ROOT / "tools"]
    files = [path for folder in folders for path in sorted(folder.iterdir()) if path.is_file()]
    for path in files:
        with path.open("rb") as file:
            is_script = file.read(2) == b"#!"
        if is_script:
            yield str(path.relative_to(ROOT)), [str(path)]
    for name in BY_PYTHON:
        yield name, [sys.executable, "-B", str(ROOT / name)]


class Scripts(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-scripts-")
        self.addCleanup(folder.cleanup)
        self.calls = Path(folder.name) / "calls"
        self.home = Path(folder.name) / "home"
        self.home.mkdir()
        stubs = Path(folder.name) / "bin"
        stubs.mkdir()
        for name in STUBBED:
            (stubs / name).write_text(STUB.format(calls=self.calls))
            (stubs / name).chmod(0o755)
        self.environment = dict(os.environ, PATH=f"{stubs}:{os.environ['PATH']}", HOME=str(self.home),
                                PYTHONDONTWRITEBYTECODE="1")

    def ask(self, command, *arguments):
        """Runs a script in an empty folder."""
        self.calls.unlink(missing_ok=True)
        done = subprocess.run([*command, *arguments], cwd=self.home, env=self.environment, stdin=subprocess.DEVNULL,
                              capture_output=True, text=True, timeout=seconds(60), check=False)
        self.assertFalse(self.calls.exists(), self.calls.exists() and self.calls.read_text())
        self.assertEqual(list(self.home.iterdir()), [])
        return done

    def test_all_are_found(self):
        names = [name for name, _ in scripts()]
        self.assertLessEqual({"run", "test", "package", ".ci/run", "tools/pgo", "tools/fuzz", "tools/wine"}, set(names))
        for name, command in scripts():
            if len(command) == 1:
                self.assertTrue(os.access(command[0], os.X_OK), f"{name} cannot be started")

    def test_asked_for_help_they_tell_what_they_do_and_do_nothing(self):
        for name, command in scripts():
            for option in ("--help", "-h"):
                with self.subTest(f"{name} {option}"):
                    done = self.ask(command, option)
                    self.assertEqual((done.returncode, done.stderr), (0, ""))
                    self.assertGreaterEqual(len(done.stdout.splitlines()), 3)
                    known_as = "./test" if name == ".ci/run" else Path(name).name
                    self.assertIn(known_as, done.stdout)

    def test_what_they_do_not_know_they_refuse(self):
        for name, command in scripts():
            for arguments in (["--no-such-option"], ["no-such-word"], ["--no-such-option", "no-such-word"]):
                with self.subTest(" ".join([name, *arguments])):
                    done = self.ask(command, *arguments)
                    self.assertNotEqual(done.returncode, 0)
                    self.assertNotIn("Traceback", done.stderr)
                    self.assertTrue(done.stderr.strip())

    def test_options_without_their_value_or_one_too_many(self):
        for line in ("tools/fuzz --runs", "tools/fuzz --seconds soon", "tools/fuzz --corpus", "tools/fuzz --sum nobody",
                     "tools/wine folder", "tools/wine folder --begin", "tools/wine folder --start now",
                     "tools/coverage --report twice", "tools/nalimov_prove 4 5", "tools/pgo now", "package --check all",
                     "run --option", "tools/measure_strength --games", "tools/measure_strength --read",
                     "tools/xboard_as_uci", "tools/setup build nothing", "test quick quicker", "tools/check_includes.py a b"):
            with self.subTest(line):
                name, *arguments = line.split()
                done = self.ask([str(ROOT / name)], *arguments)
                self.assertNotEqual(done.returncode, 0)
                self.assertIn(Path(name).name, done.stderr)
                self.assertNotIn("unbound", done.stderr)


if __name__ == "__main__":
    main()
