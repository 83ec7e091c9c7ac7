"""The rules of chess and Chess960, for tools that judge what an engine does.

Slow and plain on purpose, and independent of any engine: a board of 64 letters, moves found by
walking over it, legality by looking at the king afterwards.

    position = Position()                       # the start, or Position(fen)
    moves = position.moves(chess960=False)      # {"e2e4": move, ...}: the legal ones by their text
    position = position.after(moves["e2e4"])

Squares are numbered from 0 (a1) to 63 (h8).
"""

START_FEN = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"
CASTLING = "castling"  # stands where other moves have the letter of a promotion
EMPTY = "."

KNIGHT_STEPS = [(1, 2), (2, 1), (2, -1), (1, -2), (-1, -2), (-2, -1), (-2, 1), (-1, 2)]
STRAIGHT_STEPS = [(0, 1), (1, 0), (0, -1), (-1, 0)]
DIAGONAL_STEPS = [(1, 1), (1, -1), (-1, -1), (-1, 1)]


def walk(square, step, length=8):
    """The squares that are reached by repeating a step, up to the edge."""
    file, rank = square % 8, square // 8
    squares = []
    for _ in range(length):
        file, rank = file + step[0], rank + step[1]
        if not (0 <= file < 8 and 0 <= rank < 8):
            break
        squares.append(8 * rank + file)
    return squares


def table(steps, length):
    """For each square the walks of all steps that lead anywhere."""
    return [[way for way in (walk(square, step, length) for step in steps) if way]
            for square in range(64)]


KNIGHT_WAYS = table(KNIGHT_STEPS, 1)
KING_WAYS = table(STRAIGHT_STEPS + DIAGONAL_STEPS, 1)
STRAIGHT_WAYS = table(STRAIGHT_STEPS, 8)
DIAGONAL_WAYS = table(DIAGONAL_STEPS, 8)
QUEEN_WAYS = table(STRAIGHT_STEPS + DIAGONAL_STEPS, 8)
WAYS = {"n": KNIGHT_WAYS, "k": KING_WAYS, "r": STRAIGHT_WAYS, "b": DIAGONAL_WAYS, "q": QUEEN_WAYS}
# By colour (False is black): the squares that a pawn on a square attacks.
PAWN_TARGETS = {white: [[way[0] for way in ways]
                        for ways in table([(-1, 1 if white else -1), (1, 1 if white else -1)], 1)]
                for white in (False, True)}


