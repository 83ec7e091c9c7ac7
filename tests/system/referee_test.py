#!/usr/bin/env python3
# ctest: sanitized timeout=600
"""A referee on the client's side reads every line of whole games, in both dialects.

It knows the rules by itself (tools/chess_rules.py) and understands the lines of the protocol and nothing else. Games
are played at a fixed number of nodes, so that a busy machine changes nothing; with BRENQUIL_REFEREE_GAMES=500 that many
games of each dialect are played by the clock, 0.2 seconds and 2 milliseconds a move:

    BRENQUIL_ENGINE=build/release/brenquil BRENQUIL_REFEREE_GAMES=500 tests/system/referee_test.py
"""
import os
import random
import re
import sys
import time
import unittest

from engine_process import ROOT, EngineTestCase, main

sys.path.insert(0, str(ROOT / "tools"))
import chess_rules  # noqa: E402  (found through the path above)
import play_games  # noqa: E402

GAMES_BY_CLOCK = int(os.environ.get("BRENQUIL_REFEREE_GAMES", "0"))
GAMES = 6  # by nodes
NODES = 4000
BASE, INCREMENT = 0.2, 0.002  # seconds
MAX_PLIES = 300
DEEPEST = 254
HIGHEST_SCORE = 32000  # centipawns; that of a mate on the board

ITERATION = re.compile(
    r"info depth (?P<depth>\d+) seldepth (?P<seldepth>\d+) time (?P<time>\d+) nodes (?P<nodes>\d+) nps (?P<nps>\d+)"
    r" score (?:cp (?P<cp>-?\d+)|mate (?P<mate>-?\d+))(?: wdl (?P<wdl>\d+ \d+ \d+))?"
    r" hashfull (?P<hashfull>\d+) tbhits (?P<tbhits>\d+)(?: multipv (?P<multipv>\d+))? pv (?P<pv>\S+(?: \S+)*)")
STATUS = re.compile(r"info time (?P<time>\d+) nodes (?P<nodes>\d+) nps (?P<nps>\d+) cpuload (?P<cpuload>\d+)"
                    r" hashfull (?P<hashfull>\d+) tbhits (?P<tbhits>\d+)")
CURRENT = re.compile(r"info currmove (\S+) currmovenumber [1-9]\d*")
REFUTATION = re.compile(r"info (?:refutation|currline) \S+(?: \S+)*")
NO_MOVE = "info string No best move!"  # of a search that was over before its first iteration, in the settled dialect
BEST = re.compile(r"bestmove (?P<best>\S+)(?: ponder (?P<ponder>\S+))?")


class Referee:
    """Reads the lines of one search. `faults` is what was wrong with them."""

    def __init__(self, position, chess960=False, is_strict=False, lines=1, shows_chances=False):
        self.position = position
        self.chess960 = chess960
        self.is_strict = is_strict
        self.lines = lines
        self.shows_chances = shows_chances
        self.faults = []
        self.last = None  # the last iteration, of its best line
        self.highest = {"time": 0, "nodes": 0, "depth": 0}
        self.known = {(): position}

    def fault(self, text, line):
        self.faults.append(f"{text}: {line}")

    def after(self, moves):
        """The position after a line, by its longest beginning that has been seen; None if a move is not legal."""
        length = len(moves)
        while moves[:length] not in self.known:
            length -= 1
        position = self.known[moves[:length]]
        for end in range(length + 1, len(moves) + 1):
            text = moves[end - 1]
            move = position.move(text, self.chess960)
            if move is None or (self.is_strict and text.startswith("O")):
                return None
            position = position.after(move)
            self.known[moves[:end]] = position
        return position

    def read(self, line):
        """One line of the answer."""
        if found := ITERATION.fullmatch(line):
            self._iteration(found, line)
        elif found := STATUS.fullmatch(line):
            self._figures(found, line, ("time", "nodes"))
            if not int(found["cpuload"]) <= 1000:
                self.fault("load out of bounds", line)
        elif found := BEST.fullmatch(line):
            self._best(found, line)
        elif line == NO_MOVE and not self.is_strict:
            pass
        elif not CURRENT.fullmatch(line) and not REFUTATION.fullmatch(line):
            self.fault("unknown words", line)

    def _figures(self, found, line, names):
        for name in names:
            if int(found[name]) < self.highest[name]:
                self.fault(f"{name} falls", line)
            self.highest[name] = int(found[name])
        if int(found["hashfull"]) > 1000:
            self.fault("hashfull out of bounds", line)

    def _iteration(self, found, line):
        self._figures(found, line, ("time", "nodes", "depth"))
        self._score(found, line)
        depth, number = int(found["depth"]), int(found["multipv"] or 1)
        if not 1 <= depth <= DEEPEST:
            self.fault("depth out of bounds", line)
        if (found["multipv"] is not None) != (self.lines > 1) or not 1 <= number <= self.lines:
            self.fault("number of a line out of bounds", line)
        moves = tuple(found["pv"].split())
        if self.after(moves) is None:
            self.fault("line is not legal", line)
        if number == 1:
            if self.last and depth == self.last[0]:
                self.fault("depth is shown twice", line)
            if self.is_strict and depth != (self.last[0] if self.last else 0) + 1:
                self.fault("depth is left out", line)
            self.last = depth, moves

    def _score(self, found, line):
        if found["cp"] is not None and abs(int(found["cp"])) >= HIGHEST_SCORE:
            self.fault("score out of bounds", line)
        if found["mate"] is not None and not 1 <= abs(int(found["mate"])) <= DEEPEST:
            self.fault("mate out of bounds", line)
        if (found["wdl"] is not None) != self.shows_chances:
            self.fault("chances", line)
        elif found["wdl"] and sum(map(int, found["wdl"].split())) != 1000:
            self.fault("chances are not 1000 together", line)

    def _best(self, found, line):
        if self.after((found["best"],)) is None:
            self.fault("best move is not legal", line)
        elif found["ponder"] and self.after((found["best"], found["ponder"])) is None:
            self.fault("ponder move is not legal", line)
        if self.is_strict and (self.last is None or self.last[1][0] != found["best"]):
            self.fault("best move is not that of the last line", line)


