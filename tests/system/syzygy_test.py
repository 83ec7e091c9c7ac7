# ctest: timeout=120
"""Syzygy tables in the real program: small tables written here, damaged ones, and real ones where they are at hand."""

import os
import pathlib
import re
import subprocess
import unittest

from console_session import ENGINE, SECONDS, EngineTest

WDL_MAGIC = bytes((0x71, 0xE8, 0x23, 0x5D))
DTZ_MAGIC = bytes((0xD7, 0x66, 0x0C, 0xA5))
KING, ROOK, BISHOP, BLACK_KING = 6, 4, 3, 14


def wdl_table(man, white_to_move, black_to_move):
    """King and man against king: one value, 0 to 4, for each side to move."""
    men = bytes(code | code << 4 for code in (KING, BLACK_KING, man))
    head = WDL_MAGIC + b"\x31\x00" + men
    return head + bytes(len(head) % 2) + bytes((0x80, white_to_move, 0x80, black_to_move))


def dtz_table(man):
    """The same with every distance of White 1."""
    head = DTZ_MAGIC + b"\x30\x00" + bytes((KING, BLACK_KING, man))
    return head + bytes(len(head) % 2) + b"\x8C\x00"


def go_lines(printed):
    """The lines of a `go` without their figures of time."""
    return [re.sub(r" time \d+| nps \d+", "", line) for line in printed.splitlines()
            if line.startswith(("info depth", "bestmove"))]


ROOK_FEN = "8/8/8/3k4/8/8/8/KR6 w - - 0 1"
BISHOP_FEN = "8/8/8/3k4/8/8/8/KB6 w - - 0 1"


