# ctest: timeout=120
"""Syzygy tables in the real program: small tables written here, damaged ones, and real ones where they are at hand."""
import os
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from engine_process import ENGINE, FACTOR, EngineTestCase, main, seconds

DATA = os.environ.get("BRENQUIL_DATA", "")
WDL_MAGIC = bytes((0x71, 0xE8, 0x23, 0x5D))
DTZ_MAGIC = bytes((0xD7, 0x66, 0x0C, 0xA5))
KING, ROOK, BISHOP, BLACK_KING = 6, 4, 3, 14
LOSS, DRAW, WIN = 0, 2, 4

ROOK_FEN = "8/8/8/3k4/8/8/8/KR6 w - - 0 1"
BISHOP_FEN = "8/8/8/3k4/8/8/8/KB6 w - - 0 1"
MATE_IN_ONE = "k7/8/1K6/8/8/8/8/7R w - - 0 1"
OPTIONS = ["option name Syzygy Path type string default <empty>",
           "option name Syzygy Use type check default true",
           "option name Syzygy 50 Moves Rule type check default true"]


def even(head):
    return head + bytes(len(head) % 2)


def wdl_table(man, white_to_move, black_to_move):
    """King and man against king: one value for each side to move."""
    men = bytes(code | code << 4 for code in (KING, BLACK_KING, man))
    return even(WDL_MAGIC + b"\x31\x00" + men) + bytes((0x80, white_to_move, 0x80, black_to_move))


def dtz_table(man, side=0):
    """The same with every distance of one side to move 1; White is 0."""
    return even(DTZ_MAGIC + b"\x30\x00" + bytes((KING, BLACK_KING, man))) + bytes((0x8C | side, 0))


def answer(score, move):
    """The lines of a `go` that needs no search. Time, nodes and hash entries are those of the search before it."""
    return [f"info depth 1 seldepth 0 time T nodes N nps N score cp {score} hashfull H tbhits 1 pv {move}",
            f"bestmove {move}"]


def without_figures(lines):
    lines = [re.sub(r" time \d+ nodes \d+ nps \d+ ", " time T nodes N nps N ", line) for line in lines]
    return [re.sub(r" hashfull \d+ ", " hashfull H ", line) for line in lines]


def path_of(folders):
    return f"setoption name Syzygy Path value {folders}"


class SyzygyTest(EngineTestCase):
    """The folder `tables` holds the rook's tables, all wins, and the class table of the bishop, all draws."""

    def setUp(self):
        super().setUp()
        self.tables = Path(self.directory) / "tables"
        self.write_tables(self.tables)

    @staticmethod
    def write_tables(folder):
        folder.mkdir()
        (folder / "KRvK.rtbw").write_bytes(wdl_table(ROOK, WIN, LOSS))
        (folder / "KRvK.rtbz").write_bytes(dtz_table(ROOK))
        (folder / "KBvK.rtbw").write_bytes(wdl_table(BISHOP, DRAW, DRAW))

    def load(self, folders="tables", tables=2):
        engine = self.start_uci(path_of(folders))
        self.assertEqual(engine.ready(), [f"info string Found {tables} tablebases."])
        return engine

    def go(self, engine, fen, line="go"):
        return without_figures(engine.search(f"position fen {fen}", line))

    def listing(self, engine, fen):
        """The rows of `moves`, which leaves the program in console mode."""
        engine.send("console", f"fen {fen}", "moves", "fen")
        return engine.until(lambda line: line == fen)[:-1]

    def streams(self, *lines):
        """Standard output, error stream and exit code of the lines and `quit`."""
        data = "".join(line + "\n" for line in (*lines, "quit")).encode()
        done = subprocess.run([ENGINE], input=data, capture_output=True, cwd=self.directory, timeout=seconds(30),
                              check=False)
        return done.stdout.decode(), done.stderr.decode(), done.returncode