class Reading(unittest.TestCase):
    """The referee sees what is wrong."""

    LINE = "info depth 1 seldepth 1 time 3 nodes 40 nps 9 score cp 5 hashfull 0 tbhits 0 pv e2e4 e7e5"

    def faults(self, *lines, **settings):
        referee = Referee(chess_rules.Position(settings.pop("fen", chess_rules.START_FEN)), **settings)
        for line in lines:
            referee.read(line)
        return [fault.split(":")[0] for fault in referee.faults]

    def test_good_lines(self):
        deeper = self.LINE.replace("depth 1 ", "depth 2 ").replace("e2e4 e7e5", "d2d4")
        status = "info time 4 nodes 41 nps 9 cpuload 1000 hashfull 0 tbhits 0"
        self.assertEqual(self.faults(self.LINE, deeper, status, "info currmove e2e4 currmovenumber 1",
                                     "bestmove d2d4 ponder d7d5", is_strict=True), [])

    def test_each_fault(self):
        for changed, expected in (
                (("seldepth", "selectivedepth"), "unknown words"), (("cp 5", "cp 32000"), "score out of bounds"),
                (("cp 5", "mate 0"), "mate out of bounds"), (("cp 5", "cp x"), "unknown words"),
                (("e7e5", "e7e4"), "line is not legal"), (("e7e5", "e2e4"), "line is not legal"),
                (("hashfull 0", "hashfull 1001"), "hashfull out of bounds"), (("depth 1 ", "depth 0 "), "depth out of bounds"),
                (("cp 5", "cp 5 wdl 1 998 1"), "chances"), (("tbhits 0", "tbhits 0 multipv 1"), "number of a line out of bounds"),
                ((" pv e2e4 e7e5", " pv "), "unknown words"), (("info depth", "info string depth"), "unknown words")):
            with self.subTest(changed=changed):
                self.assertEqual(self.faults(self.LINE.replace(*changed)), [expected])

    def test_falling_figures(self):
        for changed, expected in ((("time 3", "time 2"), "time falls"), (("nodes 40", "nodes 39"), "nodes falls"),
                                  (("time 3", "time 3"), "depth is shown twice")):
            self.assertIn(expected, self.faults(self.LINE, self.LINE.replace(*changed)))

    def test_best_moves(self):
        self.assertEqual(self.faults(self.LINE, "bestmove e2e5"), ["best move is not legal"])
        self.assertEqual(self.faults(self.LINE, "bestmove e2e4 ponder e2e4"), ["ponder move is not legal"])
        self.assertEqual(self.faults(self.LINE, "bestmove d2d4"), [])
        self.assertEqual(self.faults(self.LINE, "bestmove d2d4", is_strict=True),
                         ["best move is not that of the last line"])
        self.assertEqual(self.faults("bestmove d2d4", is_strict=True), ["best move is not that of the last line"])
        self.assertEqual(self.faults(self.LINE.replace("depth 1 ", "depth 2 "), is_strict=True), ["depth is left out"])

    def test_castling(self):
        fen = "4k3/8/8/8/8/8/8/4K2R w K - 0 1"
        line = self.LINE.replace("e2e4 e7e5", "O-O")
        self.assertEqual(self.faults(line, fen=fen, chess960=True), [])
        self.assertEqual(self.faults(line, fen=fen, chess960=True, is_strict=True), ["line is not legal"])
        self.assertEqual(self.faults(line.replace("O-O", "e1g1"), fen=fen, is_strict=True), [])
        self.assertEqual(self.faults(line.replace("O-O", "e1h1"), fen=fen, is_strict=True), ["line is not legal"])


