# ctest: timeout=120
"""The program's own files in its working directory: ini file, log and batch files."""

import os
import pathlib
import re
import subprocess
import tempfile
import unittest

from console_session import ENGINE, INI, LOG, SECONDS, START_FEN, SYSTEM, EngineTest

RULE = "# --------------------------\n"


def setting(text, remark):
    return text.ljust(50) + "# " + remark + "\n"


def flag(name, value):
    return setting(f"{name}={value}", "[true, false]")


def spin(name, value, low, high):
    return setting(f"{name}={value}", f"[{low} : {high}]")


def head(name):
    return RULE + "# " + name + "\n" + RULE


def default_ini(threads):
    """The file that `ini` writes on a machine where this many threads are offered at most."""
    return (head("Memory") + "Hash=64" + " " * 43 + "# [0 : 16384]\n" + head("Search") +
            spin("Threads", 1, 1, threads) + spin("Nullmove Reduction", 3, 1, 5) +
            spin("Nullmove Min Depth", 2, 1, 100) + spin("LMR Min Depth", 3, 1, 100) +
            spin("LMR Min Moves", 4, 1, 100) + spin("Futility Margin1", 50, 0, 5000) +
            spin("Futility Margin2", 350, 0, 5000) + spin("Futility Margin3", 550, 0, 5000) +
            spin("MultiPV", 1, 1, 20) + spin("MultiPV Delta", 500, 1, 2000) + flag("Use Nullmove", "true") +
            flag("Use Futility", "true") + flag("Use LMR", "true") + flag("Use Extensions", "true") +
            head("Evaluation") + spin("Contempt", 0, -500, 500) + spin("Lazy Eval Margin", 250, 0, 5000) +
            spin("Pawn", 100, 0, 2000) + spin("Knight", 400, 0, 2000) + spin("Bishop", 400, 0, 2000) +
            spin("Rook", 600, 0, 2000) + spin("Queen", 1200, 0, 2000) + flag("Use Endgame Eval", "true") +
            head("Output") + flag("Ponder", "true") + flag("Chess960", "false") + flag("Show Current Line", "false") +
            flag("Show Refutations", "false") + flag("Show Database Moves", "false") + flag("Logging", "false") +
            flag("Debug", "false") + head("Book") + flag("Book Use", "true") + "Book Path=<empty>\n" +
            setting("Book Mode=Wide", "[Wide, Standard, Tournament, BestMove]") + head("Nalimov Tablebases") +
            "Nalimov Path=<empty>\n" + spin("Nalimov Cache", 32, 1, 256) +
            setting("Nalimov Usage=OnRoot", "[Never, OnRoot, InSearch]") + spin("Nalimov Min Depth", 6, 1, 100) +
            head("Syzygy Tablebases") + "Syzygy Path=<empty>\n" + flag("Syzygy Use", "true") +
            flag("Syzygy 50 Moves Rule", "true"))


