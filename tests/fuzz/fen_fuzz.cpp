// Any text as a FEN. The first line of an input is the text, each byte after it chooses a move of
// the walk that follows.
//
// However strange the position: its fields agree with one another, the FEN that is written brings
// the same position back, the generator, MakeMove and UndoMove agree with the slow rules of the
// unit tests at each step, and score and exchange values can be asked for. A position of more than
// five men with one king a side and no pawn on an edge scores like its mirror image.

#include "board/move_generator.h"
#include "board/polyglot_keys.h"
#include "board/position.h"
#include "board/position_text.h"
#include "board/score.h"
#include "board/static_exchange.h"
#include "board_checks.h"
#include "eval/evaluation.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "eval/pawn_hash.h"
#include "slow_chess.h"
#include "text/text.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace brenquil;

namespace {

constexpr std::size_t LongestWalk = 12;

[[noreturn]] void Fail(const std::string& what, const CPosition& position) {
    std::fprintf(stderr, "fen: %s in %s\n", what.c_str(), FenOf(position).c_str());
    std::abort();
}

void Demand(bool holds, const char* what, const CPosition& position) {
    if (!holds) {
        Fail(what, position);
    }
}

/// As above, of a list of faults that has to be empty.
void DemandNone(const std::string& faults, const char* what, const CPosition& position) {
    if (!faults.empty()) {
        Fail(what + (": " + faults), position);
    }
}

/// `FenOf` without its copy of the position, which is long: each input asks for many.
std::string TextOf(CPosition& position) {
    return CPositionText(position).GetFen();
}

/// What scores a position, with a table of pawn structures and without.
class CScorer {
public:
    CScorer() { Demand(pawnHash_.Resize(PawnEntries), "a pawn hash", CPosition()); }

    /// Empties the table: no input finds what another has left there.
    void Forget() {
        for (std::size_t index = 0; index < PawnEntries; ++index) {
            PawnEntry& entry = pawnHash_.Slot(index);
            entry.key = 0;
            for (const Colour colour : {Black, White}) {
                entry.middlegame[colour] = 0;
                entry.endgame[colour] = 0;
                entry.shelterDanger[colour] = 0;
            }
        }
    }

    [[nodiscard]] Score Of(const CPosition& position) {
        return CEvaluation(position, options_, noPawnHash_, bitbase_)
            .Evaluate(-MateScore, MateScore);
    }

    [[nodiscard]] Score WithTable(const CPosition& position) {
        return CEvaluation(position, options_, pawnHash_, bitbase_).Evaluate(-MateScore, MateScore);
    }

private:
    static constexpr std::size_t PawnEntries = 16;

