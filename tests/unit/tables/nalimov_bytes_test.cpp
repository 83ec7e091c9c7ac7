// What the product makes of an ending against the sample solver, which shares no code with it:
// every byte of every file, marks of places without a position included; and figures of the
// literature.

#include "../../support/nalimov_table_writer.h"
#include "solved_endings.h"
#include "tables/nalimov_bytes.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

using Solved = test::CSolvedInMemory<DistanceToMate>;

void CompareFiles(Solved& solved, test::CEndgameSolver& sample, const std::string& name) {
    const SolvedValues& values = solved.ValuesOf(name);
    const Ending& ending = values.Of();
    for (int side = 0; side < (HasOneNalimovFile(ending) ? 1 : 2); ++side) {
        const std::vector<std::uint8_t> made =
            NalimovBytes(values, solved.solved, side, solved.workers, solved.progress);
        const test::Bytes expected = test::TableBytes(sample, ending.number, side);
        ASSERT_EQ(made.size(), expected.size()) << name << side;
        const auto differs = std::mismatch(made.begin(), made.end(), expected.begin());
        ASSERT_EQ(differs.first - made.begin(), std::ssize(made)) << name << side;
    }
}

/// The most moves to mate of either side to move.
int LongestMate(const SolvedValues& values) {
    int longest = 0;
    for (const Colour colour : {White, Black}) {
        const std::int8_t* const codes = values.Slice(colour, 0);
        for (std::size_t place = 0; place < values.Places(); ++place) {
            longest = std::max<int>(longest, codes[place] > 0 ? codes[place] : -codes[place] - 1);
        }
    }
    return longest;
}

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

TEST(NalimovBytes, ThreeMenAreThoseOfTheSampleSolver) {
    Solved solved;
    test::CEndgameSolver sample;
    for (const char* const name : {"knk", "kbk", "krk", "kqk", "kpk"}) {
        CompareFiles(solved, sample, name);
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

// Numbers of positions and longest mates of three men: "The Kotok-McCarthy program" and every
// collection of endgame tables since.
TEST(NalimovBytes, FiguresOfThreeMen) {
    Solved solved;
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kqk")), 0), 25629U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("krk")), 0), 27030U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kbk")), 0), 27243U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("knk")), 0), 26282U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kpk")), 0), 81664U);
    EXPECT_EQ(NalimovPlaces(EndingOf(EndingOfName("kpk")), 1), 84012U);
    EXPECT_EQ(LongestMate(solved.ValuesOf("kqk")), 10);
    EXPECT_EQ(LongestMate(solved.ValuesOf("krk")), 16);
    EXPECT_EQ(LongestMate(solved.ValuesOf("kpk")), 28);
    EXPECT_EQ(LongestMate(solved.ValuesOf("kbk")), 0);
}

TEST(NalimovBytesSlowReleaseOnly, FourMenAreThoseOfTheSampleSolver) {
    Solved solved;
    test::CEndgameSolver sample;
    // All of them takes half an hour of processor time; BRENQUIL_NALIMOV_MEN=4 asks for that.
    const char* const men = std::getenv("BRENQUIL_NALIMOV_MEN");
    std::vector<std::string> names = {"kqkr"};
    if (men != nullptr && std::string(men) == "4") {
        names.clear();
        for (int number = 1; number <= EndingCount; ++number) {
            if (EndingOf(number).men <= 4) {
                names.push_back(EndingOf(number).name);
            }
        }
    }
    for (const std::string& name : names) {
        CompareFiles(solved, sample, name);
    }
}

}  // namespace
}  // namespace brenquil
