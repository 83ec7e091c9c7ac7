// The contents of Nalimov tables: every byte of every file, marks of places without a position
// included, where the positions are walked over by the independent enumerator of the tests.
// ctest: threads

#include "../../support/nalimov_positions.h"
#include "../../support/nalimov_test_folder.h"
#include "../../support/solved_endings.h"
#include "tables/nalimov_bytes.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

using Solved = test::CSolvedInMemory<DistanceToMate>;

TEST(NalimovBytes, BytesOfCodes) {
    EXPECT_EQ(NalimovByteOf(0), 0);
    EXPECT_EQ(NalimovByteOf(1), 126) << "mate in one";
    EXPECT_EQ(NalimovByteOf(126), 1);
    EXPECT_EQ(NalimovByteOf(127), 0x80);
    EXPECT_EQ(NalimovByteOf(-1), 0x82) << "mated";
    EXPECT_EQ(NalimovByteOf(-127), 0x81) << "lost in 126";
    EXPECT_EQ(NalimovByteOf(-128), NalimovNoValue) << "has no byte";
    for (int code = -127; code <= 127; ++code) {
        EXPECT_EQ(CodeOfNalimovByte(NalimovByteOf(code)), code);
    }
}

TEST(NalimovBytes, EveryPlaceHasItsPositionOrTheMark) {
    test::CSolvedMates mates;
    for (int table = 1; table < NalimovFirstFourMen; ++table) {
        for (const int side : {0, 1}) {
            std::vector<std::uint8_t> bytes = mates.TableBytes(table, side);
            ASSERT_EQ(bytes.size(), NalimovPlaces(EndingOf(table), side));
            CPosition position;
            std::size_t wrong = 0;
            test::CTableEnumerator(table, side).Visit([&](const test::TablePosition& men) {
                test::SetUp(position, men, side, false);
                const int plies = mates.Plies(position);
                const int moves = (plies + 1) / 2;
                const int wanted = plies == test::CSolvedMates::Draw ? 0
                                 : plies % 2 == 1                    ? 127 - moves
                                                                     : (moves - 126) & 0xFF;
                std::uint8_t& byte = bytes[NalimovCalculator(table, side)(men.first, men.second,
                                                                          men.epSquare, false)];
                wrong += byte != wanted ? 1 : 0;
                byte = NalimovNoValue;
            });
            EXPECT_EQ(wrong, 0U) << table << side;
            const auto marks = std::count(bytes.begin(), bytes.end(), NalimovNoValue);
            EXPECT_EQ(marks, std::ssize(bytes)) << "values without a position";
        }
    }
}

TEST(NalimovBytes, ValuesComeBackFromBytes) {
    Solved solved;
    const SolvedValues& values = solved.ValuesOf("kpk");
    SolvedValues back(values.Of());
    for (const int side : {0, 1}) {
        const Colour colour = side == 0 ? White : Black;
        ReadNalimovValues(
            NalimovBytes(values, solved.solved, side, solved.workers, solved.progress), colour,
            back, solved.workers, solved.progress);
        EXPECT_TRUE(std::equal(back.Slice(colour, 0), back.Slice(colour, 0) + back.Places(),
                               values.Slice(colour, 0)));
    }
}

TEST(NalimovBytes, ATableWithoutAValueIsRefused) {
    Solved solved;
    SolvedValues back(EndingOf(EndingOfName("kqk")));
    const std::vector<std::uint8_t> marks(NalimovPlaces(back.Of(), 0), NalimovNoValue);
    EXPECT_THROW(ReadNalimovValues(marks, White, back, solved.workers, solved.progress),
                 CTableError);
}

// The sizes of the files that have been published.
TEST(NalimovBytes, PlacesOfThreeMen) {
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kqk")), 0), 25629U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("krk")), 0), 27030U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kbk")), 0), 27243U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("knk")), 0), 26282U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kpk")), 0), 81664U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kpk")), 1), 84012U);
}

}  // namespace
}  // namespace brenquil
