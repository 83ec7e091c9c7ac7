"""Makes Nalimov tables of king and piece against king for the system tests.

Written apart from the program's own numbering, square by square, so that the two check each other. King and queen is
solved here; the other files hold one byte throughout.
"""
import functools

FILES = "abcdefgh"
DRAW = 0
BROKEN = 127
BANNER = b"Compressed by DATACOMP v 1.0 a notice\r\n"
BLOCK = 8192
NO_SLOTS = 25  # the size of the last block and 24 distances stand after the sizes of the blocks


def square(name):
    return FILES.index(name[0]) + 8 * (int(name[1]) - 1)


@functools.cache
def near(a, b):
    """Are the squares the same or neighbours."""
    return abs(a % 8 - b % 8) <= 1 and abs(a // 8 - b // 8) <= 1


KING_STEPS = [[b for b in range(64) if a != b and near(a, b)] for a in range(64)]


@functools.cache
def rays(piece, origin):
    """The squares before a slider, a list for each direction, the near ones first."""
    steps = {"b": ((1, 1), (1, -1), (-1, 1), (-1, -1)), "r": ((1, 0), (-1, 0), (0, 1), (0, -1))}
    steps["q"] = steps["b"] + steps["r"]
    found = []
    for files, ranks in steps[piece]:
        file, rank = origin % 8 + files, origin // 8 + ranks
        ray = []
        while 0 <= file < 8 and 0 <= rank < 8:
            ray.append(rank * 8 + file)
            file, rank = file + files, rank + ranks
        found.append(ray)
    return found


def attacks(piece, origin, blockers):
    """What the piece attacks, occupied squares included."""
    if piece == "n":
        return [s for s in range(64) if abs(s % 8 - origin % 8) * abs(s // 8 - origin // 8) == 2]
    found = []
    for ray in rays(piece, origin):
        for target in ray:
            found.append(target)
            if target in blockers:
                break
    return found


@functools.cache
def folding(mover, other):
    """The mirroring that brings the king of the side to move to where the numbering has it: square to square."""
    mask = (7 if mover % 8 > 3 else 0) ^ (56 if mover // 8 > 3 else 0)
    side = (mover ^ mask) % 8 - (mover ^ mask) // 8
    reflects = side < 0 or (side == 0 and (other ^ mask) % 8 < (other ^ mask) // 8)
    return [(s % 8 * 8 + s // 8 if reflects else s) for s in (s ^ mask for s in range(64))]


def king_pairs():
    """The pairs in the order of their numbers."""
    return [(a, b) for a in range(64) for b in range(64) if not near(a, b) and folding(a, b) == list(range(64))]


def places(piece, mover, other):
    """Where a piece of the side to move may stand: not where it touches the other king with its attack."""
    touched = [s for s in range(64) if other in attacks(piece, s, range(64))]
    return [s for s in range(64) if s not in (mover, other) and s not in touched]


class QueenEnding:
    """Distances to mate in plies. A position is the white king, the black king and the queen, folded by White's king."""

    def __init__(self):
        self.positions = [(a, b, q) for a, b in king_pairs() for q in range(64) if q not in (a, b)]
        self.won, self.lost = {}, {}
        self.solve()

    @staticmethod
    def fold(king, other, queen):
        image = folding(king, other)
        return image[king], image[other], image[queen]

    def replies(self, position):
        """Black's moves: positions, or nothing in the place of a captured queen."""
        king, other, queen = position
        attacked = set(attacks("q", queen, (king,)))
        for target in KING_STEPS[other]:
            if not near(target, king) and target not in attacked:
                yield None if target == queen else self.fold(king, target, queen)

    def moves(self, position):
        """White's moves from a position in which Black is not in check."""
        king, other, queen = position
        for target in attacks("q", queen, (king, other)):
            if target != king:
                yield king, other, target
        for target in KING_STEPS[king]:
            if target != queen and not near(target, other):
                yield self.fold(target, other, queen)

    def solve(self):
        before, left, mated = {}, {}, []
        for position in self.positions:
            replies = list(self.replies(position))
            left[position] = len(replies)
            for reply in replies:
                before.setdefault(reply, []).append(position)
            if not replies and position[1] in attacks("q", position[2], position[:1]):
                mated.append(position)
        reached = {}
        for position in self.positions:
            if position[1] not in attacks("q", position[2], position[:1]):
                for after in self.moves(position):
                    reached.setdefault(after, []).append(position)
        plies, last = 0, mated
        while last:
            self.lost.update(dict.fromkeys(last, plies))
            winning = {p for after in last for p in reached.get(after, ()) if p not in self.won}
            self.won.update(dict.fromkeys(winning, plies + 1))
            last = []
            for after in winning:
                for position in before.get(after, ()):
                    left[position] -= 1
                    if left[position] == 0:
                        last.append(position)
            plies += 2

    def files(self):
        """The contents of the files for White and for Black to move."""
        # The file ends with the last position in which Black is not in check.
        white, size = bytearray(), 0
        for king, other in king_pairs():
            for queen in places("q", king, other):
                position = king, other, queen
                if other in attacks("q", queen, (king,)):
                    white.append(BROKEN)
                else:
                    plies = self.won.get(position)
                    white.append(DRAW if plies is None else 127 - (plies + 1) // 2)
                    size = len(white)
        black = bytearray()
        for mover, king in king_pairs():
            for queen in range(64):
                if queen not in (mover, king):
                    plies = self.lost.get(self.fold(king, mover, queen))
                    black.append(DRAW if plies is None else (256 + plies // 2 - 126) % 256)
        return bytes(white[:size]), bytes(black)


def drawn_files(piece):
    """The files of a knight or a bishop, with which nobody wins."""
    count = sum(len(places(piece, mover, other)) for mover, other in king_pairs())
    return bytes(count), bytes(462 * 62)


def checksum(data):
    table = []
    for entry in range(256):
        for _ in range(8):
            entry = entry >> 1 if entry & 1 else entry >> 1 ^ 0xEDB88320
        table.append(entry)
    total = 0
    for byte in data:
        total = table[(byte ^ total) & 255] ^ total >> 8
    return total.to_bytes(4, "big")


def compressed(content, block_bits=13):
    """A compressed file all of whose blocks are kept as they are."""
    blocks = -(-len(content) // BLOCK)
    last = len(content) % BLOCK
    sizes = "0" * block_bits * (blocks - 1) + f"{last:0{block_bits}b}" * 2 + "0" * block_bits * (NO_SLOTS - 1)
    sizes += "0" * (-len(sizes) % 8)
    streams = int(sizes, 2).to_bytes(len(sizes) // 8, "big") + b"\x80"  # the code has no words
    size = 80 + 8 * blocks + len(streams) + 4
    header = BANNER.ljust(64, b"\0") + size.to_bytes(4, "big") + bytes((0, 0, block_bits, 24))
    header += blocks.to_bytes(4, "big") + (0x4001F5).to_bytes(4, "big") + bytes(8 * blocks) + streams
    return header + checksum(header) + content