class Syzygy(EngineTest):
    def setUp(self):
        super().setUp()
        tables = self.folder / "tables"
        tables.mkdir()
        self.tables = tables
        (tables / "KRvK.rtbw").write_bytes(wdl_table(ROOK, 4, 0))
        (tables / "KRvK.rtbz").write_bytes(dtz_table(ROOK))
        (tables / "KBvK.rtbw").write_bytes(wdl_table(BISHOP, 2, 2))
        self.load = "setoption name Syzygy Path value tables"

    def uci(self, *lines):
        """What the lines are answered with, behind `uciok`."""
        printed = self.run_lines("uci", *lines)
        return printed[printed.index("uciok\n") + 6:]

    def search(self, *lines):
        """What is printed up to the end of the search that the last line starts."""
        engine = subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=self.folder)
        self.addCleanup(engine.stdout.close)
        engine.stdin.write("".join(line + "\n" for line in ("uci", *lines)).encode())
        engine.stdin.flush()
        printed = []
        while not printed or not printed[-1].startswith("bestmove"):
            printed.append(engine.stdout.readline().decode())
            self.assertTrue(printed[-1], printed)
        engine.stdin.write(b"quit\n")
        engine.stdin.close()
        self.assertEqual(engine.wait(SECONDS), 0)
        return "".join(printed)

    def errors_of(self, *lines):
        """Output, error output and exit code of the lines and `quit`."""
        data = "".join(line + "\n" for line in ("uci", *lines, "quit")).encode()
        done = subprocess.run([ENGINE], input=data, capture_output=True, cwd=self.folder, timeout=SECONDS, check=False)
        return done.stdout.decode(), done.stderr.decode(), done.returncode

    def test_found_tables_are_counted(self):
        self.assertEqual(self.uci(self.load), "info string Found 2 tablebases.\n")
        self.assertEqual(self.uci(self.load, self.load), "info string Found 2 tablebases.\n")
        self.assertEqual(self.uci("setoption name Syzygy Path value nowhere"), "info string Found 0 tablebases.\n")
        self.assertEqual(self.uci("setoption name Syzygy Path value ;tables;;tables;"),
                         "info string Found 2 tablebases.\n")

    def test_go_is_answered_with_the_distance(self):
        printed = self.uci(self.load, f"position fen {ROOK_FEN}", "go")
        self.assertEqual(go_lines(printed), ["info depth 1 seldepth 0 nodes 0 score cp 1 hashfull 0 tbhits 1 pv a1a2",
                                             "bestmove a1a2"])

    def test_a_drawn_root_needs_no_distances(self):
        printed = self.uci(self.load, f"position fen {BISHOP_FEN}", "go", "go")
        lines = go_lines(printed)
        self.assertEqual(len(lines), 4)
        self.assertEqual(lines[:2], lines[2:])
        self.assertIn(" score cp 0 ", lines[0])

    def test_go_infinite_searches(self):
        printed = self.uci(self.load, f"position fen {ROOK_FEN}", "go infinite", "isready", "stop")
        self.assertNotIn("depth 1 seldepth 0 nodes 0", printed)

    def test_switched_off_go_searches(self):
        printed = self.search(self.load, "setoption name Syzygy Use value false", f"position fen {ROOK_FEN}",
                              "go depth 3")
        self.assertNotIn("seldepth 0 nodes 0", printed)
        self.assertIn("info depth 3 ", printed)
        self.assertNotRegex(printed, r"tbhits [1-9]")

    def test_a_high_counter_spoils_the_score_and_not_the_move(self):
        fen = ROOK_FEN.replace("0 1", "100 80")
        printed = self.uci(self.load, f"position fen {fen}", "go", "setoption name Syzygy 50 Moves Rule value false", "go")
        lines = go_lines(printed)
        self.assertIn(" score cp 0 ", lines[0])
        self.assertIn(" score cp 1 ", lines[2])
        self.assertEqual(lines[1], lines[3])

    def test_the_listing_shows_distances_and_classes(self):
        printed = self.run_lines("uci", self.load, "console", f"fen {ROOK_FEN}", "moves")
        rows = printed[printed.index("tablebases.\n") + 12:].splitlines()
        self.assertEqual(len(rows), 15)
        self.assertTrue(all(re.fullmatch(r" *\d+\. \w{4} \+Z2( \w{4}){5} \.\.\. \(\d+\)", row) for row in rows), rows)
        (self.tables / "KRvK.rtbz").unlink()
        printed = self.run_lines("uci", self.load, "console", f"fen {ROOK_FEN}", "moves")
        rows = printed[printed.index("tablebases.\n") + 12:].splitlines()
        self.assertTrue(all(re.fullmatch(r" *\d+\. \w{4} \+M\?", row) for row in rows), rows)

    def test_the_search_uses_the_classes(self):
        (self.tables / "KRvK.rtbz").unlink()
        printed = self.search(self.load, f"position fen {ROOK_FEN}", "go depth 2")
        # Every reply lies in the table, which counts.
        self.assertRegex(printed, r"tbhits [1-9]")

    def test_damaged_tables_are_reported_once_and_searched(self):
        for content in (b"", b"x", wdl_table(ROOK, 4, 0)[:-1], b"\0" * 1000):
            (self.tables / "KRvK.rtbw").write_bytes(content)
            output, errors, code = self.errors_of(self.load, f"position fen {ROOK_FEN}", "go depth 1", "isready")
            self.assertEqual(code, 0)
            self.assertIn("Corrupted table.\n", errors)
            self.assertIn("readyok", output)

    def test_a_table_that_has_gone_is_reported(self):
        engine = subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                                  cwd=self.folder)
        self.addCleanup(engine.stdout.close)
        self.addCleanup(engine.stderr.close)
        engine.stdin.write(f"uci\n{self.load}\n".encode())
        engine.stdin.flush()
        while b"Found" not in engine.stdout.readline():
            pass
        (self.tables / "KRvK.rtbw").unlink()
        engine.stdin.write(f"position fen {ROOK_FEN}\ngo\nisready\nstop\nquit\n".encode())
        engine.stdin.close()
        errors = engine.stderr.read()
        self.assertEqual(engine.wait(SECONDS), 0)
        self.assertTrue(errors.startswith(b"Could not find KRvK.rtbw\n"), errors)

    @unittest.skipUnless(os.environ.get("BRENQUIL_DATA"), "no shared data")
    def test_real_tables(self):
        data = pathlib.Path(os.environ["BRENQUIL_DATA"]) / "syzygy"
        load = f"setoption name Syzygy Path value {data}"
        printed = self.uci(load, "position fen 7k/8/5K2/8/8/8/8/R7 w - - 0 1", "go",
                           "position fen k7/8/1K6/8/8/8/8/7R w - - 0 1", "go")
        self.assertIn("Found 35 tablebases.", printed)
        lines = go_lines(printed)
        self.assertIn(" score cp 3 ", lines[0])
        self.assertEqual(lines[1], "bestmove f6g6")
        self.assertEqual(lines[3], "bestmove h1h8")
        printed = self.run_lines("uci", load, "console", "fen 7k/8/5K2/8/8/8/8/R7 w - - 0 1", "moves")
        self.assertIn("  1. f6g6 +Z2 h8g8 a1a8\n", printed)
        # The same with the colours exchanged: the best move stands last.
        printed = self.run_lines("uci", load, "console", "fen r7/8/8/8/8/5k2/8/7K b - - 0 1", "moves")
        self.assertRegex(printed, r"\n *\d+\. f3g3 \+Z2 h1g1 a8a1\n$")


if __name__ == "__main__":
    unittest.main()
