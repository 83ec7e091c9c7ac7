#!/usr/bin/env python3
"""Plays games between two engine processes over UCI and checks everything that they do.

    tools/play_games.py --engine build/release/brenquil --games 20 --base 1000 --increment 20
    tools/play_games.py --engine NEW --engine2 OLD --games 100 --chess960 --jobs 2 \\
        --option1 Threads=2 --pgn games.pgn

Colours alternate. The games begin with a few random moves (or, in Chess960, from random start
positions), the same for the same seed; each beginning is played twice, once with each colour.
tools/soak plays many games over a mix of settings.

The arbiter knows the rules by itself (chess_rules.py) and thinks while both clocks are stopped. Mate,
stalemate, threefold repetition, fifty moves, insufficient material and the limit of plies end a
game; so does a fault, which loses it:

    illegal       an illegal best move or ponder move, or a legal move that is refused
    time losses   the best move came after the clock had run out
    crashes       the process ended, or its last exit code was not 0
    hangs         no answer any more to anything
    lost lines    no answer to a line, but one to the next; or an answer too many

The last line counts them; the exit code is 0 only if there was none:

    games 20, illegal 0, time losses 0, crashes 0, hangs 0, lost lines 0, white 7, black 6, draws 7

The standard library of Python 3.8 is all that is needed.
"""
import argparse
import concurrent.futures
import ctypes
import dataclasses
import queue
import random
import signal
import subprocess
import sys
import tempfile
import threading
import time
from pathlib import Path

from chess_rules import START_FEN, Position, verdict

FAULTS = ("illegal", "time losses", "crashes", "hangs", "lost lines")
LOG_LINES = 200  # that are kept of the dialogue with each engine
START_SECONDS = 60  # in which a program must be there, however busy the machine

PRCTL = ctypes.CDLL(None).prctl if sys.platform == "linux" else None
PR_SET_PDEATHSIG = 1  # <sys/prctl.h>: the signal that a process gets when its parent ends


class Fault(Exception):
    """What an engine did wrong; `name` is one of FAULTS."""

    def __init__(self, name, text):
        super().__init__(text)
        self.name = name


class Silence(Exception):
    """No line came in time."""


def processor_seconds(process):
    """How long all threads of a running process have been on a processor; None where the system
    does not tell."""
    try:
        return time.clock_gettime(~process.pid << 3 | 2)  # the clock of another process, on Linux
    except (AttributeError, OSError):
        return None


def end_with_this_process():
    """For a new process: it is killed when the thread that started it ends, in whatever way; so that
    thread stays as long as the game. An engine does not end with its input, but asks for more of it
    for ever."""
    PRCTL(PR_SET_PDEATHSIG, signal.SIGKILL)


def is_end(line):
    """The last line of a search."""
    return line.startswith("bestmove ") or line.endswith("No best move!")


