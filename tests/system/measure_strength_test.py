#!/usr/bin/env python3
# ctest: once timeout=300
"""The measuring of strength: what it reads from games, the errors that it states, and how it plays and resumes.

The matches are played by a fake of the match tool, which writes games down in no time. The texts of games are those that
fastchess 1.8.2 wrote.
"""
import importlib.machinery
import importlib.util
import math
import os
import random
import signal
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools" / "measure_strength"
sys.dont_write_bytecode = True
sys.path.insert(0, str(ROOT / "tools"))
import match_results  # noqa: E402  (found through the path above)
import svg_picture  # noqa: E402

SLOPE = math.log(10) / 400
FENS = [f"4k3/8/8/{file}P{7 - file}/8/8/8/4K3 w - -" for file in range(1, 7)]


def load():
    """The tool as a module; its file name has no extension that Python knows."""
    loader = importlib.machinery.SourceFileLoader("measure_strength", str(TOOL))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    loader.exec_module(module)
    return module


tool = load()

# Writes down its arguments, then as many games as are wanted: of each pair Brenquil wins one and draws one. Stands in
# for engines too, as it exists and can be started. MISDEED says what goes wrong.
FAKE = '''#!{python}
import os, sys, time
words = sys.argv[1:]
with open("{folder}/calls", "a") as calls:
    print(*words, sep="\\t", file=calls)
open("{folder}/pid", "w").write(str(os.getpid()))
misdeed = os.environ.get("MISDEED", "")
def after(word):
    return words[words.index(word) + 1]
names = [word[5:] for word in words if word.startswith("name=")]
path = [word[5:] for word in words if word.startswith("file=") and word.endswith(".pgn")][0]
book = [word[5:] for word in words if word.startswith("file=") and word.endswith(".epd")][0]
openings = open(book).read().splitlines()
assert "-repeat" in words and openings
number = 0
for round in range(1, int(after("-rounds")) + 1):
    for white, black in ((0, 1), (1, 0)):
        number += 1
        result = ("1-0" if white == 0 else "1/2-1/2")
        termination = "normal"
        if misdeed == "crashes" and number % 3 == 0 or misdeed == "crashes only":
            result, termination = ("1-0" if white == 0 else "0-1"), "abandoned"
        with open(path, "a") as pgn:
            pgn.write(f"""[Event "Fastchess Tournament"]
[Round "{{round}}"]
[White "{{names[white]}}"]
[Black "{{names[black]}}"]
[Result "{{result}}"]
[SetUp "1"]
[FEN "{{openings[(round - 1) % len(openings)]}} 0 1"]
[Termination "{{termination}}"]
[TimeControl "5+0.05"]

1. Kd1 {{{{+0.10/8 0.1s}}}} {{result}}

""")
        print(f"Finished game {{number}} ({{names[white]}} vs {{names[black]}}): {{result}} {{{{x}}}}", flush=True)
        if misdeed == "fails":
            sys.exit("no engine could be started")
        if misdeed == "is slow" and number == 3:
            time.sleep(1000)
'''


def game(white="Brenquil", black="gnuchess", result="1-0", termination="normal", round=1, fen=FENS[0], tc="5+0.05"):
    """As the match tool writes it."""
    return (f'[Event "Fastchess Tournament"]\n[Site "?"]\n[Date "2026.11.22"]\n[Round "{round}"]\n[White "{white}"]\n'
            f'[Black "{black}"]\n[Result "{result}"]\n[EngineWhiteName "Brenquil 3.00"]\n[SetUp "1"]\n[FEN "{fen} 0 4"]\n'
            f'[GameDuration "00:00:16"]\n[PlyCount "3"]\n[Termination "{termination}"]\n[TimeControl "{tc}"]\n\n'
            f"4. d4 {{-0.08/12 0.334s}} Nf6 {{-0.31/11 0.338s}}\n5. c4 {{0.00/11 0.106s, Black disconnects}} {result}\n\n")


def match_of(text, opponent="gnuchess"):
    return match_results.matches_of("Brenquil", match_results.games_of(text))[opponent]


