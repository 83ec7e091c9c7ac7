# ctest: sanitized timeout=120
"""Nalimov tables in the real program: small tables, paths of all kinds, damaged and removed files, the options."""

import re
import subprocess
import unittest

import nalimov_files
from console_session import ENGINE, SECONDS, SEPARATOR, EngineTest

LOADED = "info string tablebases 3-men loaded!\n"
OPTIONS = """\
option name NalimovPath type string default <empty>
option name NalimovCache type spin default 32 min 1 max 256
option name Nalimov Usage type combo default OnRoot var Never var OnRoot var InSearch
option name Nalimov Min Depth type spin default 6 min 1 max 100
"""
MATE_IN_ONE = "7k/8/5K2/8/8/8/8/6Q1 w - - 0 1"
KNIGHT = "8/8/8/3k4/8/8/8/KN6 w - - 0 1"
PAWN = "8/4P3/8/8/8/8/k7/6K1 w - - 0 1"


def path(value):
    return f"setoption name NalimovPath value {value}"


def usage(value):
    return f"setoption name Nalimov Usage value {value}"


def answers(printed):
    """The lines of a `go` that tell the score and the move, without figures of time."""
    return [re.sub(r" time \d+ nodes \d+ nps \d+", "", line) for line in printed.splitlines()
            if line.startswith(("info depth", "bestmove"))]


def rows(printed):
    """The rows of a `moves` listing: move to mark."""
    found = (re.fullmatch(r" *\d+\. (\w+)(?: (.+))?", line) for line in printed.splitlines())
    return {row[1]: row[2] for row in found if row}


