#!/usr/bin/env python3
"""Counts the positions of an EPD file that an engine solves.

    tools/solve_epd.py --engine build/release/brenquil --movetime 1000 wac.epd

A position is solved when the move played is one of `bm` and none of `am`. The file writes these in
standard algebraic notation; the engine answers in coordinates. So for each legal move its algebraic
form is made here from the FEN.
"""
import argparse
import re
import sys
from pathlib import Path

from chess_rules import Position, board_of
from play_games import UciProcess, is_end

OPERATION = re.compile(r"\b(bm|am|id)\s+([^;]*);")


def square(name):
    return "abcdefgh".index(name[0]) + 8 * (int(name[1]) - 1)


def san_of(fen, move, legal):
    """The algebraic form of a legal move, without the marks of check and mate."""
    board = board_of(fen)
    origin, target = square(move[:2]), square(move[2:4])
    man = board[origin].upper()
    is_castling = man == "K" and (
        abs(origin % 8 - target % 8) > 1 or board[target] == ("R" if board[origin] == "K" else "r"))
    if is_castling:
        return "O-O" if target % 8 > origin % 8 else "O-O-O"
    is_capture = board[target] != "." or (man == "P" and origin % 8 != target % 8)
    if man == "P":
        text = move[0] + "x" if is_capture else ""
        return text + move[2:4] + ("=" + move[4].upper() if len(move) > 4 else "")
    rivals = [other[:2] for other in legal
              if other != move and other[2:4] == move[2:4]
              and board[square(other[:2])] == board[origin]]
    origin_text = ""
    if rivals:
        if all(other[0] != move[0] for other in rivals):
            origin_text = move[0]
        elif all(other[1] != move[1] for other in rivals):
            origin_text = move[1]
        else:
            origin_text = move[:2]
    return man + origin_text + ("x" if is_capture else "") + move[2:4]


def plain(san):
    """Algebraic forms differ in marks that carry nothing."""
    return re.sub(r"[+#!?=x\-]", "", san.replace("0", "O"))


def read(path):
    """Position (four fields), wanted and unwanted moves, and name of each record."""
    for number, line in enumerate(Path(path).read_text(encoding="latin-1").splitlines(), 1):
        fields = line.split(None, 4)
        if line.startswith("#") or len(fields) < 5:
            continue
        operations = {name: value.strip('" ') for name, value in OPERATION.findall(fields[4])}
        if "bm" in operations or "am" in operations:
            yield (" ".join(fields[:4]), operations.get("bm", "").split(),
                   operations.get("am", "").split(), operations.get("id", f"line {number}"))


def is_solved(san, best, avoided):
    moves = [plain(text) for text in best]
    return (not best or plain(san) in moves) and plain(san) not in [plain(t) for t in avoided]


def main(arguments=None):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("file")
    parser.add_argument("--engine", required=True)
    parser.add_argument("--movetime", type=int, default=1000, help="ms for each position")
    parser.add_argument("--option", action="append", default=[], metavar="Name=Value")
    parser.add_argument("--limit", type=int, default=0, help="only this many positions")
    parsed = parser.parse_args(arguments)

    engine = UciProcess(parsed.engine, [text.split("=", 1) for text in parsed.option])
    solved = total = 0
    try:
        for fen, best, avoided, name in read(parsed.file):
            if parsed.limit and total == parsed.limit:
                break
            total += 1
            legal = list(Position(fen + " 0 1").moves(False))
            unknown = [text for text in best + avoided
                       if plain(text) not in [plain(san_of(fen, move, legal)) for move in legal]]
            if unknown:
                print(f"{name}: {' '.join(unknown)} is no move here")
            engine.send("ucinewgame")
            engine.send(f"position fen {fen} 0 1")
            engine.synchronise()
            engine.send(f"go movetime {parsed.movetime}")
            lines, _ = engine.wait_for(is_end, parsed.movetime / 1000 + 60)
            answer = lines[-1].split()[1] if lines[-1].startswith("bestmove ") else ""
            san = san_of(fen, answer, legal) if answer in legal else "nothing"
            if is_solved(san, best, avoided):
                solved += 1
            else:
                wanted = " ".join(best) if best else "not " + " ".join(avoided)
                print(f"{name}: played {san}, wanted {wanted}", flush=True)
    finally:
        engine.close()
    print(f"solved {solved} of {total}")
    return 0


if __name__ == "__main__":
    sys.exit(main())
