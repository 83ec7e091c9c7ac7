"""The checker of the includes finds what it is there for."""

import importlib.util
import pathlib
import tempfile
import unittest

CHECKER = pathlib.Path(__file__).parents[2] / "tools" / "check_includes.py"
module_spec = importlib.util.spec_from_file_location("check_includes", CHECKER)
check_includes = importlib.util.module_from_spec(module_spec)
module_spec.loader.exec_module(check_includes)


class CheckIncludesTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = pathlib.Path(folder.name).resolve()
        self.write("platform/CMakeLists.txt", "brenquil_room(platform)\n")
        self.write("board/CMakeLists.txt", "brenquil_room(board platform)\n")
        self.write("bases/CMakeLists.txt", "brenquil_room(bases board)\n")
        self.write("bases/one/CMakeLists.txt", "brenquil_room(one bases)\n")
        self.write("bases/two/CMakeLists.txt", "brenquil_room(two bases)\n")
        self.write("platform/clock.h", "#include <windows.h>\n#if defined(_WIN32)\n#endif\n")
        self.write("board/position.h", '#include "platform/clock.h"\n#include <vector>\n')
        self.write("bases/base.h", '#include "board/position.h"\n')
        self.write("bases/one/one.h", '#include "bases/base.h"\n#include "platform/clock.h"\n')

    def write(self, name, text):
        path = self.root / "src" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def faults_with(self, name, text):
        self.write(name, text)
        return check_includes.check(self.root)

    def test_a_tree_that_follows_the_arrows_has_no_faults(self):
        self.assertEqual(check_includes.check(self.root), [])

    def test_an_include_of_a_higher_room_is_found(self):
        faults = self.faults_with("board/bad.cpp", '#include "bases/base.h"\n')
        self.assertEqual(faults, ['src/board/bad.cpp: the room board does not know the room bases ("bases/base.h")'])

    def test_rooms_beside_each_other_are_strangers(self):
        faults = self.faults_with("bases/two/bad.h", '#include "bases/one/one.h"\n')
        self.assertEqual(len(faults), 1)
        self.assertIn("the room two does not know the room one", faults[0])

    def test_the_outer_room_does_not_know_the_inner_one(self):
        faults = self.faults_with("bases/bad.cpp", '#include "bases/one/one.h"\n')
        self.assertEqual(len(faults), 1)
        self.assertIn("the room bases does not know the room one", faults[0])

    def test_a_circle_inside_a_room_is_found(self):
        self.write("board/first.h", '#include "board/second.h"\n')
        faults = self.faults_with("board/second.h", '#include "board/first.h"\n')
        self.assertEqual(faults, ["circle of includes: board/first.h -> board/second.h -> board/first.h"])

    def test_system_headers_are_found_outside_the_platform(self):
        for header in ("windows.h", "unistd.h", "sys/mman.h", "immintrin.h", "x86intrin.h", "cpuid.h"):
            with self.subTest(header=header):
                faults = self.faults_with("board/bad.h", f"#include <{header}>\n")
                self.assertEqual(faults, [f"src/board/bad.h: <{header}> belongs to src/platform"])

    def test_questions_for_the_system_are_found_outside_the_platform(self):
        for line in ("#ifdef _WIN32", "#if defined(__linux__)", "#  elif defined __x86_64__"):
            with self.subTest(line=line):
                self.assertEqual(len(self.faults_with("board/bad.h", line + "\n")), 1)

    def test_the_parts_of_a_room_belong_to_it(self):
        self.write("board/CMakeLists.txt", "brenquil_room(board platform PARTS keys)\n")
        self.write("board/keys/key.h", '#include "platform/clock.h"\n')
        self.assertEqual(self.faults_with("board/keys/good.cpp", '#include "board/position.h"\n'), [])
        faults = self.faults_with("board/keys/bad.cpp", '#include "bases/base.h"\n')
        self.assertEqual(faults, ['src/board/keys/bad.cpp: the room board does not know the room bases ("bases/base.h")'])

    def test_an_include_that_names_no_file_is_found(self):
        faults = self.faults_with("board/bad.h", '#include "position.h"\n')
        self.assertEqual(faults, ['src/board/bad.h: "position.h" is no file of src/'])


if __name__ == "__main__":
    unittest.main()
