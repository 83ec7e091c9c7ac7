"""Runs the engine in a folder of its own, for the tests of the console, the files and the book."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

ENGINE = os.environ["BRENQUIL_ENGINE"]
SECONDS = 20 * int(os.environ.get("BRENQUIL_TIMEOUT_FACTOR", "1"))
BANNER = re.compile(rb"\nBrenquil 3\.00 x64 \([A-Z][a-z]{2} \d{1,2} \d{4}\)\ncreated by J\.Ostervelde\n\n")
START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
SYSTEM = os.environ.get("BRENQUIL_SYSTEM", "")
SEPARATOR = "\\" if SYSTEM == "Windows" else os.sep
LOG = "Brenquil3.00.log"
INI = "Brenquil3.00.ini"


def full_name(path):
    """The full name of a file as the program's system writes it. Wine shows the root folder as the drive Z."""
    path = str(pathlib.Path(path).resolve())
    return "Z:" + path.replace("/", "\\") if SYSTEM == "Windows" and os.sep == "/" else path


class EngineTest(unittest.TestCase):
    """A test with an empty folder that the engine runs in."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil_")
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def write(self, name, content):
        """Writes a file of the folder; text or bytes."""
        data = content if isinstance(content, bytes) else content.encode()
        (self.folder / name).write_bytes(data)
        return self.folder / name

    def read(self, name):
        return (self.folder / name).read_bytes()

    def read_text(self, name):
        """A file of text that the program has written; each of its lines ends as the program's system has it."""
        data = self.read(name)
        if SYSTEM == "Windows":
            self.assertEqual(data.count(b"\r\n"), data.count(b"\n"))
            data = data.replace(b"\r\n", b"\n")
        self.assertNotIn(b"\r", data)
        return data.decode("latin-1")

    def raw(self, data, folder=None):
        """Everything that the program prints on these bytes of input; it must end by itself, with 0 and in silence."""
        done = subprocess.run([ENGINE], input=data, capture_output=True, cwd=folder or self.folder, timeout=SECONDS,
                              check=False)
        self.assertEqual((done.returncode, done.stderr), (0, b""), done.stdout[-2000:])
        return done.stdout

    def run_lines(self, *lines):
        """What the program prints on the lines and `quit`, after its banner; text in Latin-1."""
        data = b"".join((line if isinstance(line, bytes) else line.encode()) + b"\n" for line in (*lines, "quit"))
        printed = self.raw(data)
        banner = BANNER.match(printed)
        self.assertTrue(banner, printed[:200])
        return printed[banner.end():].decode("latin-1")

    def expect(self, lines, printed):
        """The program answers the lines with exactly this text."""
        self.assertEqual(self.run_lines(*lines), printed)
