#!/usr/bin/env python3
"""Plays games between two engine processes over UCI and checks everything that they do.

    tools/play_games.py --engine build/release/brenquil --games 20 --base 1000 --increment 20
    tools/play_games.py --engine NEW --engine2 OLD --games 100 --chess960 --concurrency 2 \\
        --option1 Threads=2 --pgn games.pgn

Colours alternate. The games begin with a few random moves (or, in Chess960, from random start
positions), the same for the same seed; each beginning is played twice, once with each colour.

A third process, the console mode of the first engine, is the referee: it lists the legal moves and
tells the FEN after each move. Mate, stalemate, threefold repetition, fifty moves, insufficient
material and the limit of plies are decided here, from the FENs.

The last line counts what went wrong; the exit code is 0 only if nothing did:

    games 20, illegal 0, time losses 0, crashes 0, lost lines 0, white 7, black 6, draws 7

An illegal move, a time loss or a crash loses the game. "Lost lines" counts commands that got no
answer. The standard library of Python 3.8 is all that is needed.
"""
import argparse
import queue
import random
import re
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
LIST_ROW = re.compile(r"^ ?\d+  (\S+) - \d+$")
ANSWER_SECONDS = 60


class Fault(Exception):
    """What an engine did wrong; the name is the column of the summary that counts it."""

    def __init__(self, name, text):
        super().__init__(text)
        self.name = name


