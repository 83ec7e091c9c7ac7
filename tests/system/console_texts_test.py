# ctest: timeout=120
"""The texts of the console, to the byte."""

import re
import unittest

from console_session import EngineTest, START_FEN

HELP = """\
------------------------------------------------------------------
exit           = exit engine
uci            = switch to UCI protocol
console        = switch to Console mode
------------------------------------------------------------------
Commands in console mode
------------------------------------------------------------------
new            = set start position
<move>         = do move (algebraic notation e.g. e2e4)
undo           = undo move
moves          = list legal moves (with info of bases if available)
board          = display current board position
flip           = flip the board
eval           = display current static evaluation
see <move>     = static exchange evaluation (SEE) for move m
fen [<fen>]    = get/set current position as FEN-string
test [-960]    = several test runs, [-960] = also for chess960
perft <n> [-d] = perft numbers up to depth n, [-d] = devide view
print <num>    = print number as bitboard
ini            = create ini-file
batch <file>   = call a command batch-file (*.cmd)
cpu            = print info about cpu features
------------------------------------------------------------------
"""

START_BOARD = """
rnbqkbnr
pppppppp
........
........
........
........
PPPPPPPP
RNBQKBNR

"""

START_MOVES = "".join(f"{number:3}. {move}\n" for number, move in enumerate((
    "a2a3 b2b3 c2c3 d2d3 e2e3 f2f3 g2g3 h2h3 a2a4 b2b4 c2c4 d2d4 e2e4 f2f4 g2g4 h2h4 "
    "b1a3 b1c3 g1f3 g1h3").split(), 1))

# White's king is in check by the rook; the pawn's moves do not help.
CHECK_FEN = "4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1"


def bitboard(*rows):
    return "\n" + "".join(row + "\n" for row in rows) + "\n"


EMPTY_ROW = "." * 8


