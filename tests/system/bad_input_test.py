#!/usr/bin/env python3
# ctest: sanitized timeout=300
"""Whatever is sent: no crash, no hang, no lost later line, and exit code 0."""
import random

from engine_process import EngineTestCase, is_end, main

NUMBERS = ("", "0", "-1", "-10", "1", "2147483647", "-2147483648", "2147483648", "-2147483649",
           "99999999999999999999", "1e5", "0x10", "1.5", "..", "-", "--5", "abc", "\u00ff")
SPINS = ("Nullmove Reduction", "Nullmove Min Depth", "LMR Min Depth", "LMR Min Moves",
         "Futility Margin1", "Futility Margin2", "Futility Margin3", "MultiPV", "MultiPV Delta",
         "Contempt", "Lazy Eval Margin", "Pawn", "Knight", "Bishop", "Rook", "Queen",
         "NalimovCache", "Nalimov Min Depth")
OTHERS = ("Use Nullmove", "Use Futility", "Use LMR", "Use Extensions", "Use Endgame Eval",
          "Ponder", "UCI_Chess960", "UCI_AnalyseMode", "UCI_ShowCurrLine", "UCI_ShowRefutations",
          "Show Database Moves", "UCI_EngineAbout", "OwnBook", "Book Path", "Book Mode",
          "NalimovPath", "Nalimov Usage", "Syzygy Path", "Syzygy Use", "Syzygy 50 Moves Rule",
          "Debug")

FENS = (
    "", " ", "w", "/", "////////", "8", "8/8/8/8/8/8/8/8", "8/8/8/8/8/8/8/8 w - - 0 1",
    "4k3/8/8/8/8/8/8/8 w - - 0 1", "8/8/8/8/8/8/8/4K3 b - - 0 1",
    "kkkkkkkk/8/8/8/8/8/8/KKKKKKKK w KQkq - 0 1", "kkkkkkkk/kk6/8/8/8/8/8/KK6 b - - 0 1",
    "4k3/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/QQQQQQQQ/8/4K3 w - - 0 1",
    "qqqqkqqq/8/QQQQQQQQ/8/QQQQQQQQ/8/QQQQQQQQ/4K3 b - - 0 1",
    "RRRRRRRR/RRRRRRRR/RRRRRRRR/RRRRRRRR/rrrrrrrr/rrrrrrrr/rrrrrrrr/rrrrrrrr w KQkq - 0 1",
    "4k2P/PPPPPPPP/8/8/8/8/pppppppp/p3K2p w - - 0 1", "PPPPPPPP/8/4k3/8/8/4K3/8/pppppppp b - - 0 1",
    "4k3/8/8/8/8/8/8/4K3 w KQkq - 0 1", "4k3/8/8/8/8/8/8/R3K2R w ABCDEFGHabcdefgh - 0 1",
    "4k3/8/8/8/8/8/8/4K3 w - e3 0 1", "4k3/8/8/8/8/8/8/4K3 w - z9 0 1",
    "4k3/8/8/3pP3/8/8/8/4K3 w - d6 -5 -7", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 99999 1",
    "4k3/8/8/8/8/8/8/R3K3 w Q - 0 100000", "4k3/8/8/8/8/8/8/R3K3 w Q - 0 2147483647",
    "4k3/8/8/8/8/8/8/R3K3 w Q - 2147483647 250", "4k3/8/8/8/8/8/8/R3K3 w Q - -2147483648 -9",
    "4k3/8/8/8/8/8/8/R3K3 w Q - 99999999999999999999 99999999999999999999",
    "4k3/8/8/8/8/8/8/R3K3 x Q - 0 1", "rnbqkbnr/pppppppp/9/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkbnrrnbqkbnr/ppppppppp/99999999/8 b - - 0 1", "not a fen at all, but words", "4k3 4K3 w",
    "4R3/8/8/8/8/8/8/k3K3 w - - 0 1", "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",
    "krrrrrrr/8/8/8/8/8/8/KRRRRRRR w - - 0 1", "k7/8/8/8/8/8/8/K7 w - a3 0 1",
    "4k3/8/8/8/3pP3/8/8/4K3 b - e3 0 1", "8/8/8/8/8/8/8/8 b KQkq e6 50 249",
    "r3k2r/8/8/8/8/8/8/R3K2R w HAha - 0 249", "bbbbkbbb/8/8/8/8/8/8/BBBBKBBB w - - 98 249",
)


