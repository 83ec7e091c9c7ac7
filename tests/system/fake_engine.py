#!/usr/bin/env python3
"""An engine for testing the tools that play games: it plays random legal moves until it misbehaves.

    fake_engine.py MISDEED          one of MISDEEDS, or "none"
"""
import random
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import chess_rules  # noqa: E402  (found through the path above)

MISDEEDS = {  # and the fault that it is
    "illegal move": "illegal",
    "illegal ponder move": "illegal",
    "refuses a move": "illegal",
    "no move": "illegal",
    "thinks too long": "time losses",
    "dies": "crashes",
    "exit code": "crashes",
    "hangs": "hangs",
    "goes on after quit": "hangs",
    "swallows isready": "lost lines",
    "swallows go": "lost lines",
    "answers twice": "lost lines",
}
PLIES_BEFORE = 8


class FakeEngine:
    def __init__(self, misdeed):
        self.misdeed = misdeed
        self.source = random.Random(1)
        self.chess960 = False
        self.position = chess_rules.Position()
        self.plies = 0

    def does(self, misdeed):
        """Whether it is time for that misdeed. Once is enough."""
        if self.misdeed != misdeed or self.plies < PLIES_BEFORE:
            return False
        self.misdeed = "none"
        return True

    def obey(self, line):
        words = line.split()
        if words[:1] == ["uci"]:
            say("uciok")
        elif words[:1] == ["setoption"]:
            self.chess960 = self.chess960 or line.endswith("UCI_Chess960 value true")
        elif words[:1] == ["isready"]:
            if not self.does("swallows isready"):
                say("readyok")
        elif words[:1] == ["position"]:
            self.set_position(line)
        elif words[:1] == ["go"]:
            self.go()
        elif words[:1] == ["quit"]:
            if self.misdeed == "goes on after quit":
                time.sleep(1000)
            sys.exit(3 if self.misdeed == "exit code" else 0)

    def set_position(self, line):
        fen, _, moves = line[len("position fen "):].partition(" moves ")
        self.position = chess_rules.Position(fen)
        for move in moves.split():
            self.position = self.position.after(self.position.moves(self.chess960)[move])
        self.plies = len(moves.split())
        if self.does("refuses a move"):
            say("info string Illegal move: " + moves.split()[-1])

    def go(self):
        legal = self.position.moves(self.chess960)
        move = self.source.choice(list(legal))
        ponder = ""
        if self.does("illegal move"):
            move = "e1e8"
        elif self.does("illegal ponder move"):
            ponder = " ponder " + move
        elif self.does("no move"):
            say("info string No best move!")
            return
        elif self.does("thinks too long"):
            time.sleep(5)
        elif self.does("dies"):
            sys.exit(0)
        elif self.does("hangs"):
            time.sleep(1000)
        elif self.does("swallows go"):
            return
        elif self.does("answers twice"):
            say("bestmove " + move)
        say("bestmove " + move + ponder)


def say(text):
    print(text, flush=True)


def main():
    engine = FakeEngine(sys.argv[1])
    for line in sys.stdin:
        engine.obey(line)


if __name__ == "__main__":
    main()