class Loading(SyzygyTest):
    def test_the_group_has_three_options(self):
        engine = self.start_console()
        options = [line for line in engine.uci() if line.startswith("option name Syzygy ")]
        self.assertEqual(options, OPTIONS)

    def test_found_tables_are_counted(self):
        engine = self.start_uci()
        for folders, tables in (("tables", 2), ("nowhere", 0), (";tables;;tables;", 2), (f"{self.tables}", 2),
                                ("nowhere;tables", 2)):
            with self.subTest(folders=folders):
                engine.send(path_of(folders))
                self.assertEqual(engine.ready(), [f"info string Found {tables} tablebases."])

    def test_the_same_path_and_an_unset_one_are_silent(self):
        engine = self.load()
        engine.send(path_of("tables"), path_of("<empty>"), path_of("<empty>"))
        self.assertEqual(engine.ready(), [])
        self.assertIn("info depth 2 ", "\n".join(self.go(engine, ROOK_FEN, "go depth 2")))
        engine.send(path_of("tables"))
        self.assertEqual(engine.ready(), ["info string Found 2 tablebases."])
        self.assertEqual(self.go(engine, ROOK_FEN), answer(1, "a1a2"))

    def test_the_count_is_printed_as_it_is_in_console_mode(self):
        """The ini file is read before the banner, when the program is in console mode."""
        (Path(self.directory) / "Brenquil3.00.ini").write_text("[Syzygy Tablebases]\nSyzygy Path=tables\n")
        output, errors, code = self.streams(f"fen {ROOK_FEN}")
        self.assertTrue(output.startswith("info string Found 2 tablebases.\n\nBrenquil "), output)
        self.assertEqual((errors, code), ("", 0))

    def test_a_path_set_again_and_again_keeps_nothing(self):
        if not Path("/proc/self/maps").exists():
            self.skipTest("the system does not tell about mappings")
        self.write_tables(Path(self.directory) / "others")
        engine = self.load()
        engine.send("setoption name Hash value 1")
        process = Path(f"/proc/{engine.process.pid}")

        def set_paths(rounds):
            for i in range(rounds):
                engine.send(path_of(("tables", "others")[i % 2] + ";" * (i % 3)))
                self.assertEqual(self.go(engine, ROOK_FEN)[-2:], answer(1, "a1a2"))
                self.assertEqual(self.go(engine, BISHOP_FEN)[0][:28], answer(0, "")[0][:28])
            tables = [line for line in (process / "maps").read_text().splitlines() if ".rtb" in line]
            self.assertEqual(len(tables), 3, tables)
            size = int(re.search(r"VmSize:\s*(\d+) kB", (process / "status").read_text())[1])
            return size, len(os.listdir(process / "fd"))

        set_paths(20)
        size, files = set_paths(30)
        later_size, later_files = set_paths(120)
        self.assertEqual(later_files, files)
        if FACTOR == 1:  # a sanitizer keeps what was freed for a while
            self.assertLessEqual(later_size, size)

    def test_a_folder_that_is_replaced_keeps_what_was_read(self):
        engine = self.load()
        self.assertEqual(self.go(engine, ROOK_FEN), answer(1, "a1a2"))
        self.tables.rename(self.tables.with_name("old"))
        self.tables.mkdir()
        (self.tables / "KRvK.rtbw").write_bytes(wdl_table(ROOK, DRAW, DRAW))
        self.assertEqual(self.go(engine, ROOK_FEN), answer(1, "a1a2"))
        lines = self.go(engine, BISHOP_FEN, "go depth 1")
        self.assertEqual(lines[0], "Could not find KBvK.rtbw")
        shutil.rmtree(self.tables.with_name("old"))
        engine.send(path_of("tables;"))
        self.assertEqual(engine.ready(), ["info string Found 1 tablebases."])
        self.assertIn(" score cp 0 ", self.go(engine, ROOK_FEN)[0])