def match_of_pairs(pairs, opponent="gnuchess"):
    """A match with these points in its pairs, from 0 to 2 in halves; -1 to -3 are single games with 0, 0.5 and 1."""
    match = match_results.Match("Brenquil", opponent)
    names = {0: "0-1", 0.5: "1/2-1/2", 1: "1-0"}
    for number, points in enumerate(pairs):
        halves = [-(points + 1) / 2] if points < 0 else [min(points, 1), points - min(points, 1)]
        for colour, value in enumerate(halves):
            white, black = ("Brenquil", opponent) if colour == 0 else (opponent, "Brenquil")
            result = names[value if colour == 0 else 1 - value]
            match.add(match_results.Game(white, black, result, "normal", f"opening {number}", "1",
                                         {"Brenquil": "5+0.05"}))
    return match


class Reading(unittest.TestCase):
    def test_results_are_those_of_the_engine_with_either_colour(self):
        match = match_of(game(result="1-0") + game("gnuchess", "Brenquil", "1-0")
                         + game(round=2, result="1/2-1/2", fen=FENS[1]) + game("gnuchess", "Brenquil", "0-1", round=2, fen=FENS[1]))
        self.assertEqual((match.won, match.drawn, match.lost, match.games, match.score), (2, 1, 1, 4, 0.625))
        self.assertEqual(match.pairs, [[1, 0], [0.5, 1]])

    def test_crashes_are_left_out_and_told_by_whose_fault_they_were(self):
        match = match_of(game() + game("gnuchess", "Brenquil", "0-1", "abandoned")
                         + game(result="0-1", termination="abandoned", round=2) + game(result="1-0", termination="abandoned", round=3))
        self.assertEqual((match.games, match.won), (1, 1))
        self.assertEqual(match.left_out, {("gnuchess", "crashed or hung"): 2, ("Brenquil", "crashed or hung"): 1})
        text = " ".join(tool.remarks([match]))
        self.assertIn("1 game left out, as Brenquil crashed or hung; 2 games left out, as gnuchess crashed or hung", text)
        self.assertIn("0 pairs of games and 1 game without the other", text)

    def test_losses_on_time_and_by_illegal_moves_count_and_are_told(self):
        match = match_of(game(result="0-1", termination="time forfeit")
                         + game("gnuchess", "Brenquil", "0-1", "illegal move"))
        self.assertEqual((match.won, match.lost), (1, 1))
        self.assertEqual(match.told, {("Brenquil", "lost on time"): 1, ("gnuchess", "made an illegal move"): 1})
        text = " ".join(tool.remarks([match]))
        self.assertIn("in 1 game Brenquil lost on time; in 1 game gnuchess made an illegal move", text)

    def test_unknown_endings_are_told(self):
        match = match_of(game(termination="rules infraction"))
        self.assertIn("in 1 game the match tool says 'rules infraction'", " ".join(tool.remarks([match])))

    def test_games_that_were_interrupted_do_not_count(self):
        match = match_of(game() + game(result="*", termination="unterminated", round=2))
        self.assertEqual((match.games, match.unfinished), (1, 1))
        self.assertIn("1 game left out, not finished", " ".join(tool.remarks([match])))

    def test_rounds_of_the_same_number_with_other_openings_are_other_pairs(self):
        match = match_of(game() + game(fen=FENS[1]) + game("gnuchess", "Brenquil", fen=FENS[1]))
        self.assertEqual(match.pairs, [[1], [1, 0]])

    def test_two_games_with_the_same_colour_are_no_pair(self):
        self.assertEqual(match_of(game() + game()).pairs, [[1], [1]])

    def test_time_controls_of_both_sides(self):
        text = game().replace('[TimeControl "5+0.05"]', '[WhiteTimeControl "5+0.05"]\n[BlackTimeControl "-"]')
        self.assertEqual(match_of(text).time_controls, {"5+0.05"})

    def test_what_is_no_game_of_the_engine_is_refused(self):
        with self.assertRaises(match_results.NotReadable):
            match_of(game(white="Somebody"))
        with self.assertRaises(match_results.NotReadable):
            match_of('[Event "x"]\n[White "Brenquil"]\n\n1. e4 *\n')