class Games(EngineTestCase):
    def begin(self, engine, number, source, is_strict):
        """Sends the settings of a game; returns the FEN to begin with and what the referee has to know."""
        chess960 = number % 3 == 2
        settings = {"chess960": chess960, "is_strict": is_strict, "lines": 3 if number % 4 == 1 else 1,
                    "shows_chances": is_strict and number % 2 == 0}
        engine.send("ucinewgame", f"setoption name UCI_Chess960 value {str(chess960).lower()}",
                    f"setoption name MultiPV value {settings['lines']}",
                    f"setoption name Threads value {2 if number % 6 == 5 else 1}")
        if is_strict:
            engine.send(f"setoption name UCI_ShowWDL value {str(settings['shows_chances']).lower()}")
        engine.ready()
        fen = play_games.chess960_fen(source) if chess960 else chess_rules.START_FEN
        # A front end may write either kind of letters.
        return chess_rules.Position(fen).fen(chess960=chess960 and number % 2 == 0), settings

    def play(self, engine, number, source, is_strict):
        """The faults of a game, and how many searches it had."""
        fen, settings = self.begin(engine, number, source, is_strict)
        position = chess_rules.Position(fen)
        keys, played, faults = [position.key()], [], []
        clocks = {True: BASE, False: BASE}
        searches = 0
        while True:
            legal = position.moves(settings["chess960"])
            if chess_rules.verdict(position, legal, keys, len(played), MAX_PLIES):
                return faults, searches
            if len(played) < 6:
                text = source.choice([text for text in legal if not text.startswith("O")])
            else:
                referee = Referee(position, **settings)
                text = self.ask(engine, fen, played, clocks, position.white, referee)
                searches += 1
                faults += [f"game {number}, {position.fen()}: {fault}" for fault in referee.faults]
            if text not in legal:
                return faults, searches
            position = position.after(legal[text])
            keys.append(position.key())
            played.append(text)

    def ask(self, engine, fen, played, clocks, white, referee):
        """The best move; its lines go to the referee."""
        go = f"go nodes {NODES}"
        if GAMES_BY_CLOCK:
            go = "go wtime {} btime {} winc {inc} binc {inc}".format(
                *(max(1, int(1000 * clocks[side])) for side in (True, False)), inc=int(1000 * INCREMENT))
        engine.send(f"position fen {fen} moves {' '.join(played)}")
        begin = time.monotonic()
        lines = engine.search(go)
        # A busy machine may take all of a clock; the game goes on.
        clocks[white] = max(0.0, clocks[white] - (time.monotonic() - begin)) + INCREMENT
        for line in lines:
            referee.read(line)
        return lines[-1].split()[1] if lines[-1] != NO_MOVE else ""

    def play_all(self, is_strict):
        self.arguments = ("--strict-uci",) if is_strict else ()
        engine = self.start_uci("setoption name Hash value 8")
        source = random.Random(12)
        faults, searches = [], 0
        games = GAMES_BY_CLOCK or GAMES
        for number in range(games):
            self.dialogue.clear()
            found, asked = self.play(engine, number, source, is_strict)
            faults += found
            searches += asked
        print(f"{games} games, {searches} searches, {len(faults)} faults", file=sys.stderr)
        self.assertGreater(searches, 20 * games)
        self.assert_quits(engine)
        self.assertEqual(faults, [])

    def test_in_the_settled_dialect(self):
        self.play_all(is_strict=False)

    def test_in_strict_uci(self):
        self.play_all(is_strict=True)


if __name__ == "__main__":
    main()
