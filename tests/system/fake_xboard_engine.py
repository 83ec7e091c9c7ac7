#!/usr/bin/env python3
"""An engine that speaks the protocol of XBoard, for testing the adapter: it castles, or plays the first legal move by name.

    fake_xboard_engine.py FILE [MISDEED]       writes down in FILE what it is told

It answers at once; without `st` and `sd` and with more than an hour left, at `?`. With the misdeed "dies" it ends at `go`,
with "stays" it ignores `quit`, and with "no features" it tells none.
"""
import sys
import time
from pathlib import Path

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "tools"))
import chess_rules  # noqa: E402  (found through the path above)

CASTLING = {"e1g1": "O-O", "e1c1": "O-O-O", "e8g8": "O-O", "e8c8": "O-O-O"}  # if a king stands there


def say(text):
    print(text, flush=True)


def main():
    told = open(sys.argv[1], "a", encoding="utf-8", buffering=1)
    misdeed = sys.argv[2] if len(sys.argv) > 2 else ""
    position, thinks, is_limited, left = chess_rules.Position(), False, False, 0
    say("Some banner")
    for line in sys.stdin:
        told.write(line)
        words = line.split()
        if words[:1] == ["protover"] and misdeed != "no features":
            say('feature myname="Fake One" setboard=1')
            say("feature ping=1 memory=1 done=1")
        elif words[:1] == ["ping"]:
            say("pong " + words[1])
        elif words[:1] == ["setboard"]:
            position = chess_rules.Position(" ".join(words[1:]))
        elif words[:1] == ["time"]:
            left = int(words[1])
        elif words[:1] in (["st"], ["sd"]):
            is_limited = True
        elif words[:1] == ["go"]:
            if misdeed == "dies":
                sys.exit(3)
            say("  3    -22     1     1588  Nb8-c6")
            thinks = True
        elif words[:1] == ["quit"]:
            if misdeed == "stays":
                time.sleep(1000)
            break
        elif words and words[0] in position.moves(False):
            position = position.after(position.moves(False)[words[0]])
        if thinks and (is_limited or left < 360000 or words == ["?"]):
            thinks = False
            moves = position.moves(False)
            name = next((castling for castling in CASTLING if castling in moves), min(moves))
            position = position.after(moves[name])
            say("move " + CASTLING.get(name, name))


if __name__ == "__main__":
    main()