    CEvaluationOptions options_;
    CPawnHash noPawnHash_;
    CPawnHash pawnHash_;
    CKpkBitbase bitbase_;
};

/// The endings of few men know one colour of corners and, of equal sides, one that is the strong.
bool IsScoredLikeItsMirrorImage(const CPosition& position) {
    constexpr Bitboard Edges = 0xFF000000000000FF;
    constexpr int MenOfEndings = 5;
    return position.MenCount() > MenOfEndings && position.pieceCount[BlackKing] == 1 &&
           position.pieceCount[WhiteKing] == 1 &&
           ((position.PiecesOf(Pawn, White) | position.PiecesOf(Pawn, Black)) & Edges) == 0;
}

/// Whether the castling field names more rooks than there are rights. A rook that another one has
/// replaced still takes the right away when it moves, and the FEN no longer tells.
bool NamesSpareRooks(std::string_view text, const CPosition& position) {
    const std::vector<std::string> fields = Split(text, ' ');
    const auto rights = static_cast<std::size_t>(std::popcount(position.castlingRights));
    return fields.size() > 2 && fields[2].size() > rights;
}

void CheckText(std::string_view text, CPosition& position, CPosition& again) {
    const std::string fen = TextOf(position);
    CPositionText(again).SetFen(fen);
    Demand(TextOf(again) == fen, "another FEN comes back", position);
    // Of a move number that nothing can count up to, the last half-move is not kept.
    if (position.ply > CPosition::UndoCapacity) {
        again.ply = position.ply;
    }
    const std::string differences = Differences(again, position);
    Demand(differences.empty() || (differences == "rightsMask " && NamesSpareRooks(text, position)),
           "another position comes back", position);
    (void)CPositionText::FlipFen(text);
    Demand(CPositionText::FlipFen(CPositionText::FlipFen(fen)) == fen, "flipped twice", position);
}

void CheckGenerator(const CPosition& position, const SlowPosition& slow) {
    std::vector<std::uint32_t> expected = slow.Moves(true, true);
    expected.resize(std::min<std::size_t>(expected.size(), MoveList::Capacity));
    Demand(GeneratedWords(position, MoveKinds::All) == expected, "moves", position);
    if (position.inCheck) {
        MoveList list;
        CMoveGenerator(position).GenerateEvasions(list);
        expected = slow.Evasions();
        expected.resize(std::min<std::size_t>(expected.size(), MoveList::Capacity));
        Demand(Words(list) == expected, "evasions", position);
    }
}

/// The number that a captured king leaves in the key of pawns and kings.
std::uint64_t KeyLeftBehind(const CPosition& position, Move move) {
    const Piece taken = position.PieceOn(move.To());
    return move.Kind() != MoveKind::Castling && taken != PieceNone && TypeOf(taken) == King
             ? PieceKey(taken, move.To())
             : 0;
}

/// Plays the move on both boards.
/// @return whether it was legal
bool Play(CPosition& position, SlowPosition& slow, Move move, std::uint64_t& foreignKey) {
    const PositionFields before(position);
    const std::uint64_t key = foreignKey ^ KeyLeftBehind(position, move);
    const bool hasRoom = position.ply < CPosition::UndoCapacity;
    const bool isLegal = slow.Make(move.word);
    Demand(position.MakeMove(move) == (isLegal && hasRoom), "legality", position);
    if (position.ply == before.ply) {
        DemandNone(Differences(PositionFields(position), before), "a refused move", position);
        return false;
    }
    foreignKey = key;
    slow.clock = static_cast<std::int32_t>(slow.clock);  // the board's wraps around
    DemandNone(DerivedFaults(position, foreignKey), "fields", position);
    DemandNone(Disagreements(position, slow), "slow rules", position);
    return true;
}

void CheckMove(CPosition& position, Move move, std::uint64_t foreignKey) {
    (void)StaticExchange(position, move);
    for (const bool chess960 : {false, true}) {
        const std::string text = CPositionText::MoveToText(
            move, position,
            chess960 ? CastlingNotation::KingTakesRook : CastlingNotation::KingTarget);
        const Move found = CPositionText::TextToMove(text, position, chess960);
        Demand(!found.IsNone(), "text of a move", position);
    }
    const PositionFields before(position);
    SlowPosition slow(position);
    if (Play(position, slow, move, foreignKey)) {
        position.UndoMove(move);
    }
    DemandNone(Differences(PositionFields(position), before), "a move taken back", position);
}

void CheckScore(CScorer& scorer, CPosition& position, CPosition& mirrored) {
    const Score score = scorer.Of(position);
    // The first fills the entry, the second finds it.
    Demand(scorer.WithTable(position) == score, "score into the pawn hash", position);
    Demand(scorer.WithTable(position) == score, "score by the pawn hash", position);
    if (!IsScoredLikeItsMirrorImage(position)) {
        return;
    }
    CPositionText(mirrored).SetFen(CPositionText::FlipFen(TextOf(position)));
    Demand(scorer.Of(mirrored) == score, "mirrored score", position);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // Too large to be made for each input, which begins with all of it as it was at first. Each in
    // memory of its own, so that AddressSanitizer sees any step outside it.
    static const auto first = std::make_unique<const CPosition>();
    static CPosition& position = *std::make_unique<CPosition>().release();
    static CPosition& other = *std::make_unique<CPosition>().release();
    static CScorer& scorer = *std::make_unique<CScorer>().release();
    position = *first;
    other = *first;
    scorer.Forget();
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    const std::string_view text = input.substr(0, input.find('\n'));
    const std::string_view choices = input.substr(std::min(text.size() + 1, input.size()));

    CPositionText(position).SetFen(text);
    DemandNone(DerivedFaults(position), "fields", position);
    CheckText(text, position, other);
    CheckScore(scorer, position, other);

    if (NamesSpareRooks(text, position)) {
        CPositionText(position).SetFen(TextOf(position));  // the slow rules know no such rooks
    }
    SlowPosition slow(position);
    std::uint64_t foreignKey = 0;
    std::vector<Move> made;
    for (const char choice : choices.substr(0, LongestWalk)) {
        CheckGenerator(position, slow);
        MoveList list;
        CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
        if (list.count == 0) {
            break;
        }
        const Move move = list[static_cast<unsigned char>(choice) % list.count];
        CheckMove(position, move, foreignKey);
        SlowPosition next = slow;
        if (Play(position, next, move, foreignKey)) {
            slow = next;
            made.push_back(move);
        }
    }
    // A captured king leaves its number in the key of the pawn hash, which is then another's.
    if (foreignKey == 0) {
        CheckScore(scorer, position, other);
    }
    for (; !made.empty(); made.pop_back()) {
        position.UndoMove(made.back());
    }
    CheckText(text, position, other);
    return 0;
}