class Root(SyzygyTest):
    def test_go_is_answered_with_the_distance(self):
        engine = self.load()
        first, second = engine.search(f"position fen {ROOK_FEN}", "go")
        self.assertRegex(first, r"^info depth 1 seldepth 0 time \d+ nodes 0 nps 0 "
                                r"score cp 1 hashfull 0 tbhits 1 pv a1a2$")
        self.assertEqual(second, "bestmove a1a2")
        for line in ("go", "go depth 9 wtime 1000 btime 1000", "go movetime 5000"):
            self.assertEqual(self.go(engine, ROOK_FEN, line), answer(1, "a1a2"))
        # The side that loses: the first of its moves, all of which lose as fast.
        self.assertEqual(self.go(engine, ROOK_FEN.replace(" w ", " b ")), answer(-2, "d5c4"))

    def test_a_mate_in_one_is_found_and_counts_two_where_the_other_side_is_stored(self):
        (self.tables / "KRvK.rtbz").write_bytes(dtz_table(ROOK, side=1))
        self.assertEqual(self.go(self.load(), MATE_IN_ONE), answer(2, "h1h8"))

    def test_a_drawn_root_needs_no_distances_and_keeps_its_choice(self):
        engine = self.load()
        first = self.go(engine, BISHOP_FEN)
        move = first[1].removeprefix("bestmove ")
        self.assertEqual(first, answer(0, move))
        self.assertEqual(self.go(engine, BISHOP_FEN), first)

    def test_castling_rights_are_not_looked_at(self):
        self.assertEqual(self.go(self.load(), "4k3/8/8/8/8/8/8/4K2R w K - 0 1"), answer(1, "e1d1"))

    def test_mate_and_stalemate_are_left_to_the_search(self):
        engine = self.load()
        for fen, score in (("k6R/8/1K6/8/8/8/8/8 b - - 0 1", "cp -32000"), ("k7/1R6/2K5/8/8/8/8/8 b - - 0 1", "cp 0")):
            self.assertEqual(self.go(engine, fen)[-1], "info string No best move!", score)

    def test_infinite_and_ponder_search(self):
        engine = self.load()
        for line in ("go infinite", "go ponder"):
            engine.send(f"position fen {ROOK_FEN}", line)
            first = engine.line()
            self.assertRegex(first, r"^info depth 1 seldepth [1-9]")
            engine.search("stop")

    def test_switched_off_go_searches(self):
        engine = self.load()
        engine.send("setoption name Syzygy Use value false")
        lines = "\n".join(self.go(engine, ROOK_FEN, "go depth 3"))
        self.assertIn("info depth 3 ", lines)
        self.assertNotRegex(lines, r"tbhits [1-9]")
        engine.send("setoption name Syzygy Use value true")
        self.assertEqual(self.go(engine, ROOK_FEN), answer(1, "a1a2"))

    def test_a_high_counter_spoils_the_score_and_not_the_move(self):
        engine = self.load()
        spoiled = ROOK_FEN.replace("0 1", "100 80")
        self.assertEqual(self.go(engine, spoiled), answer(0, "a1a2"))
        engine.send("setoption name Syzygy 50 Moves Rule value false")
        self.assertEqual(self.go(engine, spoiled), answer(1, "a1a2"))
        engine.send("setoption name Syzygy 50 Moves Rule value true")
        self.assertEqual(self.go(engine, spoiled), answer(0, "a1a2"))
        self.assertEqual(self.go(engine, ROOK_FEN.replace("0 1", "99 80")), answer(1, "a1a2"))

    def test_without_distances_the_search_uses_the_classes(self):
        (self.tables / "KRvK.rtbz").unlink()
        lines = self.go(self.load(), ROOK_FEN, "go depth 2")
        # A mate in the first iteration ends the search. Every reply lies in the table, which counts.
        self.assertEqual(len(lines), 2, lines)
        self.assertRegex(lines[0], r"^info time .* tbhits [1-9]\d*$")


