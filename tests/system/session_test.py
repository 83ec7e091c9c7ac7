#!/usr/bin/env python3
# ctest: timeout=180
"""Whole sessions of both modes with the real program."""
import os
import time

from engine_process import START_FEN, EngineTestCase, is_end, main, seconds, without_status

MATED = "R5k1/5ppp/8/8/8/8/8/6K1 b - - 0 1"


class Start(EngineTestCase):
    def test_banner_has_four_lines_and_no_prompt(self):
        engine = self.start()
        banner = engine.banner()
        self.assertEqual(banner[0], "")
        self.assertRegex(banner[1], r"^Brenquil 3\.00 x64 \([A-Z][a-z]{2} {1,2}\d{1,2} \d{4}\)$")
        self.assertEqual(banner[2], "created by J.Ostervelde")
        self.assertEqual(banner[3], "")
        self.assert_quits(engine)
        self.assertIsNone(engine.lines.get(timeout=5))

    def test_program_begins_in_console_mode(self):
        engine = self.start_console()
        engine.send("isready", "go depth 3", "position startpos moves e2e4", "fen")
        self.assertEqual(engine.line(), START_FEN)

    def test_nothing_is_written_into_the_directory(self):
        engine = self.start_uci()
        engine.search("go depth 3")
        self.assert_quits(engine)
        self.assertEqual(os.listdir(self.directory), [])


class End(EngineTestCase):
    def test_quit_and_exit_in_any_case_of_letters_and_in_both_modes(self):
        for word in ("quit", "QUIT", "Quit", "exit", "EXIT", " quit", "quit now"):
            for first in ("", "uci"):
                engine = self.start_console()
                engine.send(first, word)
                self.assertEqual(engine.wait(), 0, word)

    def test_end_of_input_does_not_end_the_program(self):
        engine = self.start_uci()
        engine.process.stdin.close()
        time.sleep(1)
        self.assertTrue(engine.is_running())

    def test_search_goes_on_after_the_end_of_input(self):
        engine = self.start_uci("go depth 6")
        engine.process.stdin.close()
        self.assertTrue(engine.until(is_end)[-1].startswith("bestmove "))
        self.assertTrue(engine.is_running())

    def test_last_line_without_line_feed_is_obeyed(self):
        engine = self.start_uci()
        engine.send_bytes(b"quit")
        engine.process.stdin.close()
        self.assertEqual(engine.wait(), 0)
        engine = self.start_console()
        engine.send_bytes(b"fen")
        engine.process.stdin.close()
        self.assertEqual(engine.line(), START_FEN)

    def test_quit_drops_the_lines_behind_it(self):
        engine = self.start_console()
        engine.send_bytes(b"quit\nfen\nfen\n")
        self.assertEqual(engine.wait(), 0)
        self.assertIsNone(engine.lines.get(timeout=5))

    def test_carriage_returns_are_dropped(self):
        engine = self.start_console()
        engine.send_bytes(b"uci\r\nisready\r\nposition startpos moves e2e4\r\ngo depth 2\r\n")
        lines = engine.until(is_end)
        self.assertIn("readyok", lines)
        self.assertNotIn("\r", "".join(lines))
        engine.send_bytes(b"quit\r\n")
        self.assertEqual(engine.wait(), 0)


    def test_only_the_end_of_the_input_ends_it(self):
        engine = self.start_console()
        engine.send_bytes(b"\x1a\n\x04\n\0\nfen\n")
        self.assertEqual(engine.line(), START_FEN)

    def test_lines_end_in_one_line_feed(self):
        engine = self.start_uci()
        for line in engine.search("go depth 2"):
            self.assertNotIn("\r", line)


