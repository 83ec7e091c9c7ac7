// The rows of the move listing.

#include "../../../support/strings.h"
#include "../fake_base.h"
#include "interface/console/move_listing.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace brenquil {
namespace {

struct CMoveListingFixture : testing::Test {
    [[nodiscard]] Strings List(bool all) const {
        return ListMoves(bases, *position, all, CastlingNotation::KingTarget);
    }

    [[nodiscard]] Move At(const char* text) const {
        return CPositionText::TextToMove(text, *position, false);
    }

    CBaseList bases;
    CFakeBase base;
    std::unique_ptr<CPosition> position = std::make_unique<CPosition>();
};

using MoveListing = CMoveListingFixture;

TEST_F(MoveListing, WithoutBasesListsAllMovesNumberedAndWithoutMarks) {
    const Strings rows = List(true);
    ASSERT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows[0], "  1. a2a3");
    EXPECT_EQ(rows[19], " 20. g1h3");
    EXPECT_TRUE(List(false).empty());
}

TEST_F(MoveListing, KnownMovesComeFirstByScore) {
    bases.Add(base);
    base.Enter(At("e2e4"), 10, "50%");
    base.Enter(At("d2d4"), 20, "40%");
    base.Enter(At("h2h4"), -5, "bad");
    const Strings rows = List(true);
    ASSERT_EQ(rows.size(), 20U);
    EXPECT_EQ(rows[0], "  1. d2d4 40%");
    EXPECT_EQ(rows[1], "  2. e2e4 50%");
    EXPECT_EQ(rows[2], "  3. a2a3");
    EXPECT_EQ(rows[19], " 20. h2h4 bad");
    EXPECT_EQ(List(false), (Strings{"  1. d2d4 40%", "  2. e2e4 50%", "  3. h2h4 bad"}));
}

TEST_F(MoveListing, FiveMovesOfALineAreShownAndTheRestIsCounted) {
    bases.Add(base);
    PvLine line;
    for (const char* text : {"a2a3", "b2b3", "c2c3", "d2d3", "e2e3"}) {
        line.Append(At(text));
    }
    base.Enter(At("e2e4"), 10, "7", line);
    line.Append(At("f2f3"));
    line.Append(At("g2g3"));
    base.Enter(At("d2d4"), 5, "", line);
    const Strings rows = List(true);
    EXPECT_EQ(rows[0], "  1. e2e4 7 a2a3 b2b3 c2c3 d2d3 e2e3");
    EXPECT_EQ(rows[1], "  2. d2d4 a2a3 b2b3 c2c3 d2d3 e2e3 ... (2)");
    EXPECT_EQ(List(false), (Strings{"  1. e2e4 7", "  2. d2d4"}));
}

TEST_F(MoveListing, MovesThatLeaveTheKingInCheckAreListed) {
    CPositionText(*position).SetFen("4k3/8/8/8/8/8/P3r3/4K3 w - - 0 1");
    Strings moves;
    for (const std::string& row : List(true)) {
        moves.push_back(row.substr(5));
    }
    EXPECT_EQ(moves, (Strings{"a2a3", "a2a4", "e1d1", "e1f1", "e1d2", "e1e2", "e1f2"}));
}

}  // namespace
}  // namespace brenquil