class IniFile(EngineTest):
    def option(self, name, *lines):
        """The default of an option as `uci` shows it."""
        printed = self.run_lines(*lines, "uci")
        return re.search(rf"^option name {name} type \w+ default (.*?)(?: min | var |$)", printed, re.MULTILINE)[1]

    def test_first_ini_creates_the_file_to_the_byte(self):
        self.expect(["ini"], "created\n")
        threads = re.search(r"name Threads type spin default 1 min 1 max (\d+)", self.run_lines("uci"))[1]
        self.assertEqual(self.read_text(INI), default_ini(threads))

    def test_second_ini_leaves_the_file_as_it_is(self):
        self.write(INI, "# mine\n")
        self.expect(["ini", "ini"], "already exists\n" * 2)
        self.assertEqual(self.read(INI), b"# mine\n")

    def test_written_file_loads_back_with_every_value_unchanged(self):
        before = self.run_lines("uci")
        self.run_lines("ini")
        self.assertEqual(self.run_lines("uci"), before)

    def test_written_file_holds_the_current_values(self):
        changes = ["setoption name Hash value 16", "setoption name Book Path value /no book/here.bin",
                   "setoption name Book Mode value Tournament", "setoption name UCI_Chess960 value true",
                   "setoption name Contempt value -20"]
        printed = self.run_lines("uci", *changes, "console", "ini", "uci")
        settings = printed[printed.index("created\n") + len("created\n"):]
        self.assertEqual(self.run_lines("uci"), settings)
        self.assertIn("\nBook Path=/no book/here.bin\n", self.read_text(INI))

    def test_setting_with_a_remark(self):
        self.write(INI, "Threads=4   # my setting\n")
        self.assertEqual(self.option("Threads"), "4")

    def test_hash_at_the_start_does_not_comment_out(self):
        self.write(INI, "#Threads=4\n# Contempt=7\n")
        self.assertEqual(self.option("Threads"), "4")
        self.assertEqual(self.option("Contempt"), "7")

    def test_two_equals_signs_in_a_row_or_one_in_front(self):
        self.write(INI, "Hash==5\n=Contempt=6\n")
        self.assertEqual(self.option("Hash"), "5")
        self.assertEqual(self.option("Contempt"), "6")

    def test_lines_that_are_ignored(self):
        self.write(INI, "Hash=\n=5\nHash=5=6\nThreads\n\nhash=7\n")
        self.assertEqual(self.option("Hash"), "64")

    def test_either_line_ending_and_no_final_line_feed(self):
        self.write(INI, b"Hash=5\r\nContempt=6\r\n\r\nPawn=90")
        self.assertEqual([self.option(name) for name in ("Hash", "Contempt", "Pawn")], ["5", "6", "90"])

    def test_bad_bytes_and_long_lines_are_survived(self):
        self.write(INI, b"Hash=5\n\0\0Contempt=9\nPa\0wn=3\n" + b"=" * (1 << 20) + b"\n" + b"x" * (1 << 20) +
                   b"\n" + bytes(range(256)) + b"\nKnight=390")
        self.assertEqual([self.option(name) for name in ("Hash", "Contempt", "Pawn", "Knight")],
                         ["5", "0", "100", "390"])

    def test_ini_file_is_loaded_before_the_banner(self):
        self.write("book.bin", b"\0" * 32)
        self.write(INI, "Book Path=book.bin\n")
        printed = self.raw(b"quit\n")
        self.assertTrue(printed.startswith(b'book "book.bin" loaded! (2 moves)\n\nBrenquil 3.00 x64 ('), printed)

    def test_directory_in_the_place_of_the_ini_file(self):
        (self.folder / INI).mkdir()
        self.expect(["ini", "fen"], START_FEN + "\n")


class LogFile(EngineTest):
    def log(self):
        return self.read_text(LOG)

    def test_no_log_by_default(self):
        self.run_lines("help", "fen")
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_log_from_the_ini_file_holds_the_banner(self):
        self.write(INI, "Logging=true\n")
        printed = self.raw(b"fen\n\nquit\n").decode()
        banner = "".join("< " + line + "\n" for line in printed.split("\n")[:4])
        self.assertEqual(self.log(), f"{banner}> fen\n< {START_FEN}\n> \n> quit\n")

    def test_line_that_switches_on_is_not_in_the_log(self):
        self.run_lines("uci", "setoption name Logging value true", "isready", "setoption name Logging value false",
                       "isready")
        self.assertEqual(self.log(), "> isready\n< readyok\n> setoption name Logging value false\n")

    def test_log_grows_across_runs_and_info_lines_are_in_it(self):
        self.write(INI, "Logging=true\nDebug=true\n")
        self.run_lines("uci", "setoption name Contempt value 3")
        once = self.log()
        self.assertTrue(once.endswith("> setoption name Contempt value 3\n< info string Contempt = 3\n> quit\n"))
        self.run_lines()
        self.assertTrue(self.log().startswith(once))
        self.assertGreater(len(self.log()), len(once))

    def test_batch_lines_are_logged_as_output_only(self):
        self.write(INI, "Logging=true\n")
        self.write("mine.cmd", "e2e4\n")
        self.run_lines("mine")
        self.assertTrue(self.log().endswith("> mine\n< e2e4\n> quit\n"), self.log())

    def test_perft_and_test_are_not_in_the_log(self):
        self.write(INI, "Logging=true\n")
        self.run_lines("perft 2", "perft 1 -d", "test -h")
        self.assertTrue(self.log().endswith("> perft 2\n> perft 1 -d\n> test -h\n> quit\n"))

    def test_unwritable_log_is_lost_in_silence(self):
        (self.folder / LOG).mkdir()
        self.write(INI, "Logging=true\n")
        self.expect(["fen"], START_FEN + "\n")