def square_name(square):
    return "abcdefgh"[square % 8] + str(square // 8 + 1)


def square_of(name):
    return "abcdefgh".index(name[0]) + 8 * (int(name[1]) - 1)


def board_of(fen):
    """Squares 0 to 63: the letters of the men and "." for none."""
    squares = []
    for row in reversed(fen.split()[0].split("/")):
        for letter in row:
            squares.extend(EMPTY * int(letter) if letter.isdigit() else letter)
    return squares


def is_attacked(board, square, by_white):
    """Whether a man of that colour attacks the square."""
    letters = str.upper if by_white else str.lower
    knight, king = letters("n"), letters("k")
    if any(board[way[0]] == knight for way in KNIGHT_WAYS[square]):
        return True
    if any(board[way[0]] == king for way in KING_WAYS[square]):
        return True
    # A pawn attacks a square from where a pawn of the other colour there would attack it.
    if any(board[other] == letters("p") for other in PAWN_TARGETS[not by_white][square]):
        return True
    for ways, attackers in ((STRAIGHT_WAYS, letters("rq")), (DIAGONAL_WAYS, letters("bq"))):
        for way in ways[square]:
            for other in way:
                if board[other] != EMPTY:
                    if board[other] in attackers:
                        return True
                    break
    return False


def is_insufficient(board):
    """Neither side can mate: bare kings, one minor piece, or bishops on squares of one colour."""
    men = [(letter.lower(), square) for square, letter in enumerate(board)
           if letter not in ".kK"]
    if not men or (len(men) == 1 and men[0][0] in "bn"):
        return True
    return (all(letter == "b" for letter, _ in men)
            and len({(square // 8 + square % 8) % 2 for _, square in men}) == 1)


def texts_of(move, chess960):
    """How a move is written; castling in Chess960 in two ways."""
    origin, target, promotion = move
    if promotion != CASTLING:
        return (square_name(origin) + square_name(target) + promotion,)
    if chess960:
        return square_name(origin) + square_name(target), "O-O" if target > origin else "O-O-O"
    king_to = origin // 8 * 8 + (6 if target > origin else 2)
    return (square_name(origin) + square_name(king_to),)


class Position:
    """A lawful position. Never changes; `after` makes the next one.

    `board`: 64 letters. `white`: who is to move. `rooks`: the squares of the rooks that may still
    castle. `passant`: the square behind a pawn that may be taken in passing, else None. `clock`:
    plies since a capture or pawn move.
    """

    def __init__(self, fen=START_FEN):
        fields = fen.split() + ["w", "-", "-", "0", "1"][len(fen.split()) - 1:]
        self.board = board_of(fen)
        self.white = fields[1] == "w"
        self.rooks = frozenset(self._rook_of(letter) for letter in fields[2] if letter != "-")
        self.passant = None if fields[3] == "-" else square_of(fields[3])
        self.clock = int(fields[4])
        self.number = int(fields[5])
        self._drop_idle_passant()

    def _rook_of(self, letter):
        """The rook that a letter of the castling field means: a file, or the outermost one."""
        back = 0 if letter.isupper() else 56
        if letter.lower() not in "kq":
            return back + "abcdefgh".index(letter.lower())
        king = self.board.index("K" if letter.isupper() else "k")
        rook = "R" if letter.isupper() else "r"
        way = range(back + 7, king, -1) if letter.lower() == "k" else range(back, king)
        return next(square for square in way if self.board[square] == rook)

    def _drop_idle_passant(self):
        """A square that nobody can lawfully take on makes no difference between positions."""
        if self.passant is not None and not any(
                move[1] == self.passant and self.board[move[0]] in "pP" for move in self._legal()):
            self.passant = None

    def king(self, white):
        return self.board.index("K" if white else "k")

    def in_check(self):
        return is_attacked(self.board, self.king(self.white), not self.white)

    def is_own(self, square):
        letter = self.board[square]
        return letter != EMPTY and letter.isupper() == self.white

    def _pawn_moves(self, square):
        """The targets of a pawn, without regard to promotion."""
        step = 8 if self.white else -8
        if self.board[square + step] == EMPTY:
            yield square + step
            if square // 8 == (1 if self.white else 6) and self.board[square + 2 * step] == EMPTY:
                yield square + 2 * step
        for target in PAWN_TARGETS[self.white][square]:
            if target == self.passant or (self.board[target] != EMPTY and not self.is_own(target)):
                yield target

    def _castling_moves(self):
        """Castling, as the king taking his rook: all squares on both ways free, the king's safe."""
        back = 0 if self.white else 56
        king = self.king(self.white)
        for rook in self.rooks:
            if rook // 8 != back // 8:
                continue
            right = rook > king
            king_to, rook_to = back + (6 if right else 2), back + (5 if right else 3)
            squares = range(min(king, king_to, rook, rook_to),
                            max(king, king_to, rook, rook_to) + 1)
            is_free = all(self.board[square] == EMPTY or square in (king, rook)
                          for square in squares)
            way = range(min(king, king_to), max(king, king_to) + 1)
            if is_free and not any(is_attacked(self.board, square, not self.white)
                                   for square in way):
                yield king, rook, CASTLING

    def _pseudo_moves(self, squares=range(64)):
        for square in squares:
            if not self.is_own(square):
                continue
            kind = self.board[square].lower()
            if kind == "p":
                for target in self._pawn_moves(square):
                    for promotion in "qrbn" if target // 8 in (0, 7) else ("",):
                        yield square, target, promotion
                continue
            for way in WAYS[kind][square]:
                for target in way:
                    if self.is_own(target):
                        break
                    yield square, target, ""
                    if self.board[target] != EMPTY:
                        break

    def _board_after(self, move):
        origin, target, promotion = move
        board = self.board[:]
        man = board[origin]
        board[origin] = EMPTY
        if promotion == CASTLING:
            rook = board[target]
            board[target] = EMPTY
            back = origin // 8 * 8
            right = target > origin
            board[back + (6 if right else 2)] = man
            board[back + (5 if right else 3)] = rook
            return board
        if man in "pP" and target == self.passant:
            board[target - 8 if self.white else target + 8] = EMPTY
        if promotion:
            man = promotion.upper() if self.white else promotion
        board[target] = man
        return board

    def _is_legal(self, move):
        board = self._board_after(move)
        return not is_attacked(board, board.index("K" if self.white else "k"), not self.white)

    def _legal(self):
        return [move for move in [*self._pseudo_moves(), *self._castling_moves()]
                if self._is_legal(move)]

    def moves(self, chess960):
        """The legal moves by their texts. In Chess960 castling has two: king takes rook, and its
        name; in standard chess the one of the king's squares."""
        return {text: move for move in self._legal() for text in texts_of(move, chess960)}

    def move(self, text, chess960):
        """The legal move of that text, or None: what `moves` has, found without all the others."""
        if text[:1] == "O":
            squares = [self.king(self.white)]
        elif len(text) >= 2 and text[0] in "abcdefgh" and text[1] in "12345678":
            squares = [square_of(text)]
        else:
            return None
        moves = [*self._pseudo_moves(squares)]
        if squares[0] == self.king(self.white):
            moves += self._castling_moves()
        return next((move for move in moves
                     if text in texts_of(move, chess960) and self._is_legal(move)), None)

    def after(self, move):
        """The position that a legal move leads to."""
        origin, target, promotion = move
        man = self.board[origin]
        is_capture = promotion != CASTLING and self.board[target] != EMPTY
        back = 0 if self.white else 7
        after = Position.__new__(Position)
        after.board = self._board_after(move)
        after.white = not self.white
        after.rooks = frozenset(rook for rook in self.rooks if rook not in (origin, target)
                                and not (man in "kK" and rook // 8 == back))
        after.passant = None
        if man in "pP" and abs(target - origin) == 16:
            after.passant = (origin + target) // 2
        after.clock = 0 if is_capture or man in "pP" else self.clock + 1
        after.number = self.number + (0 if self.white else 1)
        after._drop_idle_passant()
        return after

    def key(self):
        """Equal for positions that count as repetitions of one another."""
        return "".join(self.board), self.white, self.rooks, self.passant

    def fen(self, chess960=False):
        """The FEN; the castling field in file letters for Chess960, else in K, Q, k, q."""
        rows = []
        for rank in range(7, -1, -1):
            row = "".join(self.board[8 * rank:8 * rank + 8])
            for count in range(8, 0, -1):
                row = row.replace(EMPTY * count, str(count))
            rows.append(row)
        letters = ""
        for white in (True, False):
            own = sorted((rook for rook in self.rooks if (rook < 8) == white), reverse=True)
            for rook in own:
                letter = ("ABCDEFGH"[rook % 8] if chess960
                          else "K" if rook > self.king(white) else "Q")
                letters += letter if white else letter.lower()
        return " ".join(["/".join(rows), "w" if self.white else "b", letters or "-",
                         "-" if self.passant is None else square_name(self.passant),
                         str(self.clock), str(self.number)])


def verdict(position, has_move, keys, plies, max_plies):
    """Result and reason if the game is over, else None. `keys` are those of all positions so far,
    this one included; games are not played beyond `max_plies`."""
    if not has_move:
        if position.in_check():
            return ("0-1" if position.white else "1-0"), "mate"
        return "1/2-1/2", "stalemate"
    if keys.count(position.key()) >= 3:
        return "1/2-1/2", "threefold repetition"
    if position.clock >= 100:
        return "1/2-1/2", "fifty moves"
    if is_insufficient(position.board):
        return "1/2-1/2", "insufficient material"
    if plies >= max_plies:
        return "1/2-1/2", f"{max_plies} plies"
    return None
