#!/usr/bin/env python3
# ctest: timeout=180
"""`quit` at any moment of a search: silent, and exit code 0."""
import random
import time

from engine_process import EngineTestCase, is_end, main


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


if __name__ == "__main__":
    main()
