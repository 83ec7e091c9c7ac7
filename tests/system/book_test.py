# ctest: timeout=120
"""The opening book in the real program: little books written here, files that are not books, and real ones."""

import os
import pathlib
import re
import struct
import subprocess
import unittest

from console_session import ENGINE, SECONDS, SYSTEM, EngineTest

START_KEY = 0x463B96181691FC9C
E4_KEY = 0x823C9B50FD114196
KNIGHT, QUEEN = 1, 4


def record(key, move, weight, promotion=0):
    """One record; the move in coordinates, castling as the king taking his rook."""
    def square(text):
        return "abcdefgh".index(text[0]) + 8 * (int(text[1]) - 1)
    return struct.pack(">QHHI", key, promotion << 12 | square(move[:2]) << 6 | square(move[2:]), weight, 0)


def go_lines(printed):
    """The lines of a `go` without their figures of time."""
    return [re.sub(r" time \d+| nps \d+", "", line) for line in printed.splitlines()
            if line.startswith(("info ", "bestmove"))]


ANSWER = "info depth 1 seldepth 0 nodes 0 score cp 0 hashfull 0 tbhits 1 pv "


class Book(EngineTest):
    def setUp(self):
        super().setUp()
        self.book = self.write("my book.bin", record(START_KEY, "d2d4", 25) + record(START_KEY, "e2e4", 75) +
                               record(E4_KEY, "c7c5", 3) + record(E4_KEY, "e7e5", 1))
        self.load = "setoption name Book Path value my book.bin"

    def uci(self, *lines):
        """What the lines are answered with, after `uciok`."""
        printed = self.run_lines("uci", *lines)
        return printed[printed.index("uciok\n") + 6:]

    def test_loaded_message(self):
        self.assertEqual(self.uci(self.load), 'info string book "my book.bin" loaded! (4 moves)\n')

    def test_go_is_answered_without_a_search(self):
        printed = self.uci(self.load, "setoption name Book Mode value BestMove", "position startpos", "go wtime 100",
                           "position startpos moves e2e4", "go")
        self.assertEqual(go_lines(printed)[1:],
                         [ANSWER + "e2e4", "bestmove e2e4", ANSWER + "c7c5", "bestmove c7c5"])

    def test_modes_reach_as_far_as_they_say(self):
        for mode, moves in (("Wide", {"d2d4", "e2e4"}), ("Standard", {"e2e4"}), ("Tournament", {"e2e4"}),
                            ("BestMove", {"e2e4"})):
            printed = self.uci(self.load, f"setoption name Book Mode value {mode}", *["go"] * 60)
            self.assertEqual(set(re.findall(r"^bestmove (\w+)$", printed, re.MULTILINE)), moves, mode)

    def test_moves_lists_shares_and_lines(self):
        printed = self.run_lines("uci", self.load, "console", "moves")
        rows = printed[printed.index("loaded!"):].splitlines()[1:]
        self.assertEqual(rows[:3], ["  1. e2e4 (75 = 75.00%) c7c5", "  2. d2d4 (25 = 25.00%)", "  3. a2a3"])
        self.assertEqual(len(rows), 20)

    def test_database_moves_behind_bestmove(self):
        printed = self.uci(self.load, "setoption name Show Database Moves value true",
                           "setoption name Book Mode value BestMove", "go")
        self.assertTrue(printed.endswith("\nbestmove e2e4\ninfo string Database moves: "
                                         "  1. c7c5 (3 = 75.00%)   2. e7e5 (1 = 25.00%)\n"), printed)

    def test_castling_promotion_and_en_passant_are_played(self):
        # The keys are computed here from the published numbers: a record is found only if the engine's key is the same.
        data = os.environ.get("BRENQUIL_DATA")
        if not data:
            self.skipTest("the published numbers are not there")
        text = (pathlib.Path(data) / "polyglot_random64.txt").read_text()
        numbers = [int(word, 16) for word in re.findall(r"^0x[0-9A-Fa-f]+", text, re.MULTILINE)]
        self.assertEqual(len(numbers), 781)

        def key(men, white, rights="", en_passant_file=None):
            value = numbers[780] if white else 0
            for man in men.split():
                square = "abcdefgh".index(man[1]) + 8 * (int(man[2]) - 1)
                value ^= numbers[64 * "pPnNbBrRqQkK".index(man[0]) + square]
            for right in rights:
                value ^= numbers[768 + "KQkq".index(right)]
            if en_passant_file is not None:
                value ^= numbers[772 + "abcdefgh".index(en_passant_file)]
            return value

        cases = [
            ("4k3/8/8/8/8/8/8/R3K2R w KQ - 0 1", key("ke8 Ra1 Ke1 Rh1", True, "KQ"), "e1h1", 0, "e1g1"),
            ("r3k2r/8/8/8/8/8/8/4K3 b kq - 0 1", key("ke8 ra8 Ke1 rh8", False, "kq"), "e8a8", 0, "e8c8"),
            ("3rk3/4P3/8/8/8/8/8/4K3 w - - 0 1", key("rd8 ke8 Pe7 Ke1", True), "e7d8", KNIGHT, "e7d8n"),
            ("4k3/P7/8/8/8/8/8/4K3 w - - 0 1", key("ke8 Pa7 Ke1", True), "a7a8", QUEEN, "a7a8q"),
            ("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", key("ke8 pd5 Pe5 Ke1", True, "", "d"), "e5d6", 0, "e5d6"),
        ]
        records = [record(position_key, move, 1, promotion) for _, position_key, move, promotion, _ in cases]
        self.write("special.bin", b"".join(sorted(records)))
        for fen, _, _, _, expected in cases:
            printed = self.uci("setoption name Book Path value special.bin", "position fen " + fen, "go depth 1",
                               "position startpos")
            self.assertIn(ANSWER + expected, go_lines(printed), fen)
            self.assertIn(f"\nbestmove {expected}\n", printed, fen)

    def answers_nothing(self, name, message=""):
        """A file that is not a book: only the message, a search of its own, and the program goes on."""
        printed = self.run_lines("uci", f"setoption name Book Path value {name}", "console", "moves", "eval")
        printed = printed[printed.index("uciok\n") + 6:]
        self.assertTrue(printed.startswith(message + "  1. a2a3\n"), printed)
        self.assertTrue(printed.endswith(" 20. g1h3\neval: 0\n"), printed)

    def test_zero_length_book(self):
        self.write("empty.bin", b"")
        self.answers_nothing("empty.bin", 'info string book "empty.bin" loaded! (0 moves)\n')

    def test_book_of_15_bytes(self):
        self.write("short.bin", record(START_KEY, "e2e4", 1)[:15])
        self.answers_nothing("short.bin", 'info string book "short.bin" loaded! (0 moves)\n')

    def test_book_of_31_bytes_holds_one_record(self):
        self.write("cut.bin", (record(START_KEY, "e2e4", 1) * 2)[:31])
        printed = self.uci("setoption name Book Path value cut.bin", "go")
        self.assertIn("loaded! (1 moves)\n", printed)
        self.assertTrue(printed.endswith("bestmove e2e4\n"))

    def test_directory_and_missing_book(self):
        (self.folder / "folder.bin").mkdir()
        self.answers_nothing("folder.bin")
        self.answers_nothing("missing.bin")
        self.answers_nothing(".")

    def test_pipe_as_book_keeps_nobody_waiting(self):
        if SYSTEM == "Windows" or not hasattr(os, "mkfifo"):
            self.skipTest("no pipes here")
        os.mkfifo(self.folder / "pipe.bin")
        self.answers_nothing("pipe.bin")

    def test_unsorted_book_is_survived(self):
        records = [record(key * 0x9E3779B97F4A7C15 % 2**64, "e2e4", 1) for key in range(1, 500)]
        self.write("unsorted.bin", b"".join(records[::-1] + [record(START_KEY, "a2a4", 1)] + records))
        printed = self.run_lines("uci", "setoption name Book Path value unsorted.bin", "console", "moves", "eval")
        self.assertTrue(printed.endswith("eval: 0\n"))

    def test_book_of_one_key_only_is_survived(self):
        self.write("same.bin", record(START_KEY, "g1f3", 1) * 1000)
        printed = self.run_lines("uci", "setoption name Book Path value same.bin", "console", "moves", "eval")
        self.assertIn("  1. g1f3 (1 = 0.45%)\n", printed)  # 220 of the records are taken in
        self.assertTrue(printed.endswith("eval: 0\n"))

    def test_book_deleted_and_cut_off_while_it_is_open(self):
        with subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder, text=True,
                              bufsize=1) as engine:
            def ask(line, last):
                engine.stdin.write(line + "\n")
                printed = []
                while not printed or not printed[-1].startswith(last):
                    printed.append(engine.stdout.readline())
                    self.assertTrue(printed[-1], "the program has ended")
                return printed[-1]

            ask("uci", "uciok")
            self.assertIn("(4 moves)", ask(self.load, "info string book"))
            os.truncate(self.book, 3)
            self.assertTrue(ask("go depth 1", "bestmove "))
            self.book.unlink()
            self.assertTrue(ask("go depth 1", "bestmove "))
            ask("isready", "readyok")
            engine.communicate("quit\n", timeout=SECONDS)
            self.assertEqual(engine.returncode, 0)

    def test_real_books(self):
        data = os.environ.get("BRENQUIL_DATA")
        if not data:
            self.skipTest("the shared books are not there")
        for name, records in (("performance.bin", 92954), ("cutechess-book_small.bin", 31467)):
            book = pathlib.Path(data) / "books" / name
            fields = {field for key, field, _, _ in struct.iter_unpack(">QHHI", book.read_bytes()) if key == START_KEY}
            held = {"abcdefgh"[field >> 6 & 7] + str((field >> 9 & 7) + 1) +
                    "abcdefgh"[field & 7] + str((field >> 3 & 7) + 1) for field in fields}
            printed = self.uci(f"setoption name Book Path value {book}", *["go"] * 20)
            self.assertTrue(printed.startswith(f'info string book "{book}" loaded! ({records} moves)\n'))
            moves = re.findall(r"^bestmove (\w+)$", printed, re.MULTILINE)
            self.assertEqual(len(moves), 20)
            self.assertLessEqual(set(moves), held, name)

    def test_whole_opening_is_played_from_a_real_book(self):
        data = os.environ.get("BRENQUIL_DATA")
        if not data:
            self.skipTest("the shared books are not there")
        book = pathlib.Path(data) / "books" / "performance.bin"
        with subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder, text=True,
                              bufsize=1) as engine:
            engine.stdin.write(f"uci\nsetoption name Book Path value {book}\n")
            # Chance chooses, and now and then it leads to a line that the book soon ends.
            lengths = [self.length_of_book_line(engine) for _ in range(8)]
            engine.communicate("quit\n", timeout=SECONDS)
        self.assertGreater(max(lengths), 6, lengths)

    def length_of_book_line(self, engine):
        """Half-moves until the first that is not from the book, that one included."""
        moves, from_book = [], True
        while from_book and len(moves) < 200:
            engine.stdin.write(f"position startpos moves {' '.join(moves)}\ngo depth 1\n")
            from_book = False
            for line in engine.stdout:
                self.assertNotIn("Illegal", line)
                # The nodes that are told are those of the search before.
                from_book = from_book or " tbhits 1 " in line
                if line.startswith("bestmove"):
                    moves.append(line.split()[1])
                    break
        return len(moves)


if __name__ == "__main__":
    unittest.main()
