# ctest: slow release-only timeout=900
"""The program brenquil-tables: what it makes, that the engine reads it, ended runs, damaged files, texts and pictures."""

import fcntl
import functools
import json
import os
import random
import re
import resource
import signal
import subprocess
import tempfile
import time
import unittest
import xml.etree.ElementTree as xml
from pathlib import Path

from console_session import ENGINE, SECONDS

PROGRAM = Path(os.environ.get("BRENQUIL_TABLES", Path(ENGINE).with_name("brenquil-tables")))
QUEEN = "8/8/8/4k3/8/8/3QK3/8 w - - 0 1"


def run(*words, status=0, folder=None, limit=None):
    """Runs the program, after a call of `limit` in its process; returns what it printed, on both streams if it failed."""
    done = subprocess.run([PROGRAM, *map(str, words)], capture_output=True, text=True, timeout=6 * SECONDS, check=False,
                          cwd=folder, preexec_fn=limit)
    if done.returncode != status:
        raise AssertionError(f"{words} ended with {done.returncode}: {done.stdout}{done.stderr}")
    return done.stdout if status == 0 else done.stdout + done.stderr


def contents(folder):
    return {path.name: path.read_bytes() for path in sorted(Path(folder).iterdir())}


@functools.cache
def three_men(family):
    """The files of all endings of three men, made once for all tests."""
    with tempfile.TemporaryDirectory(prefix="brenquil-tables-") as folder:
        run("make", family, "3", folder)
        return contents(folder)


