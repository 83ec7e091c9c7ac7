// Chess960 positions of the same men in which another rook may castle. Their keys are the same, so
// each meets what the table holds of the other: no line and no move from there may break the rules,
// or leave the position other than it was.

#include "fake_clock.h"
#include "search_setup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace brenquil {
namespace {

/// Whether all men, counts and keys are the same.
bool IsSamePosition(const CPosition& a, const CPosition& b) {
    for (Square square = A1; square <= H8; ++square) {
        if (a.PieceOn(square) != b.PieceOn(square)) {
            return false;
        }
    }
    return a.pieces == b.pieces && a.colours == b.colours && a.colourCount == b.colourCount &&
           a.pieceCount == b.pieceCount && a.key == b.key && a.pawnKingKey == b.pawnKingKey &&
           a.castlingRights == b.castlingRights && a.enPassant == b.enPassant &&
           a.halfmoveClock == b.halfmoveClock && a.inCheck == b.inCheck && a.ply == b.ply &&
           a.sideToMove == b.sideToMove;
}

bool IsGenerated(const CPosition& position, Move move) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    return std::any_of(list.begin(), list.end(),
                       [move](Move other) { return SameMove(move, other); });
}

/// Plays each reported line from the root, by the rules.
class CLineChecker final : public ISearchReceiver {
public:
    explicit CLineChecker(const CPosition& root) : root_(root) {}

    void SetRoot(const CPosition&) override {}

    void PrintPv(const PvReport& report, const SearchStatistics&) override {
        Check({}, *report.line);
    }

    void PrintCurrMove(Move move, std::int32_t) override { Check({}, {&move, 1}); }

    void PrintRefutation(Move move, const PvLine& line) override {
        ++refutations;
        Check(move, line);
    }

    void PrintStats(const SearchStatistics&) override {}

    void PrintCurrentLine(const PvLine&) override {}  // does not show where a side passed

    void PrintBestMove(Move best, Move ponder) override {
        const std::vector<Move> line = {best, ponder};
        Check({}, std::span(line).first(ponder.IsNone() ? 1 : 2));
    }

    void PrintNoBestMove() override {}

    int refutations = 0;

private:
    void Check(Move first, std::span<const Move> line) {
        std::vector<Move> moves(line.begin(), line.end());
        if (!first.IsNone()) {
            moves.insert(moves.begin(), first);
        }
        const auto position = std::make_unique<CPosition>(root_);
        for (const Move move : moves) {
            if (!IsGenerated(*position, move) || !position->MakeMove(move)) {
                ADD_FAILURE() << MoveName(move) << " of the line " << LineText(moves) << " in "
                              << CPositionText(*position).GetFen();
                return;
            }
        }
    }

    CPosition root_;
};

/// Two rooks of White beside the king on one side, Black to move. The letter is that of the rook
/// that may castle, `*`.
struct Men {
    std::string fen;
    char inner;  ///< file of the rook next to the king
    char outer;

    [[nodiscard]] std::string WithRight(char file) const {
        std::string text = fen;
        text[text.find('*')] = file;
        return text;
    }
};

Men RandomMen(std::mt19937_64& random) {
    const auto below = [&random](std::size_t limit) { return random() % limit; };
    std::string home(8, '1');
    const bool isKingSide = below(2) == 0;
    const std::size_t king = isKingSide ? below(6) : 2 + below(6);
    const std::size_t space = isKingSide ? 7 - king : king;
    const std::size_t inner = 1 + below(space - 1);
    const std::size_t outer = inner + 1 + below(space - inner);
    const auto fileAt = [&](std::size_t distance) {
        return isKingSide ? king + distance : king - distance;
    };
    home[king] = 'K';
    home[fileAt(inner)] = 'R';
    home[fileAt(outer)] = 'R';
    const auto fill = [&](std::string rank, const std::string& men, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            char& square = rank[below(8)];
            square = square == '1' ? men[below(men.size())] : square;
        }
        return rank;
    };
    const std::string empty(8, '1');
    std::string black = empty;
    black[below(8)] = 'k';
    Men result;
    result.fen = fill(black, "rbnq", 4) + "/" + fill(empty, "p", 9) + "/" + fill(empty, "nb", 2) +
                 "/8/8/" + fill(empty, "NB", 2) + "/" + fill(empty, "P", 9) + "/" +
                 fill(home, "QBN", 2) + " b * - 0 1";
    result.inner = static_cast<char>('A' + fileAt(inner));
    result.outer = static_cast<char>('A' + fileAt(outer));
    return result;
}

/// White's castling, if it is legal now.
std::optional<Move> LegalCastling(CPosition& position) {
    for (const Move move : LegalMoves(position)) {
        if (move.Kind() == MoveKind::Castling) {
            return move;
        }
    }
    return std::nullopt;
}

/// Men of Black to move, a move of Black, and White's castling that is legal after it.
struct Case {
    Men men;
    Move first;
    Move castling;
    std::string fenAfter;  ///< after the first move, with the right of the inner rook
};