class UciProcess:
    """An engine process in a working directory of its own, read by lines with time limits.

    `patience`: seconds for an answer that does not depend on a clock.
    """

    def __init__(self, path, options=(), patience=60.0):
        self.patience = patience
        self.log = []
        self.lines = queue.Queue()
        self.directory = tempfile.TemporaryDirectory(prefix="brenquil-")
        self.process = subprocess.Popen(
            [str(Path(path).resolve())], cwd=self.directory.name, stdin=subprocess.PIPE,
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, bufsize=0,
            preexec_fn=end_with_this_process if PRCTL else None)
        threading.Thread(target=self._read, daemon=True).start()
        try:
            self.send("uci")
            self.wait_for(lambda line: line == "uciok", START_SECONDS)
            for name, value in options:
                self.send(f"setoption name {name} value {value}")
        except Silence:
            self.kill()
            raise Fault("hangs", f"no answer to \"uci\" within {START_SECONDS} s") from None
        except Fault:
            self.kill()
            raise

    def _read(self):
        """The moment of a line is taken here, while the main thread of this process sleeps."""
        for line in self.process.stdout:
            self.lines.put((time.monotonic(), line.decode("latin-1").rstrip("\r\n")))
        self.lines.put((time.monotonic(), None))

    def _note(self, text):
        self.log.append(text)
        del self.log[:-LOG_LINES]

    def send(self, text):
        self._note("> " + text)
        try:
            self.process.stdin.write(text.encode("latin-1") + b"\n")
            self.process.stdin.flush()
        except OSError as error:
            raise Fault("crashes", f"the process does not listen any more: {error}") from error

    def wait_for(self, is_wanted, seconds):
        """Reads up to the first line that is wanted; all lines, and the moment of the last."""
        end = time.monotonic() + seconds
        lines = []
        while True:
            try:
                moment, text = self.lines.get(timeout=max(end - time.monotonic(), 0.001))
            except queue.Empty:
                raise Silence from None
            if text is None:
                self.lines.put((moment, None))
                raise Fault("crashes", f"the process has ended with code {self.process.wait(10)}")
            self._note("< " + text)
            lines.append(text)
            if is_wanted(text):
                return lines, moment

    def expect(self, is_wanted):
        """As wait_for, for the answer to the line that has just been sent."""
        try:
            return self.wait_for(is_wanted, self.patience)
        except Silence:
            raise self._silent() from None

    def _silent(self):
        """The fault of a process that owes an answer: does it still answer the next line?"""
        last = next((line for line in reversed(self.log) if line.startswith("> ")), "")
        self.send("isready")
        try:
            self.wait_for(lambda line: line == "readyok", self.patience)
        except Silence:
            return Fault("hangs", f"no answer within {self.patience:g} s to \"{last}\" and after")
        return Fault("lost lines", f"no answer to \"{last}\", but to the next line")

    def synchronise(self):
        """Waits until everything sent has been obeyed; the lines that came on it."""
        self.send("isready")
        lines, _ = self.expect(lambda line: line == "readyok")
        for line in lines[:-1]:
            if is_end(line):
                raise Fault("lost lines", f"\"{line}\" belongs to no search")
        return lines[:-1]

    def think(self, go, clock):
        """Starts a search on a clock in seconds; its lines, how long it took, in seconds, and how
        much of that the process was on a processor, None if that is not known."""
        busy_before = processor_seconds(self.process)
        begin = time.monotonic()
        self.send(go)
        try:
            lines, moment = self.wait_for(is_end, clock + self.patience)
        except Silence:
            self.send("stop")
            try:
                lines, moment = self.wait_for(is_end, self.patience)
            except Silence:
                raise self._silent() from None
        if "readyok" in lines:
            raise Fault("lost lines", "an answer to isready too many")
        busy = processor_seconds(self.process)
        return lines, moment - begin, None if None in (busy, busy_before) else busy - busy_before

    def kill(self):
        self.process.kill()
        self.process.wait()
        self.process.stdin.close()
        self.directory.cleanup()

    def close(self):
        """Ends the process in the way it should end."""
        try:
            self.send("quit")
            self.process.stdin.close()
            code = self.process.wait(self.patience)
        except subprocess.TimeoutExpired:
            raise Fault("hangs", "the process goes on after quit") from None
        except OSError:
            code = self.process.wait(self.patience)
        finally:
            self.kill()
        if code != 0:
            raise Fault("crashes", f"exit code {code}")


@dataclasses.dataclass
class Plan:
    """All that one game needs. Pairs stand for white and black."""

    number: int
    engines: tuple  # paths
    options: tuple  # lists of (name, value)
    fen: str = START_FEN
    moves: tuple = ()
    chess960: bool = False
    base: float = 1000  # clock in ms
    increment: float = 10
    margin: float = 0  # ms that a clock may be overdrawn
    max_plies: int = 400
    patience: float = 60.0
    setting: str = ""  # a name for the account


@dataclasses.dataclass
class Outcome:
    """How a game ended. `fault` is one of FAULTS or None; then `log` is the dialogue before it."""

    plan: Plan
    result: str = "*"
    reason: str = ""
    fault: str = None
    log: list = dataclasses.field(default_factory=list)
    moves: list = dataclasses.field(default_factory=list)
    least_ms: float = float("inf")  # the least that a clock had left when a move had been made

    def lose(self, side, fault, log):
        self.result = ("0-1", "1-0")[side]
        self.reason = f"{('white', 'black')[side]}: {fault}"
        self.fault = fault.name
        self.log = list(log)

    def text(self, names):
        """The game in the manner of PGN, with its moves as squares."""
        tags = [("Event", "play_games"), ("Round", self.plan.number), ("White", names[0]),
                ("Black", names[1]), ("Result", self.result), ("FEN", self.plan.fen),
                ("Termination", self.reason)]
        text = "".join(f'[{tag} "{value}"]\n' for tag, value in tags) + "\n"
        words = []
        for i, move in enumerate(self.moves):
            if i % 2 == 0:
                words.append(f"{i // 2 + 1}.")
            words.append(move)
        return text + " ".join(words + [self.result]) + "\n"


