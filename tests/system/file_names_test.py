# ctest: timeout=180
"""Files as people have them: whole names, blanks, letters beyond ASCII, several drives and folders, and large ones."""

import os
import struct
import unittest

import nalimov_files
from console_session import SYSTEM, EngineTest, full_name

START_KEY = 0x463B96181691FC9C
E2E4 = 0o1434
ROOK_TABLE = bytes((0x71, 0xE8, 0x23, 0x5D, 0x31, 0, 6 | 6 << 4, 14 | 14 << 4, 4 | 4 << 4, 0, 0x80, 4, 0x80, 0))
LETTERS = "B\u00fccher \u265e"
WINDOWS = SYSTEM == "Windows"


def record(key, weight=1):
    return struct.pack(">QHHI", key, E2E4, weight, 0)


class FileNames(EngineTest):
    def setUp(self):
        super().setUp()
        self.inner = self.folder / "a folder" / LETTERS
        try:
            self.inner.mkdir(parents=True)
        except UnicodeEncodeError:
            self.skipTest("this system has no such names")
        self.write("book.bin", record(START_KEY))
        self.write(f"a folder/{LETTERS}/my book.bin", record(START_KEY))

    def option(self, name, value):
        """What setting an option prints, as the bytes that came."""
        printed = self.raw(f"uci\nsetoption name {name} value {value}\nquit\n".encode())
        return printed[printed.index(b"uciok\n") + 6:].decode()

    def separators(self, path):
        """The path with each separator that the program's system knows."""
        path = str(path)
        return {path, path.replace("\\", "/"), path.replace("/", "\\")} if WINDOWS else {path}

    def test_book(self):
        for path in (self.folder / "book.bin", self.inner / "my book.bin"):
            for name in self.separators(full_name(path)):
                self.assertEqual(self.option("Book Path", name), f'info string book "{name}" loaded! (1 moves)\n')
        for name in self.separators(f"a folder/{LETTERS}/my book.bin"):
            self.assertEqual(self.option("Book Path", name), f'info string book "{name}" loaded! (1 moves)\n')
        self.assertEqual(self.option("Book Path", full_name(self.inner / "another.bin")), "")

    def test_book_from_the_ini_file(self):
        name = full_name(self.inner / "my book.bin")
        self.write("Brenquil3.00.ini", f"Book Path={name}\r\n")
        self.assertTrue(self.raw(b"quit\n").decode().startswith(f'book "{name}" loaded! (1 moves)\n'))

    def test_written_ini_file_keeps_a_name(self):
        name = full_name(self.inner / "my book.bin")
        self.option("Book Path", f"{name}\nconsole\nini")
        self.assertIn(f"\nBook Path={name}\n".encode(), self.read("Brenquil3.00.ini").replace(b"\r\n", b"\n"))
        self.assertTrue(self.raw(b"quit\n").decode().startswith(f'book "{name}" loaded! (1 moves)\n'))

    def test_batch(self):
        (self.inner / "my lines.cmd").write_bytes(b"eval\r\n")
        for name in self.separators(full_name(self.inner / "my lines")):
            printed = self.raw(f"batch {name}\nquit\n".encode())
            self.assertTrue(printed.endswith(b"\n\neval\neval: 0\n"), printed)

    def test_syzygy(self):
        (self.inner / "KRvK.rtbw").write_bytes(ROOK_TABLE)
        second = self.folder / "second"
        second.mkdir()
        (second / "KQvK.rtbw").write_bytes(ROOK_TABLE)
        for name in self.separators(full_name(self.inner)):
            self.assertEqual(self.option("Syzygy Path", name), "info string Found 1 tablebases.\n")
        self.assertEqual(self.option("Syzygy Path", f"{full_name(self.inner)};{full_name(second)}"),
                         "info string Found 2 tablebases.\n")

    def test_nalimov(self):
        for side, content in zip("wb", nalimov_files.drawn_files("n")):
            (self.inner / f"knk.nb{side}").write_bytes(content)
        loaded = "info string tablebases 3-men loaded!\n"
        for name in self.separators(full_name(self.inner)):
            for path in (name, name + ("\\" if WINDOWS else "/"), f"nowhere;{name}", f"{name},nowhere"):
                self.assertEqual(self.option("NalimovPath", path), loaded, path)
        self.assertEqual(self.option("NalimovPath", full_name(self.folder)), "")

    @unittest.skipUnless(WINDOWS, "no drives here")
    def test_nalimov_on_drives(self):
        for side, content in zip("wb", nalimov_files.drawn_files("n")):
            (self.inner / f"knk.nb{side}").write_bytes(content)
        name = full_name(self.inner)
        loaded = "info string tablebases 3-men loaded!\n"
        for path in (f"Q:\\nothing here;{name}", f"q:\\,{name.lower()[:2]}{name[2:]}", f"C:\\;{name}"):
            self.assertEqual(self.option("NalimovPath", path), loaded, path)
        self.assertEqual(self.option("NalimovPath", "Q:\\;R:\\tables"), "")

    @unittest.skipUnless(WINDOWS, "no such devices here")
    def test_names_of_devices_keep_nobody_waiting(self):
        self.assertEqual(self.option("Book Path", "CON"), "")
        self.assertEqual(self.option("Book Path", "nul\nsetoption name Book Path value COM1.bin"), "")
        printed = self.raw(b"con\naux\nbatch con.cmd\neval\nquit\n")
        self.assertTrue(printed.endswith(b"\n\neval: 0\n"), printed)


class LargeFiles(EngineTest):
    def test_book_behind_2_and_4_gib(self):
        for size in (2**31 + 16, 2**32 + 48):
            with open(self.folder / "large.bin", "wb") as book:
                # A hole reads as records with the key 0, which come before all others.
                book.truncate(size)
                book.seek(size - 16)
                book.write(record(START_KEY, 7))
            printed = self.run_lines("uci", "setoption name Book Path value large.bin", "go", "console", "moves")
            self.assertIn(f'info string book "large.bin" loaded! ({size // 16} moves)\n', printed)
            self.assertIn("\nbestmove e2e4\n", printed)
            self.assertIn("  1. e2e4 (7 = 100.00%)\n", printed)
            os.unlink(self.folder / "large.bin")


if __name__ == "__main__":
    unittest.main()