class Uci(EngineTestCase):
    def test_uci_answers_with_name_author_options_and_uciok(self):
        engine = self.start_console()
        lines = engine.uci()
        self.assertEqual(lines[0], "id name Brenquil 3.00")
        self.assertEqual(lines[1], "id author J.Ostervelde")
        self.assertTrue(all(line.startswith("option name ") for line in lines[2:-1]))
        self.assertEqual(lines[2], "option name Hash type spin default 64 min 0 max 16384")
        self.assertEqual(engine.uci(), lines)

    def test_debug_and_ini_names_are_not_offered(self):
        lines = self.start_console().uci()
        self.assertFalse([line for line in lines if " Debug " in line or "Show Current" in line])

    def test_isready_is_answered_during_a_search(self):
        engine = self.start_uci("go infinite")
        for _ in range(5):
            self.assertFalse([line for line in engine.ready() if is_end(line)])
        engine.send("stop")
        engine.until(is_end)

    def test_info_lines_have_their_form(self):
        engine = self.start_uci()
        lines = engine.search("position startpos moves e2e4", "go depth 4")
        for depth, line in enumerate(lines[:-2], 1):
            self.assertRegex(
                line, rf"^info depth {depth} seldepth \d+ time \d+ nodes \d+ nps \d+ "
                r"score (cp -?\d+|mate -?\d+) hashfull \d+ tbhits 0 pv( [a-h][1-8][a-h][1-8])+$")
        self.assertRegex(lines[-2], r"^info time \d+ nodes \d+ nps \d+ cpuload \d+ hashfull \d+ "
                                    r"tbhits 0$")
        self.assertRegex(lines[-1], r"^bestmove \S+ ponder \S+$")

    def test_go_key_words_are_heard_in_any_case(self):
        engine = self.start_uci()
        self.assertEqual(len(engine.search("go DEPTH 5")), 7)

    def test_depth_1_is_one_iteration(self):
        self.assertEqual(len(self.start_uci().search("go depth 1")), 3)

    def test_depth_260_stops_at_254(self):
        engine = self.start_uci("position fen 7k/5Q2/8/8/8/8/8/K7 b - - 0 1")
        lines = engine.search("go depth 260")
        self.assertRegex(lines[-3], "^info depth 254 ")

    def test_search_without_limits_runs_to_254(self):
        for line in ("go", "go depth 0", "go depth -1", "go wtime 10"):
            engine = self.start_uci(f"position fen {MATED}")
            lines = engine.search(line)
            self.assertRegex(lines[-3], "^info depth 254 ")
            self.assertEqual(lines[-1], "info string No best move!")

    def test_mate_of_5_bounds_the_search_at_5_plies(self):
        self.assertEqual(len(self.start_uci().search("go mate 5")), 7)

    def test_without_a_legal_move_there_is_no_bestmove(self):
        engine = self.start_uci(f"position fen {MATED}")
        self.assertEqual(engine.search("go depth 3")[-1], "info string No best move!")

    def test_node_limit_of_1_finds_no_best_move(self):
        self.assertEqual(self.start_uci().search("go nodes 1")[-1], "info string No best move!")

    def test_clock_of_the_other_side_alone_runs_without_a_limit(self):
        engine = self.start_uci("go btime 1")
        time.sleep(0.3)
        self.assertFalse([line for line in engine.ready() if is_end(line)])
        engine.send("stop")
        engine.until(is_end)

    def test_searchmoves_are_kept_to(self):
        engine = self.start_uci()
        lines = engine.search("go depth 4 searchmoves a2a3 h2h3")
        self.assertRegex(lines[-1], "^bestmove (a2a3|h2h3)")

    def test_illegal_move_is_reported_and_the_others_are_played(self):
        engine = self.start_uci("position startpos moves e2e4 b9b9 e7e5")
        self.assertEqual(engine.ready(), ["info string Illegal move: b9b9"])
        engine.send("console", "fen")
        self.assertEqual(engine.line(),
                         "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2")

    def test_debug_echoes_options(self):
        engine = self.start_uci("debug on", "setoption name Hash value 128",
                                "setoption name hash value 1", "debug",
                                "setoption name Hash value 64")
        self.assertEqual(engine.ready(), ["info string Hash = 128",
                                          "info string unknown option: hash"])

    def test_console_commands_are_unknown_in_uci_mode(self):
        engine = self.start_uci("moves", "board", "eval", "e2e4", "help")
        self.assertEqual(engine.ready(), [])

    def test_go_infinite_holds_its_move_back_and_starts_from_an_empty_table(self):
        engine = self.start_uci("position fen 7k/5Q2/8/8/8/8/8/K7 b - - 0 1", "go infinite")
        engine.until(lambda line: line.startswith("info depth 254 "))
        self.assertEqual([line for line in engine.ready() if is_end(line)], [])
        engine.send("stop")
        engine.until(is_end)
        engine.send("position startpos")
        runs = []
        for _ in range(2):
            engine.send("go infinite depth 6")
            runs.append(without_status(engine.until(lambda line: "info depth 6 " in line)))
            engine.send("stop")
            engine.until(is_end)
        self.assertEqual(runs[0], runs[1])

    def test_ponderhit_changes_nothing(self):
        engine = self.start_uci("go ponder depth 3", "ponderhit")
        engine.until(lambda line: line.startswith("info depth 3 "))
        engine.send("ponderhit")
        time.sleep(0.2)
        self.assertFalse([line for line in engine.ready() if is_end(line)])
        engine.send("stop")
        engine.until(is_end)

    def test_ponder_with_a_clock_ends_at_its_hard_limit(self):
        engine = self.start_uci("go ponder wtime 1000 btime 1000")
        self.assertTrue(engine.until(is_end)[-1].startswith("bestmove "))

    def test_stop_without_a_search_does_not_hinder_the_next(self):
        engine = self.start_uci("stop", "stop")
        self.assertEqual(len(engine.search("go depth 3")), 5)

    def test_commands_that_rewrite_end_the_search_first(self):
        for line in ("position startpos", "ucinewgame", "go depth 1",
                     "setoption name Hash value 3"):
            engine = self.start_uci("go infinite")
            engine.until(lambda text: text.startswith("info depth 2 "))
            engine.send(line)
            self.assertTrue(engine.until(is_end)[-1].startswith("bestmove "), line)

    def test_no_currmove_lines_before_a_second_and_all_of_them_after(self):
        engine = self.start_uci()
        early = engine.search("go depth 7")
        if seconds(1) == 1:
            self.assertFalse([line for line in early if "currmove" in line])
        engine.send("ucinewgame", "setoption name UCI_ShowCurrLine value true",
                    "setoption name UCI_ShowRefutations value true", "go infinite")
        lines = engine.until(lambda line: line.startswith("info refutation "))
        lines += engine.until(lambda line: line.startswith("info currmove "))
        status = next(i for i, line in enumerate(lines) if line.startswith("info time "))
        self.assertTrue(lines[status + 1].startswith("info currline "))
        self.assertFalse([line for line in lines[:status] if "currmove" in line])
        self.assertRegex("\n".join(lines), r"info currmove \S+ currmovenumber \d+")
        engine.send("stop")
        engine.until(is_end)

    def test_multipv_20_prints_19_lines(self):
        engine = self.start_uci("setoption name MultiPV value 20")
        lines = engine.search("go depth 2")
        numbers = [line.split(" multipv ")[1].split()[0] for line in lines if " multipv " in line]
        self.assertEqual(numbers, [str(n) for n in range(1, 20)] * 2)

    def test_hash_0_searches_without_a_table(self):
        engine = self.start_uci("setoption name Hash value 0")
        lines = engine.search("go depth 5")
        self.assertTrue(all(" hashfull 0 " in line for line in lines[:-1]))

    def test_ponder_off_leaves_the_ponder_move_out(self):
        engine = self.start_uci("setoption name Ponder value false")
        self.assertNotIn("ponder", engine.search("go depth 4")[-1])

    def test_chess960_castles_onto_the_rook_or_by_name(self):
        engine = self.start_uci("setoption name UCI_Chess960 value true",
                                "position fen 4k3/8/8/8/8/8/8/4K2R w H - 0 1 moves e1h1",
                                "console", "fen", "uci")
        self.assertEqual(engine.line(), "4k3/8/8/8/8/8/8/5RK1 b - - 1 2")
        engine.until(lambda line: line == "uciok")
        engine.send("position fen 4k3/8/8/8/8/8/8/4K2R w H - 0 1")
        self.assertRegex(engine.search("go depth 2 searchmoves e1h1")[-1], "^bestmove e1h1")
        engine.send("position fen 4k3/8/8/8/8/8/8/4K2R w K - 0 1")
        self.assertRegex(engine.search("go depth 2 searchmoves O-O")[-1], "^bestmove O-O")


