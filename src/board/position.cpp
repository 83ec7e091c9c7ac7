#include "board/position.h"

#include "board/polyglot_keys.h"
#include "platform/bits.h"

#include <algorithm>
#include <cassert>

namespace brenquil {

namespace {

constexpr std::uint8_t AllRights = 15;

/// Where the pawn of `victim` stands that an en passant capture on `target` takes.
constexpr Square EnPassantVictimSquare(Square target, Colour victim) noexcept {
    return target + Forward(victim);
}

/// [piece][square]: from where that piece reaches the square on the empty board.
constexpr std::array<SquareTable<Bitboard>, PieceCodes> ReachingSquares = {
    {PawnAttacks[White], PawnAttacks[Black], KnightAttacks, KnightAttacks, BishopRays, BishopRays,
     RookRays, RookRays, QueenRays, QueenRays, KingAttacks, KingAttacks}};

/// `BitOf` as a table: one instruction where a shift takes three, in what is done at every move.
constexpr SquareTable<Bitboard> SquareBits = tables::BySquare(BitOf);

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
    rightsSquares_ = 0;
    isRegular_ = false;
    bottom_ = ply;
}

void CPosition::SetupDerived() noexcept {
    assert(Occupied() == 0 && key == 0 && menKey == 0);
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
    if (std::max(colourCount[Black], colourCount[White]) >> MenCountBits != 0) {
        menKey |= CrowdMark;
    }
    if (sideToMove == White) {
        key ^= SideKey;
    }
    inCheck = IsKingAttacked(sideToMove);
    isRegular_ = LooksRegular();
    if (isRegular_ && inCheck) {
        NoteCheck();
    }
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

inline void CPosition::ToggleMen(Piece piece, Bitboard squares) noexcept {
    pieces[piece] ^= squares;
    colours[ColourOf(piece)] ^= squares;
}

/// Takes a man of that colour off, except from the mailbox, and returns its number of the key.
[[gnu::always_inline]] inline std::uint64_t CPosition::RemoveMan(Piece piece, Colour colour,
                                                                 Square square) noexcept {
    const std::uint64_t number = PieceKey(piece, square);
    pieces[piece] ^= SquareBits[square];
    colours[colour] ^= SquareBits[square];
    if (TypeOf(piece) == Pawn) {
        pawnKingKey ^= number;
    }
    --colourCount[colour];
    --pieceCount[piece];
    menKey -= MenUnit(piece, square);
    return number;
}

/// Puts a man of that colour back, except in the mailbox.
inline void CPosition::RestoreMan(Piece piece, Colour colour, Square square) noexcept {
    pieces[piece] ^= SquareBits[square];
    colours[colour] ^= SquareBits[square];
    ++colourCount[colour];
    ++pieceCount[piece];
    menKey += MenUnit(piece, square);
}

/// Toggling handles the case where the king has landed on the rook's square: that square is toggled
/// for the king and for the rook, and stays occupied.
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
    assert(IsOwnMove(move));
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

int CPosition::ForgetHistory() noexcept {
    constexpr int MostNeeded = 100;  // half-moves: the game is drawn then
    const int needed = std::clamp<int>(halfmoveClock, 0, MostNeeded) + 2;
    const int forgotten = std::max(ply - needed, 0) / 2 * 2;
    if (forgotten == 0) {
        return 0;
    }
    ply -= forgotten;
    for (int i = 0; i < ply; ++i) {
        // A set-up position has no records of its own below it.
        const bool isOwn = i + forgotten >= bottom_ && i + forgotten < UndoCapacity;
        undo[i] = isOwn ? undo[i + forgotten] : UndoRecord{};
    }
    bottom_ = std::max(bottom_ - forgotten, 0);
    return forgotten;
}

template <Colour Us>
bool CPosition::Make(Move move) noexcept {
    if (!isRegular_) [[unlikely]] {
        return MakeInAnyPosition<Us>(move);
    }
    if (move.Kind() != MoveKind::Normal) [[unlikely]] {
        return MakeSpecial<Us>(move);
    }
    return MakeRegular<Us>(move);
}

/// A move that does more than carry a man. The same steps, compiled once more, so that the others
/// need not ask at each of them.
template <Colour Us>
[[gnu::noinline]] bool CPosition::MakeSpecial(Move move) noexcept {
    return MakeRegular<Us>(move);
}

template <Colour Us>
[[gnu::always_inline]] inline bool CPosition::MakeRegular(Move move) noexcept {
    if (LeavesKingAttacked<Us>(move)) {
        // The record stays as if the move had been made and taken back: a position that is set up
        // further on in the game walks over it.
        SaveState(move, board[move.From()], CapturedBy(move));
        return false;
    }
    Play<Us, true>(move);
    inCheck = GivesCheck<Us>(move);
    if (inCheck) [[unlikely]] {
        NoteCheck();
    }
    return true;
}

template <Colour Us>
[[gnu::noinline]] bool CPosition::MakeInAnyPosition(Move move) noexcept {
    Play<Us, false>(move);
    if (IsKingAttacked(Us)) {
        Undo<Us>(move);
        return false;
    }
    inCheck = IsKingAttacked(~Us);
    return true;
}

/// The man on the target, unless that is the castling rook or the king itself.
inline Piece CPosition::CapturedBy(Move move) const noexcept {
    if (move.Kind() == MoveKind::Castling) [[unlikely]] {
        const CastlingRecord& castle = castling[move.Index()];
        if (castle.kingTo == castle.rookFrom || move.From() == move.To()) {
            return PieceNone;
        }
    }
    return board[move.To()];
}

inline UndoRecord& CPosition::SaveState(Move move, Piece moved, Piece captured) noexcept {
    UndoRecord& record = undo[ply];
    static_cast<ReversibleState&>(record) = static_cast<const ReversibleState&>(*this);
    record.move = move;
    record.movedPiece = moved;
    record.capturedPiece = captured;
    return record;
}

/// Makes the move without a look at the kings' safety. Where the king castles onto his own square
/// the two squares are one, and XOR leaves sets and keys alone.
template <Colour Us, bool IsRegular>
[[gnu::always_inline]] inline void CPosition::Play(Move move) noexcept {
    constexpr Colour Them = ~Us;
    const Square from = move.From();
    const Square to = move.To();
    const Piece moved = board[from];
    const PieceType type = TypeOf(moved);
    const Piece captured = CapturedBy(move);
    UndoRecord& record = SaveState(move, moved, captured);
    ++ply;
    sideToMove = Them;

    const std::uint64_t moveKeys = PieceKey(moved, from) ^ PieceKey(moved, to);
    std::uint64_t newKey = key ^ SideKey ^ moveKeys;
    const Bitboard changed = SquareBits[from] ^ SquareBits[to];
    pieces[moved] ^= changed;
    colours[Us] ^= changed;
    // A set-up clock may stand at the largest number: it wraps instead of overflowing.
    halfmoveClock = halfmoveClock + 1U;
    if (enPassant != SquareNone) [[unlikely]] {
        newKey ^= EnPassantKey(enPassant);
        enPassant = SquareNone;
    }
    if (((SquareBits[from] | SquareBits[to]) & rightsSquares_) != 0) [[unlikely]] {
        const std::uint8_t rights = castlingRights & rightsMask[to] & rightsMask[from];
        newKey ^= CastlingKeys[castlingRights ^ rights];
        castlingRights = rights;
    }
    if (type == Pawn) {
        halfmoveClock = 0;
        pawnKingKey ^= moveKeys;
        if ((from ^ to) == 16) {
            const Square passed = from + Forward(Us);
            if ((PiecesOf(Pawn, Them) & PawnAttacks[Us][passed]) != 0) {
                enPassant = ToByte(passed);
                newKey ^= EnPassantKey(passed);
            }
        }
    } else if (type == King) {
        pawnKingKey ^= moveKeys;
    }
    if (captured != PieceNone) {
        halfmoveClock = 0;
        // In a position that was set up, a pawn can take a man of its own en passant.
        newKey ^= RemoveMan(captured, IsRegular ? Them : ColourOf(captured), to);
    }
    key = newKey;
    board[from] = PieceNone;
    board[to] = moved;
    if (move.Kind() != MoveKind::Normal) [[unlikely]] {
        PlaySpecial(move, Us, record);
    }
}

[[gnu::noinline]] void CPosition::PlaySpecial(Move move, Colour us, UndoRecord& record) noexcept {
    if (move.Kind() == MoveKind::Castling) {
        MoveCastlingRook(castling[move.Index()], us);
    } else if (move.Kind() == MoveKind::Promotion) {
        PromotePawn(move, us);
    } else {
        const Piece victim = MakePiece(Pawn, ~us);
        const Square square = EnPassantVictimSquare(move.To(), ~us);
        record.tookEnPassant = board[square] == victim;
        if (record.tookEnPassant) {
            key ^= RemoveMan(victim, ~us, square);
            board[square] = PieceNone;
        }
    }
}

template <Colour Us>
void CPosition::Undo(Move move) noexcept {
    --ply;
    const UndoRecord& record = undo[ply];
    assert(SameMove(record.move, move) && record.movedPiece != PieceNone);
    const Piece moved = record.movedPiece;
    const Piece captured = record.capturedPiece;
    const Square from = move.From();
    const Square to = move.To();
    static_cast<ReversibleState&>(*this) = static_cast<const ReversibleState&>(record);
    sideToMove = Us;

    const Bitboard changed = SquareBits[from] ^ SquareBits[to];
    pieces[moved] ^= changed;
    colours[Us] ^= changed;
    board[to] = captured;
    board[from] = moved;
    if (captured != PieceNone) {
        RestoreMan(captured, ColourOf(captured), to);
    }
    if (move.Kind() != MoveKind::Normal) [[unlikely]] {
        UndoSpecial(move, Us, record);
    }
}

[[gnu::noinline]] void CPosition::UndoSpecial(Move move, Colour us,
                                              const UndoRecord& record) noexcept {
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
        const Piece victim = MakePiece(Pawn, ~us);
        const Square square = EnPassantVictimSquare(move.To(), ~us);
        board[square] = victim;
        RestoreMan(victim, ~us, square);
    }
}

inline void CPosition::ToggleLeaf(Move move, Piece moved, Piece captured) noexcept {
    ToggleMen(moved, BitOf(move.From()) | BitOf(move.To()));
    if (captured != PieceNone) {
        ToggleMen(captured, BitOf(move.To()));
    }
}

bool CPosition::MakeLeaf(Move move) noexcept {
    assert(IsOwnMove(move));
    if (IsMadeWhole(move)) [[unlikely]] {
        return MakeMove(move);
    }
    if (ply >= UndoCapacity) [[unlikely]] {
        return false;
    }
    if (sideToMove == White ? LeavesKingAttacked<White>(move) : LeavesKingAttacked<Black>(move)) {
        return false;
    }
    const Piece moved = board[move.From()];
    const Piece captured = board[move.To()];
    undo[ply].capturedPiece = captured;
    ToggleLeaf(move, moved, captured);
    board[move.From()] = PieceNone;
    board[move.To()] = moved;
    return true;
}

void CPosition::UndoLeaf(Move move) noexcept {
    if (IsMadeWhole(move)) [[unlikely]] {
        UndoMove(move);
        return;
    }
    const Piece moved = board[move.To()];
    const Piece captured = undo[ply].capturedPiece;
    ToggleLeaf(move, moved, captured);
    board[move.To()] = captured;
    board[move.From()] = moved;
}

bool CPosition::RefuseAtOnce(Move move) noexcept {
    assert(inCheck && IsOwnMove(move));
    const Piece moved = board[move.From()];
    if (!isRegular_ || move.Kind() != MoveKind::Normal || TypeOf(moved) == King ||
        (CheckMasksNow().legal & BitOf(move.To())) != 0 || ply >= UndoCapacity) {
        return false;
    }
    SaveState(move, moved, board[move.To()]);
    return true;
}

void CPosition::MakeNullMove() noexcept {
    assert(!inCheck && ply < UndoCapacity);
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

/// Does a slider of `sliders` see the square when the board is occupied as given.
inline bool CPosition::IsSliderAttacking(Square square, Colour by, Bitboard occupied,
                                         Bitboard sliders) const noexcept {
    const Bitboard queens = PiecesOf(Queen, by);
    Bitboard aligned = ((BishopRays[square] & (PiecesOf(Bishop, by) | queens)) |
                        (RookRays[square] & (PiecesOf(Rook, by) | queens))) &
                       sliders;
    const SquareTable<Bitboard>& between = Between[square];
    while (aligned != 0) {
        if ((between[PopLowestBit(aligned)] & occupied) == 0) {
            return true;
        }
    }
    return false;
}

inline bool CPosition::IsLeaperAttacking(Square square, Colour by) const noexcept {
    return ((PawnAttacks[~by][square] & PiecesOf(Pawn, by)) |
            (KnightAttacks[square] & PiecesOf(Knight, by)) |
            (KingAttacks[square] & PiecesOf(King, by))) != 0;
}

bool CPosition::IsSquareAttacked(Square square, Colour by) const noexcept {
    return IsLeaperAttacking(square, by) || IsSliderAttacking(square, by, Occupied(), AllSquares);
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

/// Before the move, of a regular position. A king needs a target that is not attacked once he has
/// left. Any other man has to answer a check, if there is one, and may not open a line to the king.
template <Colour Us>
[[gnu::always_inline]] inline bool CPosition::LeavesKingAttacked(Move move) const noexcept {
    const Square king = LowestBit(PiecesOf(King, Us));
    const Bitboard from = SquareBits[move.From()];
    const Bitboard to = SquareBits[move.To()];
    if (move.Kind() == MoveKind::Castling || move.Kind() == MoveKind::EnPassant) [[unlikely]] {
        return LeavesKingAttackedBySpecial(move, Us);
    }
    if (move.From() == king) {
        return IsAttackedWithout(from, move.To(), ~Us);
    }
    if (inCheck && (CheckMasksNow().legal & to) == 0) {
        return true;
    }
    return (Beyond[king][move.From()] & SlidersOf(~Us)) != 0 &&
           IsSliderAttacking(king, ~Us, (Occupied() ^ from) | to, ~to);
}

/// Is the square attacked once the king whose bit is `king` has left his own.
[[gnu::noinline]] bool CPosition::IsAttackedWithout(Bitboard king, Square square,
                                                    Colour by) const noexcept {
    return IsLeaperAttacking(square, by) ||
           IsSliderAttacking(square, by, Occupied() ^ king, AllSquares);
}

/// The same for castling, whose rook may have shielded the king, and for en passant captures, which
/// take two men off a rank. The board is looked at as it will be.
[[gnu::noinline]] bool CPosition::LeavesKingAttackedBySpecial(Move move, Colour us) const noexcept {
    if (move.Kind() == MoveKind::Castling) {
        const CastlingRecord& castle = castling[move.Index()];
        const Bitboard before = BitOf(castle.kingFrom) | BitOf(castle.rookFrom);
        const Bitboard after = BitOf(castle.kingTo) | BitOf(castle.rookTo);
        return AttackersTo(castle.kingTo, ~us, (Occupied() & ~before) | after) != 0;
    }
    const Square square = EnPassantVictimSquare(move.To(), ~us);
    const Bitboard victim = board[square] == MakePiece(Pawn, ~us) ? BitOf(square) : 0;
    const Bitboard occupied = (Occupied() & ~(BitOf(move.From()) | victim)) | BitOf(move.To());
    return (AttackersTo(LowestBit(PiecesOf(King, us)), ~us, occupied) & ~victim) != 0;
}

/// After a move in a regular position. The king was safe before, so he is in check only from the
/// man that moved or along the line that it left; castling and en passant change more.
template <Colour Us>
[[gnu::always_inline]] inline bool CPosition::GivesCheck(Move move) const noexcept {
    const Square king = LowestBit(PiecesOf(King, ~Us));
    if (move.Kind() == MoveKind::Castling || move.Kind() == MoveKind::EnPassant) [[unlikely]] {
        return IsSquareAttacked(king, Us);
    }
    const Square to = move.To();
    const Bitboard occupied = Occupied();
    // Nothing lies between the king and a leaper that reaches him.
    if ((ReachingSquares[board[to]][king] & SquareBits[to]) != 0 &&
        (Between[king][to] & occupied) == 0) {
        return true;
    }
    return (Beyond[king][move.From()] & SlidersOf(Us)) != 0 &&
           IsSliderAttacking(king, Us, occupied, AllSquares);
}

/// Finds out how the check of a regular position can be answered.
[[gnu::noinline]] void CPosition::NoteCheck() noexcept {
    const Square king = LowestBit(PiecesOf(King, sideToMove));
    const Bitboard checkers = AttackersTo(king, ~sideToMove, Occupied());
    Bitboard helpful = checkers;
    for (Bitboard rest = checkers; rest != 0;) {
        helpful |= Between[PopLowestBit(rest)][king];
    }
    const bool isDouble = (checkers & (checkers - 1)) != 0;
    checkMasks_[ply & CheckMaskIndexMask] = {helpful, isDouble ? 0 : helpful};
}

Bitboard CPosition::EvasionTargets() const noexcept {
    if (isRegular_) [[likely]] {
        return inCheck ? CheckMasksNow().helpful : 0;
    }
    Bitboard helpful = 0;
    for (Bitboard kings = PiecesOf(King, sideToMove); kings != 0;) {
        const Square king = PopLowestBit(kings);
        Bitboard attackers = AttackersTo(king, ~sideToMove, Occupied());
        helpful |= attackers;
        while (attackers != 0) {
            helpful |= Between[PopLowestBit(attackers)][king];
        }
    }
    return helpful;
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
    rightsMask[rookSquare] = AllRights & ~(1U << index);
    rightsSquares_ |= BitOf(king) | BitOf(rookSquare);
    castlingRights = ToByte(castlingRights | 1U << index);
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
