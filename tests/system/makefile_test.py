#!/usr/bin/env python3
# ctest: once release-only
"""The Makefile compiles and links what the build of the preset does, in the same way. Nothing is compiled here: the
compiler is a script that writes down what it is asked for. makefile_builds_test.py builds with real ones."""
import json
import os
import pathlib
import platform
import re
import shlex
import shutil
import subprocess
import tempfile
import unittest

from engine_process import ENGINE

ROOT = pathlib.Path(__file__).resolve().parents[2]
COMMANDS = pathlib.Path(ENGINE).with_name("compile_commands.json")
VERSION = re.search(r"project\(brenquil VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]

COMPILER = """#!/bin/sh
case " $* " in
" -dumpmachine ") echo '{machine}' ;;
*" -static "*" - "*) exit {has_no_static_library} ;;
*" - "*) ;;
*)
    echo "$*" >>'{calls}'
    for word; do
        [ "$before" != -o ] || : >"$word"
        before=$word
    done
    ;;
esac
"""


def make(*arguments):
    """Runs make in the repository; standard output and error together, and the exit status."""
    done = subprocess.run(["make", "-C", str(ROOT), "--no-print-directory", *arguments], check=False, text=True,
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    return done.stdout, done.returncode


def options(words):
    """What changes the program, of the words of a compiler. How each of them optimises while it links is its own."""
    return {word for word in words if word.startswith("-")
            and not re.match(r"-(W|I|flto|f(no-)?fat-lto|fuse-ld|o$|c$|MMD$|MP$|pthread$|DBRENQUIL_VERSION)", word)}


@unittest.skipUnless(shutil.which("make"), "make is not installed")
class Makefile(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-make-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def compiled_by_cmake(self):
        """The options of each source of the engine."""
        found = {}
        for entry in json.loads(COMMANDS.read_text()):
            path = pathlib.Path(entry["file"])
            if path.is_relative_to(ROOT / "src") and not path.is_relative_to(ROOT / "src" / "tables"):
                found[str(path.relative_to(ROOT))] = options(shlex.split(entry["command"])[1:])
        self.assertGreater(len(found), 50)
        return found

    def assert_asks_for_the_same(self, name, lto, has_static_libraries=True):
        compiler = self.folder / name
        calls = self.folder / "calls"
        compiler.write_text(COMPILER.format(machine=platform.machine() + "-linux-gnu", calls=calls,
                                            has_no_static_library=int(not has_static_libraries)))
        compiler.chmod(0o755)
        program = self.folder / "openbench-1234abcd"
        printed, status = make(f"EXE={program}", f"CXX={compiler}", f"FOLDER={self.folder / 'objects'}",
                               f"-j{os.cpu_count()}")
        self.assertEqual(status, 0, printed[-4000:])
        asked = [line.split() for line in calls.read_text().splitlines()]
        compiled = {}
        objects = []
        for words in asked[:-1]:
            source = words[words.index("-c") + 1]
            self.assertNotIn(source, compiled)
            compiled[source] = options(words)
            objects.append(words[words.index("-o") + 1])
            self.assertIn(lto, words)
            self.assertIn(f'-DBRENQUIL_VERSION="{VERSION}"', words)
        self.assertEqual(compiled, self.compiled_by_cmake())
        link = asked[-1]
        self.assertEqual(link[link.index("-o") + 1], str(program))
        self.assertEqual(sorted(word for word in link if word.endswith(".o")), sorted(objects))
        self.assertLessEqual({lto, "-O2", "-pthread", "-static" if has_static_libraries else "-no-pie"}, set(link))
        self.assertEqual("-static" in link, has_static_libraries)
        # Nothing has changed, so nothing is done again.
        make(f"EXE={program}", f"CXX={compiler}", f"FOLDER={self.folder / 'objects'}")
        self.assertEqual(len(calls.read_text().splitlines()), len(asked))

    @unittest.skipUnless(COMMANDS.is_file(), "the engine does not stand in its build folder")
    def test_gcc(self):
        self.assert_asks_for_the_same("g++", "-flto=auto")

    @unittest.skipUnless(COMMANDS.is_file(), "the engine does not stand in its build folder")
    def test_clang(self):
        self.assert_asks_for_the_same("clang++", "-flto=thin")

    @unittest.skipUnless(COMMANDS.is_file(), "the engine does not stand in its build folder")
    def test_without_static_libraries(self):
        self.assert_asks_for_the_same("g++", "-flto=auto", has_static_libraries=False)

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
