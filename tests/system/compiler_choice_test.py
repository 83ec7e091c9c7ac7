#!/usr/bin/env python3
# ctest: slow timeout=300
"""CXX chooses the compiler: for the presets of CMake, and for the scripts, which share one function."""
import json
import os
import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
CACHED = re.compile(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", re.MULTILINE)
# Without these a folder is configured in a second or two; nothing is compiled.
SMALL = ("-DBRENQUIL_TESTS=OFF", "-DBRENQUIL_BENCH=OFF", "-DBRENQUIL_LTO=OFF")
# The presets that are for one compiler, by themselves or by their toolchain.
OWN_COMPILER = {"release-clang", "asan", "fuzz", "windows", "package-windows", "package-windows-v3", "arm64",
                "package-arm64", "web", "web-single"}


def installed(*names):
    return next(filter(shutil.which, names), None)


class CompilerChoice(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-compiler-")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)
        self.clang = installed("clang++", "clang++-14")
        if self.clang is None or installed("cmake") is None:
            self.skipTest("there are no two compilers here to choose from, or no CMake")

    def run_program(self, *command, compiler=None):
        environment = {name: value for name, value in os.environ.items() if name != "CXX"}
        if compiler:
            environment["CXX"] = compiler
        done = subprocess.run(command, cwd=ROOT, env=environment, check=False, text=True, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.stdout, done.returncode

    def script(self, preset, compiler=None):
        """Configures as the scripts do, in a folder of its own, which stands in for that in build/."""
        text = f'source tools/common.sh; build={self.folder}; '
        # The same function with another folder; where it builds is not what is tested.
        text += 'eval "$(declare -f configure | sed "s,build/,$build/,g")"; '
        text += f'configure {preset} -B "$build/{preset}" {" ".join(SMALL)}'
        return self.run_program("bash", "-euo", "pipefail", "-c", text, compiler=compiler)

    def compiler_in(self, folder):
        return pathlib.Path(CACHED.search((folder / "CMakeCache.txt").read_text())[1]).name

    def test_no_preset_but_those_for_one_compiler_names_one(self):
        presets = {preset["name"]: preset for preset in
                   json.loads((ROOT / "CMakePresets.json").read_text())["configurePresets"]}

        def names_compiler(name):
            preset = presets[name]
            parents = preset.get("inherits", [])
            return ("toolchainFile" in preset or "CMAKE_CXX_COMPILER" in preset.get("cacheVariables", {})
                    or any(map(names_compiler, [parents] if isinstance(parents, str) else parents)))

        self.assertEqual({name for name in presets if names_compiler(name)}, OWN_COMPILER)

    def test_bare_cmake(self):
        printed, status = self.run_program("cmake", "--preset", "release", "-B", str(self.folder / "bare"), *SMALL,
                                           compiler=self.clang)
        self.assertEqual(status, 0, printed)
        self.assertEqual(self.compiler_in(self.folder / "bare"), self.clang)

    def test_scripts_take_cxx_and_else_gcc_and_change_it_in_a_folder_that_is_there(self):
        for compiler, expected in ((None, r"g\+\+.*"), (self.clang, re.escape(self.clang)), (None, r"g\+\+.*")):
            printed, status = self.script("release", compiler)
            self.assertEqual(status, 0, printed)
            self.assertRegex(self.compiler_in(self.folder / "release"), f"^{expected}$")
            # What else a preset says is not lost along the way.
            cache = (self.folder / "release" / "CMakeCache.txt").read_text()
            self.assertRegex(cache, r"(?m)^CMAKE_BUILD_TYPE:\w+=Release$")
            self.assertRegex(cache, r"(?m)^BRENQUIL_TESTS:\w+=OFF$")

    def test_compiler_that_is_not_there_is_named(self):
        printed, status = self.script("release", "no-such-compiler")
        self.assertNotEqual(status, 0)
        self.assertIn("no-such-compiler", printed)


if __name__ == "__main__":
    unittest.main()