class BadInput(EngineTestCase):
    def assert_alive(self, engine):
        """Answers, searches and ends as it should."""
        engine.send("uci")
        engine.until(lambda line: line == "uciok", 120)
        engine.send("stop", "ucinewgame")
        engine.ready(120)
        engine.send("position startpos", "go depth 2")
        engine.until(is_end)
        self.assert_quits(engine)

    def test_random_bytes(self):
        for seed in range(12):
            source = random.Random(seed)
            engine = self.start_console()
            if seed % 2:
                engine.uci()
            # "quit" and "exit" are far too unlikely to come up here.
            engine.send_bytes(bytes(source.randrange(256) for _ in range(20000)) + b"\n")
            self.assert_alive(engine)

    def test_random_words_of_the_language(self):
        words = ("uci isready position fen startpos moves go depth 1 2 3 infinite ponder stop "
                 "setoption name value Hash 1 MultiPV Threads debug on off ucinewgame console new "
                 "undo e2e4 e7e5 g1f3 O-O 8/8/8/8/8/8/8/8 w - - 0 searchmoves nodes 100 movetime 5 "
                 "wtime btime eval see flip moves board perft mate winc binc movestogo").split()
        for seed in range(8):
            source = random.Random(seed)
            engine = self.start_console()
            for _ in range(300):
                line = " ".join(source.choice(words) for _ in range(source.randrange(1, 9)))
                # A table of hundreds of megabytes or a perft of days would only test patience.
                if "Hash" not in line and "perft" not in line and "Threads" not in line:
                    engine.send(line)
            self.assert_alive(engine)

    def test_lines_of_a_megabyte(self):
        for start in (b"", b"position fen ", b"position startpos moves ", b"go ", b"setoption name ",
                      b"setoption name Book Mode value ", b"go depth 1 searchmoves ", b"fen "):
            engine = self.start_uci()
            engine.send_bytes(start + b"e2e4 " * 200_000 + b"\n")
            engine.ready(120)
            engine.send_bytes(start + b"x" * 1_000_000 + b"\n")
            self.assert_alive(engine)

    def test_zero_bytes(self):
        engine = self.start_uci()
        engine.send_bytes(b"\0\n\0\0\0\nposition\0 startpos\nposition fen \0\0/\0 w\n"
                          b"go depth 1\0\nsetoption name \0 value \0\nisready\0\n")
        engine.send("stop")
        self.assert_alive(engine)

    def test_searches_from_fens_of_all_sorts(self):
        engine = self.start_uci()
        for fen in FENS:
            engine.send(f"position fen {fen}", "go depth 2 nodes 20000")
            engine.until(is_end, 120)
        self.assert_alive(engine)

    def test_console_commands_on_fens_of_all_sorts(self):
        engine = self.start_console()
        for fen in FENS:
            engine.send("fen " + fen, "board", "moves", "eval", "flip", "eval", "undo", "undo", "e2e4",
                        "see e2e4", "perft 1 -d", "fen")
        engine.send("uci")
        engine.until(lambda line: line == "uciok", 120)
        self.assert_alive(engine)

    def test_random_fens(self):
        engine = self.start_uci()
        source = random.Random(5)
        for _ in range(120):
            rows = ["".join(source.choice("pnbrqkPNBRQK12345678") for _ in range(source.randrange(9)))
                    for _ in range(source.randrange(10))]
            fields = ["/".join(rows), source.choice("wb-"),
                      "".join(source.choice("KQkqAHah-") for _ in range(3)),
                      source.choice(("-", "e3", "d6", "a9", "h5")), str(source.randrange(-5, 200)),
                      str(source.randrange(-5, 300))]
            engine.send("position fen " + " ".join(fields), "go depth 2 nodes 5000")
            engine.until(is_end, 120)
        self.assert_alive(engine)

    def test_game_of_600_moves(self):
        engine = self.start_uci()
        cycle = ["g1f3", "g8f6", "f3g1", "f6g8"]
        for count in (490, 497, 498, 499, 500, 501, 600, 5000):
            engine.send("position startpos moves " + " ".join(cycle[i % 4] for i in range(count)))
            engine.send("go depth 3")
            engine.until(is_end, 120)
        self.assert_alive(engine)

    def test_every_number_for_every_token_of_go(self):
        for token in ("wtime", "btime", "winc", "binc", "movestogo", "depth", "nodes", "mate",
                      "movetime"):
            engine = self.start_uci("position fen 8/8/8/8/8/5k2/5p2/5K2 w - - 0 1")
            for number in NUMBERS:
                engine.send(f"go nodes 3000 {token} {number}" if token != "nodes"
                            else f"go depth 3 {token} {number}")
                engine.until(is_end)
            self.assert_alive(engine)

    def test_negative_clocks(self):
        engine = self.start_uci()
        for line in ("go wtime -5 btime -5", "go wtime -2147483648 movestogo -10",
                     "go wtime 1 movestogo -10", "go wtime 0 btime 0", "go movetime -3",
                     "go movestogo -10 wtime 10 winc -2147483648"):
            engine.send(line + " nodes 30000")
            engine.until(is_end)
        self.assert_alive(engine)

    def test_every_number_for_every_option(self):
        engine = self.start_uci("debug on")
        for name in SPINS + OTHERS:
            for number in NUMBERS:
                engine.send(f"setoption name {name} value {number}",
                            "position fen r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R "
                            "w KQkq - 0 1", "go nodes 400")
                engine.until(is_end)
        self.assert_alive(engine)

    def test_all_options_absurd_at_once(self):
        source = random.Random(9)
        for _ in range(5):
            engine = self.start_uci()
            for _ in range(20):
                for name in SPINS:
                    engine.send(f"setoption name {name} value {source.choice(NUMBERS)}")
                engine.send("go nodes 4000")
                engine.until(is_end)
            self.assert_alive(engine)

    def test_hash_that_cannot_be_had_says_so_and_the_engine_goes_on(self):
        engine = self.start_uci("setoption name Hash value 5")
        for number in ("10000000", "2147483647", "-1", "-2147483648", "100000000"):
            engine.send(f"setoption name Hash value {number}")
            lines = engine.ready()
            self.assertEqual(len(lines), 1, number)
            self.assertRegex(lines[0], "^info string .*cannot be allocated")
            engine.search("go depth 4")
        for number in ("lots", "", "1e9", "5"):
            engine.send(f"setoption name Hash value {number}")
        engine.ready()
        self.assert_alive(engine)

    def test_hash_changes_between_and_during_searches(self):
        engine = self.start_uci()
        for size in (1, 0, 3, 2, 0, 1, 64, 2):
            engine.send("go infinite", f"setoption name Hash value {size}")
            engine.until(is_end)
            engine.search("go depth 4")
        self.assert_alive(engine)

    def test_200_pairs_of_go_and_stop(self):
        engine = self.start_uci()
        for i in range(200):
            engine.send("go infinite" if i % 2 else "go", "stop")
        for _ in range(200):
            engine.until(is_end)
        self.assert_alive(engine)

    def test_200_pairs_of_go_and_stop_with_four_threads(self):
        engine = self.start_uci("setoption name Threads value 4")
        for i in range(200):
            engine.send("go infinite" if i % 2 else "go depth 30", "stop")
        for _ in range(200):
            engine.until(is_end, 120)
        self.assert_alive(engine)

    def test_two_hundred_searches_each_ended_by_the_next(self):
        engine = self.start_uci("setoption name Threads value 2")
        for _ in range(200):
            engine.send("go infinite")
        engine.send("stop")
        for _ in range(200):
            engine.until(is_end, 120)
        self.assert_alive(engine)

    def test_absurd_numbers_of_threads(self):
        engine = self.start_uci("setoption name Hash value 1")
        for number in ("0", "-5", "7", "40", "abc", "-2147483648"):
            engine.send(f"setoption name Threads value {number}", "go depth 4")
            engine.until(is_end)
        self.assert_alive(engine)

    def test_commands_of_all_kinds_during_a_search(self):
        for threads in (1, 3):
            engine = self.start_uci(f"setoption name Threads value {threads}")
            for line in ("position startpos moves e2e4", "setoption name Hash value 2",
                         "setoption name MultiPV value 7", "setoption name Use LMR value false",
                         "ucinewgame", "debug on", "uci", "console", "eval", "fen", "undo", "e2e4",
                         "perft 2", "moves", "uci", "ponderhit", "go nodes 1", "stop"):
                engine.send("go infinite", line, "uci")
                engine.until(lambda text: text == "uciok", 120)
            self.assert_alive(engine)


if __name__ == "__main__":
    main()
