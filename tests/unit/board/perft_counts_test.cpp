// Counts of the nodes of whole trees, every leaf made and taken back.

#include "board_checks.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace brenquil {
namespace {

std::uint64_t CountNodes(CPosition& position, int depth) {
    if (depth == 0) {
        return 1;
    }
    const CMoveGenerator generator(position);
    MoveList list;
    if (position.inCheck) {
        generator.GenerateEvasions(list);
    } else {
        generator.GenerateMoves(list, MoveKinds::All);
    }
    std::uint64_t nodes = 0;
    for (const Move move : list) {
        if (position.MakeMove(move)) {
            nodes += CountNodes(position, depth - 1);
            position.UndoMove(move);
        }
    }
    return nodes;
}

struct Row {
    const char* fen;
    int depth;
    std::uint64_t nodes;
};

/// Published counts, at depths that take a moment.
constexpr Row StandardRows[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 4, 197281},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 4, 4085603},
    {"8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67", 2, 279},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 5, 674624},
};

constexpr Row Chess960Rows[] = {
    {"rbknqnbr/pppppppp/8/8/8/8/PPPPPPPP/RBKNQNBR w KQkq - 0 1", 4, 203232},
    {"bnrbnkrq/pppppppp/8/8/8/8/PPPPPPPP/BNRBNKRQ w KQkq - 0 1", 4, 233585},
    {"qbrnnkbr/pppppppp/8/8/8/8/PPPPPPPP/QBRNNKBR w KQkq - 0 1", 4, 200996},
    {"nqbnrbkr/pppppppp/8/8/8/8/PPPPPPPP/NQBNRBKR w KQkq - 0 1", 4, 166982},
    {"2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w KQkq - 0 1", 4, 2583102},
    {"nr1kqrbn/pbpppppp/1p6/8/8/BP6/P1PPPPPP/NR1KQRBN b KQkq - 0 1", 4, 382020},
};

/// Published counts of deep trees: seconds each in a release build.
constexpr Row DeepRows[] = {
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 6, 119060324},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5, 193690690},
    {"8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67", 2, 279},
    {"8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28", 6, 38633283},
    {"rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", 5, 11139762},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 7, 178633661},
    {"rbbknnqr/pppppppp/8/8/8/8/PPPPPPPP/RBBKNNQR w KQkq - 0 1", 6, 124381396},
    {"bnrkrnqb/pppppppp/8/8/8/8/PPPPPPPP/BNRKRNQB w KQkq - 0 1", 6, 146858295},
    {"nrbbqknr/pppppppp/8/8/8/8/PPPPPPPP/NRBBQKNR w KQkq - 0 1", 6, 97939069},
    {"bnrbnkrq/pppppppp/8/8/8/8/PPPPPPPP/BNRBNKRQ w KQkq - 0 1", 6, 145999259},
    {"rbknqnbr/pppppppp/8/8/8/8/PPPPPPPP/RBKNQNBR w KQkq - 0 1", 6, 126480040},
    {"qbrnnkbr/pppppppp/8/8/8/8/PPPPPPPP/QBRNNKBR w KQkq - 0 1", 6, 121613156},
    {"nqbnrbkr/pppppppp/8/8/8/8/PPPPPPPP/NQBNRBKR w KQkq - 0 1", 6, 93888956},
    {"nrnkbqrb/pppppppp/8/8/8/8/PPPPPPPP/NRNKBQRB w KQkq - 0 1", 6, 97044730},
    {"2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w KQkq - 0 1", 5, 94370149},
    {"nr1kqrbn/pbpppppp/1p6/8/8/1P6/PBPPPPPP/NR1KQRBN w KQkq - 0 1", 6, 319767919},
    {"nr1kqrbn/pbpppppp/1p6/8/8/BP6/P1PPPPPP/NR1KQRBN b KQkq - 0 1", 6, 259878834},
    {"r1k1r2q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K1R2Q w KQkq - 0 1", 6, 172843489},
    {"r1k2r1q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K2R1Q w KQkq - 0 1", 6, 418430598},
    {"8/8/8/4B2b/6nN/8/5P2/2R1K2k w Q - 0 1", 6, 44554839},
    {"2r5/8/8/8/8/8/6PP/k2KR3 w K - 0 1", 7, 259604208},
    {"4r3/3k4/8/8/8/8/6PP/qR1K1R2 w KQ - 0 1", 6, 281330710},
};

void ExpectCounts(const Row& row) {
    if (WorkDivisor() > 1 && row.nodes > 400000) {
        return;
    }
    CPosition position = FromFen(row.fen);
    const CPosition before = position;
    EXPECT_EQ(CountNodes(position, row.depth), row.nodes) << row.fen;
    EXPECT_EQ(Differences(position, before), "");
}