class Listing(SyzygyTest):
    FEN = "7k/8/6K1/8/8/8/8/R7 b - - 0 1"

    def test_distances_have_a_line(self):
        self.assertEqual(self.listing(self.load(), self.FEN), ["  1. h8g8 -Z1 a1a8", "  2. h8g7", "  3. h8h7"])

    def test_classes_have_a_mark_only(self):
        (self.tables / "KRvK.rtbz").unlink()
        self.assertEqual(self.listing(self.load(), self.FEN), ["  1. h8g7", "  2. h8h7", "  3. h8g8 -M?"])
        self.assertEqual(self.listing(self.load(), self.FEN.replace(" b ", " w "))[:2],
                         ["  1. a1b1 +M?", "  2. a1c1 +M?"])

    def test_a_draw_is_a_nought_and_a_long_line_is_cut(self):
        rows = self.listing(self.load(), "8/8/8/8/8/8/1kR5/K7 b - - 0 1")
        drawn = [row for row in rows if row[5:9] == "b2c2"]
        self.assertEqual(len(drawn), 1, rows)
        # White's lone king, stuck in a corner or not, goes on for 220 moves.
        self.assertRegex(drawn[0], r"^ +\d\. b2c2 0( [a-h][1-8][a-h][1-8]){5} \.\.\. \(215\)$")

    def test_without_the_fifty_moves_rule_the_marks_change(self):
        (self.tables / "KRvK.rtbz").unlink()
        (self.tables / "KRvK.rtbw").write_bytes(wdl_table(ROOK, 3, 1))
        engine = self.load()
        self.assertIn("  1. h8g7", self.listing(engine, self.FEN))
        self.assertIn("  3. h8g8 0", self.listing(engine, self.FEN))
        engine.uci()
        engine.send("setoption name Syzygy 50 Moves Rule value false")
        self.assertIn("  3. h8g8 -M?", self.listing(engine, self.FEN))

    def test_switched_off_no_move_has_a_mark(self):
        engine = self.load()
        engine.send("setoption name Syzygy Use value false")
        self.assertEqual(self.listing(engine, self.FEN), ["  1. h8g7", "  2. h8h7", "  3. h8g8"])

    def test_database_moves_follow_the_best_move(self):
        engine = self.load()
        engine.send("setoption name Show Database Moves value true")
        self.assertEqual(self.go(engine, "7k/8/5K2/8/8/8/8/R7 w - - 0 1"), answer(1, "f6e5"))
        self.assertEqual(engine.line(), "info string Database moves:   1. h8g7 -Z1   2. h8h7 -Z1   3. h8g8 -Z1")