class Errors(unittest.TestCase):
    def test_difference_is_that_of_the_logistic_curve(self):
        self.assertAlmostEqual(match_results.difference_of(10 / 11), 400)
        self.assertAlmostEqual(match_results.difference_of(0.5), 0)
        for difference in (-300, 1, 77):
            self.assertAlmostEqual(match_results.difference_of(match_results.expected_score(difference)), difference)

    def test_single_games_have_the_variance_of_games(self):
        match = match_of_pairs([-3] * 40 + [-2] * 25 + [-1] * 35)
        score = (40 + 25 / 2) / 100
        variance = (40 + 25 / 4) / 100 - score ** 2
        self.assertAlmostEqual(match.score, score)
        self.assertAlmostEqual(match.error, math.sqrt(variance / 99))

    def test_pairs_have_the_variance_of_their_five_results(self):
        counts = (3, 2, 13, 6, 16)
        match = match_of_pairs([place / 2 for place, number in enumerate(counts) for _ in range(number)])
        score = sum(place / 4 * number for place, number in enumerate(counts)) / 40
        variance = sum((place / 4 - score) ** 2 * number for place, number in enumerate(counts)) / 40
        self.assertAlmostEqual(match.error, math.sqrt(variance / 39))
        # For these counts the match tool prints "Elo: 136.97 +/- 79.62". It divides by 40 where here it is 39.
        difference, low, high = match.interval()
        self.assertAlmostEqual(difference, 136.97, places=2)
        self.assertAlmostEqual((high - low) / 2 / 79.62, math.sqrt(40 / 39), places=2)

    def test_colours_that_decide_tell_nothing_and_make_no_error(self):
        decided_by_colour = match_of_pairs([1.0] * 50 + [1.5, 0.5])
        self.assertLess(decided_by_colour.error, 0.01)

    def test_pairs_and_single_games_together(self):
        match = match_of_pairs([2, 1, -1])
        score = 3 / 5
        squares = (2 * (1 - score)) ** 2 + (1 - 2 * score) ** 2 + score ** 2
        self.assertAlmostEqual(match.error, math.sqrt(squares * 3 / 2) / 5)

    def test_interval_holds_the_truth_as_often_as_it_says(self):
        source = random.Random(5)
        results, chances = (0, 0.5, 1, 1.5, 2), (10, 20, 30, 25, 15)
        truth = match_results.difference_of(sum(p * c for p, c in zip(results, chances)) / 200)
        held = 0
        for _ in range(1000):
            _, low, high = match_of_pairs(source.choices(results, chances, k=60)).interval()
            held += low <= truth <= high
        self.assertTrue(930 <= held <= 970, held)

    def test_pairs_that_are_all_alike_have_an_interval_still(self):
        difference, low, high = match_of_pairs([2] * 20).interval()
        self.assertEqual((difference, high), (math.inf, math.inf))
        self.assertAlmostEqual(match_results.expected_score(low) ** 20, 0.025)
        difference, low, high = match_of_pairs([1] * 20).interval()
        self.assertAlmostEqual(difference, 0)
        self.assertAlmostEqual(low, -high)
        self.assertGreater(high, 50)
        self.assertEqual(match_of_pairs([0]).interval()[1], -math.inf)


