// The positions and figures that the self-test checks the engine against.
//
// The node counts are those of the published perft suites, the keys those published with the format
// of the opening books.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace brenquil {

/// A position and the number of legal lines of a length from it.
struct PerftTestRow {
    std::string_view fen;
    std::uint32_t depth;
    std::uint64_t nodes;
};

/// A position, its key, and moves that lead to it from the start position.
struct HashTestRow {
    std::string_view fen;
    std::uint64_t key;
    std::string_view moves;
};

// clang-format off
inline constexpr std::array<PerftTestRow, 6> StandardPerftRows = {{
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 6, 119060324},
    {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1", 5, 193690690},
    {"8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67", 2, 279},
    {"8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28", 6, 38633283},
    {"rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", 5, 11139762},
    {"8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1", 7, 178633661},
}};

inline constexpr std::array<PerftTestRow, 18> Chess960PerftRows = {{
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
    {"2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w KQkq - 0 1", 6, 3396258275},
    // The same row twice, which is kept.
    {"nr1kqrbn/pbpppppp/1p6/8/8/1P6/PBPPPPPP/NR1KQRBN w KQkq - 0 1", 6, 319767919},
    {"r1k1r2q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K1R2Q w KQkq - 0 1", 6, 172843489},
    {"r1k2r1q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K2R1Q w KQkq - 0 1", 6, 418430598},
    {"8/8/8/4B2b/6nN/8/5P2/2R1K2k w Q - 0 1", 6, 44554839},
    {"2r5/8/8/8/8/8/6PP/k2KR3 w K - 0 1", 7, 259604208},
    {"4r3/3k4/8/8/8/8/6PP/qR1K1R2 w KQ - 0 1", 6, 281330710},
}};

inline constexpr std::array<HashTestRow, 9> HashRows = {{
    {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 0x463B96181691FC9C, ""},
    {"rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1", 0x823C9B50FD114196, "e2e4"},
    {"rnbqkbnr/ppp1pppp/8/3p4/4P3/8/PPPP1PPP/RNBQKBNR w KQkq d6 0 2", 0x0756B94461C50FB0, "e2e4 d7d5"},
    {"rnbqkbnr/ppp1pppp/8/3pP3/8/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2", 0x662FAFB965DB29D4, "e2e4 d7d5 e4e5"},
    {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", 0x22A48B5A8E47FF78, "e2e4 d7d5 e4e5 f7f5"},
    {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR b kq - 0 3", 0x652A607CA3F242C1, "e2e4 d7d5 e4e5 f7f5 e1e2"},
    {"rnbq1bnr/ppp1pkpp/8/3pPp2/8/8/PPPPKPPP/RNBQ1BNR w - - 0 4", 0x00FDD303C946BDD9, "e2e4 d7d5 e4e5 f7f5 e1e2 e8f7"},
    {"rnbqkbnr/p1pppppp/8/8/PpP4P/8/1P1PPPP1/RNBQKBNR b KQkq c3 0 3", 0x3C8123EA7B067637, "a2a4 b7b5 h2h4 b5b4 c2c4"},
    {"rnbqkbnr/p1pppppp/8/8/P6P/R1p5/1P1PPPP1/1NBQKBNR b Kkq - 0 4", 0x5C3F9B829B279560, "a2a4 b7b5 h2h4 b5b4 c2c4 b4c3 a1a3"},
}};
// clang-format on

}  // namespace brenquil
