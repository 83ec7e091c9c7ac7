#include "evaluation_setup.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>

// Positions whose scores are known: any change of a number or a rule moves some of them.

namespace brenquil {
namespace {

struct Sample {
    const char* fen;
    Score score;
};

// clang-format off
constexpr Sample Samples[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0},
    {"8/8/3k4/p1p5/1r3n2/8/K7/8 b - - 3 38", 1442},
    {"rn1q4/p1ppk1bp/6p1/1p3p2/2bP4/1PP4N/P4PPP/RN2KB1R w KQ - 1 13", -793},
    {"r2qkbr1/5p1p/3p1p2/1pp1n3/4b3/1P5P/2PB1PP1/R2QKBNR w KQq - 0 15", -215},
    {"5K2/8/5p2/6k1/N7/5b2/8/8 w - - 0 1", -212},
    {"5kb1/r3N3/8/8/1K6/3r2P1/4n3/b6n b - - 0 1", 2371},
    {"8/3P4/2k5/8/8/8/8/1K6 w - - 0 1", 220},
    {"8/8/8/6pp/3k4/p3RBP1/4PK2/8 w - - 2 50", 863},
    {"4r1k1/2p3p1/1p1P1p2/p7/P1P5/4n3/P2q4/6K1 b - - 0 46", 2504},
    {"r1bqkbnr/5ppp/p2pp3/1ppPn3/8/1P2B2P/P1P1PPP1/RN1QKBNR w KQkq - 0 8", -48},
    {"5k2/p5pr/4p2p/4Pp1P/8/8/PP3PP1/1QKR2R1 b - - 1 32", -1966},
    {"6qn/6k1/8/p5r1/7Q/1b1P4/4B1n1/5K2 b - - 0 1", 1397},
    {"8/7k/8/8/5K2/P7/8/8 b - - 0 1", -187},
    {"rnb1k1nr/1p1p4/8/p1B3bp/3Pp3/N5P1/PPP1NP1P/R2QKB1R b KQkq - 1 11", -1483},
    {"8/3P4/3k3P/8/8/5K2/2p5/8 b - - 0 1", -157},
    {"r1bqkb1r/1p1p1pp1/p1n1p2p/3p4/1P1PB3/2P1PN1P/P4P2/R1BQK2R b KQkq - 0 11", -33},
    {"8/8/8/1P3k2/5p2/3P4/8/1K6 b - - 0 37", -60},
    {"1K6/4k3/8/8/3P4/8/8/8 w - - 0 1", 202},
    {"8/8/8/8/K7/3P4/8/4k3 b - - 0 1", -167},
    {"2b3r1/7q/3qQ2B/1Q1P4/8/2Nk3N/2P5/5K2 b - - 0 1", -491},
    {"N6B/4k2p/8/p7/b2PP3/8/8/K5N1 b - - 2 34", -617},
    {"2k5/2p2p2/p3p2p/2BbP2r/5P2/4K3/8/8 b - - 3 39", 965},
    {"1R6/7k/5p2/3p2pp/r1rP4/4P1PP/3b1P2/1R2N1K1 w - - 6 50", 143},
    {"2Nk1b2/3n1Bp1/rpp4r/p4P2/5P1q/P2P3N/1PP4P/R2K2QR w - - 1 30", 625},
    {"r5k1/1p3r2/p1n3p1/2Pp1b1p/4p2P/1R2PPB1/3KB3/7R w - - 0 29", -174},
    {"8/4kp1p/3p1p2/8/8/1p6/2rbK3/8 b - - 3 39", 1738},
    {"2b5/6K1/8/2k5/8/8/n7/8 b - - 0 1", 855},
    {"r2qk1nr/pbpp1p2/3b2pp/8/4Pp2/8/PPPP1PPP/RNB1KB1R w KQkq - 0 8", -1164},
    {"5k2/8/8/7P/2P1p3/1N2P3/8/2K5 b - - 1 62", -677},
    {"8/p3k3/1pp4p/5p2/6R1/P4q2/7K/8 b - - 2 46", 1011},
    {"r1b2rk1/1p1p2p1/p1n1pn1p/5p2/2P5/3P1N1P/3KPBP1/1R3B1R b - - 0 18", 42},
    {"6r1/p1pk4/5p1p/8/6P1/1P6/P2P4/1RBK4 w - - 0 24", 254},
    {"8/8/8/5p2/8/1K6/5k2/8 w - - 0 1", -182},
    {"8/8/8/8/1k2N3/1q6/8/2K2N2 w - - 0 1", -408},
    {"8/8/5QQQ/1k6/n1R4B/8/2Q5/QK6 w - - 0 1", 6791},
    {"4r1k1/2p3p1/1p3p2/p2P4/P1P1P1n1/8/P3K3/3RQ2q b - - 4 39", 581},
    {"8/8/2k3b1/8/8/1R6/8/4K1n1 b - - 0 1", 167},
    {"8/7K/8/3p4/2p5/p7/8/7k w - - 0 62", -438},
    {"6b1/4P2r/8/k2K4/8/8/8/8 w - - 0 1", -758},
    {"4k3/2nQ4/6n1/P6b/2N3Q1/6K1/8/3r4 b - - 0 1", -1148},
    {"8/p4b2/3k4/8/8/8/1K6/8 b - - 0 1", 0},
    {"4kn2/7R/2pp1p2/5Pb1/3P4/1PP4P/5P2/1N3KN1 b - - 0 26", -894},
    {"8/4r3/p7/2R1q1k1/6P1/5K2/P7/2R5 b - - 2 46", 402},
    {"r2qkb2/ppp1pnp1/3p1p2/2n5/8/5P1B/PP1PP2P/RNBK3R b q - 1 10", 816},
    {"3R4/8/5K2/3p1p2/8/8/3k4/8 w - - 0 1", 496},
    {"4k2r/p1pp1p2/3b2pp/8/5p2/N2q2nP/PPPP4/R1B3Kb w k - 2 17", -2153},
    {"4r3/2R5/p7/4qk2/8/6P1/P1R1K3/1r6 w - - 0 43", -1143},
    {"8/8/1k6/8/8/b3p3/4K3/8 w - - 0 1", -667},
};

// clang-format on

TEST(SampleValues, BuiltInPositions) {
    EvaluationSetup setup(1024);
    for (const Sample& sample : Samples) {
        EXPECT_EQ(setup.Full(sample.fen), sample.score) << sample.fen;
    }
}

/// The folder of sample answers: named by BRENQUIL_VECTORS, beside the test data that
/// BRENQUIL_DATA names, or beside the repository.
std::filesystem::path VectorFolder() {
    if (const char* const named = std::getenv("BRENQUIL_VECTORS")) {
        return named;
    }
    if (const char* const data = std::getenv("BRENQUIL_DATA")) {
        return std::filesystem::path(data).parent_path() / "vectors";
    }
    const std::filesystem::path root =
        std::filesystem::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
    return root.parent_path() / "shared" / "vectors";
}

TEST(SampleValues, PositionsOfTheVectorFile) {
    std::ifstream file(VectorFolder() / "eval.tsv");
    if (!file) {
        GTEST_SKIP() << "no eval.tsv in " << VectorFolder();
    }
    EvaluationSetup setup(1024);
    int count = 0;
    for (std::string line; std::getline(file, line); ++count) {
        const std::size_t tab = line.find('\t');
        ASSERT_NE(tab, std::string::npos) << line;
        EXPECT_EQ(setup.Full(line.substr(0, tab)), std::stoi(line.substr(tab + 1))) << line;
    }
    EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace brenquil