class Rating(unittest.TestCase):
    LISTED = (2700, 50)

    @staticmethod
    def error_in_elo(match):
        return match.error / (SLOPE * match.score * (1 - match.score))

    def test_one_opponent_gives_the_sum_and_both_errors(self):
        match = match_of_pairs([2, 1.5, 1, 0, 1, 2, 0.5] * 20)
        own, error = match_results.estimate([(match, self.LISTED)])
        self.assertAlmostEqual(own, 2700 + match.interval()[0], places=3)
        self.assertAlmostEqual(error, math.hypot(self.error_in_elo(match), 50), places=3)
        own, error = match_results.estimate([(match, (2700, 0))])
        self.assertAlmostEqual(own, 2700 + match.interval()[0], places=3)
        self.assertAlmostEqual(error, self.error_in_elo(match), places=3)

    def test_opponents_that_agree_narrow_the_error(self):
        match = match_of_pairs([2, 1.5, 1, 0, 1, 2, 0.5] * 20)
        own, error = match_results.estimate([(match, self.LISTED), (match, self.LISTED)])
        self.assertAlmostEqual(own, 2700 + match.interval()[0], places=3)
        self.assertAlmostEqual(error, math.hypot(self.error_in_elo(match), 50) / math.sqrt(2), places=3)

    def test_opponents_that_contradict_each_other_widen_it(self):
        match = match_of_pairs([1, 0, 2, 1] * 20)
        own, error = match_results.estimate([(match, (2500, 50)), (match, (2900, 50))])
        self.assertAlmostEqual(own, 2700, places=3)
        self.assertGreater(error, 150)  # the standard error of two values that are 400 apart is 200

    def test_opponent_known_better_counts_more(self):
        match = match_of_pairs([1, 0, 2, 1] * 20)
        doubtful, sure = (2600, 200), (2700, 10)
        own, _ = match_results.estimate([(match, doubtful), (match, sure)])
        weights = [1 / (self.error_in_elo(match) ** 2 + error ** 2) for _, error in (doubtful, sure)]
        self.assertAlmostEqual(own, (2600 * weights[0] + 2700 * weights[1]) / sum(weights), delta=2)

    def test_match_without_a_loss_pulls_and_does_not_break(self):
        level, clean = match_of_pairs([1, 0, 2, 1] * 20), match_of_pairs([2] * 20)
        own, error = match_results.estimate([(level, self.LISTED), (clean, self.LISTED)])
        self.assertTrue(2700 < own < 3000 and 0 < error < 60, (own, error))

    def test_there_is_no_rating_where_every_game_was_won(self):
        self.assertRegex(" ".join(tool.rating([match_of_pairs([2, 2])])), "^No rating: ")
        level = match_of_pairs([1, 0, 2, 1] * 20, "toga2")
        self.assertRegex(" ".join(tool.rating([match_of_pairs([2, 2]), level])),
                         r"CCRL 40/15: \d{4} .*By GNU Chess 6.2, 2730 .* alone: nothing.*Toga II 3.0, .* alone: 2850\.")

    def test_opponents_outside_the_list_are_shown_and_do_not_enter(self):
        rated, unrated = match_of_pairs([2, 1, 1, 0] * 9 + [2]), match_of_pairs([2, 2, 1] * 9, "fairy")
        self.assertEqual(list(tool.rating([unrated])), [])
        self.assertEqual(list(tool.rating([rated, unrated])), list(tool.rating([rated])))
        self.assertIn("Fairy-Stockfish", tool.table([rated, unrated]))


class Drawing(unittest.TestCase):
    def setUp(self):
        self.matches = [match_of_pairs([2, 1, 1, 0] * 9 + [2], "<one>"), match_of_pairs([2, 2, 1] * 9, "fairy")]
        self.text = tool.picture(self.matches)
        self.tree = xml.etree.ElementTree.fromstring(self.text)

    def found(self, name):
        return list(self.tree.iter("{http://www.w3.org/2000/svg}" + name))

    def test_points_and_intervals_stand_where_the_scale_says(self):
        labels = {text.text: float(text.get("x")) for text in self.found("text") if text.get("text-anchor") == "middle"}
        (first, start), (last, end) = list(labels.items())[0], list(labels.items())[-1]
        ratio = (end - start) / (float(last) - float(first))
        order = sorted(self.matches, key=lambda match: -match.interval()[0])
        self.assertEqual([match.opponent for match in order], ["fairy", "<one>"])
        for match, bar, point in zip(order, self.found("rect"), self.found("circle")):
            difference, low, high = match.interval()
            for value, drawn in ((difference, point.get("cx")), (low, bar.get("x")),
                                 (high, float(bar.get("x")) + float(bar.get("width")))):
                self.assertAlmostEqual(float(drawn), start + ratio * (value - float(first)), delta=0.2)

    def test_it_tells_its_subject_and_the_numbers_of_games(self):
        self.assertEqual(self.found("title")[0].text, "Brenquil against other engines: Elo difference, 95 % interval")
        texts = ["".join(text.itertext()) for text in self.found("text")]
        self.assertIn("<one>", texts)
        self.assertIn("54 games: +45 =0 -9", texts)
        self.assertTrue(any(text.startswith("+9 (") for text in texts), texts)

    def test_what_has_no_end_reaches_the_edge(self):
        for pairs in ([2] * 20, [0] * 20, [1] * 20, [2]):
            text = tool.picture([match_of_pairs(pairs), match_of_pairs([1, 2, 0] * 30)])
            for word in ("inf", "nan"):
                self.assertNotIn(word, text)
            xml.etree.ElementTree.fromstring(text)

    def test_pictures_of_the_documents_have_the_colours_for_light_and_dark(self):
        for name in ("speed.svg", "strength.svg"):
            path = ROOT / "docs" / "images" / name
            title = xml.etree.ElementTree.fromstring(path.read_text()).find("{http://www.w3.org/2000/svg}title").text
            frame = svg_picture.picture(title, 0, 0, []).splitlines()
            shown = path.read_text().splitlines()
            self.assertEqual(shown[1], frame[1])
            self.assertTrue(shown[2].startswith(frame[2].partition("@media")[0]))
            self.assertIn("prefers-color-scheme:dark", shown[2])