class Damage(SyzygyTest):
    CONTENTS = {"empty": b"", "one byte": b"x", "magic only": WDL_MAGIC, "wrong magic": b"\0" * 1000,
                "of distances": dtz_table(ROOK), "of other men": wdl_table(BISHOP, WIN, LOSS),
                "cut": wdl_table(ROOK, WIN, LOSS)[:-1]}

    def test_a_damaged_class_table_is_reported_once(self):
        for name, content in self.CONTENTS.items():
            with self.subTest(name):
                (self.tables / "KRvK.rtbw").write_bytes(content)
                engine = self.load()
                lines = [*self.go(engine, ROOK_FEN, "go depth 2"), *self.go(engine, ROOK_FEN, "go depth 2")]
                self.assertEqual(lines[0], "Corrupted table.")
                # After White's moves Black is to move, with the same material and the same key.
                self.assertEqual(lines.count("Corrupted table."), 1, lines)
                self.assertEqual(self.go(engine, BISHOP_FEN)[0][:28], answer(0, "")[0][:28])
                self.assert_quits(engine)

    def test_a_damaged_distance_table_is_reported_once_and_the_classes_serve(self):
        for content in (b"", b"x", DTZ_MAGIC, b"\0" * 1000, wdl_table(ROOK, WIN, LOSS), dtz_table(ROOK)[:-1]):
            with self.subTest(content[:20]):
                (self.tables / "KRvK.rtbz").write_bytes(content)
                engine = self.load()
                lines = [*self.go(engine, ROOK_FEN, "go depth 1"), *self.go(engine, ROOK_FEN, "go depth 1")]
                self.assertEqual(lines[0], "Corrupted table.")
                self.assertEqual(lines.count("Corrupted table."), 1, lines)
                self.assertRegex("\n".join(lines), r"tbhits [1-9]")
                self.assert_quits(engine)

    def test_every_cut_of_a_table_is_refused(self):
        """Both tables are cut to each length in turn, in one run of the program."""
        engine = self.load()
        whole = {".rtbw": wdl_table(ROOK, WIN, LOSS), ".rtbz": dtz_table(ROOK)}
        rounds = 0
        for suffix, content in whole.items():
            path = self.tables / ("KRvK" + suffix)
            for length in range(len(content)):
                path.unlink()
                path.write_bytes(content[:length])
                rounds += 1
                engine.send(path_of("tables" + ";" * (1 + rounds % 2)))
                self.assertIn("Corrupted table.", self.go(engine, ROOK_FEN, "go depth 1"), (suffix, length))
            path.write_bytes(content)
        engine.send(path_of("tables"))
        self.assertEqual(self.go(engine, ROOK_FEN)[-2:], answer(1, "a1a2"))

    def test_the_messages_go_to_the_error_stream(self):
        (self.tables / "KRvK.rtbw").write_bytes(b"")
        output, errors, code = self.streams("uci", path_of("tables"), f"position fen {ROOK_FEN}", "go depth 1",
                                            "isready")
        self.assertEqual((errors, code), ("Corrupted table.\n", 0))
        self.assertIn("info string Found 2 tablebases.\n", output)
        self.assertIn("readyok\n", output)


@unittest.skipUnless((Path(DATA) / "syzygy").is_dir() if DATA else False, "no shared data beside the repository")
class RealTables(SyzygyTest):
    def load_real(self):
        return self.load(Path(DATA) / "syzygy", 35)

    def test_go_plays_to_mate(self):
        engine = self.load_real()
        self.assertEqual(self.go(engine, "7k/8/5K2/8/8/8/8/R7 w - - 0 1"), answer(3, "f6g6"))
        # Both tables store the stronger side only, so the rook's mate in one against a queen counts two.
        self.assertEqual(self.go(engine, MATE_IN_ONE), answer(1, "h1h8"))
        self.assertEqual(self.go(engine, "8/8/7Q/8/8/6r1/2k5/K7 b - - 0 1"), answer(2, "g3a3"))

    def test_a_pawn_is_pushed_in_time(self):
        engine = self.load_real()
        fen = "8/8/8/8/8/8/P1k5/K7 w - - 0 1"
        self.assertEqual(self.go(engine, fen), answer(1, "a2a4"))
        rows = self.listing(engine, fen)
        self.assertEqual(rows, ["  1. a2a4 +Z2 c2c1 a4a5 c1d1 a5a6 d1c1 ... (19)",
                                "  2. a2a3 0 c2c3 a1a2 c3d4 a3a4 d4e4 ... (215)", "  3. a1b1", "  4. a1b2"])

    def test_blacks_best_move_stands_last(self):
        engine = self.load_real()
        rows = self.listing(engine, "7k/8/5K2/8/8/8/8/R7 w - - 0 1")
        self.assertEqual(rows[0], "  1. f6g6 +Z2 h8g8 a1a8")
        rows = self.listing(engine, "r7/8/8/8/8/5k2/8/7K b - - 0 1")
        self.assertRegex(rows[-1], r"^ +\d+\. f3g3 \+Z2 h1g1 a8a1$")


if __name__ == "__main__":
    main()