class UciProcess:
    """An engine process in a working directory of its own, read by lines with time limits."""

    def __init__(self, path, options=()):
        self.directory = tempfile.TemporaryDirectory(prefix="brenquil-")
        self.process = subprocess.Popen(
            [str(Path(path).resolve())], cwd=self.directory.name, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, bufsize=0)
        self.lines = queue.Queue()
        self.log = []
        threading.Thread(target=self._read, daemon=True).start()
        self.send("uci")
        self.wait_for(lambda line: line == "uciok")
        for name, value in options:
            self.send(f"setoption name {name} value {value}")

    def _read(self):
        for line in self.process.stdout:
            self.lines.put((time.monotonic(), line.decode("latin-1").rstrip("\r\n")))
        self.lines.put((time.monotonic(), None))

    def send(self, text):
        self.log.append("> " + text)
        try:
            self.process.stdin.write(text.encode("latin-1") + b"\n")
            self.process.stdin.flush()
        except OSError as error:
            raise Fault("crashes", f"the process does not listen any more: {error}") from error

    def line(self, seconds=ANSWER_SECONDS):
        """The next line and the moment at which it came."""
        try:
            moment, text = self.lines.get(timeout=max(seconds, 0.001))
        except queue.Empty:
            raise Fault("lost lines", f"no answer within {seconds:.1f} s") from None
        if text is None:
            self.lines.put((moment, None))
            raise Fault("crashes", f"the process has ended with code {self.process.wait(10)}")
        self.log.append("< " + text)
        return moment, text

    def wait_for(self, is_wanted, seconds=ANSWER_SECONDS):
        """Reads up to the first line that is wanted; all lines, and the moment of the last."""
        end = time.monotonic() + seconds
        lines = []
        while True:
            moment, text = self.line(end - time.monotonic())
            lines.append(text)
            if is_wanted(text):
                return lines, moment

    def synchronise(self):
        self.send("isready")
        self.wait_for(lambda line: line == "readyok")

    def close(self):
        """Ends the process; its exit code, or None if it had to be killed."""
        try:
            self.send("quit")
            self.process.stdin.close()
            code = self.process.wait(20)
        except (Fault, OSError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
            code = None
        self.directory.cleanup()
        return code


class Referee:
    """Knows the rules by asking the console mode of an engine. One for each thread of games."""

    def __init__(self, path, chess960):
        self.process = UciProcess(path, [("UCI_Chess960", "true" if chess960 else "false")])
        self.process.send("console")

    def set(self, fen):
        self.process.send("fen " + fen)

    def play(self, move):
        """Plays one of the legal moves."""
        self.process.send(move)

    def fen(self):
        self.process.send("fen")
        return self.process.line()[1]

    def moves(self):
        self.process.send("perft 1 -d")
        lines, _ = self.process.wait_for(lambda line: line.startswith("nps:"))
        return [found.group(1) for found in map(LIST_ROW.match, lines) if found]

    def close(self):
        self.process.close()


def board_of(fen):
    """Squares 0 (a1) to 63 (h8), the letters of the men and "." for none."""
    squares = []
    for row in reversed(fen.split()[0].split("/")):
        for letter in row:
            squares.extend("." * int(letter) if letter.isdigit() else letter)
    return squares


def is_attacked(board, square, by_white):
    """Whether a man of that colour attacks the square."""
    letters = str.upper if by_white else str.lower
    file, rank = square % 8, square // 8

    def at(df, dr):
        f, r = file + df, rank + dr
        return board[8 * r + f] if 0 <= f < 8 and 0 <= r < 8 else ""

    behind = -1 if by_white else 1
    if letters("p") in (at(-1, behind), at(1, behind)):
        return True
    knight = [(1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2)]
    if any(at(*step) == letters("n") for step in knight):
        return True
    for df, dr in [(0, 1), (1, 1), (1, 0), (1, -1), (0, -1), (-1, -1), (-1, 0), (-1, 1)]:
        if at(df, dr) == letters("k"):
            return True
        slider = letters("b") if df and dr else letters("r")
        distance = 1
        while at(df * distance, dr * distance) == ".":
            distance += 1
        if at(df * distance, dr * distance) in (slider, letters("q")):
            return True
    return False


def in_check(fen):
    """Whether the side to move is in check."""
    board = board_of(fen)
    is_white = fen.split()[1] == "w"
    king = board.index("K" if is_white else "k")
    return is_attacked(board, king, not is_white)


def is_insufficient(fen):
    """Neither side can mate: bare kings, one minor piece, or bishops on squares of one colour."""
    board = board_of(fen)
    men = [(letter.lower(), square) for square, letter in enumerate(board)
           if letter not in ".kK"]
    if not men or (len(men) == 1 and men[0][0] in "bn"):
        return True
    return (all(letter == "b" for letter, _ in men)
            and len({(square // 8 + square % 8) % 2 for _, square in men}) == 1)


def repetition_key(fen):
    """Men, side to move, castling rights and the square for en passant."""
    return " ".join(fen.split()[:4])


def verdict(fen, moves, keys, plies, max_plies):
    """Result and reason if the game is over, else None."""
    if not moves:
        if in_check(fen):
            return ("0-1" if fen.split()[1] == "w" else "1-0"), "mate"
        return "1/2-1/2", "stalemate"
    if keys.count(repetition_key(fen)) >= 3:
        return "1/2-1/2", "threefold repetition"
    if int(fen.split()[4]) >= 100:
        return "1/2-1/2", "fifty moves"
    if is_insufficient(fen):
        return "1/2-1/2", "insufficient material"
    if plies >= max_plies:
        return "1/2-1/2", f"{max_plies} plies"
    return None


def chess960_fen(source):
    """A random start position, castling rights by file letters."""
    rank = [""] * 8
    rank[2 * source.randrange(4)] = "B"
    rank[2 * source.randrange(4) + 1] = "B"
    for letter in "QNN":
        rank[source.choice([i for i in range(8) if not rank[i]])] = letter
    for letter, place in zip("RKR", [i for i in range(8) if not rank[i]]):
        rank[place] = letter
    text = "".join(rank)
    rights = "ABCDEFGH"[text.rindex("R")] + "ABCDEFGH"[text.index("R")]
    return (f"{text.lower()}/pppppppp/8/8/8/8/PPPPPPPP/{text} w {rights}{rights.lower()} - 0 1")


def opening(referee, source, chess960, plies):
    """Start position and first moves of a game; never one that is over."""
    while True:
        fen = chess960_fen(source) if chess960 else START_FEN
        referee.set(fen)
        moves = []
        for _ in range(plies):
            moves.append(source.choice(referee.moves()))
            referee.play(moves[-1])
            if not referee.moves():
                break
        else:
            return fen, moves


class Game:
    """One game. `result`, `reason` and `fault` say how it ended."""

    def __init__(self, arguments, number, engines, referee, fen, moves):
        self.arguments = arguments
        self.number = number
        self.engines = engines  # white and black
        self.referee = referee
        self.start = fen
        self.moves = list(moves)
        self.result = "*"
        self.reason = ""
        self.fault = None
        self.log = []

    def play(self):
        clocks = [float(self.arguments.base)] * 2
        keys = self._first_keys()
        for engine in self.engines:
            engine.log.clear()
            engine.send("ucinewgame")
            engine.synchronise()
        while True:
            fen = self.referee.fen()
            keys.append(repetition_key(fen))
            legal = self.referee.moves()
            end = verdict(fen, legal, keys, len(self.moves), self.arguments.max_plies)
            if end:
                self.result, self.reason = end
                return
            side = 0 if fen.split()[1] == "w" else 1
            try:
                self._move(side, clocks, legal)
            except Fault as fault:
                self.result = "0-1" if side == 0 else "1-0"
                self.reason = f"{'white' if side == 0 else 'black'}: {fault}"
                self.fault = fault.name
                self.log = self.engines[side].log
                return

    def _first_keys(self):
        self.referee.set(self.start)
        keys = []
        for move in self.moves:
            keys.append(repetition_key(self.referee.fen()))
            self.referee.play(move)
        return keys

    def _move(self, side, clocks, legal):
        engine = self.engines[side]
        increment = self.arguments.increment
        moves = " moves " + " ".join(self.moves) if self.moves else ""
        engine.send(f"position fen {self.start}{moves}")
        engine.synchronise()
        begin = time.monotonic()
        engine.send(f"go wtime {int(clocks[0])} btime {int(clocks[1])} "
                    f"winc {increment} binc {increment}")
        lines, moment = engine.wait_for(
            lambda line: line.startswith("bestmove ") or line.endswith("No best move!"),
            clocks[side] / 1000 + ANSWER_SECONDS)
        used = (moment - begin) * 1000
        if not lines[-1].startswith("bestmove "):
            raise Fault("illegal", "no move was found")
        for line in lines:
            if "Illegal move" in line:
                raise Fault("illegal", line)
        move = lines[-1].split()[1]
        if used > clocks[side] + self.arguments.margin:
            raise Fault("time losses", f"{move} took {used:.0f} of {clocks[side]:.0f} ms")
        if move not in legal:
            raise Fault("illegal", f"{move} is none of {' '.join(legal)}")
        clocks[side] = max(clocks[side] - used, 0.0) + increment
        self.moves.append(move)
        self.referee.play(move)

    def text(self, names):
        """The game in the manner of PGN, with its moves as squares."""
        tags = [("Event", "play_games"), ("Round", self.number), ("White", names[0]),
                ("Black", names[1]), ("Result", self.result), ("FEN", self.start),
                ("Termination", self.reason)]
        text = "".join(f'[{tag} "{value}"]\n' for tag, value in tags) + "\n"
        words = []
        for i, move in enumerate(self.moves):
            if i % 2 == 0:
                words.append(f"{i // 2 + 1}.")
            words.append(move)
        return text + " ".join(words + [self.result]) + "\n"


class Match:
    """All games: hands them to threads and keeps the account."""

    def __init__(self, arguments):
        self.arguments = arguments
        self.lock = threading.Lock()
        self.pairs = list(range((arguments.games + 1) // 2))
        self.games = []
        self.counts = {"illegal": 0, "time losses": 0, "crashes": 0, "lost lines": 0}
        self.points = [0.0, 0.0]  # of the first and of the second engine

    def run(self):
        threads = [threading.Thread(target=self._work)
                   for _ in range(max(1, self.arguments.concurrency))]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.games.sort(key=lambda game: game.number)

    def _work(self):
        while True:
            with self.lock:
                if not self.pairs:
                    return
                pair = self.pairs.pop(0)
            try:
                self._play_pair(pair)
            except Fault as fault:  # of the referee, or outside a game
                with self.lock:
                    self.counts[fault.name] += 1
                    print(f"pair {pair + 1}: {fault}", flush=True)

    def _is_chess960(self, pair):
        return self.arguments.chess960 or (self.arguments.mixed and pair % 2 == 1)

    def _play_pair(self, pair):
        arguments = self.arguments
        chess960 = self._is_chess960(pair)
        referee = Referee(arguments.referee or arguments.engine, chess960)
        try:
            source = random.Random(f"{arguments.seed} {pair}")
            fen, moves = opening(referee, source, chess960, arguments.opening_plies)
            for half in range(2):
                number = 2 * pair + half + 1
                if number <= arguments.games:
                    self._play(number, half, referee, fen, moves, chess960)
        finally:
            referee.close()

    def _play(self, number, half, referee, fen, moves, chess960):
        arguments = self.arguments
        castling = [("UCI_Chess960", "true" if chess960 else "false")]
        own = [arguments.option + arguments.option1, arguments.option + arguments.option2]
        paths = [arguments.engine, arguments.engine2 or arguments.engine]
        engines = []
        try:
            for side in range(2):
                engines.append(UciProcess(paths[side], castling + own[side]))
            order = [engines[half], engines[1 - half]]
            game = Game(arguments, number, order, referee, fen, moves)
            game.play()
        finally:
            codes = [engine.close() for engine in engines]
        with self.lock:
            for code in codes:
                if code != 0 and game.fault is None:
                    game.fault = "crashes"
                    game.reason += f"; an engine has ended with code {code}"
            self._count(game, half)

    def _count(self, game, half):
        self.games.append(game)
        if game.fault:
            self.counts[game.fault] += 1
            print("\n".join(game.log[-400:]), flush=True)
        if not self.arguments.quiet or game.fault:
            print(f"game {game.number}: {game.result}, {game.reason}, {len(game.moves)} plies",
                  flush=True)
        white = {"1-0": 1.0, "0-1": 0.0}.get(game.result, 0.5)
        self.points[half] += white
        self.points[1 - half] += 1.0 - white
        if self.arguments.pgn:
            names = ["first", "second"] if half == 0 else ["second", "first"]
            with open(self.arguments.pgn, "a", encoding="ascii") as file:
                file.write(game.text(names) + "\n")

    def faults(self):
        return sum(self.counts.values())

    def summary(self):
        results = [game.result for game in self.games]
        faults = ", ".join(f"{name} {count}" for name, count in self.counts.items())
        return (f"games {len(self.games)}, {faults}, white {results.count('1-0')}, "
                f"black {results.count('0-1')}, draws {results.count('1/2-1/2')}")


def name_and_value(text):
    name, separator, value = text.partition("=")
    if not separator:
        raise argparse.ArgumentTypeError("an option is written Name=Value")
    return name, value


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--engine", required=True, help="the first engine")
    parser.add_argument("--engine2", help="the second one; the first against itself if absent")
    parser.add_argument("--referee", help="engine whose console mode is asked for the rules")
    parser.add_argument("--games", type=int, default=2)
    parser.add_argument("--base", type=int, default=1000, help="clock in ms")
    parser.add_argument("--increment", type=int, default=10, help="ms for each move")
    parser.add_argument("--margin", type=int, default=0, help="ms that a clock may be overdrawn")
    parser.add_argument("--option", type=name_and_value, action="append", default=[],
                        metavar="Name=Value", help="UCI option of both engines")
    parser.add_argument("--option1", type=name_and_value, action="append", default=[])
    parser.add_argument("--option2", type=name_and_value, action="append", default=[])
    parser.add_argument("--chess960", action="store_true")
    parser.add_argument("--mixed", action="store_true", help="every second pair is Chess960")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--opening-plies", type=int, default=4, help="random moves at the start")
    parser.add_argument("--max-plies", type=int, default=400)
    parser.add_argument("--concurrency", type=int, default=1, help="games at the same time")
    parser.add_argument("--pgn", help="file to which the games are appended")
    parser.add_argument("--quiet", action="store_true", help="no line for a game without a fault")
    return parser.parse_args(arguments)


def main(arguments=None):
    match = Match(parse(arguments))
    match.run()
    print(f"first {match.points[0]:g}, second {match.points[1]:g}")
    print(match.summary())
    complete = len(match.games) == match.arguments.games
    return 0 if complete and match.faults() == 0 else 1


if __name__ == "__main__":
    sys.exit(main())