class Playing(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory(prefix="brenquil-strength-")
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        for name in ("fastchess", "gnuchess", "glaurung", "brenquil"):
            path = self.folder / "bin" / name
            path.parent.mkdir(exist_ok=True)
            path.write_text(FAKE.format(python=sys.executable, folder=self.folder))
            path.chmod(0o755)
        (self.folder / "openings.epd").write_text("\n".join(f"{fen} hmvc 0; fmvn 1;" for fen in FENS) + "\n")
        self.words = [sys.executable, "-B", str(TOOL), "--engine", f"Brenquil={self.folder}/bin/brenquil", "--openings",
                      "openings.epd", "--folder", "games", "--opponent", "gnuchess", "--games", "6"]

    def environment(self, misdeed):
        return {**os.environ, "PATH": f"{self.folder}/bin:{os.environ['PATH']}", "MISDEED": misdeed}

    def run_tool(self, *more, misdeed=""):
        return subprocess.run([*self.words, *more], cwd=self.folder, env=self.environment(misdeed), timeout=120,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)

    def calls(self):
        path = self.folder / "calls"
        return [line.split("\t") for line in path.read_text().splitlines()] if path.exists() else []

    def test_match_is_played_read_and_drawn(self):
        done = self.run_tool("--svg", "picture.svg")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("| GNU Chess 6.2 | 6 | 3 | 3 | 0 | 75.0 % | +191 | ", done.stdout)
        self.assertRegex(done.stdout, r"Brenquil on the scale of CCRL 40/15: \d{4} \+- \d+ ")
        self.assertIn("gnuchess: Finished game 6 (gnuchess vs Brenquil)", done.stderr)
        self.assertIn("+191", (self.folder / "picture.svg").read_text())
        call = " ".join(self.calls()[0])
        for part in (f"-engine name=Brenquil cmd={self.folder}/bin/brenquil args=--strict-uci tc=5+0.05 -engine",
                     f"name=gnuchess cmd={self.folder}/bin/gnuchess args=--uci tc=5+0.05 -each proto=uci option.Hash=64 "
                     "option.Threads=1", "order=random -srand 7 -rounds 3 -repeat -concurrency 1 -recover", "-resign "
                     "movecount=3 score=500 twosided=true -draw movenumber=30 movecount=6 score=15 -pgnout file=gnuchess.pgn"):
            self.assertIn(part, call)

    def test_limits_of_an_opponent_take_the_place_of_the_clock(self):
        (self.folder / "bin" / "fairy-stockfish").symlink_to(self.folder / "bin" / "gnuchess")
        done = self.run_tool("--opponent", "fairy", "--tc", "5+0.05", "--concurrency", "3")
        self.assertEqual(done.returncode, 0, done.stderr)
        call = " ".join(self.calls()[1])
        self.assertIn("fairy-stockfish nodes=10000 tc=inf -each", call)
        self.assertIn("-concurrency 3", call)

    def test_opponent_that_speaks_no_uci_plays_through_the_adapter(self):
        (self.folder / "bin" / "phalanx").symlink_to(self.folder / "bin" / "gnuchess")
        done = self.run_tool("--opponent", "phalanx")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn(f"cmd={ROOT}/tools/xboard_as_uci args={self.folder}/bin/phalanx -b- -l- tc=5+0.05",
                      " ".join(self.calls()[1]))

    def test_it_goes_on_where_it_stopped_with_other_openings(self):
        process = subprocess.Popen(self.words, cwd=self.folder, env=self.environment("is slow"), text=True,
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        self.addCleanup(process.kill)
        for line in process.stderr:
            if "Finished game 3 " in line:
                break
        process.send_signal(signal.SIGTERM)
        _, error = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130)
        self.assertIn("the same command goes on", error)
        with self.assertRaises(ProcessLookupError):
            os.kill(int((self.folder / "pid").read_text()), 0)  # the match tool has gone as well
        done = self.run_tool()
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("gnuchess: 3 of 6 games are missing", done.stderr)
        self.assertIn("3 pairs of games and 1 game without the other", done.stdout)
        self.assertIn("| GNU Chess 6.2 | 7 |", done.stdout)
        games = match_results.read_games(self.folder / "games" / "gnuchess.pgn")
        self.assertEqual(len({game.opening for game in games}), 4)
        self.assertEqual(self.run_tool().returncode, 0)
        self.assertEqual(len(self.calls()), 2)  # as nothing was missing

    def test_games_that_do_not_count_are_played_anew(self):
        done = self.run_tool(misdeed="crashes")
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("2 games left out, as gnuchess crashed or hung", done.stdout)
        self.assertIn("| GNU Chess 6.2 | 6 |", done.stdout)
        self.assertEqual([call[call.index("-rounds") + 1] for call in self.calls()], ["3", "1"])

    def test_opponent_that_only_crashes_ends_it(self):
        done = self.run_tool(misdeed="crashes only")
        self.assertEqual(done.returncode, 1)
        self.assertIn("gnuchess: 6 games more and none that counts", done.stderr)

    def test_match_tool_that_fails_is_told(self):
        done = self.run_tool(misdeed="fails")
        self.assertEqual((done.returncode, done.stdout), (1, ""))
        self.assertIn("ended with status 1; see", done.stderr)
        self.assertIn("no engine could be started", (self.folder / "games" / "gnuchess.log").read_text())

    def test_games_at_another_time_control_are_not_mixed_in(self):
        self.assertEqual(self.run_tool().returncode, 0)
        done = self.run_tool("--tc", "10+0.1", "--games", "8")
        self.assertEqual(done.returncode, 1)
        self.assertIn("has games at 5+0.05; take another --folder for 10+0.1", done.stderr)

    def test_reading_alone_plays_nothing(self):
        self.assertEqual(self.run_tool().returncode, 0)
        done = subprocess.run([sys.executable, "-B", str(TOOL), "--read", "games/gnuchess.pgn"], cwd=self.folder,
                              capture_output=True, text=True, timeout=60, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertIn("| GNU Chess 6.2 | 6 |", done.stdout)
        self.assertEqual(len(self.calls()), 1)

    def test_wrong_use_ends_with_status_two_before_a_game(self):
        for words in (["--games", "0"], ["--games", "x"], ["--opponent", "nobody"], ["--opponent", "toga3"],
                      ["--engine", "brenquil"], ["--engine", "Brenquil=nowhere"], ["--openings", "nowhere.epd"],
                      ["--fastchess", "no-such-tool"], ["--concurrency", "-1"], ["--read"], ["extra"]):
            with self.subTest(words=words):
                done = self.run_tool(*words)
                self.assertEqual((done.returncode, done.stdout), (2, ""), done.stderr)
                self.assertNotIn("Traceback", done.stderr)
        self.assertEqual(self.calls(), [])

    def test_files_that_cannot_be_read_are_named(self):
        (self.folder / "empty.pgn").write_text("")
        for name, wanted in (("nowhere.pgn", "nowhere.pgn"), ("empty.pgn", "empty.pgn: no games"),
                             ("openings.epd", "openings.epd: no games")):
            done = self.run_tool("--read", name)
            self.assertEqual((done.returncode, done.stdout), (1, ""))
            self.assertIn(wanted, done.stderr)


if __name__ == "__main__":
    unittest.main()