class BatchFile(EngineTest):
    def test_comments_and_empty_lines_are_left_out(self):
        self.write("a.cmd", "new\n\n# note\ne2e4 # opening\n")
        self.expect(["batch a"], "new\ne2e4\n")

    def test_names(self):
        self.write("test.cmd", "eval\n")
        self.write("notes.txt", "eval\n")
        answer = "eval\neval: 0\n"
        self.expect(["batch test"], answer)
        self.expect(["batch test.cmd"], answer)
        self.expect(["test.cmd"], answer)
        self.expect(["test"], answer)
        self.expect(["batch notes.txt"], "")
        self.expect(["batch no such file", "batch"], "")

    def test_name_with_blanks_and_in_a_folder(self):
        self.write("my own file.cmd", "eval\n")
        (self.folder / "sub").mkdir()
        self.write("sub/deep.cmd", "eval\n")
        self.expect(["batch   my own file  "], "eval\neval: 0\n")
        self.expect(["batch sub/deep"], "eval\neval: 0\n")
        self.expect(["sub/deep"], "eval\neval: 0\n")

    def test_stem_followed_by_words_runs_nothing(self):
        self.write("mine.cmd", "eval\n")
        self.expect(["mine please"], "")

    def test_file_shadows_the_word_help(self):
        self.write("help.cmd", "eval\n")
        self.expect(["help"], "eval\neval: 0\n")

    def test_file_of_the_word_console_runs_and_one_of_the_word_uci_does_not(self):
        self.write("console.cmd", "eval\n")
        self.write("uci.cmd", "eval\n")
        self.expect(["console"], "eval\neval: 0\n")
        printed = self.run_lines("uci", "isready")
        self.assertTrue(printed.endswith("uciok\nreadyok\n"))
        self.assertNotIn("eval", printed)

    def test_files_of_the_words_exit_and_quit_do_not_keep_the_program(self):
        self.write("quit.cmd", "eval\n")
        self.write("exit.cmd", "eval\n")
        self.expect([], "")
        self.expect(["exit"], "")

    def test_quit_in_a_batch_drops_the_rest(self):
        self.write("a.cmd", "e2e4\nquit\neval\n")
        self.expect(["a", "eval"], "e2e4\nquit\n")

    def test_uci_in_a_batch_changes_the_mode_and_the_echo(self):
        self.write("a.cmd", "uci\nisready\n")
        printed = self.run_lines("batch a", "eval")
        self.assertTrue(printed.startswith("uci\nid name Brenquil 3.00\n"))
        self.assertTrue(printed.endswith("uciok\ninfo string isready\nreadyok\n"))

    def test_batch_named_in_a_batch_waits_for_the_rest(self):
        self.write("a.cmd", "batch b\ne2e4\n")
        self.write("b.cmd", "fen\n")
        self.expect(["a"], "batch b\ne2e4\nfen\nrnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2\n")

    def test_files_that_name_each_other_in_a_circle(self):
        self.write("a.cmd", "batch b\n")
        self.write("b.cmd", "c\neval\n")
        self.write("c.cmd", "batch a\nbatch a.cmd\nbatch ./a\nc\n")
        printed = self.run_lines("a", "fen")
        self.assertTrue(printed.startswith("batch b\nc\neval\neval: 0\nbatch a\n"))
        self.assertTrue(printed.endswith(START_FEN + "\n"))

    def test_either_line_ending_and_no_final_line_feed(self):
        self.write("a.cmd", b"e2e4\r\n\r\n#x\r\nundo\r\nfen")
        self.expect(["a"], "e2e4\nundo\nfen\n" + START_FEN + "\n")

    def test_bad_bytes_and_long_lines_are_survived(self):
        self.write("a.cmd", b"e2e4\0e7e5\n\0\n" + b"x" * (1 << 20) + b"\n" + bytes(range(256)) + b"\nundo\nfen")
        printed = self.run_lines("a", "eval")
        self.assertTrue(printed.startswith("e2e4\nxxx"))
        self.assertTrue(printed.endswith("undo\nfen\n" + START_FEN + "\neval: 0\n"), printed[-200:])

    def test_directory_with_the_extension(self):
        (self.folder / "a.cmd").mkdir()
        self.expect(["a", "batch a", "batch a.cmd", "eval"], "eval: 0\n")

    def test_pipe_with_the_extension_keeps_nobody_waiting(self):
        if SYSTEM == "Windows" or not hasattr(os, "mkfifo"):
            self.skipTest("no pipes here")
        os.mkfifo(self.folder / "a.cmd")
        os.mkfifo(self.folder / INI)
        self.expect(["a", "ini", "eval"], "eval: 0\n")