class Nalimov(EngineTest):
    @classmethod
    def setUpClass(cls):
        cls.queen = nalimov_files.QueenEnding()
        cls.queen_files = cls.queen.files()

    def setUp(self):
        super().setUp()
        self.tables = self.folder / "tables"
        self.tables.mkdir()
        for side, queen, knight in zip("wb", self.queen_files, nalimov_files.drawn_files("n")):
            (self.tables / f"kqk.nb{side}").write_bytes(queen)
            (self.tables / f"knk.nb{side}").write_bytes(knight)
        self.load = path("tables")

    def uci(self, *lines):
        """What the lines are answered with, after `uciok`."""
        printed = self.run_lines("uci", *lines)
        return printed[printed.index("uciok\n") + 6:]

    def go(self, fen, *lines):
        """The two lines of an answer from the tables."""
        return answers(self.uci(self.load, *lines, f"position fen {fen}", "go"))

    def moves(self, fen, *lines):
        return rows(self.run_lines("uci", self.load, *lines, "console", f"fen {fen}", "moves"))

    def search(self, *lines):
        """What is printed up to the end of the search that the last line starts."""
        engine = subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder)
        self.addCleanup(engine.stdout.close)
        engine.stdin.write("".join(line + "\n" for line in ("uci", *lines)).encode())
        engine.stdin.flush()
        printed = []
        while not printed or not printed[-1].startswith(("bestmove", "info string No best move!")):
            printed.append(engine.stdout.readline().decode())
            self.assertTrue(printed[-1], printed)
        engine.stdin.write(b"quit\n")
        engine.stdin.close()
        self.assertEqual(engine.wait(SECONDS), 0)
        return "".join(printed)

    def assert_searched(self, printed):
        """The tables had no part in what was printed."""
        self.assertIn("\nbestmove ", printed)
        self.assertNotIn(" seldepth 0 ", printed)
        self.assertNotRegex(printed, r"tbhits [1-9]")

    def expect_end(self, message):
        """Loading the tables prints the message and ends the program with code 1; the next line is not read."""
        data = f"uci\n{self.load}\nisready\nquit\n".encode()
        done = subprocess.run([ENGINE], input=data, capture_output=True, cwd=self.folder, timeout=SECONDS, check=False)
        printed = done.stdout.decode()
        self.assertEqual((done.returncode, done.stderr), (1, b""))
        self.assertEqual(printed[printed.index("uciok\n") + 6:], message)

    def test_the_option_group(self):
        self.assertIn(OPTIONS, self.run_lines("uci"))

    def test_loading_is_announced_once_for_each_new_path(self):
        self.assertEqual(self.uci(self.load), LOADED)
        self.assertEqual(self.uci(self.load, self.load), LOADED)
        self.assertEqual(self.uci(self.load, path("nowhere"), self.load), LOADED * 2)
        self.assertEqual(self.uci(path("nowhere"), path("<empty>"), path("")), "")

    def test_path_lists(self):
        for value in ("nowhere;tables", "nowhere,tables", "tables,nowhere", ";tables;", f"{self.tables}/",
                      f"nowhere;;,{self.tables}"):
            self.assertEqual(self.uci(path(value)), LOADED, value)
        # An empty piece is the folder that the program runs in.
        for file in self.tables.iterdir():
            file.rename(self.folder / file.name)
        self.assertEqual(self.uci(path("nowhere;")), LOADED)
        self.assertEqual(self.uci(path("nowhere")), "")

    def test_the_first_folder_of_a_list_wins(self):
        second = self.folder / "second"
        second.mkdir()
        for side, count in zip("wb", map(len, self.queen_files)):
            (second / f"kqk.nb{side}").write_bytes(bytes(count))
        drawn = answers(self.uci(path("second;tables"), f"position fen {MATE_IN_ONE}", "go"))
        won = answers(self.uci(path("tables;second"), f"position fen {MATE_IN_ONE}", "go"))
        self.assertIn(" score cp 0 ", drawn[0])
        self.assertIn(" score cp 32000 ", won[0])

    def test_names_of_compressed_files(self):
        content = nalimov_files.compressed(self.queen_files[1])
        (self.tables / "kqk.nbb").unlink()
        for name in ("kqk.nbb.emd", "kqk_nbb.emd", "kqk_nbb_emd", "kqknbb.emd"):
            file = self.tables / name
            file.write_bytes(content)
            self.assertEqual(self.go(MATE_IN_ONE)[1], "bestmove g1g7", name)
            file.unlink()

    def test_go_is_answered_with_the_quickest_mate(self):
        self.assertEqual(self.go(MATE_IN_ONE), ["info depth 1 seldepth 0 score cp 32000 hashfull 0 tbhits 1 pv g1g7",
                                                "bestmove g1g7"])
        # The same for Black.
        self.assertEqual(self.go("6q1/8/8/8/8/5k2/8/7K b - - 0 1")[1], "bestmove g8g2")

    def test_go_on_a_draw_is_answered_at_once(self):
        score, move = self.go(KNIGHT)
        self.assertIn(" score cp 0 ", score)
        self.assertRegex(move, r"^bestmove [ab]1\w\w$")

    def test_promotion_is_answered_by_the_tables_that_are_there(self):
        # Of all moves two lead to tables: both promotions that are known. The queen wins.
        score, move = self.go(PAWN)
        self.assertEqual(move, "bestmove e7e8q")
        self.assertRegex(score, r" score (cp 3\d{4}|mate \d+) ")

    def test_a_won_ending_is_played_to_the_mate(self):
        king, other, queen = next(p for p, plies in self.queen.won.items() if plies == 9)
        board = ["1"] * 64
        for letter, place in zip("KkQ", (king, other, queen)):
            board[place] = letter
        fen = "/".join("".join(board[rank * 8:rank * 8 + 8]) for rank in range(7, -1, -1)) + " w - - 0 1"
        played = []
        for left in range(9, 0, -1):
            score, move = self.go(f"{fen} moves {' '.join(played)}")
            played.append(move.split()[1])
            # Two plies a move; the move that mates counts from the mate.
            expected = "cp 32000" if left == 1 else f"mate {(left + 1) // 2}" if left % 2 else f"mate -{left // 2}"
            self.assertIn(f" score {expected} ", score, played)
        position = f"position fen {fen} moves {' '.join(played)}"
        listed = rows(self.run_lines("uci", position, self.load, "console", "moves"))
        self.assertEqual(set(listed.values()), {None}, "no legal move is left")

    def test_go_infinite_searches(self):
        printed = self.uci(self.load, f"position fen {MATE_IN_ONE}", "go infinite", "isready", "stop")
        self.assertNotIn(" seldepth 0 ", printed)

    def test_usage_decides_who_is_answered(self):
        searched = (f"position fen {MATE_IN_ONE}", "go depth 3")
        self.assert_searched(self.search(self.load, usage("Never"), *searched))
        self.assertEqual(set(self.moves(MATE_IN_ONE, usage("Never")).values()), {None})
        for value in ("OnRoot", "InSearch", "Sometimes"):
            self.assertEqual(self.go(MATE_IN_ONE, usage(value))[1], "bestmove g1g7", value)
            self.assertEqual(self.moves(MATE_IN_ONE, usage(value))["g1g7"], "+M1", value)
        self.assertEqual(set(self.moves(MATE_IN_ONE, usage("Never"), usage("Sometimes")).values()), {None})

    def test_the_search_asks_when_it_may(self):
        fen = "7k/8/8/8/8/5K2/6p1/6Q1 w - - 0 1"  # four men; a capture leads to three
        searched = (f"position fen {fen}", "go depth 8")
        probing = "setoption name Nalimov Min Depth value 1"
        self.assertRegex(self.search(self.load, usage("InSearch"), probing, *searched), r"tbhits [1-9]")
        for switched in (usage("OnRoot"), usage("Never")):
            self.assertNotRegex(self.search(self.load, switched, probing, *searched), r"tbhits [1-9]", switched)
        deep = "setoption name Nalimov Min Depth value 100"
        self.assertNotRegex(self.search(self.load, usage("InSearch"), deep, *searched), r"tbhits [1-9]")

    def test_the_listing_shows_moves_to_mate(self):
        marks = self.moves(MATE_IN_ONE)
        self.assertEqual(len(marks), 29)
        self.assertEqual(marks["g1g7"], "+M1")
        self.assertEqual(marks["f6f7"], "+M2")
        self.assertEqual(marks["f6g5"], "+M4")
        self.assertEqual(marks["g1g8"], "0")
        self.assertIsNone(marks["f6g7"], "a move that is not legal")
        self.assertEqual(self.moves(MATE_IN_ONE.replace(" w ", " b ")), {"h8g7": None, "h8g8": None, "h8h7": "-M1"})

    def test_more_men_than_loaded_are_searched(self):
        fen = "7k/8/5K2/8/8/8/8/5QQ1 w - - 0 1"
        self.assert_searched(self.search(self.load, f"position fen {fen}", "go depth 2"))
        self.assertEqual(set(self.moves(fen).values()), {None})

    def test_bare_kings_are_drawn_once_any_table_is_loaded(self):
        fen = "7k/8/5K2/8/8/8/8/8 w - - 0 1"
        (self.tables / "kqk.nbw").unlink()
        (self.tables / "kqk.nbb").unlink()
        marks = self.moves(fen)
        self.assertIsNone(marks.pop("f6g7"), "a move that is not legal")
        self.assertEqual(set(marks.values()), {"0"})
        self.assertIn(" score cp 0 hashfull 0 tbhits 1 ", self.go(fen)[0])
        self.assertEqual(set(rows(self.run_lines(f"fen {fen}", "moves")).values()), {None}, "none is loaded")

    def test_a_missing_side_is_not_answered(self):
        (self.tables / "kqk.nbb").unlink()
        self.assertEqual(self.moves("7k/8/5K2/8/8/8/8/6Q1 b - - 0 1"), {"h8g7": None, "h8g8": None, "h8h7": "-M1"})
        self.assertEqual(set(self.moves(MATE_IN_ONE).values()), {None})
        self.assert_searched(self.search(self.load, f"position fen {MATE_IN_ONE}", "go depth 2"))

    def test_damaged_files_end_the_program(self):
        white = self.queen_files[0]
        name = "tables" + SEPARATOR + "kqk.nbw"
        for content in (white[:-1], white + b"\0", b""):
            (self.tables / "kqk.nbw").write_bytes(content)
            self.expect_end(f"*** {name} corrupted \n")
        (self.tables / "kqk.nbw").unlink()

        file = self.tables / "kqk.nbw.emd"
        good = nalimov_files.compressed(white)
        wrong_sum = bytearray(good)
        wrong_sum[85] ^= 1
        for content, reason in ((b"", "read error"), (good[:79], "read error"), (b"x" + good[1:], "read error"),
                                (wrong_sum, "file broken"), (good[:70] + b"\x11" + good[71:], "file broken"),
                                (good[:71] + b"\x19" + good[72:], "file broken"),
                                (good[:79] + b"\xF4" + good[80:], "file broken"), (good[:90], "out of memory")):
            file.write_bytes(content)
            self.expect_end(f"*** Unable to read {name}.emd - {reason}\n")
        file.write_bytes(nalimov_files.compressed(white + b"\0"))
        self.expect_end(f"*** {name}.emd corrupted \n")
        file.write_bytes(nalimov_files.compressed(white, 14))
        self.expect_end(f"*** {name}.emd: Unsupported block size 16384\n")
        file.write_bytes(good)
        self.assertEqual(self.uci(self.load), LOADED)

    def test_a_path_piece_that_is_too_long_ends_the_program(self):
        self.load = path("x" * 1024)
        self.expect_end("")
        self.load = path("x" * 1023)
        self.assertEqual(self.uci(self.load), "")

    def test_a_removed_file_fails_its_positions_only(self):
        engine = subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder)
        self.addCleanup(engine.stdout.close)
        engine.stdin.write(f"uci\n{self.load}\n".encode())
        engine.stdin.flush()
        while b"loaded" not in engine.stdout.readline():
            pass
        black = self.tables / "kqk.nbb"
        content = black.read_bytes()
        black.unlink()
        engine.stdin.write(f"console\nfen {MATE_IN_ONE}\nmoves\nfen {MATE_IN_ONE.replace(' w ', ' b ')}\n"
                           "moves\nprint 0\n".encode())
        engine.stdin.flush()
        printed = [engine.stdout.readline().decode() for _ in range(29 + 3 + 8)]
        self.assertEqual(set(rows("".join(printed[:29])).values()), {None})
        self.assertEqual(rows("".join(printed[29:32]))["h8h7"], "-M1")
        # It comes back: the table stays switched off until the path changes.
        black.write_bytes(content)
        engine.stdin.write(f"fen {MATE_IN_ONE}\nmoves\nuci\n{path('')}\n{self.load}\nconsole\nmoves\nquit\n".encode())
        engine.stdin.close()
        printed = engine.stdout.read().decode()
        self.assertEqual(engine.wait(SECONDS), 0)
        before, after = printed.split(LOADED)
        self.assertEqual(set(rows(before).values()), {None})
        self.assertEqual(rows(after)["g1g7"], "+M1")


if __name__ == "__main__":
    unittest.main()