class Game:
    """Plays one plan on two running engines."""

    def __init__(self, plan, engines, outcome):
        self.plan = plan
        self.engines = engines
        self.outcome = outcome
        self.clocks = [float(plan.base)] * 2
        self.position = Position(plan.fen)
        self.keys = [self.position.key()]
        for move in plan.moves:
            self._play(move, self.position.moves(plan.chess960))

    def _play(self, text, legal):
        self.outcome.moves.append(text)
        self.position = self.position.after(legal[text])
        self.keys.append(self.position.key())

    def play(self):
        for side in range(2):
            if not self._guarded(side, self._begin):
                return
        while True:
            legal = self.position.moves(self.plan.chess960)
            end = verdict(self.position, legal, self.keys, len(self.outcome.moves),
                          self.plan.max_plies)
            if end:
                self.outcome.result, self.outcome.reason = end
                break
            side = 0 if self.position.white else 1
            if not self._guarded(side, self._move, legal):
                return
        for side in range(2):
            self._guarded(side, UciProcess.synchronise)

    def _guarded(self, side, action, *arguments):
        """Does something with an engine; false when that went wrong, which loses the game."""
        try:
            action(self.engines[side], *arguments)
            return True
        except Fault as fault:
            self.outcome.lose(side, fault, self.engines[side].log)
            return False

    @staticmethod
    def _begin(engine):
        engine.send("ucinewgame")
        engine.synchronise()

    def _move(self, engine, legal):
        side = 0 if self.position.white else 1
        moves = " moves " + " ".join(self.outcome.moves) if self.outcome.moves else ""
        engine.send(f"position fen {self.plan.fen}{moves}")
        refused = [line for line in engine.synchronise() if "Illegal move" in line]
        if refused:
            raise Fault("illegal", f"a legal move is refused: {refused[0]}")
        increment = int(self.plan.increment)
        lines, used, busy = engine.think(
            f"go wtime {int(self.clocks[0])} btime {int(self.clocks[1])} "
            f"winc {increment} binc {increment}", self.clocks[side] / 1000)
        left = self.clocks[side] - used * 1000
        self.outcome.least_ms = min(self.outcome.least_ms, left)
        move = self._checked_move(lines[-1], legal)
        if left < -self.plan.margin:
            text = f"{move} took {used * 1000:.0f} ms, {self.clocks[side]:.0f} ms were left"
            if busy is not None:
                text += f"; the process was on a processor for {busy * 1000:.0f} ms"
            raise Fault("time losses", text)
        self.clocks[side] = max(left, 0.0) + increment
        self._play(move, legal)

    def _checked_move(self, line, legal):
        words = line.split()
        if words[0] != "bestmove" or len(words) not in (2, 4):
            raise Fault("illegal", f"no move: {line}")
        if words[1] not in legal:
            raise Fault("illegal", f"{words[1]} is none of {' '.join(legal)}")
        if len(words) == 4:
            replies = self.position.after(legal[words[1]]).moves(self.plan.chess960)
            if words[3] not in replies:
                raise Fault("illegal", f"ponder move {words[3]} after {words[1]} is none of "
                                       f"{' '.join(replies)}")
        return words[1]


def play_game(plan):
    """Starts two engines, plays a game and ends them; the outcome."""
    outcome = Outcome(plan)
    engines = []
    for side in range(2):
        options = [("UCI_Chess960", "true" if plan.chess960 else "false"), *plan.options[side]]
        try:
            engines.append(UciProcess(plan.engines[side], options, plan.patience))
        except (Fault, OSError) as fault:
            if isinstance(fault, OSError):
                fault = Fault("crashes", f"the process does not start: {fault}")
            outcome.lose(side, fault, [])
            break
    if len(engines) == 2:
        Game(plan, engines, outcome).play()
    for side, engine in enumerate(engines):
        if outcome.fault:
            engine.kill()
            continue
        try:
            engine.close()
        except Fault as fault:
            outcome.lose(side, fault, engine.log)
    return outcome


def play_all(plans, jobs):
    """Plays games, this many at the same time, and yields each outcome as it comes. Every job is a
    process of its own, so that no arbiter keeps another from reading the clock."""
    if jobs <= 1:
        yield from map(play_game, plans)
        return
    with concurrent.futures.ProcessPoolExecutor(jobs) as pool:
        games = [pool.submit(play_game, plan) for plan in plans]
        for game in concurrent.futures.as_completed(games):
            yield game.result()


def chess960_fen(source, by_file=True):
    """A random start position; castling rights by file letters or as KQkq."""
    rank = [""] * 8
    rank[2 * source.randrange(4)] = "B"
    rank[2 * source.randrange(4) + 1] = "B"
    for letter in "QNN":
        rank[source.choice([i for i in range(8) if not rank[i]])] = letter
    for letter, place in zip("RKR", [i for i in range(8) if not rank[i]]):
        rank[place] = letter
    text = "".join(rank)
    rights = "ABCDEFGH"[text.rindex("R")] + "ABCDEFGH"[text.index("R")] if by_file else "KQ"
    return f"{text.lower()}/pppppppp/8/8/8/8/PPPPPPPP/{text} w {rights}{rights.lower()} - 0 1"