@unittest.skipIf(SYSTEM == "Windows" or not hasattr(os, "mkfifo"), "no pipes and devices of names here")
class SpecialFiles(EngineTest):
    """What is not a file, in the place of each file that the program reads or writes."""

    LOGGING = ["uci", "setoption name Logging value true", "isready", "console", "eval"]

    def test_pipe_in_the_place_of_the_log_blocks_nobody(self):
        os.mkfifo(self.folder / LOG)
        self.assertTrue(self.run_lines(*self.LOGGING).endswith("readyok\neval: 0\n"))

    def test_pipe_in_the_place_of_the_log_gets_nothing(self):
        os.mkfifo(self.folder / LOG)
        reader = os.open(self.folder / LOG, os.O_RDONLY | os.O_NONBLOCK)
        self.addCleanup(os.close, reader)
        self.run_lines(*self.LOGGING)
        self.assertEqual(os.read(reader, 100), b"")

    def test_links_to_pipes_and_devices_hold_nobody_up(self):
        os.mkfifo(self.folder / "pipe")
        (self.folder / "circle").symlink_to("circle")
        for target in ("pipe", "circle", ".", "/dev/zero", "/dev/full", "/dev/random", "/dev/tty", "/dev/stdin"):
            with self.subTest(target):
                for name in (INI, LOG, "a.cmd", "book.bin"):
                    (self.folder / name).unlink(missing_ok=True)
                    (self.folder / name).symlink_to(target)
                printed = self.run_lines("ini", "a", "batch a", *self.LOGGING, "uci",
                                         "setoption name Book Path value book.bin", "isready")
                self.assertIn("\nreadyok\neval: 0\nid name ", printed)
                self.assertTrue(printed.endswith("\nreadyok\n"))
                self.assertNotIn("created", printed)
                self.assertNotIn("loaded", printed)


class UnwritableDirectory(EngineTest):
    LINES = b"ini\neval\nuci\nsetoption name Logging value true\nisready\nconsole\nbatch a\ntest -h\neval\nquit\n"

    def check(self, printed):
        text = printed.decode()
        self.assertNotIn("\ncreated\n", text)
        self.assertEqual(text.count("eval: 0\n"), 2)
        self.assertIn("readyok\n", text)

    @unittest.skipIf(SYSTEM == "Windows", "the working directory of a program cannot be removed there")
    def test_directory_that_has_been_removed(self):
        with tempfile.TemporaryDirectory() as parent:
            gone = pathlib.Path(parent) / "gone"
            gone.mkdir()
            with subprocess.Popen([ENGINE], stdin=subprocess.PIPE, stdout=subprocess.PIPE, cwd=gone) as engine:
                try:
                    gone.rmdir()
                except OSError:
                    engine.communicate(b"quit\n", timeout=SECONDS)
                    self.skipTest("the working directory of a program cannot be removed here")
                printed, _ = engine.communicate(self.LINES, timeout=SECONDS)
                self.assertEqual(engine.returncode, 0)
        self.check(printed)

    def test_directory_that_is_read_only(self):
        self.folder.chmod(0o555)
        self.addCleanup(self.folder.chmod, 0o755)
        if os.access(self.folder, os.W_OK):
            self.skipTest("this user may write everywhere")
        self.check(self.raw(self.LINES))
        self.assertEqual(list(self.folder.iterdir()), [])

    def test_directory_of_the_system(self):
        if not pathlib.Path("/proc/self").is_dir():
            self.skipTest("no /proc here")
        self.check(self.raw(self.LINES, "/proc"))


if __name__ == "__main__":
    unittest.main()
