"""What a match tool's PGN files say of the strength of an engine: results, Elo differences, a rating.

`read_games` takes the files of fastchess 1.8.2 apart, `Match` gathers the games against one opponent, `estimate` puts
several matches together. Differences of Elo are those of the logistic curve: 400 points are odds of ten to one.

Games in which a program crashed or hung say nothing of strength and are left out, whoever won them; they are counted
by whose fault it was: that of the side to which the tool gave the loss. A loss on time or by an illegal move is a loss.
"""
import collections
import math
import re

POINTS = {"1-0": 1.0, "0-1": 0.0, "1/2-1/2": 0.5}  # for White
LEFT_OUT = {"abandoned": "crashed or hung"}
TOLD = {"time forfeit": "lost on time", "illegal move": "made an illegal move"}
USUAL = {"normal", "adjudication"}
TAG = re.compile(r'^\[(\w+) "([^"]*)"\]$', re.MULTILINE)
NORMAL_QUANTILE = 1.96  # of a 95 % interval
STEEPNESS = math.log(10) / 400  # of the logistic curve: its slope is this * score * (1 - score)
WIDEST = 4000.0  # Elo; no difference is looked for beyond

Game = collections.namedtuple("Game", "white black result termination opening round time_control")


class NotReadable(Exception):
    """A file that is not a list of games."""


def games_of(text):
    """The games of a PGN text, with no more than their tags looked at."""
    for part in re.split(r"(?m)^(?=\[Event )", text):
        tags = dict(TAG.findall(part))
        if not tags:
            continue
        if not {"White", "Black", "Result"} <= set(tags):
            raise NotReadable("a game without the tags White, Black and Result")
        both = tags.get("TimeControl", "?")
        yield Game(tags["White"], tags["Black"], tags["Result"], tags.get("Termination", "normal"),
                   " ".join(tags.get("FEN", "start").split()[:4]), tags.get("Round"),
                   {tags["White"]: tags.get("WhiteTimeControl", both), tags["Black"]: tags.get("BlackTimeControl", both)})


def read_games(path):
    try:
        games = list(games_of(path.read_text(encoding="utf-8", errors="replace")))
    except NotReadable as error:
        raise NotReadable(f"{path}: {error}") from None
    if not games:
        raise NotReadable(f"{path}: no games")
    return games


def expected_score(difference):
    return 1 / (1 + 10 ** (-difference / 400))


def difference_of(score):
    """Elo at which this score is expected; infinite at 0 and 1."""
    if score <= 0:
        return -math.inf
    return math.inf if score >= 1 else -400 * math.log10(1 / score - 1)


