#!/usr/bin/env python3
"""Lets a UCI engine analyse positions: an example for programs of your own.

    tools/analyse.py --engine build/release/brenquil
    tools/analyse.py --engine build/release/brenquil --depth 12 --option Hash=256 'FEN' 'FEN'
    tools/analyse.py --engine build/release/brenquil --movetime 5000 --file positions.txt

Prints a line for each position: the best move, then depth, score, nodes and variation as the engine
last reported them. A search that has found a mate ends without a report, and then the move stands
alone. Without a position it takes the start position. `Engine` below is all that a
program of your own needs:

    with Engine("brenquil", {"Hash": 256}) as engine:
        best, info = engine.go("startpos", "movetime 1000")

The standard library of Python 3.8 is enough.
"""
import argparse
import subprocess
import sys


class Engine:
    """A running engine. Options are set once; every `go` waits for its answer."""

    def __init__(self, program, options=None):
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, bufsize=1)
        # The engine does not end when its input does: whoever started it must end it, also after
        # an error.
        try:
            self.start(options or {})
        except BaseException:
            self.close()
            raise

    def start(self, options):
        self.send("uci")
        lines = [line for line in self.until("uciok") if line.startswith("option name ")]
        known = [line[len("option name "):].split(" type ")[0] for line in lines]
        for name, value in options.items():
            if name not in known:
                raise ValueError(f"the engine has no option {name!r}")
            self.send(f"setoption name {name} value {value}")
        self.send("isready")
        self.until("readyok")

    def close(self):
        try:
            self.send("quit")
            self.process.wait(10)
        except (OSError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        self.process.stdout.close()
        try:
            self.process.stdin.close()
        except OSError:
            pass  # what could not be written any more

    def __enter__(self):
        return self

    def __exit__(self, *unused):
        self.close()

    def send(self, line):
        self.process.stdin.write(line + "\n")

    def until(self, *beginnings):
        """The engine's lines up to one that begins with one of these."""
        lines = []
        for line in self.process.stdout:
            lines.append(line.rstrip("\n"))
            if line.startswith(beginnings):
                return lines
        raise RuntimeError(f"the engine has ended, code {self.process.wait()}")

    def go(self, position, limits):
        """The best move, None where there is no legal one, and the last report as a dictionary.

        `position` is "startpos" or a FEN, either with " moves e2e4 ..." behind it; `limits` is what
        may follow the word `go`: "movetime 1000", "depth 12", "wtime 60000 btime 60000" ...
        """
        kind = "" if position.startswith("startpos") else "fen "
        self.send(f"position {kind}{position}")
        self.send(f"go {limits}")
        # In mate or stalemate there is no `bestmove`; the engine says so in words.
        lines = self.until("bestmove ", "info string No best move")
        best = lines[-1].split()[1] if lines[-1].startswith("bestmove ") else None
        reports = [line for line in lines if " pv " in line]
        return best, parse_info(reports[-1]) if reports else {}


def parse_info(line):
    """`info depth 9 score cp 31 ... pv e2e4 e7e5` as {"depth": 9, "score": "31", ...}."""
    head, variation = line.split(" pv ", 1)
    words = head.split()
    info = {"pv": variation.split()}
    for key in ("depth", "seldepth", "time", "nodes", "nps", "hashfull", "tbhits"):
        if key in words:
            info[key] = int(words[words.index(key) + 1])
    kind, value = words[words.index("score") + 1:][:2]
    info["score"] = f"mate {value}" if kind == "mate" else f"{int(value) / 100:+.2f}"
    return info


def describe(best, info):
    if best is None:
        return "no legal move"
    if not info or info["pv"][:1] != [best]:
        return best
    return (f"{best}  depth {info['depth']}  score {info['score']}  nodes {info['nodes']}  "
            f"{' '.join(info['pv'])}")


def positions(parsed):
    yield from parsed.fen
    if parsed.file:
        with open(parsed.file, encoding="utf-8") as lines:
            yield from (line.strip() for line in lines if line.strip())
    elif not parsed.fen:
        yield "startpos"


def main(arguments=None):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("fen", nargs="*", help="a position; default: the start position")
    parser.add_argument("--engine", required=True, help="path of the program")
    parser.add_argument("--file", help="a file with one FEN a line")
    limit = parser.add_mutually_exclusive_group()
    limit.add_argument("--movetime", type=int, default=1000, help="milliseconds for each (1000)")
    limit.add_argument("--depth", type=int, help="depth for each, in place of a time")
    parser.add_argument("--option", action="append", default=[], metavar="NAME=VALUE",
                        help="an option of the engine; can be repeated")
    parsed = parser.parse_args(arguments)
    if bad := [text for text in parsed.option if "=" not in text]:
        parser.error(f"--option wants NAME=VALUE, not {bad[0]!r}")

    limits = f"depth {parsed.depth}" if parsed.depth else f"movetime {parsed.movetime}"
    try:
        with Engine(parsed.engine, dict(text.split("=", 1) for text in parsed.option)) as engine:
            for fen in positions(parsed):
                best, info = engine.go(fen, limits)
                print(describe(best, info), flush=True)
    except (OSError, RuntimeError, ValueError) as error:
        sys.exit(f"analyse.py: {error}")


if __name__ == "__main__":
    main()
