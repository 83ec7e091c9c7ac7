"""The program under test behind pipes, with a time limit on every read.

`EngineTestCase` gives each test a temporary directory as the working directory of its processes,
kills what a test leaves behind, and prints the whole dialogue of a test that fails.
"""
import os
import queue
import re
import subprocess
import sys
import tempfile
import threading
import time
import unittest
from pathlib import Path

ENGINE = os.environ.get("BRENQUIL_ENGINE", "")
SYSTEM = os.environ.get("BRENQUIL_SYSTEM", "Linux")
FACTOR = float(os.environ.get("BRENQUIL_TIMEOUT_FACTOR", "1"))
ROOT = Path(__file__).resolve().parents[2]
START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
VARYING = re.compile(r" (?:time|nps|cpuload) -?\d+")
# Reports of the sanitizers come on the error stream, which is read like the output.
ALARM = re.compile(r"ERROR: \w+Sanitizer|WARNING: ThreadSanitizer|runtime error:")


def seconds(normal):
    """A time limit: this build may be slow and the machine busy."""
    return normal * FACTOR


def is_end(line):
    """The last line of a search."""
    return line.startswith("bestmove ") or line.endswith("No best move!")


class EngineProcess:
    """One running program."""

    def __init__(self, directory, dialogue, arguments=()):
        self.dialogue = dialogue
        self.process = subprocess.Popen(
            [ENGINE, *arguments], cwd=directory, stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, bufsize=0)
        self.lines = queue.Queue()
        self.alarms = []
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for raw in self.process.stdout:
            line = raw.decode("latin-1").rstrip("\n")
            self.dialogue.append("< " + line)
            if ALARM.search(line):
                self.alarms.append(line)
            self.lines.put(line)
        self.lines.put(None)

    def send_bytes(self, data):
        """Writes without waiting for anything, in the background when the pipe is full."""
        self.dialogue.append("> " + repr(data[:2000])[2:-1])
        try:
            self.process.stdin.write(data)
        except OSError as error:
            raise AssertionError(f"the program does not listen any more: {error}") from error

    def send(self, *lines):
        for line in lines:
            self.send_bytes(line.encode("latin-1") + b"\n")

    def line(self, limit=60):
        try:
            line = self.lines.get(timeout=max(0.001, seconds(limit)))
        except queue.Empty:
            raise AssertionError(f"no line within {seconds(limit):g} s") from None
        if line is None:
            self.lines.put(None)
            raise AssertionError(f"the program has ended with code {self.process.wait(10)}")
        return line

    def until(self, is_wanted, limit=60):
        """All lines up to the first that is wanted."""
        end = time.monotonic() + seconds(limit)
        lines = []
        while True:
            lines.append(self.line((end - time.monotonic()) / FACTOR))
            if is_wanted(lines[-1]):
                return lines

    def banner(self):
        return [self.line() for _ in range(4)]

    def uci(self):
        self.send("uci")
        return self.until(lambda line: line == "uciok")

    def ready(self, limit=60):
        """The lines that have come before the answer to `isready`."""
        self.send("isready")
        return self.until(lambda line: line == "readyok", limit)[:-1]

    def search(self, *lines, limit=60):
        """Sends the lines, of which the last starts a search, and returns its lines."""
        self.send(*lines)
        return self.until(is_end, limit)

    def wait(self, limit=30):
        """The exit code."""
        try:
            code = self.process.wait(seconds(limit))
        except subprocess.TimeoutExpired:
            raise AssertionError(f"the program has not ended within {seconds(limit):g} s") from None
        self.reader.join(seconds(limit))
        return code

    def quit(self):
        self.send("quit")
        return self.wait()

    def is_running(self):
        return self.process.poll() is None

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.reader.join(10)
        self.process.stdout.close()


class EngineTestCase(unittest.TestCase):
    """See the head of the file. `arguments` are those of the program."""

    arguments = ()

    def run(self, result=None):
        result = result or self.defaultTestResult()
        self.dialogue = []
        faults = len(result.failures) + len(result.errors)
        super().run(result)
        if len(result.failures) + len(result.errors) > faults:
            print(f"---- dialogue of {self.id()}", file=sys.stderr)
            for line in self.dialogue:
                print(line if len(line) < 2000 else line[:2000] + " ...", file=sys.stderr)
            print("----", file=sys.stderr)
        return result

    def setUp(self):
        self.assertTrue(ENGINE, "BRENQUIL_ENGINE names no program")
        directory = tempfile.TemporaryDirectory(prefix="brenquil-")
        self.addCleanup(directory.cleanup)
        self.directory = directory.name

    def start(self):
        """A program whose banner has not been read."""
        engine = EngineProcess(self.directory, self.dialogue, self.arguments)
        self.addCleanup(self._end, engine)
        return engine

    def start_console(self):
        engine = self.start()
        engine.banner()
        return engine

    def start_uci(self, *lines):
        engine = self.start_console()
        engine.uci()
        engine.send(*lines)
        return engine

    def _end(self, engine):
        engine.kill()
        self.assertEqual(engine.alarms, [])

    def assert_quits(self, engine):
        self.assertEqual(engine.quit(), 0)


def without_times(lines):
    return [VARYING.sub("", line) for line in lines]


def without_status(lines):
    """The lines of searches, without times and without the reports that come once a second."""
    lines = without_times(lines)
    status = ("info nodes ", "info currmove ", "info currline ", "info refutation ")
    return [line for i, line in enumerate(lines)
            if not line.startswith(status) or any(map(is_end, lines[i + 1:i + 2]))]


def main():
    unittest.main(verbosity=2)