class ConsoleTexts(EngineTest):
    def test_help(self):
        self.expect(["help"], HELP)
        self.expect(["HELP"], HELP)

    def test_nothing_is_printed_without_a_command(self):
        self.expect(["", "   ", "nonsense", "go", "isready", "go depth 1"], "")

    def test_board(self):
        self.expect(["board"], START_BOARD)

    def test_move_is_played_in_silence_and_undone(self):
        self.expect(["e2e4", "c7c5", "fen", "undo", "undo", "board"],
                    "rnbqkbnr/pp1ppppp/8/2p5/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2\n" + START_BOARD)

    def test_undo_after_new_does_nothing(self):
        self.expect(["e2e4", "new", "undo", "fen"], START_FEN + "\n")

    def test_move_with_words_behind_is_no_move(self):
        self.expect(["e2e4 is what I want", "fen"], START_FEN + "\n")

    def test_text_of_no_move_is_silent(self):
        self.expect(["e2e5", "e7e5", "e2e4q", "z9z9", "O-O"], "")

    def test_move_that_leaves_the_king_in_check(self):
        self.expect(["fen " + CHECK_FEN, "a2a3"], "Illegal move: a2a3\n")

    def test_moves_in_check_shows_what_entry_refuses(self):
        printed = self.run_lines("fen " + CHECK_FEN, "moves", "a2a3")
        self.assertIn("  1. a2a3\n", printed)
        self.assertTrue(printed.endswith("Illegal move: a2a3\n"))

    def test_moves_without_bases(self):
        self.expect(["moves"], START_MOVES)

    def test_fen_after_new_and_back_again(self):
        self.expect(["e2e4", "new", "fen", "d2d4", "fen " + START_FEN, "fen"], (START_FEN + "\n") * 2)

    def test_flip_and_flip_again(self):
        self.expect(["e2e4", "flip", "fen", "flip", "fen"],
                    "rnbqkbnr/pppp1ppp/8/4p3/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 2\n"
                    "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2\n")

    def test_eval(self):
        self.expect(["eval"], "eval: 0\n")

    def test_see(self):
        self.expect(["fen 4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", "see e4d5", "see e4e6", "see", "see e4 d5"],
                    "score: 100\n" + "invalid move!\n" * 3)

    def test_print_1_is_at_the_left_of_the_last_row(self):
        self.expect(["print 1"], bitboard(*[EMPTY_ROW] * 7, "1......."))

    def test_print_of_the_highest_bit_is_at_the_right_of_the_first_row(self):
        self.expect(["print 9223372036854775808"], bitboard(".......1", *[EMPTY_ROW] * 7))

    def test_print_of_no_number_prints_nothing(self):
        self.expect(["print", "print x", "print 1 1", "print 0x1"], "")

    def test_print_of_all_and_of_a_diagonal(self):
        self.expect(["print 18446744073709551615"], bitboard(*["1" * 8] * 8))
        self.expect(["print 9241421688590303745"],
                    bitboard(*["." * column + "1" + "." * (7 - column) for column in range(7, -1, -1)]))

    def test_cpu_table(self):
        lines = self.run_lines("cpu").split("\n")
        labels = ["vendor", "cores", "64bit", "popcnt", "sse", "sse2", "sse3", "sse4.1", "sse4.2", "bmi1", "bmi2",
                  "prefetch", "page size ext.", "hyper-threading"]
        self.assertEqual([line.split(": ")[0] for line in lines], labels + [""])
        self.assertRegex(lines[1], r"^cores: ([1-9]|[12]\d|3[0-2])$")
        for line in lines[2:-1]:
            self.assertRegex(line, r": (true|false)$")

    def test_cpu_flag_equals_its_row(self):
        table = dict(line.split(": ") for line in self.run_lines("cpu").splitlines())
        self.expect(["cpu 1 EDX 26"], table["sse2"] + "\n")
        self.expect(["cpu 7 EBX 8"], table["bmi2"] + "\n")

    def test_cpu_of_two_words_prints_nothing(self):
        self.expect(["cpu 7 EBX", "cpu 1 EDX 26 1"], "")

    def test_perft_1(self):
        printed = self.run_lines("perft 1")
        self.assertRegex(printed, r"\Adepth 1 nodes 20 nps \d+ \n\Z")

    def test_perft_1_divided(self):
        printed = self.run_lines("perft 1 -d").split("\n")
        moves = [line.split(". ")[1] for line in START_MOVES.splitlines()]
        self.assertEqual(printed[:23], [""] + [f"{number:2}  {move} - 1" for number, move in enumerate(moves, 1)] +
                         ["", "nodes: 20"])
        self.assertRegex(printed[23], r"^time:  [\d.e-]+$")
        self.assertRegex(printed[24], r"^nps:   \d+$")
        self.assertEqual(printed[25:], [""])

    def test_perft_2_divided_counts(self):
        printed = self.run_lines("perft 2 -d")
        self.assertEqual(len(re.findall(r"^[ \d]\d  \w{4} - 20$", printed, re.MULTILINE)), 20)
        self.assertIn("\nnodes: 400\n", printed)

    def test_perft_without_depth_prints_nothing(self):
        self.expect(["perft", "perft 0", "perft -d", "perft x", "perft -1", "perft 1000"], "")

    def test_perft_takes_the_last_number(self):
        self.assertEqual(re.sub(r"nps \d+", "nps", self.run_lines("perft 2 3")),
                         "depth 1 nodes 20 nps \ndepth 2 nodes 400 nps \ndepth 3 nodes 8902 nps \n")

    def test_perft_leaves_the_position(self):
        self.expect(["e2e4", "perft 0", "undo", "board"], START_BOARD)
        self.assertTrue(self.run_lines("perft 2", "board").endswith(START_BOARD))

    def test_exit_and_quit_in_any_case(self):
        for word in ("quit", "QUIT", "exit", "Exit now"):
            self.assertTrue(self.raw(word.encode() + b"\nhelp\n").endswith(b"\n\n"), word)

    def test_bytes_of_all_kinds_are_survived(self):
        junk = bytes(range(1, 10)) + bytes(range(11, 256)) + b"\0x"
        printed = self.run_lines(junk, b"fen " + junk, b"see " + junk, b"print " + junk, b"cpu " + junk,
                                 b"batch " + junk, b"perft " + junk, b"x" * (1 << 20), b"fen" + b" x" * (1 << 19),
                                 b"new", b"fen")
        self.assertTrue(printed.endswith(START_FEN + "\n"))


if __name__ == "__main__":
    unittest.main()
