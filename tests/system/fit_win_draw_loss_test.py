#!/usr/bin/env python3
# ctest: once timeout=300
"""The fit of the chances finds the constants that games were drawn from, and reads what it should."""
import importlib.machinery
import importlib.util
import random
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
TOOL = ROOT / "tools" / "fit_win_draw_loss"
EVEN, FACTOR = 110.0, 60.0


def load():
    """The tool as a module; its file name has no extension that Python knows."""
    loader = importlib.machinery.SourceFileLoader("fit_win_draw_loss", str(TOOL))
    module = importlib.util.module_from_spec(importlib.util.spec_from_loader(loader.name, loader))
    sys.dont_write_bytecode = True
    loader.exec_module(module)
    return module


fit = load()


def game(source):
    """A game whose result is drawn from the chances at its only score."""
    score = source.randint(-400, 400)
    win, draw, _ = fit.chances(score, EVEN, FACTOR)
    chance = source.random()
    result = "1-0" if chance < win else "1/2-1/2" if chance < win + draw else "0-1"
    return (f'[Event "x"]\n[Result "{result}"]\n[Termination "normal"]\n\n'
            f"1. e4 {{{score / 100:+.2f}/5 0.1s}} e5 {{{-score / 100:+.2f}/5 0.1s}} {result}\n\n")


class Fit(unittest.TestCase):
    def run_tool(self, text, *arguments):
        with tempfile.TemporaryDirectory(prefix="brenquil-fit-") as folder:
            path = Path(folder) / "games.pgn"
            path.write_text(text, encoding="utf-8")
            done = subprocess.run([sys.executable, "-B", TOOL, *arguments, path], capture_output=True, text=True,
                                  check=False)
        return done

    def test_constants_are_found_again(self):
        source = random.Random(3)
        done = self.run_tool("".join(game(source) for _ in range(4000)), "--plies", "0")
        self.assertEqual(done.returncode, 0, done.stderr)
        for name, wanted in (("EvenChanceScore", EVEN), ("ScoreOfAFactor", FACTOR)):
            found, error = map(float, re.search(rf"{name} +(\S+) \+- (\S+)", done.stdout).groups())
            self.assertLess(abs(found - wanted), 8, done.stdout)
            self.assertLess(error, 8)
        self.assertRegex(done.stdout, r"^games +4000: ")
        self.assertRegex(done.stdout, r"positions +8000\n")

    def counts(self, text, plies=0, limit=1000):
        (tags, moves), = fit.games_of(text)
        return dict(fit.counts_of(tags, moves, plies, limit) or {})

    def test_scores_are_those_of_the_side_to_move(self):
        text = ('[Event "x"]\n[Result "0-1"]\n[FEN "8/8/8/8/8/8/8/8 b - - 0 1"]\n\n'
                "1... e5 {+0.50/4 0.1s} 2. e4 {-0.25/4 0.1s} Nf6 {+M5/4 0.1s} 3. d4 {-12.00/4 0.1s} 0-1\n")
        self.assertEqual(self.counts(text), {(50, 1): 1, (-25, -1): 1})
        self.assertEqual(self.counts(text, plies=1), {(-25, -1): 1})
        self.assertEqual(self.counts(text, limit=2000), {(50, 1): 1, (-25, -1): 1, (-1200, -1): 1})

    def test_games_without_a_result_are_left_out(self):
        for old, new in (('"0-1"', '"*"'), ("normal", "time forfeit")):
            text = '[Event "x"]\n[Result "0-1"]\n[Termination "normal"]\n\n1. e4 {+0.50/4 0.1s} 0-1\n'
            self.assertEqual(self.counts(text), {(50, -1): 1})
            self.assertEqual(self.counts(text.replace(old, new)), {})

    def test_too_few_games_are_an_error(self):
        done = self.run_tool("")
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("no 10 games with scores", done.stderr)

    def test_the_engine_has_what_was_fitted(self):
        header = (ROOT / "src/interface/uci/win_draw_loss.h").read_text()
        text = re.search(r"(\d+) \+- \d+ and (\d+) \+- \d+ centipawns", header).groups()
        constants = re.findall(r"constexpr double \w+ = (\d+)\.0;", header)
        self.assertEqual(list(text), constants)
        self.assertIn(f"`score cp {constants[0]}`", (ROOT / "docs" / "clients.md").read_text())


if __name__ == "__main__":
    unittest.main()