TEST(PerftCounts, OfStandardPositionsAreThePublishedOnes) {
    for (const Row& row : StandardRows) {
        ExpectCounts(row);
    }
}

TEST(PerftCounts, OfChess960PositionsAreThePublishedOnes) {
    for (const Row& row : Chess960Rows) {
        ExpectCounts(row);
    }
}

class CDeepPerft : public testing::TestWithParam<Row> {};

using DeepPerftProof = CDeepPerft;

TEST_P(DeepPerftProof, CountIsThePublishedOne) {
    ExpectCounts(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Rows, DeepPerftProof, testing::ValuesIn(DeepRows),
                         [](const testing::TestParamInfo<Row>& row) {
                             return "Position" + std::to_string(row.index + 1);
                         });

/// The counts of one position in a file of published counts, by depth.
struct PublishedCounts {
    std::string fen;
    std::vector<std::pair<int, std::uint64_t>> counts;
};

/// "<fen> ;D1 20 ;D2 400" on each line.
std::vector<PublishedCounts> ReadEpd(std::istream& file) {
    std::vector<PublishedCounts> positions;
    for (std::string line; std::getline(file, line);) {
        const std::size_t end = line.find(';');
        if (end == std::string::npos) {
            continue;
        }
        PublishedCounts position{line.substr(0, end), {}};
        std::replace(line.begin(), line.end(), ';', ' ');
        std::istringstream words(line.substr(end));
        std::string depth;
        std::uint64_t nodes = 0;
        while (words >> depth >> nodes) {
            position.counts.emplace_back(std::stoi(depth.substr(1)), nodes);
        }
        positions.push_back(position);
    }
    return positions;
}

/// "epd <fen>", then lines "perft <depth> <nodes>".
std::vector<PublishedCounts> ReadPerft(std::istream& file) {
    std::vector<PublishedCounts> positions;
    for (std::string line; std::getline(file, line);) {
        std::istringstream words(line);
        std::string key;
        words >> key;
        if (key == "epd") {
            positions.push_back({line.substr(4), {}});
        } else if (key == "perft" && !positions.empty()) {
            int depth = 0;
            std::uint64_t nodes = 0;
            words >> depth >> nodes;
            positions.back().counts.emplace_back(depth, nodes);
        }
    }
    return positions;
}

/// Counts each position of a file at its greatest depth of at most `limit` nodes.
void ExpectPublishedCounts(const char* name, std::size_t positionsWanted, std::uint64_t limit) {
    const std::string path = SharedPath("BRENQUIL_DATA", "data", std::string("perft/") + name);
    if (path.empty()) {
        GTEST_SKIP() << "the published counts are not there";
    }
    std::ifstream file(path);
    const std::vector<PublishedCounts> positions =
        path.ends_with(".epd") ? ReadEpd(file) : ReadPerft(file);
    EXPECT_EQ(positions.size(), positionsWanted);
    const auto divisor = static_cast<std::uint64_t>(WorkDivisor());
    std::size_t counted = 0;
    for (const PublishedCounts& published : positions) {
        std::pair<int, std::uint64_t> deepest{0, 1};
        for (const auto& count : published.counts) {
            if (count.second <= limit / divisor && count.first > deepest.first) {
                deepest = count;
            }
        }
        CPosition position = FromFen(published.fen);
        ASSERT_EQ(CountNodes(position, deepest.first), deepest.second)
            << published.fen << " depth " << deepest.first;
        counted += deepest.first > 0 ? 1 : 0;
    }
    EXPECT_GE(counted + 2, positions.size());  // two positions have counts of deep trees only
}

TEST(PerftFiles, OfStandardPositionsAreCountedRight) {
    ExpectPublishedCounts("standard.epd", 128, 100000);
}

TEST(PerftFiles, OfAllChess960StartsAreCountedRight) {
    ExpectPublishedCounts("fischer.epd", 960, 30000);
}

TEST(PerftFiles, OfChess960StartsInTheOtherFormAreCountedRight) {
    ExpectPublishedCounts("chess960.perft", 960, 3000);
}

TEST(PerftFiles, OfTrickyPositionsAreCountedRight) {
    ExpectPublishedCounts("tricky.perft", 19, 300000);
}

TEST(PerftFiles, OfMoreTrickyPositionsAreCountedRight) {
    ExpectPublishedCounts("tricky-shakmaty.perft", 26, 300000);
}

TEST(PerftFiles, OfChess960MiddleGamesAreCountedRight) {
    ExpectPublishedCounts("frc_perftsuite.epd", 9, 300000);
}

TEST(PerftFiles, OfRandomPositionsAreCountedRight) {
    ExpectPublishedCounts("random.perft", 6838, 3000);
}

}  // namespace
}  // namespace brenquil