def random_opening(source, fen, plies, chess960):
    """This many random moves from a position, never to one that has none."""
    while True:
        position = Position(fen)
        moves = []
        for _ in range(plies):
            legal = position.moves(chess960)
            if not legal:
                break
            moves.append(source.choice(list(legal)))
            position = position.after(legal[moves[-1]])
        if position.moves(chess960):
            return tuple(moves)


def counts_of(outcomes):
    """How many games had each fault."""
    return {name: sum(outcome.fault == name for outcome in outcomes) for name in FAULTS}


def summary(outcomes):
    results = [outcome.result for outcome in outcomes]
    faults = ", ".join(f"{name} {count}" for name, count in counts_of(outcomes).items())
    return (f"games {len(outcomes)}, {faults}, white {results.count('1-0')}, "
            f"black {results.count('0-1')}, draws {results.count('1/2-1/2')}")


def plans_of(arguments):
    """The games; numbers with an odd second half have the engines exchanged."""
    own = [arguments.option + arguments.option1, arguments.option + arguments.option2]
    paths = [arguments.engine, arguments.engine2 or arguments.engine]
    for pair in range((arguments.games + 1) // 2):
        chess960 = arguments.chess960 or (arguments.mixed and pair % 2 == 1)
        source = random.Random(f"{arguments.seed} {pair}")
        fen = chess960_fen(source) if chess960 else START_FEN
        moves = random_opening(source, fen, arguments.opening_plies, chess960)
        for half in range(2):
            if 2 * pair + half < arguments.games:
                yield Plan(2 * pair + half + 1, (paths[half], paths[1 - half]),
                           (own[half], own[1 - half]), fen, moves, chess960, arguments.base,
                           arguments.increment, arguments.margin, arguments.max_plies,
                           arguments.patience)


def name_and_value(text):
    name, separator, value = text.partition("=")
    if not separator:
        raise argparse.ArgumentTypeError("an option is written Name=Value")
    return name, value


def parse(arguments):
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--engine", required=True, help="the first engine")
    parser.add_argument("--engine2", help="the second one; the first against itself if absent")
    parser.add_argument("--games", type=int, default=2)
    parser.add_argument("--base", type=int, default=1000, help="clock in ms")
    parser.add_argument("--increment", type=int, default=10, help="ms for each move")
    parser.add_argument("--margin", type=int, default=0, help="ms that a clock may be overdrawn")
    parser.add_argument("--patience", type=float, default=60.0,
                        help="seconds for an answer that no clock limits")
    parser.add_argument("--option", type=name_and_value, action="append", default=[],
                        metavar="Name=Value", help="UCI option of both engines")
    parser.add_argument("--option1", type=name_and_value, action="append", default=[])
    parser.add_argument("--option2", type=name_and_value, action="append", default=[])
    parser.add_argument("--chess960", action="store_true")
    parser.add_argument("--mixed", action="store_true", help="every second pair is Chess960")
    parser.add_argument("--seed", default="1")
    parser.add_argument("--opening-plies", type=int, default=4, help="random moves at the start")
    parser.add_argument("--max-plies", type=int, default=400)
    parser.add_argument("--jobs", type=int, default=1, help="games at the same time")
    parser.add_argument("--pgn", help="file to which the games are appended")
    parser.add_argument("--quiet", action="store_true", help="no line for a game without a fault")
    return parser.parse_args(arguments)


def main(arguments=None):
    arguments = parse(arguments)
    outcomes = []
    points = [0.0, 0.0]  # of the first and of the second engine
    for outcome in play_all(plans_of(arguments), arguments.jobs):
        outcomes.append(outcome)
        number = outcome.plan.number
        if outcome.fault:
            print("\n".join(outcome.log))
        if outcome.fault or not arguments.quiet:
            print(f"game {number}: {outcome.result}, {outcome.reason}, {len(outcome.moves)} plies",
                  flush=True)
        white = {"1-0": 1.0, "0-1": 0.0}.get(outcome.result, 0.5)
        first = 1 - number % 2  # which engine had white
        points[first] += white
        points[1 - first] += 1.0 - white
        if arguments.pgn:
            names = ["second", "first"] if first else ["first", "second"]
            with open(arguments.pgn, "a", encoding="ascii") as file:
                file.write(outcome.text(names) + "\n")
    print(f"first {points[0]:g}, second {points[1]:g}")
    print(summary(outcomes))
    return 1 if any(counts_of(outcomes).values()) else 0


if __name__ == "__main__":
    sys.exit(main())