class Console(EngineTestCase):
    def test_moves_are_played_and_taken_back(self):
        engine = self.start_console()
        engine.send("e2e4", "e7e5", "fen", "undo", "undo", "fen")
        self.assertEqual(engine.line(),
                         "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq - 0 2")
        self.assertEqual(engine.line(), START_FEN)

    def test_line_that_only_begins_with_a_move_is_none(self):
        engine = self.start_console()
        engine.send("e2e4 is what I want", "fen")
        self.assertEqual(engine.line(), START_FEN)

    def test_unknown_and_empty_lines_are_ignored(self):
        engine = self.start_console()
        engine.send("", "   ", "what", "go depth 2", "\t", "fen")
        self.assertEqual(engine.line(), START_FEN)

    def test_modes_change_as_often_as_wanted(self):
        engine = self.start_console()
        for _ in range(3):
            engine.send("UCI")
            engine.until(lambda line: line == "uciok")
            engine.send("fen", "CONSOLE", "isready", "fen")
            self.assertEqual(engine.line(), START_FEN)

    def test_illegal_move_is_printed_bare(self):
        engine = self.start_console()
        engine.send("fen 4k3/8/8/8/8/8/4r3/4K2R w - - 0 1", "h1h2", "fen")
        self.assertEqual(engine.line(), "Illegal move: h1h2")

    def test_perft_counts(self):
        engine = self.start_console()
        engine.send("perft 3")
        lines = engine.until(lambda line: line.startswith("depth 3 "))
        self.assertEqual([line.split()[3] for line in lines], ["20", "400", "8902"])

    def test_console_command_ends_a_search(self):
        engine = self.start_uci("go infinite")
        engine.until(lambda line: line.startswith("info depth 2 "))
        engine.send("console", "e2e4")
        self.assertTrue(engine.until(is_end)[-1].startswith("bestmove "))


if __name__ == "__main__":
    main()