Case RandomCase(std::mt19937_64& random) {
    const auto position = std::make_unique<CPosition>();
    while (true) {
        const Men men = RandomMen(random);
        SetPosition(*position, men.WithRight(men.inner));
        if (position->IsKingAttacked(White)) {
            continue;  // Black to move could take the king
        }
        std::vector<Move> moves = LegalMoves(*position);
        std::shuffle(moves.begin(), moves.end(), random);
        for (const Move move : moves) {
            if (!position->MakeMove(move)) {
                continue;
            }
            if (const auto castling = LegalCastling(*position)) {
                return {men, move, *castling, CPositionText(*position).GetFen()};
            }
            position->UndoMove(move);
        }
    }
}

class TwoCastlingSets : public testing::Test {
protected:
    TwoCastlingSets() { setup.bases.Add(base); }

    /// Searches and looks at every line. From the second status line on the search reports what the
    /// table holds of the reply to each move at the root.
    /// @return how many such replies there were
    int Think(const SearchLimits& limits) {
        const CStoppedClock clock;
        bool isOver = false;
        base.answer = [&](Score&, const CPosition&, int, int) {
            if (!isOver && setup.search->Nodes() > 500) {
                isOver = true;
                CStoppedClock::Advance(1000);
            }
            return false;
        };
        CPosition before = setup.position;
        CLineChecker receiver(before);
        CFakeWorkers workers;
        setup.hash.BeginSearch(false);
        setup.ThinkOn(limits, receiver, workers);
        base.answer = {};
        EXPECT_TRUE(IsSamePosition(setup.position, before)) << CPositionText(before).GetFen();
        return receiver.refutations;
    }

    SearchSetup setup;
    CScriptedBase base;
};

constexpr std::int32_t Deep = 7;
constexpr std::int32_t Shallow = 6;

SearchLimits ToDepth(std::int32_t depth) {
    SearchLimits limits;
    limits.depth = depth;
    return limits;
}

TEST_F(TwoCastlingSets, CastlingFromTheTableDoesNotTakeAnotherRookOffTheBoard) {
    setup.Set("3q1k1r/pppppppp/2n2n2/8/8/2N2N2/PPPPPPPP/Q3KR1R b H - 0 1");
    const CPosition before = setup.position;
    const Move first = MoveOf(setup.position, "f8e8");
    setup.hash.BeginSearch(false);
    for (const Move stored : {first, Move::Make(E1, G1, MoveKind::Castling, WhiteKingSide)}) {
        setup.hash.Store(setup.position.key, 32000, 50, Bound::Upper, stored);  // answers nothing
        if (stored.word == first.word) {
            ASSERT_TRUE(setup.position.MakeMove(first));
        }
    }
    setup.position.UndoMove(first);
    ASSERT_TRUE(IsSamePosition(setup.position, before));
    // No move raises alpha, so that the line comes from the table.
    base.answer = [](Score& score, const CPosition&, int, int ply) {
        score = 32000;
        return ply == 1;
    };
    CRecordingReceiver receiver;
    CFakeWorkers workers;
    setup.ThinkOn(ToDepth(2), receiver, workers);
    EXPECT_TRUE(IsSamePosition(setup.position, before));
    for (const SearchRecord::Pv& pv : receiver.record.pvs) {
        EXPECT_LE(pv.line.count, 1);
    }
}

TEST_F(TwoCastlingSets, LinesFollowTheRulesAndLeaveThePositionWhole) {
    std::mt19937_64 random(960);
    int replies = 0;
    for (int i = 0; i < 40; ++i) {
        const Case one = RandomCase(random);
        // Castling is the best move of the only move that is searched.
        setup.Set(one.fenAfter);
        SearchLimits limits = ToDepth(Deep);
        limits.searchmoves.Append(one.castling);
        (void)Think(limits);
        // The same men one move before, with each rook's right: the table's castling is legal
        // after that move in one of them.
        for (const char rook : {one.men.outer, one.men.inner}) {
            setup.Set(one.men.WithRight(rook));
            replies += Think(ToDepth(Shallow));
        }
    }
    EXPECT_GT(replies, 100);
}

TEST_F(TwoCastlingSets, MovesOfTheTableAreTriedOnlyWhereTheyAreGenerated) {
    std::mt19937_64 random(961);
    const auto picker = std::make_unique<CMovePicker>();
    int tried = 0;
    for (int i = 0; i < 300; ++i) {
        const Case one = RandomCase(random);
        for (const char rook : {one.men.outer, one.men.inner}) {
            setup.Set(one.men.WithRight(rook));
            ASSERT_TRUE(setup.position.MakeMove(one.first));
            setup.hash.BeginSearch(false);
            setup.hash.Store(setup.position.key, 0, 1, Bound::Exact, one.castling);
            picker->Reset(0, false);
            const Move move = setup.search->NextMove(*picker);
            EXPECT_TRUE(IsGenerated(setup.position, move))
                << MoveName(move) << " in " << CPositionText(setup.position).GetFen();
            tried += SameMove(move, one.castling) ? 1 : 0;
        }
    }
    EXPECT_GT(tried, 30);
}

}  // namespace
}  // namespace brenquil
