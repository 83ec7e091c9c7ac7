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
import re
import subprocess
import sys
import threading

# In seconds: an engine that has nothing to compute and keeps silent for this long does so for ever.
PATIENCE = 30
SHOWN = re.compile(r"info string |info .* pv |bestmove ")


class Engine:
    """A running engine. Options are set once; every `go` waits for its answer."""

    def __init__(self, program, options=None, show=None):
        """`show` is called with each line that is meant for people."""
        self.show = show
        self.process = subprocess.Popen([program], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, bufsize=1)
        # The engine does not end when its input does: whoever started it must end it, even after
        # an error.
        try:
            self.start(options or {})
        except BaseException:
            self.close()
            raise

    def start(self, options):
        self.send("uci")
        lines = [line for line in self.until("uciok", patience=PATIENCE) if line.startswith("option name ")]
        known = [line[len("option name "):].split(" type ")[0] for line in lines]
        for name, value in options.items():
            if name not in known:
                raise ValueError(f"the engine has no option {name!r}; README.md lists them all")
            self.send(f"setoption name {name} value {value}")
        self.send("isready")
        self.until("readyok", patience=PATIENCE)

    def close(self):
        self.send("quit")
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
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
        try:
            self.process.stdin.write(line + "\n")
        except OSError:
            pass  # an engine that has ended is noticed by the next `until`, which can say so

    def until(self, *beginnings, patience=None):
        """The engine's lines up to one that begins with one of these, which it has `patience`
        seconds for, or any time."""
        lines = []
        watch = threading.Timer(patience or 0, self.process.kill)
        watch.daemon = True
        if patience is not None:
            watch.start()
        try:
            for line in self.process.stdout:
                lines.append(line.rstrip("\n"))
                if self.show and SHOWN.match(line):
                    self.show(lines[-1])
                if line.startswith(beginnings):
                    return lines
        finally:
            watch.cancel()
        raise RuntimeError(f"the engine did not answer with {beginnings[0].strip()!r}; "
                           f"it has ended, code {self.process.wait()}")

    def go(self, position, limits, patience=None):
        """The best move, None where there is no legal one, and the last report as a dictionary.

        `position` is "startpos" or a FEN, either with " moves e2e4 ..." after it; `limits` is what
        may follow the word `go`: "movetime 1000", "depth 12", "wtime 60000 btime 60000" ...
        """
        kind = "" if position.startswith("startpos") else "fen "
        self.send(f"position {kind}{position}")
        self.send(f"go {limits}")
        # In mate or stalemate there is no `bestmove`; the engine says so in words.
        lines = self.until("bestmove ", "info string No best move", patience=patience)
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


def check_position(text):
    """The engine takes any text as a position. People mistype, so its board is looked at first."""
    ranks = re.sub(r"[1-8]", lambda digit: int(digit[0]) * ".", text.split(" ")[0]).split("/")
    if "\n" in text or not text.startswith("startpos") and (
            len(ranks) != 8 or not all(re.fullmatch(r"[.pnbrqkPNBRQK]{8}", rank) for rank in ranks)):
        raise ValueError(f"this is not a FEN (eight ranks of eight squares, divided by '/'): {text}")
    return text


def positions(parsed):
    texts = list(parsed.fen)
    if parsed.file:
        with open(parsed.file, encoding="utf-8") as lines:
            texts += [line.strip() for line in lines if line.strip()]
    elif not texts:
        texts = ["startpos"]
    return [check_position(text) for text in texts]


def analyse(parsed):
    wanted = positions(parsed)
    if parsed.check:
        return
    limits = f"depth {parsed.depth}" if parsed.depth else f"movetime {parsed.movetime}"
    patience = None if parsed.depth else parsed.movetime / 1000 + PATIENCE
    options = dict(text.split("=", 1) for text in parsed.option)
    show = (lambda line: print(line, flush=True)) if parsed.lines else None
    with Engine(parsed.engine, options, show) as engine:
        for fen in wanted:
            answer = engine.go(fen, limits, patience)
            if not parsed.lines:
                print(describe(*answer), flush=True)


def main(arguments=None):
    parser = argparse.ArgumentParser(
        description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("fen", nargs="*", help="a position; default: the start position")
    program = parser.add_mutually_exclusive_group(required=True)
    program.add_argument("--engine", help="path of the program")
    program.add_argument("--check", action="store_true", help="look at the positions and start nothing")
    parser.add_argument("--file", help="a file with one FEN a line")
    limit = parser.add_mutually_exclusive_group()
    limit.add_argument("--movetime", type=int, default=1000, help="milliseconds for each (1000)")
    limit.add_argument("--depth", type=int, help="depth for each, in place of a time")
    parser.add_argument("--option", action="append", default=[], metavar="NAME=VALUE",
                        help="an option of the engine; can be repeated")
    parser.add_argument("--lines", action="store_true",
                        help="print the engine's own lines as they come, in place of a summary")
    parsed = parser.parse_args(arguments)
    if bad := [text for text in parsed.option if "=" not in text or "\n" in text]:
        parser.error(f"--option wants NAME=VALUE, not {bad[0]!r}")
    try:
        analyse(parsed)
    except KeyboardInterrupt:
        sys.exit(130)
    except (OSError, RuntimeError, ValueError) as error:
        sys.exit(f"analyse.py: {error}")


if __name__ == "__main__":
    main()