@unittest.skipUnless(PROGRAM.is_file(), "brenquil-tables is not built")
class Tables(unittest.TestCase):
    KILLS = 2
    DAMAGES = 4

    def setUp(self):
        made = tempfile.TemporaryDirectory(prefix="brenquil-tables-")
        self.addCleanup(made.cleanup)
        self.folder = Path(made.name) / "tables"

    def make(self, *words, status=0):
        return run("make", *words, self.folder, status=status)

    def lay_three_men(self, *families):
        self.folder.mkdir()
        for family in families:
            for name, data in three_men(family).items():
                (self.folder / name).write_bytes(data)

    def test_bytes_depend_on_nothing_but_the_program(self):
        for family in ("nalimov", "syzygy"):
            with self.subTest(family):
                self.make(family, "3", "--threads=1")
                first = contents(self.folder)
                self.assertEqual(len(first), 10)
                self.assertIn("is there", self.make(family, "3", "--threads=8"))
                self.make(family, "3", "--threads=8", "--force")
                self.assertEqual(contents(self.folder), first)
            self.folder = self.folder.with_name("other")

    def test_a_killed_run_goes_on_and_ends_with_the_same_bytes(self):
        self.make("nalimov", "kpk")
        whole = contents(self.folder)
        chance = random.Random(5)
        rounds = int(os.environ.get("BRENQUIL_TABLES_KILLS", self.KILLS))
        for _ in range(rounds):
            for path in self.folder.iterdir():
                path.unlink()
            for _ in range(2):
                with subprocess.Popen([PROGRAM, "make", "nalimov", "kpk", self.folder, "--quiet"]) as child:
                    time.sleep(chance.random() * 0.4)
                    child.kill()
                for path in self.folder.iterdir():
                    self.assertTrue(path.suffix == ".part" or path.read_bytes() == whole[path.name], path)
            self.make("nalimov", "kpk")
            self.assertEqual(contents(self.folder), whole)

    def test_an_interrupt_ends_it_cleanly(self):
        with subprocess.Popen([PROGRAM, "make", "nalimov", "4", self.folder], stdout=subprocess.DEVNULL,
                              stderr=subprocess.PIPE, text=True) as child:
            time.sleep(0.7)
            child.terminate()
            self.assertIn("interrupted", child.stderr.read())
            self.assertEqual(child.wait(), 130)
        self.assertEqual([path for path in self.folder.iterdir() if path.suffix == ".part"], [])

    def test_what_is_made_is_sound_and_both_families_agree(self):
        self.lay_three_men("nalimov", "syzygy")
        self.assertIn("10 sound, 0 faulty, 0 not checked", run("check", self.folder))

    def test_named_tables_alone_are_checked(self):
        self.lay_three_men("nalimov", "syzygy")
        text = run("check", "kqk", "KRvK", self.folder)
        self.assertIn("4 sound, 0 faulty, 0 not checked", text)
        self.assertNotIn("kbk", text)
        self.assertIn("10 sound", run("check", "3", self.folder))
        (self.folder / "KQRBNvK.rtbw").write_bytes(b"no table of five men")
        self.assertIn("2 sound", run("check", "kqk", self.folder))
        self.assertIn("none of these tables", run("check", "kqkr", self.folder, status=1))
        self.assertIn("neither 3, 4 or 5", run("check", self.folder, "kqk", status=2))

    def test_plain_files_hold_one_byte_a_position(self):
        self.make("nalimov", "3", "--plain")
        sizes = {name: len(data) for name, data in contents(self.folder).items()}
        self.assertEqual((sizes["kqk.nbw"], sizes["krk.nbw"], sizes["kbk.nbw"], sizes["knk.nbw"], sizes["kpk.nbw"],
                          sizes["kpk.nbb"]), (25629, 27030, 27243, 26282, 81664, 84012))
        self.assertIn("5 sound", run("check", self.folder))

    def test_a_wrong_value_is_found(self):
        self.make("nalimov", "kqk", "--plain")
        table = self.folder / "kqk.nbw"
        good = table.read_bytes()
        for place in (0, 5000, 25628):
            bad = bytearray(good)
            bad[place] = 0 if bad[place] else 100
            table.write_bytes(bad)
            self.assertRegex(run("check", self.folder, status=1), r"kqk +FAULTY: \d+ fault")

    def test_a_damaged_file_ends_what_depends_on_it(self):
        self.make("nalimov", "kqk")
        table = self.folder / "kqk.nbb.emd"
        table.write_bytes(table.read_bytes()[:-10])
        self.assertIn("kqk.nbb.emd is damaged", self.make("nalimov", "kpk", status=1))
        self.assertIn("DAMAGED: kqk.nbb.emd", run("check", self.folder, status=1))
        self.assertEqual([path.name for path in self.folder.iterdir() if path.suffix == ".part"], [])
        self.make("nalimov", "kqk", "--force")
        self.assertIn(" 0 faulty, 0 not checked", run("check", self.folder))

    def test_damaged_folders_break_nothing(self):
        self.lay_three_men("nalimov", "syzygy")
        good = contents(self.folder)
        chance = random.Random(9)
        for _ in range(int(os.environ.get("BRENQUIL_TABLES_DAMAGES", self.DAMAGES))):
            for name in chance.sample(sorted(good), 3):
                data = bytearray(good[name])
                for _ in range(chance.choice((1, 3, 50))):
                    data[chance.randrange(len(data))] = chance.randrange(256)
                (self.folder / name).write_bytes(data[:chance.choice((len(data), chance.randrange(len(data) + 1)))])
            for words in (("check", self.folder), ("show", QUEEN, self.folder),
                          ("show", "8/P7/8/8/8/8/k7/2K5 w - - 0 1", self.folder)):
                done = subprocess.run([PROGRAM, *map(str, words)], capture_output=True, timeout=3 * SECONDS, check=False)
                self.assertIn(done.returncode, (0, 1), (words, done.stderr))
            for name, data in good.items():
                (self.folder / name).write_bytes(data)

    def test_what_is_no_table_is_told_apart(self):
        self.make("nalimov", "kqk", "kbk")
        (self.folder / "krk.nbw.emd").write_bytes(b"")
        (self.folder / "krk.nbb.emd").write_bytes(random.Random(3).randbytes(5000))
        (self.folder / "kpk.nbw").mkdir()
        os.mkfifo(self.folder / "knk.nbw.emd")
        (self.folder / "KQvK.rtbw").write_bytes(random.Random(4).randbytes(500))
        (self.folder / "kqrbkq.nbw").write_bytes(b"6")
        (self.folder / "notes.txt").write_text("no table")
        text = run("check", self.folder, status=1)
        self.assertRegex(text, r"krk +DAMAGED: krk.nbb.emd")
        self.assertRegex(text, r"KQvK +INCOMPLETE|KQvK +DAMAGED")
        self.assertIn("kqrbkq.nbw  not checked", text)
        self.assertNotIn("notes", text)
        self.assertIn("2 sound, 2 faulty, 1 not checked", text)
        text = run("statistics", self.folder, status=1)
        self.assertIn("krk.nbb.emd is damaged", text)
        self.assertRegex(text, r"kqk +white +18,081 ")
        for position in ("8/8/8/4k3/8/8/3RK3/8 w - - 0 1", "8/8/8/4k3/8/8/3NK3/8 w - - 0 1"):
            self.assertRegex(run("show", position, self.folder, status=1), "is damaged|no table in")
        self.assertIn("Nalimov: mate in 7", run("show", QUEEN, self.folder))

    def test_both_forms_of_a_file_must_be_equal(self):
        self.make("nalimov", "kqk")
        self.make("nalimov", "kqk", "--plain")
        self.assertEqual(len(contents(self.folder)), 4, "plain files are made beside the others")
        self.assertIn("1 sound, 0 faulty", run("check", self.folder))
        packed = (self.folder / "kqk.nbw.emd").read_bytes()
        (self.folder / "kqk.nbw.emd").write_bytes((self.folder / "kqk.nbb.emd").read_bytes())
        self.assertIn("DAMAGED: kqk.nbw.emd", run("check", self.folder, status=1))
        (self.folder / "kqk.nbw").write_bytes(b"old")
        self.make("nalimov", "kqk", "--force")
        self.assertEqual(sorted(contents(self.folder)), ["kqk.nbb.emd", "kqk.nbw.emd"], "what was not trusted is gone")
        self.assertEqual((self.folder / "kqk.nbw.emd").read_bytes(), packed)

    def test_one_run_at_a_time_makes_tables_in_a_folder(self):
        self.folder.mkdir()
        handle = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, handle)
        fcntl.flock(handle, fcntl.LOCK_EX)
        self.assertIn("another run is making tables", self.make("nalimov", "kqk", status=1))
        fcntl.flock(handle, fcntl.LOCK_UN)
        self.make("nalimov", "kqk")

    def test_a_folder_that_cannot_be_used(self):
        blocked = self.folder.parent / "file"
        blocked.write_text("no folder")
        self.assertIn("cannot make the folder", run("make", "nalimov", "kqk", blocked, status=1))
        self.assertIn("cannot make the folder ''", run("make", "nalimov", "kqk", "", status=1))
        self.assertIn("without a semicolon", run("make", "syzygy", "kqk", "a;b", status=1))
        self.assertIn("there is no folder", run("check", self.folder, status=1))
        self.folder.mkdir()
        for command in ("check", "statistics"):
            self.assertIn("there are no tables", run(command, self.folder, status=1))
        self.assertIn("no table in", run("show", QUEEN, self.folder, status=1))
        if os.geteuid() != 0:
            self.folder.chmod(0o555)
            self.assertIn("cannot write", self.make("nalimov", "kqk", status=1))
            self.folder.chmod(0o000)
            self.assertIn("cannot read the folder", run("check", self.folder, status=1))
            self.folder.chmod(0o755)

    def test_a_file_that_cannot_grow_leaves_nothing(self):
        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (9000, 9000))

        self.assertRegex(run("make", "nalimov", "kpk", self.folder, status=1, limit=limit),
                         r"cannot write .*kpk.nbw.emd: File too large")
        self.assertEqual({name.partition(".")[0] for name in contents(self.folder)}, {"knk", "kbk", "krk", "kqk"})
        self.make("nalimov", "kpk")
        self.assertIn("5 sound, 0 faulty", run("check", self.folder))

    def test_output_that_cannot_be_written_is_a_failure(self):
        self.make("nalimov", "kqk")
        for words in (("--help",), ("show", QUEEN, self.folder), ("statistics", self.folder), ("check", self.folder)):
            with self.subTest(words), Path("/dev/full").open("wb") as full:
                done = subprocess.run([PROGRAM, *map(str, words)], stdout=full, stderr=subprocess.PIPE, text=True,
                                      timeout=SECONDS, check=False)
                self.assertEqual(done.returncode, 1)
                self.assertIn("cannot write the output", done.stderr)

    def test_too_little_memory_is_said(self):
        self.assertRegex(self.make("nalimov", "kqkrn", "--memory", "0", status=2), "--memory takes gibibytes")
        self.assertRegex(self.make("syzygy", "kqkr", "--memory", "16M", status=1),
                         r"out of memory: krk needs .* MiB; allow more with --memory 1")
        self.assertEqual(contents(self.folder), {})
        self.make("syzygy", "kqk")
        text = run("check", self.folder, "--memory=16M", status=1)
        self.assertIn("not checked: out of memory", text)
        self.assertIn("0 sound, 0 faulty, 1 not checked", text)
        # What the system refuses.
        small = 16 << 20
        self.assertIn("out of memory", run("make", "nalimov", "kqkr", self.folder, "--threads=1", status=1, limit=lambda:
                                           resource.setrlimit(resource.RLIMIT_AS, (small, small))))
        self.assertEqual([name for name in contents(self.folder) if name.endswith(".part")], [])

    def test_show_for_people_and_scripts(self):
        self.lay_three_men("nalimov", "syzygy")
        text = run("show", QUEEN, self.folder)
        self.assertIn("Nalimov: mate in 7", text)
        self.assertIn("Syzygy:  win, 13 plies", text)
        answer = json.loads(run("show", QUEEN, self.folder, "--json"))
        self.assertEqual(answer["nalimov"], {"result": "win", "moves": 7})
        self.assertEqual(len(answer["line"]), 13)
        self.assertEqual(len(answer["moves"]), 26)
        # Colours exchanged: the same, from Black's side.
        other = json.loads(run("show", "3qk3/8/8/8/4K3/8/8/8 b - - 0 1", self.folder, "--json"))
        self.assertEqual((other["turn"], other["nalimov"]["result"]), ("black", "win"))
        for fen, why in (("8/8/8/8/8/8/8/8 w - - 0 1", "king"), ("rubbish", "fields"),
                         ("8/8/8/4k3/8/8/3QK3/7 w - - 0 1", "rank"), ("4k3/4Q3/8/8/8/8/8/4K3 w - - 0 1", "in check"),
                         ("rnbqkbnr/8/8/8/8/8/8/4K3 w - - 0 1", "9 men"), ("", "fields"),
                         ("8/8/8/4k3/8/8/3QK3/8 x - - 0 1", "w or b"), ("8/8/8/4k3/8/8/3QK3/8 w K - 0 1", "castling"),
                         ("8/8/8/4k3/8/8/3QK3/8 w - e6 0 1", "no pawn has just passed"),
                         ("8/8/8/4k3/8/8/3QK3/8 w - - -5 1", "no number"), ("8" * 100000 + " w", "rank"),
                         ("P7/8/8/4k3/8/8/4K3/8 w - - 0 1", "a pawn stands"),
                         ("8/8/8/8/8/8/8/Kk6 w - - 0 1", "side by side"),
                         ("8/8/8/4k3/8/8/2RQK3/8 w - - 0 1", "it would be kqrk")):
            self.assertIn(why, run("show", fen, self.folder, status=1))

    def test_statistics_have_the_figures_of_the_literature(self):
        self.lay_three_men("nalimov")
        text = run("statistics", self.folder)
        self.assertRegex(text, r"krk +white +21,959 +100.0 %")
        self.assertRegex(text, r"\n +black +28,056 +0.0 % +10.0 % +90.0 % +mated in 16 ")
        self.assertRegex(run("statistics", self.folder, "--markdown"), r"\| kpk +\| white +\|")
        picture = xml.fromstring(run("statistics", self.folder, "--svg"))
        self.assertTrue(picture.tag.endswith("svg"))

    def test_the_engine_plays_the_shortest_mate(self):
        self.make("nalimov", "kqk", "krk")
        line = json.loads(run("show", QUEEN, self.folder, "--json"))["line"]
        lines = ["uci", f"setoption name NalimovPath value {self.folder}"]
        for ply in range(0, len(line), 2):
            lines += [f"position fen {QUEEN} moves {' '.join(line[:ply])}".replace(" moves  ", " "), "go depth 1"]
        printed = subprocess.run([ENGINE], input="\n".join([*lines, "quit", ""]), capture_output=True, text=True,
                                 timeout=3 * SECONDS, check=False, cwd=self.folder.parent).stdout
        self.assertIn("tablebases 3-men loaded!", printed)
        scores = re.findall(r"score (mate \d+|cp \d+)", printed)
        # The move that mates has the score beyond all mates.
        self.assertEqual(scores, [f"mate {moves}" for moves in range(7, 1, -1)] + ["cp 32000"])

    def test_arguments_that_make_no_sense(self):
        for words in ((), ("bogus",), ("make",), ("make", "nalimov", "kqk"), ("make", "other", "3", "x"), ("check",),
                      ("statistics", "a", "b"), ("show", "x"), ("check", "x", "--what"), ("make", "nalimov", "9", "x")):
            with self.subTest(words):
                self.assertIn("brenquil-tables --help", run(*words, status=2))
        self.assertIn("usage:", run("--help"))
        for command in ("make", "check", "show", "statistics"):
            usage = run("help", command)
            self.assertTrue(usage.startswith(f"usage: brenquil-tables {command} "))
            self.assertEqual(run(command, "--help"), usage)
        for name, why in (("kqrkrn", "up to five men"), ("6", "up to five men"), ("kk", "neither"), ("", "neither")):
            self.assertIn(why, run("make", "nalimov", name, "x", status=2))
        self.assertIn("kqk", run("make", "nalimov", "kkq", self.folder), "sides in any order")
        self.assertRegex(run("--version"), r"^brenquil-tables \d+\.\d+\n$")


if __name__ == "__main__":
    unittest.main()
