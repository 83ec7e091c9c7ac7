#include "board/position.h"

#include "board/polyglot_keys.h"
#include "platform/bits.h"

namespace brenquil {

namespace {

constexpr std::uint8_t AllRights = 15;

/// The numbers of a set of castling rights, XORed; by the four bits of the set.
constexpr std::array<std::uint64_t, 16> CastlingKeys = [] {
    std::array<std::uint64_t, 16> keys{};
    for (std::size_t rights = 0; rights < keys.size(); ++rights) {
        for (std::size_t index = 0; index < CastlingRightsCount; ++index) {
            if ((rights >> index & 1U) != 0) {
                keys[rights] ^= PolyglotKeys[CastlingKeyOffset + index];
            }
        }
    }
    return keys;
}();

/// Where the pawn of `victim` stands that an en passant capture on `target` takes.
constexpr Square EnPassantVictimSquare(Square target, Colour victim) noexcept {
    return target + Forward(victim);
}

constexpr bool IsPawnOrKing(Piece piece) noexcept {
    return TypeOf(piece) == Pawn || TypeOf(piece) == King;
}

/// Queen's rook to king's rook, as both sides set them up.
constexpr LineTable<PieceType> HomeRankMen = {
    {Rook, Knight, Bishop, Queen, King, Bishop, Knight, Rook}};

}  // namespace

CPosition::CPosition() {
    Clear();
    for (const Colour colour : {White, Black}) {
        const int homeRank = HomeRank(colour);
        for (int file = 0; file < 8; ++file) {
            const Square home = MakeSquare(file, homeRank);
            board[home] = MakePiece(HomeRankMen[file], colour);
            board[home + Forward(colour)] = MakePiece(Pawn, colour);
        }
    }
    AddCastlingByLetter(WhiteKingSide, 'K');
    AddCastlingByLetter(WhiteQueenSide, 'Q');
    AddCastlingByLetter(BlackKingSide, 'k');
    AddCastlingByLetter(BlackQueenSide, 'q');
    SetupDerived();
}

void CPosition::Clear() noexcept {
    pieces.fill(0);
    colours.fill(0);
    key = 0;
    pawnKingKey = 0;
    ply = 1;
    halfmoveClock = 0;
    sideToMove = White;
    inCheck = false;
    castlingRights = 0;
    enPassant = SquareNone;
    board.Fill(PieceNone);
    colourCount.fill(0);
    pieceCount.fill(0);
    menKey = 0;
    rightsMask.Fill(AllRights);
    castling.fill(CastlingRecord{});
    isRegular_ = false;
    bottom_ = ply;
}

void CPosition::SetupDerived() noexcept {
    for (Square square = A1; square <= H8; ++square) {
        const Piece piece = board[square];
        if (piece == PieceNone) {
            continue;
        }
        ToggleMen(piece, BitOf(square));
        key ^= PieceKey(piece, square);
        if (IsPawnOrKing(piece)) {
            pawnKingKey ^= PieceKey(piece, square);
        }
        ++colourCount[ColourOf(piece)];
        ++pieceCount[piece];
        menKey += MenUnit(piece, square);
    }
    key ^= CastlingKeys[castlingRights];
    if (enPassant != SquareNone) {
        if ((PiecesOf(Pawn, sideToMove) & PawnAttacks[~sideToMove][enPassant]) == 0) {
            enPassant = SquareNone;
        } else {
            key ^= EnPassantKey(enPassant);
        }
    }
    if (sideToMove == White) {
        key ^= SideKey;
    }
    inCheck = IsKingAttacked(sideToMove);
    isRegular_ = LooksRegular();
    bottom_ = ply;
}

void CPosition::CopyFrom(const CPosition& other) noexcept {
    Clear();
    ply = other.ply;
    sideToMove = other.sideToMove;
    halfmoveClock = other.halfmoveClock;
    enPassant = other.enPassant;
    board = other.board;
    for (const CastlingIndex index :
         {WhiteKingSide, WhiteQueenSide, BlackKingSide, BlackQueenSide}) {
        if (other.HasRight(index)) {
            AddCastlingByLetter(index, other.castling[index].letter);
        }
    }
    SetupDerived();
}

bool CPosition::LooksRegular() const noexcept {
    return pieceCount[BlackKing] == 1 && pieceCount[WhiteKing] == 1 &&
           !IsKingAttacked(~sideToMove) &&
           (enPassant == SquareNone || board[enPassant] == PieceNone);
}

void CPosition::ToggleMen(Piece piece, Bitboard squares) noexcept {
    pieces[piece] ^= squares;
    colours[ColourOf(piece)] ^= squares;
}

void CPosition::RemoveCaptured(Piece captured, Square square) noexcept {
    ToggleMen(captured, BitOf(square));
    key ^= PieceKey(captured, square);
    if (TypeOf(captured) == Pawn) {
        pawnKingKey ^= PieceKey(captured, square);
    }
    --colourCount[ColourOf(captured)];
    --pieceCount[captured];
    menKey -= MenUnit(captured, square);
}

void CPosition::RestoreCaptured(Piece captured, Square square) noexcept {
    ToggleMen(captured, BitOf(square));
    board[square] = captured;
    ++colourCount[ColourOf(captured)];
    ++pieceCount[captured];
    menKey += MenUnit(captured, square);
}

/// Toggling makes the case right in which the king has landed on the rook's square: that square is
/// toggled for the king and for the rook, and stays occupied.
void CPosition::MoveCastlingRook(const CastlingRecord& record, Colour colour) noexcept {
    if (record.rookFrom == record.rookTo) {
        return;
    }
    const Piece rook = MakePiece(Rook, colour);
    ToggleMen(rook, BitOf(record.rookFrom) | BitOf(record.rookTo));
    key ^= PieceKey(rook, record.rookFrom) ^ PieceKey(rook, record.rookTo);
    if (record.rookFrom != record.kingTo) {
        board[record.rookFrom] = PieceNone;
    }
    board[record.rookTo] = rook;
}

void CPosition::PromotePawn(Move move, Colour colour) noexcept {
    const Square to = move.To();
    const Piece pawn = MakePiece(Pawn, colour);
    const Piece promoted = MakePiece(PromotionType(move.Index()), colour);
    pieces[pawn] ^= BitOf(to);
    pieces[promoted] ^= BitOf(to);
    key ^= PieceKey(pawn, to) ^ PieceKey(promoted, to);
    pawnKingKey ^= PieceKey(pawn, to);
    board[to] = promoted;
    --pieceCount[pawn];
    ++pieceCount[promoted];
    menKey += MenUnit(promoted, to) - MenUnit(pawn, to);
}

bool CPosition::MakeMove(Move move) noexcept {
    if (ply >= UndoCapacity) [[unlikely]] {
        return false;
    }
    return sideToMove == White ? Make<White>(move) : Make<Black>(move);
}

void CPosition::UndoMove(Move move) noexcept {
    if (ply <= bottom_) [[unlikely]] {
        return;
    }
    if (sideToMove == Black) {
        Undo<White>(move);
    } else {
        Undo<Black>(move);
    }
}

template <Colour Us>
bool CPosition::Make(Move move) noexcept {
    constexpr Colour Them = ~Us;
    const Square from = move.From();
    const Square to = move.To();
    const MoveKind kind = move.Kind();
    const Piece moved = board[from];
    const PieceType type = TypeOf(moved);

    Piece captured = board[to];
    if (kind == MoveKind::Castling) {
        const CastlingRecord& castle = castling[move.Index()];
        if (castle.kingTo == castle.rookFrom || from == to) {
            captured = PieceNone;  // the man on the target is the castling rook or the king itself
        }
    }

    UndoRecord& record = undo[ply];
    static_cast<ReversibleState&>(record) = static_cast<const ReversibleState&>(*this);
    record.move = move;
    record.movedPiece = moved;
    record.capturedPiece = captured;
    ++ply;

    std::uint64_t newKey = key ^ SideKey;
    // A set-up clock may stand at the largest number: it wraps instead of overflowing.
    halfmoveClock = static_cast<std::int32_t>(static_cast<std::uint32_t>(halfmoveClock) + 1U);
    sideToMove = Them;
    const std::uint8_t rights = castlingRights & rightsMask[to] & rightsMask[from];
    newKey ^= CastlingKeys[castlingRights ^ rights];
    castlingRights = rights;
    if (enPassant != SquareNone) {
        newKey ^= EnPassantKey(enPassant);
        enPassant = SquareNone;
    }

    const std::uint64_t moveKeys = PieceKey(moved, from) ^ PieceKey(moved, to);
    if (from != to) [[likely]] {
        const Bitboard both = BitOf(from) | BitOf(to);
        pieces[moved] ^= both;
        colours[Us] ^= both;
        newKey ^= moveKeys;
    }
    if (type == Pawn) {
        halfmoveClock = 0;
        pawnKingKey ^= moveKeys;
        if ((from ^ to) == 16) {
            const Square passed = from + Forward(Us);
            if ((PiecesOf(Pawn, Them) & PawnAttacks[Us][passed]) != 0) {
                enPassant = static_cast<std::uint8_t>(passed);
                newKey ^= EnPassantKey(passed);
            }
        }
    } else if (type == King) {
        pawnKingKey ^= moveKeys;
    }
    key = newKey;
    if (captured != PieceNone) {
        halfmoveClock = 0;
        RemoveCaptured(captured, to);
    }
    board[from] = PieceNone;
    board[to] = moved;
    if (kind != MoveKind::Normal) {
        MakeSpecial(move, Us, record);
    }

    if (!isRegular_) [[unlikely]] {
        if (IsKingAttacked(Us)) {
            Undo<Us>(move);
            return false;
        }
        inCheck = IsKingAttacked(Them);
        return true;
    }
    if (LeavesKingAttacked<Us>(move, type)) {
        Undo<Us>(move);
        return false;
    }
    inCheck = GivesCheck<Us>(move);
    return true;
}

void CPosition::MakeSpecial(Move move, Colour us, UndoRecord& record) noexcept {
    if (move.Kind() == MoveKind::Castling) {
        MoveCastlingRook(castling[move.Index()], us);
    } else if (move.Kind() == MoveKind::Promotion) {
        PromotePawn(move, us);
    } else {
        const Piece victim = MakePiece(Pawn, ~us);
        const Square square = EnPassantVictimSquare(move.To(), ~us);
        record.tookEnPassant = board[square] == victim;
        if (record.tookEnPassant) {
            RemoveCaptured(victim, square);
            board[square] = PieceNone;
        }
    }
}

template <Colour Us>
void CPosition::Undo(Move move) noexcept {
    --ply;
    const UndoRecord& record = undo[ply];
    const Piece moved = record.movedPiece;
    const Square from = move.From();
    const Square to = move.To();
    static_cast<ReversibleState&>(*this) = static_cast<const ReversibleState&>(record);
    sideToMove = Us;

    board[from] = moved;
    if (from != to) [[likely]] {
        const Bitboard both = BitOf(from) | BitOf(to);
        pieces[moved] ^= both;
        colours[Us] ^= both;
        board[to] = PieceNone;
    }
    if (record.capturedPiece != PieceNone) {
        RestoreCaptured(record.capturedPiece, to);
    }
    if (move.Kind() != MoveKind::Normal) {
        UndoSpecial(move, Us, record);
    }
}

void CPosition::UndoSpecial(Move move, Colour us, const UndoRecord& record) noexcept {
    if (move.Kind() == MoveKind::Castling) {
        const CastlingRecord& castle = castling[move.Index()];
        if (castle.rookFrom != castle.rookTo) {
            const Piece rook = MakePiece(Rook, us);
            ToggleMen(rook, BitOf(castle.rookFrom) | BitOf(castle.rookTo));
            board[castle.rookFrom] = rook;
            if (castle.rookTo != move.From()) {
                board[castle.rookTo] = PieceNone;
            }
        }
    } else if (move.Kind() == MoveKind::Promotion) {
        const Piece pawn = MakePiece(Pawn, us);
        const Piece promoted = MakePiece(PromotionType(move.Index()), us);
        pieces[pawn] ^= BitOf(move.To());
        pieces[promoted] ^= BitOf(move.To());
        ++pieceCount[pawn];
        --pieceCount[promoted];
        menKey += MenUnit(pawn, move.To()) - MenUnit(promoted, move.To());
    } else if (record.tookEnPassant) {
        RestoreCaptured(MakePiece(Pawn, ~us), EnPassantVictimSquare(move.To(), ~us));
    }
}

void CPosition::MakeNullMove() noexcept {
    UndoRecord& record = undo[ply];
    record.halfmoveClock = halfmoveClock;
    record.enPassant = enPassant;
    record.castlingRights = castlingRights;
    record.movedPiece = PieceNone;
    record.capturedPiece = PieceNone;
    ++ply;
    halfmoveClock = 0;
    if (enPassant != SquareNone) {
        key ^= EnPassantKey(enPassant);
        enPassant = SquareNone;
    }
    sideToMove = ~sideToMove;
    key ^= SideKey;
}

void CPosition::UndoNullMove() noexcept {
    if (ply <= bottom_) {
        return;
    }
    --ply;
    const UndoRecord& record = undo[ply];
    halfmoveClock = record.halfmoveClock;
    enPassant = record.enPassant;
    castlingRights = record.castlingRights;
    sideToMove = ~sideToMove;
    key ^= SideKey;
}

bool CPosition::IsSliderAttacking(Square square, Colour by) const noexcept {
    const Bitboard occupied = Occupied();
    const Bitboard queens = PiecesOf(Queen, by);
    Bitboard aligned = (BishopRays[square] & (PiecesOf(Bishop, by) | queens)) |
                       (RookRays[square] & (PiecesOf(Rook, by) | queens));
    const SquareTable<Bitboard>& between = Between[square];
    while (aligned != 0) {
        if ((between[PopLowestBit(aligned)] & occupied) == 0) {
            return true;
        }
    }
    return false;
}

bool CPosition::IsSquareAttacked(Square square, Colour by) const noexcept {
    const Bitboard leapers = (PawnAttacks[~by][square] & PiecesOf(Pawn, by)) |
                             (KnightAttacks[square] & PiecesOf(Knight, by)) |
                             (KingAttacks[square] & PiecesOf(King, by));
    return leapers != 0 || IsSliderAttacking(square, by);
}

bool CPosition::IsKingAttacked(Colour colour) const noexcept {
    Bitboard kings = PiecesOf(King, colour);
    while (kings != 0) {
        if (IsSquareAttacked(PopLowestBit(kings), ~colour)) {
            return true;
        }
    }
    return false;
}

/// For regular positions, after the men have moved; `inCheck` still tells of the position before.
/// Unless the king itself moved, was in check or lost two men of a rank to an en passant capture,
/// only the line that the mover left can have opened.
template <Colour Us>
bool CPosition::LeavesKingAttacked(Move move, PieceType moved) const noexcept {
    const Square king = LowestBit(PiecesOf(King, Us));
    if (inCheck || moved == King || move.Kind() == MoveKind::EnPassant) {
        return IsSquareAttacked(king, ~Us);
    }
    return ((BishopRays[king] | RookRays[king]) & BitOf(move.From())) != 0 &&
           IsSliderAttacking(king, ~Us);
}

/// For regular positions, after the men have moved. The king was safe before, so a slider's check
/// needs a line through the square that was left or reached; castling and en passant change more.
template <Colour Us>
bool CPosition::GivesCheck(Move move) const noexcept {
    constexpr Colour Them = ~Us;
    const Square king = LowestBit(PiecesOf(King, Them));
    if (move.Kind() == MoveKind::Castling || move.Kind() == MoveKind::EnPassant) {
        return IsSquareAttacked(king, Us);
    }
    const Bitboard leapers = (PawnAttacks[Them][king] & PiecesOf(Pawn, Us)) |
                             (KnightAttacks[king] & PiecesOf(Knight, Us));
    const Bitboard changed = BitOf(move.From()) | BitOf(move.To());
    return leapers != 0 ||
           (((BishopRays[king] | RookRays[king]) & changed) != 0 && IsSliderAttacking(king, Us));
}

void CPosition::AddCastlingRook(Square rookSquare, char letter) noexcept {
    if (rookSquare == SquareNone || (RankOf(rookSquare) != 0 && RankOf(rookSquare) != 7)) {
        return;
    }
    const Colour colour = RankOf(rookSquare) == 0 ? White : Black;
    if (board[rookSquare] != MakePiece(Rook, colour)) {
        return;
    }
    Square king = A1;
    while (king <= H8 && board[king] != MakePiece(King, colour)) {
        ++king;
    }
    if (king > H8 || RankOf(king) != RankOf(rookSquare)) {
        return;
    }
    const bool kingSide = FileOf(rookSquare) > FileOf(king);
    const unsigned index = (colour == White ? 0U : 2U) + (kingSide ? 0U : 1U);
    const Square home = MakeSquare(0, HomeRank(colour));

    CastlingRecord& record = castling[index];
    record.kingFrom = king;
    record.kingTo = home + (kingSide ? G1 : C1);
    record.rookFrom = rookSquare;
    record.rookTo = home + (kingSide ? F1 : D1);
    record.letter = letter;
    record.kingPath = Between[record.kingFrom][record.kingTo] | BitOf(record.kingTo);
    record.emptyMask =
        (record.kingPath | Between[record.rookFrom][record.rookTo] | BitOf(record.rookTo)) &
        ~(BitOf(record.rookFrom) | BitOf(record.kingFrom));

    rightsMask[king] = colour == White ? 12 : 3;
    rightsMask[rookSquare] = static_cast<std::uint8_t>(AllRights & ~(1U << index));
    castlingRights = static_cast<std::uint8_t>(castlingRights | 1U << index);
}

void CPosition::AddCastlingByLetter(CastlingIndex index, char letter) noexcept {
    const Colour colour = index <= WhiteQueenSide ? White : Black;
    const bool kingSide = index == WhiteKingSide || index == BlackKingSide;
    const Square home = MakeSquare(0, HomeRank(colour));
    Square king = SquareNone;
    Square leftmost = SquareNone;
    Square rightmost = SquareNone;
    for (Square square = home; square < home + 8; ++square) {
        if (board[square] == MakePiece(King, colour) && king == SquareNone) {
            king = square;
        } else if (board[square] == MakePiece(Rook, colour)) {
            leftmost = leftmost == SquareNone ? square : leftmost;
            rightmost = square;
        }
    }
    if (king == SquareNone || rightmost == SquareNone) {
        return;
    }
    if (kingSide && rightmost > king) {
        AddCastlingRook(rightmost, letter);
    } else if (!kingSide && leftmost < king) {
        AddCastlingRook(leftmost, letter);
    }
}

}  // namespace brenquil