class Match:
    """The games of one engine against one opponent."""

    def __init__(self, engine, opponent):
        self.engine, self.opponent = engine, opponent
        self.won = self.drawn = self.lost = 0
        self.unfinished = 0
        self.left_out = collections.Counter()  # how often by (whose fault, what)
        self.told = collections.Counter()  # the same of games that count
        self.time_controls = set()  # of the engine
        self.pairs = []  # the points of games with one opening: two values, or one where the other is missing
        self.open_pairs_ = {}

    def add(self, game):
        self.time_controls.add(game.time_control[self.engine])
        if game.result not in POINTS:  # interrupted
            self.unfinished += 1
            return
        loser = {"1-0": game.black, "0-1": game.white}.get(game.result, "nobody")
        if game.termination in LEFT_OUT:
            self.left_out[loser, LEFT_OUT[game.termination]] += 1
            return
        if game.termination in TOLD:
            self.told[loser, TOLD[game.termination]] += 1
        elif game.termination not in USUAL:
            self.told["the match tool", f"says '{game.termination}'"] += 1
        is_white = game.white == self.engine
        points = POINTS[game.result] if is_white else 1 - POINTS[game.result]
        self.won += points == 1
        self.drawn += points == 0.5
        self.lost += points == 0
        # The other game of a pair has the same opening and round, and colours reversed. A match that was interrupted
        # and went on has other openings in the rounds of the same number.
        other = self.open_pairs_.pop((game.opening, game.round, not is_white), None)
        if other is not None:
            other.append(points)
        else:
            self.pairs.append([points])
            self.open_pairs_[game.opening, game.round, is_white] = self.pairs[-1]

    @property
    def games(self):
        return self.won + self.drawn + self.lost

    @property
    def score(self):
        """The share of the points."""
        return (self.won + self.drawn / 2) / self.games

    @property
    def error(self):
        """The standard error of the score, from how much the pairs differ; 0 where they all are alike.

        The two games of an opening are not independent, so pairs are the unit: with complete ones alone this is the
        variance of the five results that a pair can have.
        """
        if len(self.pairs) < 2:
            return 0.0
        squares = sum(sum(points - self.score for points in pair) ** 2 for pair in self.pairs)
        return math.sqrt(squares * len(self.pairs) / (len(self.pairs) - 1)) / self.games

    def interval(self):
        """Elo difference with the ends of its 95 % interval."""
        if self.error > 0:
            low, high = (self.score + sign * NORMAL_QUANTILE * self.error for sign in (-1, 1))
        else:
            # Pairs that are all alike show no variance. What can be said: a share of other pairs is excluded if it
            # is so large that seeing none of them had a chance of 2.5 % or less.
            alike = 0.025 ** (1 / len(self.pairs))
            low, high = self.score * alike, 1 - (1 - self.score) * alike
        return tuple(difference_of(score) for score in (self.score, low, high))


def matches_of(engine, games):
    """The matches of an engine, by opponent, in the order in which they first come."""
    matches = {}
    for game in games:
        if engine not in (game.white, game.black):
            raise NotReadable(f"a game of {game.white} and {game.black}, none of {engine}")
        opponent = game.black if game.white == engine else game.white
        matches.setdefault(opponent, Match(engine, opponent)).add(game)
    return matches


def root(rising, low, high):
    """Where a function that rises is 0, or the end of the range that is nearest to it."""
    while high - low > 1e-6:
        middle = (low + high) / 2
        if rising(middle) < 0:
            low = middle
        else:
            high = middle
    return (low + high) / 2


def estimate(matches):
    """The likeliest rating, with its standard error, by matches against opponents with (rating, standard error).

    The ratings of the opponents are unknowns as well, drawn from normal distributions around what the list says; all
    are found together. A match weighs as many games as its pairs say that it is worth. Where the opponents contradict
    each other by more than their errors explain, the error grows by as much.
    """
    def weight(match):
        inside = match.score * (1 - match.score)
        return inside / match.error ** 2 if inside > 0 and match.error > 0 else match.games

    def rating_of_opponent(own, match, rating, error):
        pull = error ** 2 * weight(match) * STEEPNESS
        return root(lambda other: other - rating + pull * (match.score - expected_score(own - other)),
                    rating - WIDEST, rating + WIDEST)

    def slope(own):
        return sum(weight(match) * (expected_score(own - rating_of_opponent(own, match, rating, error)) - match.score)
                   for match, (rating, error) in matches)

    listed = [rating for _, (rating, _) in matches]
    own = root(slope, min(listed) - WIDEST / 2, max(listed) + WIDEST / 2)
    information, contradiction, finite = 0.0, 0.0, 0
    for match, (rating, error) in matches:
        score = expected_score(own - rating_of_opponent(own, match, rating, error))
        variance = 1 / (weight(match) * STEEPNESS ** 2 * score * (1 - score)) + error ** 2
        information += 1 / variance
        if 0 < match.score < 1:
            finite += 1
            contradiction += (rating + difference_of(match.score) - own) ** 2 / variance
    growth = math.sqrt(max(1.0, contradiction / (finite - 1))) if finite > 1 else 1.0
    return own, growth / math.sqrt(information)
