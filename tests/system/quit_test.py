#!/usr/bin/env python3
# ctest: sanitized timeout=180
"""`quit` at any moment of a search: silent, and exit code 0."""
import os
import random
import threading
import time
from pathlib import Path

import nalimov_files
from engine_process import EngineProcess, EngineTestCase, is_end, main, seconds


class UnreadEngine(EngineProcess):
    """A program whose output nobody reads once `is_read` has become false."""

    is_read = True

    def _read(self):
        while self.is_read:
            raw = self.process.stdout.readline()
            if not raw:
                break
            self.lines.put(raw.decode("latin-1").rstrip("\n"))


class Quit(EngineTestCase):
    ROUNDS = 25

    def quit_during_search(self, source, threads):
        engine = self.start_console()
        engine.send("uci", f"setoption name Threads value {threads}", "setoption name Hash value 2",
                    source.choice(("go infinite", "go depth 60", "go ponder wtime 100000",
                                   "go wtime 100000 btime 100000", "go depth 3")))
        delay = source.choice((0, 0, 0.001, 0.01, 0.05, 0.2)) * source.random()
        if delay:
            engine.until(lambda line: line == "uciok")
            time.sleep(delay)
        engine.send(source.choice(("quit", "exit")))
        self.assertEqual(engine.wait(), 0)
        rest = [line for line in iter(engine.lines.get, None)]
        self.assertFalse([line for line in rest if "terminate" in line or "abort" in line.lower()])
        return rest

    def test_quit_during_a_search_with_four_threads(self):
        source = random.Random(1)
        for _ in range(self.ROUNDS):
            self.quit_during_search(source, 4)

    def test_quit_during_a_search_with_one_thread(self):
        source = random.Random(2)
        for _ in range(self.ROUNDS):
            self.quit_during_search(source, 1)

    def test_running_search_is_not_told_to_stop(self):
        engine = self.start_uci("setoption name Threads value 2", "go infinite")
        engine.until(lambda line: line.startswith("info depth 4 "))
        engine.send("quit")
        self.assertEqual(engine.wait(), 0)
        rest = [line for line in iter(engine.lines.get, None)]
        self.assertFalse([line for line in rest if is_end(line)])

    def test_quit_right_behind_stop_and_behind_another_go(self):
        for lines in (("go infinite", "stop", "quit"), ("go infinite", "go infinite", "quit"),
                      ("go infinite", "ucinewgame", "quit"), ("go depth 1", "quit")):
            for _ in range(5):
                engine = self.start_uci("setoption name Threads value 4")
                engine.send(*lines)
                self.assertEqual(engine.wait(), 0)

    def test_quit_during_a_search_that_asks_nalimov_tables(self):
        for side, queen, knight in zip("wb", nalimov_files.QueenEnding().files(), nalimov_files.drawn_files("n")):
            for name, content in (("kqk", queen), ("knk", knight)):
                with open(os.path.join(self.directory, f"{name}.nb{side}"), "wb") as file:
                    file.write(content)
        source = random.Random(3)
        for _ in range(self.ROUNDS):
            engine = self.start_uci("setoption name Threads value 4", "setoption name Hash value 1",
                                    "setoption name Nalimov Usage value InSearch",
                                    "setoption name Nalimov Min Depth value 0",
                                    "setoption name NalimovPath value .",
                                    "position fen 8/8/3k4/3n4/8/3K4/4Q3/8 w - - 0 1", "go infinite")
            engine.until(lambda line: line.startswith("info depth 5 ") and not line.endswith(" tbhits 0"))
            time.sleep(0.2 * source.random())
            self.assert_quits(engine)

    def writing_to_nobody(self, threads):
        """A program with a search that is blocked in writing."""
        engine = UnreadEngine(self.directory, self.dialogue)
        self.addCleanup(engine.kill)
        engine.banner()
        engine.uci()
        engine.send(f"setoption name Threads value {threads}", "position startpos")
        engine.is_read = False
        # 64 KiB is what a pipe holds. No line of a search finds room after these.
        engine.send(*["isready"] * (65536 // len("readyok\n") - 2), "go infinite")
        self.wait_until_writing(engine.process.pid)
        return engine

    @staticmethod
    def wait_until_writing(process):
        """Until a thread sleeps in a write to a pipe; a second where the system does not tell."""
        deadline = time.monotonic() + 1
        while time.monotonic() < deadline:
            time.sleep(0.01)
            for place in Path(f"/proc/{process}/task").glob("*/wchan"):
                try:
                    if place.read_text(encoding="latin-1").endswith("pipe_write"):
                        return
                except OSError:
                    pass

    def test_quit_while_a_search_writes_and_nobody_reads(self):
        for threads in (1, 4):
            engine = self.writing_to_nobody(threads)
            engine.send("quit")
            self.assertEqual(engine.process.wait(seconds(30)), 0)

    def test_quit_while_the_reading_thread_waits_for_such_a_search(self):
        for line in ("position startpos", "go depth 5", "setoption name Hash value 2", "ucinewgame", "isready"):
            engine = self.writing_to_nobody(2)
            engine.send(line, "go depth 3", "isready", "quit")
            self.assertEqual(engine.process.wait(seconds(30)), 0)

    def test_nothing_is_lost_when_the_reader_of_such_a_search_comes_late(self):
        engine = self.writing_to_nobody(2)
        engine.send("position startpos moves e2e4", "go infinite", "isready")
        time.sleep(1)
        engine.is_read = True
        reader = threading.Thread(target=engine._read, daemon=True)
        reader.start()
        engine.until(is_end)
        engine.until(lambda line: line == "readyok")
        engine.send("stop")
        engine.until(is_end)
        engine.send("isready", "position startpos", "isready")
        engine.until(lambda line: line == "readyok")
        engine.until(lambda line: line == "readyok")
        engine.send("quit")
        self.assertEqual(engine.process.wait(seconds(30)), 0)


if __name__ == "__main__":
    main()
