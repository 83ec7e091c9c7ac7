// Which endings there are, and their numbering.

#include "tables/ending.h"
#include "tables/ending_index.h"

#include <gtest/gtest.h>
#include <random>
#include <set>

namespace brenquil {
namespace {

std::vector<std::string> NamesOf(const std::vector<int>& numbers) {
    std::vector<std::string> names;
    for (const int number : numbers) {
        names.push_back(EndingOf(number).name);
    }
    return names;
}

TEST(Ending, NamesOfBothFamilies) {
    EXPECT_EQ(EndingOf(EndingOfName("kqk")).syzygyName, "KQvK");
    EXPECT_EQ(EndingOf(EndingOfName("KRPvKB")).name, "krpkb");
    EXPECT_EQ(EndingOfName("krkq"), EndingOfName("kqkr")) << "sides in any order";
    EXPECT_EQ(EndingOfName("kkq"), EndingOfName("kqk"));
    EXPECT_EQ(EndingOfName("kpqkr"), EndingOfName("kqpkr"));
    for (const char* const name : {"", "k", "kk", "kqq", "kkk", "qkk", "vkqk", "kqkx"}) {
        EXPECT_EQ(EndingOfName(name), 0) << name;
    }
    EXPECT_EQ(EndingOfName("kqqkqq"), 0) << "six men";
}

TEST(Ending, NumbersOfMen) {
    std::array<int, 6> count{};
    for (int number = 1; number <= EndingCount; ++number) {
        ++count[EndingOf(number).men];
    }
    EXPECT_EQ(count, (std::array<int, 6>{0, 0, 0, 5, 30, 110}));
}

TEST(Ending, MenStandKingsFirstAndPawnsLast) {
    const Ending& ending = EndingOf(EndingOfName("kqpkr"));
    const std::array<EndingMan, 5> men = {
        {{King, White}, {King, Black}, {Queen, White}, {Rook, Black}, {Pawn, White}}};
    EXPECT_EQ(ending.man, men);
    EXPECT_EQ(ending.pieces, 4U);
    EXPECT_FALSE(ending.HasPawnsOfBoth());
    EXPECT_TRUE(EndingOf(EndingOfName("kppkp")).HasPawnsOfBoth());
    EXPECT_TRUE(EndingOf(EndingOfName("krkr")).isSymmetric);
}

TEST(Ending, WhatItCanTurnInto) {
    EXPECT_EQ(NamesOf(WithSuccessors({EndingOfName("kpk")})),
              (std::vector<std::string>{"knk", "kbk", "krk", "kqk", "kpk"}));
    EXPECT_EQ(NamesOf(WithSuccessors({EndingOfName("kqkr")})),
              (std::vector<std::string>{"krk", "kqk", "kqkr"}));
    EXPECT_EQ(WithSuccessors({EndingOfName("kppkp")}).size(), 5U + 30 + 75)
        << "all endings with two men against one, all smaller ones";
}

TEST(Ending, AnExitMapsTheMen) {
    // Black's rook takes the queen: what is left is Black's rook against the bare king.
    const Ending& ending = EndingOf(EndingOfName("kqkr"));
    const EndingExit& exit = ending.Exit(2, Ending::NoMan, Pawn);
    EXPECT_EQ(EndingOf(exit.ending).name, "krk");
    EXPECT_TRUE(exit.flipped);
    const EndingSquares squares = {A1, C3, B2, B2};
    const EndingSquares mapped = exit.Map(squares);
    EXPECT_EQ(mapped[0], C6) << "Black's king has the place of the stronger side";
    EXPECT_EQ(mapped[1], A8);
    EXPECT_EQ(mapped[2], B7);
}

class EndingIndexOf : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Some, EndingIndexOf,
                         testing::Values("kqk", "kpk", "kbnk", "kqkr", "kqpk", "kppk", "kpkp",
                                         "kppkp", "kqqkp", "kpppk", "kbbkn"),
                         [](const auto& value) { return std::string(value.param); });

TEST_P(EndingIndexOf, PlacesComeBackAndImagesShareOne) {
    const Ending& ending = EndingOf(EndingOfName(GetParam()));
    const CEndingIndex index(ending);
    std::mt19937_64 random(7);
    for (int round = 0; round < 20000; ++round) {
        EndingSquares squares{};
        std::set<Square> used;
        for (std::size_t man = 0; man < ending.men; ++man) {
            Square square = A1;
            do {
                square = static_cast<Square>(random() % 64);
            } while (used.count(square) != 0 ||
                     (ending.man[man].type == Pawn && (square < A2 || square > H7)));
            used.insert(square);
            squares[man] = square;
        }
        const CEndingIndex::Place place = index.PlaceOf(squares);
        ASSERT_LT(place.slice, index.Slices());
        ASSERT_LT(place.index, index.SliceSize());
        const EndingSquares back = index.SquaresOf(place);
        const CEndingIndex::Place again = index.PlaceOf(back);
        ASSERT_EQ(again.slice, place.slice);
        ASSERT_EQ(again.index, place.index);
        EndingSquares image = squares;
        for (Square& square : image) {
            square ^= H1;
        }
        const CEndingIndex::Place other = index.PlaceOf(image);
        const bool isOwnMirror = ending.Pawns() != 0 && other.slice == place.slice &&
                                 index.SquaresOf(other)[0] != back[0];
        if (!isOwnMirror) {
            ASSERT_EQ(other.slice, place.slice);
            ASSERT_EQ(other.index, place.index);
        }
    }
}

TEST_P(EndingIndexOf, PawnMovesAdvance) {
    const Ending& ending = EndingOf(EndingOfName(GetParam()));
    const CEndingIndex index(ending);
    for (std::size_t slice = 0; slice < index.Slices(); ++slice) {
        for (std::size_t man = ending.pieces; man < ending.men; ++man) {
            EndingSquares squares = index.SquaresOf({slice, 0});
            squares[man] += ending.man[man].colour == White ? 8 : -8;
            if (squares[man] >= A2 && squares[man] <= H7 && squares[man] != squares[man ^ 1U]) {
                ASSERT_EQ(index.Advance(index.PlaceOf(squares).slice), index.Advance(slice) + 1);
            }
        }
    }
}

}  // namespace
}  // namespace brenquil
