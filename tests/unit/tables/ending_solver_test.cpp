// The solver: against the slow rules of chess, and against figures of the literature.
// ctest: threads

#include "../../support/slow_proof.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace brenquil {
namespace {

using Mates = test::CSolvedInMemory<DistanceToMate>;
using Zeroing = test::CSolvedInMemory<DistanceToZeroing>;

constexpr const char* ThreeMen[] = {"knk", "kbk", "krk", "kqk", "kpk"};

/// BRENQUIL_NALIMOV_MEN=4 asks for everything, which takes an hour.
bool AllFourMen() {
    const char* const men = std::getenv("BRENQUIL_NALIMOV_MEN");
    return men != nullptr && std::string(men) == "4";
}

std::vector<std::string> FourMen() {
    std::vector<std::string> names;
    for (int number = 1; number <= EndingCount; ++number) {
        if (EndingOf(number).men == 4) {
            names.push_back(EndingOf(number).name);
        }
    }
    return names;
}

/// The most moves to mate with the winner to move.
int LongestMate(const SolvedValues& values, Colour winner) {
    const std::int8_t* const codes = values.Slice(winner, 0);
    return std::max(0, int{*std::max_element(codes, codes + values.Places())});
}

void ExpectRight(const test::SlowProof& proof, const std::string& name) {
    EXPECT_GT(proof.positions, 0U) << name;
    EXPECT_EQ(proof.wrong, 0U) << name << ": " << proof.first;
}

TEST(EndingSolver, MatesOfThreeMenFollowFromTheSlowRules) {
    Mates solved;
    for (const char* const name : ThreeMen) {
        ExpectRight(test::ProveMates(solved, name, 1), name);
    }
}

TEST(EndingSolver, ClassesAndDistancesOfThreeMenFollowFromTheSlowRules) {
    Zeroing solved;
    for (const char* const name : ThreeMen) {
        ExpectRight(test::ProveZeroing(solved, name, 1), name);
    }
}

TEST(EndingSolverProof, FourMenFollowFromTheSlowRules) {
    const bool all = AllFourMen();
    constexpr std::size_t SomePlaces = 37;  // odd: the fields of the numbering are powers of two
    Mates mates;
    Zeroing zeroing;
    std::uint64_t inPassing = 0;
    for (const std::string& name :
         all ? FourMen() : std::vector<std::string>{"kqkr", "kpkp", "kqkp"}) {
        const test::SlowProof proof = test::ProveMates(mates, name, all ? 1 : SomePlaces);
        ExpectRight(proof, name);
        inPassing += proof.inPassing;
        ExpectRight(test::ProveZeroing(zeroing, name, all ? 1 : SomePlaces), name);
    }
    EXPECT_GT(inPassing, 100U);
}

/// Moves to mate with the winner to move, as the literature counts them.
struct KnownMate {
    const char* name;
    int moves;            ///< the first side mates; 0 if it cannot be forced
    int otherMoves = -1;  ///< the second side mates; below 0 where the lists say nothing
};

void ExpectKnown(Mates& solved, const KnownMate& known) {
    EXPECT_EQ(LongestMate(solved.ValuesOf(known.name), White), known.moves) << known.name;
    if (known.otherMoves >= 0) {
        EXPECT_EQ(LongestMate(solved.ValuesOf(known.name), Black), known.otherMoves) << known.name;
    }
}

// T. Stroehlein, Untersuchungen ueber kombinatorische Spiele (Munich, 1970) solved king and queen
// and king and rook; M. R. B. Clarke, A quantitative study of king and pawn against king (Advances
// in Computer Chess 1, 1977) the pawn.
TEST(EndingSolver, LongestMatesOfThreeMenAreTheKnownOnes) {
    Mates solved;
    for (const KnownMate& known : {KnownMate{"kqk", 10, 0}, KnownMate{"krk", 16, 0},
                                   KnownMate{"kpk", 28, 0}, KnownMate{"kbk", 0, 0}}) {
        ExpectKnown(solved, known);
    }
}

// The longest mates of four men as all published lists have them since K. Thompson, Retrograde
// analysis of certain endgames (ICCA Journal 9, 1986), and its successors that count to mate.
TEST(EndingSolverProof, LongestMatesOfFourMenAreTheKnownOnes) {
    Mates solved;
    for (const KnownMate& known :
         {KnownMate{"kqqk", 4},      KnownMate{"kqrk", 6},      KnownMate{"krrk", 7},
          KnownMate{"kqbk", 8},      KnownMate{"kqnk", 9},      KnownMate{"krbk", 16},
          KnownMate{"krnk", 16},     KnownMate{"kbbk", 19},     KnownMate{"kbnk", 33},
          KnownMate{"kqkq", 13, 13}, KnownMate{"krkr", 19, 19}, KnownMate{"kqkb", 17},
          KnownMate{"kqkn", 21},     KnownMate{"kqkr", 35},     KnownMate{"krkb", 29},
          KnownMate{"krkn", 40},     KnownMate{"kqpk", 10},     KnownMate{"krpk", 16},
          KnownMate{"knpk", 27},     KnownMate{"kbpk", 31},     KnownMate{"kppk", 32},
          KnownMate{"kqkp", 28, 29}, KnownMate{"krkp", 26, 43}, KnownMate{"kpkp", 33, 33}}) {
        ExpectKnown(solved, known);
    }
}

}  // namespace
}  // namespace brenquil
