// The numberings and the index calculators.

#include "../../../support/nalimov_positions.h"
#include "bases/nalimov/nalimov_index.h"
#include "board/position_text.h"

#include <algorithm>
#include <cstdlib>
#include <gtest/gtest.h>
#include <iostream>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace brenquil {
namespace {

using test::CTableEnumerator;
using test::IndexProof;
using test::ProveIndices;
using test::TableNumber;
using test::TablePosition;

const CNalimovEnumeration& Enumeration() {
    return CNalimovEnumeration::Instance();
}

std::uint64_t Positions(std::string_view name, int side) {
    return NalimovCalculator(TableNumber(name), side).Positions();
}

// --- The rules once more, square by square -------------------------------------------------------

bool IsAllowed(int kind, Square king, Square square) {
    const int files = std::abs(FileOf(square) - FileOf(king));
    const int ranks = std::abs(RankOf(square) - RankOf(king));
    if (square == king || (kind <= 1 && (square < 8 || square > 55))) {
        return false;
    }
    switch (kind) {
    case 1: return !(RankOf(king) == RankOf(square) + 1 && files == 1);
    case 2: return files * ranks != 2;
    case 3: return !(files == 1 && ranks == 1);
    case 4: return files + ranks != 1;
    case 5: return files > 1 || ranks > 1;
    default: return true;
    }
}

int Ordinal(int kind, Square king, Square own, Square square) {
    int ordinal = 0;
    for (Square below = A1; below < square; ++below) {
        ordinal += IsAllowed(kind, king, below) && below != own ? 1 : 0;
    }
    return ordinal;
}

std::uint64_t Rest(int kind, Square king, Square own) {
    std::uint64_t rest = 0;
    for (Square square = A1; square <= H8; ++square) {
        rest += IsAllowed(kind, king, square) && square != own ? 1 : 0;
    }
    return rest;
}

std::uint64_t Choose(std::uint64_t n, int count) {
    std::uint64_t ways = 1;
    for (int step = 0; step < count; ++step) {
        ways =
            ways * (n - static_cast<std::uint64_t>(step)) / (static_cast<std::uint64_t>(step) + 1);
    }
    return ways;
}

std::vector<std::pair<Square, Square>> KingPairs(bool pawns) {
    std::vector<std::pair<Square, Square>> pairs;
    for (Square k1 = A1; k1 <= H8; ++k1) {
        for (Square k2 = A1; k2 <= H8; ++k2) {
            const bool touch =
                std::abs(FileOf(k1) - FileOf(k2)) <= 1 && std::abs(RankOf(k1) - RankOf(k2)) <= 1;
            const bool inPlace = pawns ? FileOf(k1) <= 3
                                       : FileOf(k1) <= 3 && RankOf(k1) <= FileOf(k1) &&
                                             (FileOf(k1) != RankOf(k1) || FileOf(k2) >= RankOf(k2));
            if (!touch && inPlace) {
                pairs.emplace_back(k1, k2);
            }
        }
    }
    return pairs;
}

/// Placements of a set of kinds before a king pair, or of all pairs.
std::uint64_t Base(bool pawns, const std::vector<int>& kinds, Square untilK1 = SquareNone,
                   Square untilK2 = SquareNone) {
    std::uint64_t sum = 0;
    for (const auto& [k1, k2] : KingPairs(pawns)) {
        if (k1 == untilK1 && k2 == untilK2) {
            return sum;
        }
        std::uint64_t ways = 1;
        for (const int kind : std::set<int>(kinds.begin(), kinds.end())) {
            ways *= Choose(Rest(kind, k2, k1),
                           static_cast<int>(std::count(kinds.begin(), kinds.end(), kind)));
        }
        sum += ways;
    }
    return sum;
}

// --- Numberings ----------------------------------------------------------------------------------

TEST(NalimovEnumeration, SquareEnumCountsAllowedSquaresInAscendingOrder) {
    for (int kind = 0; kind < NalimovKinds; ++kind) {
        const auto place = static_cast<std::size_t>(kind);
        for (Square king = A1; king <= H8; ++king) {
            for (Square square = A1; square <= H8; ++square) {
                const int expected = IsAllowed(kind, king, square)
                                       ? Ordinal(kind, king, SquareNone, square)
                                       : CNalimovEnumeration::NotAllowed;
                EXPECT_EQ(Enumeration().squareEnum[place][king][square], expected)
                    << kind << " " << king << " " << square;
            }
            EXPECT_EQ(Enumeration().squareCount[place][king], Rest(kind, king, SquareNone));
        }
    }
}

TEST(NalimovEnumeration, KingPairsAreNumberedInOrder) {
    for (const bool pawns : {false, true}) {
        const auto pairs = KingPairs(pawns);
        EXPECT_EQ(pairs.size(), pawns ? 1806U : 462U);
        const auto& table = pawns ? Enumeration().pawnKingPair : Enumeration().freeKingPair;
        std::size_t valid = 0;
        for (Square k1 = A1; k1 <= H8; ++k1) {
            for (Square k2 = A1; k2 <= H8; ++k2) {
                valid += table[k1][k2] != CNalimovEnumeration::NoPair ? 1 : 0;
            }
        }
        EXPECT_EQ(valid, pairs.size());
        for (std::size_t number = 0; number < pairs.size(); ++number) {
            EXPECT_EQ(table[pairs[number].first][pairs[number].second], number);
        }
    }
}

// --- Counts --------------------------------------------------------------------------------------

TEST(NalimovIndex, TellingCountsOfPositions) {
    EXPECT_EQ(Positions("kpk", 0), 81664U);
    EXPECT_EQ(Positions("kpk", 1), 84012U);
    EXPECT_EQ(Positions("knkp", 0), 4931904U);
    EXPECT_EQ(Positions("knkp", 1), 4981504U);
    EXPECT_EQ(Positions("kppkp", 0), 84219361U);
    EXPECT_EQ(Positions("kppkp", 1), 89391280U);
    EXPECT_EQ(Positions("knnknn", 0), 1301488080U);
    EXPECT_EQ(Positions("knnknn", 1), 1301488080U);
    EXPECT_EQ(Positions("kqqpkq", 0), 7297961576U);
    EXPECT_EQ(Positions("kqqpkq", 1), 8514011520U);
}

/// Factors after the base table of one side of a class: of the ordinary positions and of those
/// with an en passant capture, by how many of the resting pieces are alike.
struct Factors {
    std::array<std::uint64_t, 3> ordinary;
    std::array<std::uint64_t, 3> enPassant;  // 0: no such positions
};

/// Pieces and pawns of the first and of the second side.
using Class = std::array<int, 4>;

const std::map<std::pair<Class, int>, Factors>& ClassTable() {
    const auto all = [](std::uint64_t factor) {
        return std::array<std::uint64_t, 3>{factor, factor, factor};
    };
    const std::array<std::uint64_t, 3> none{};
    static const std::map<std::pair<Class, int>, Factors> table = {
        {{{0, 1, 0, 0}, 0}, {all(1), none}},
        {{{0, 1, 0, 0}, 1}, {all(1), none}},
        {{{0, 1, 0, 1}, 0}, {all(47), all(14)}},
        {{{0, 1, 0, 1}, 1}, {all(47), all(14)}},
        {{{0, 2, 0, 0}, 0}, {all(1), none}},
        {{{0, 2, 0, 0}, 1}, {all(1), none}},
        {{{0, 2, 0, 1}, 0}, {all(46), all(616)}},
        {{{0, 2, 0, 1}, 1}, {all(1081), all(616)}},
        {{{0, 2, 0, 2}, 0}, {all(1035), all(26488)}},
        {{{0, 2, 0, 2}, 1}, {all(1035), all(26488)}},
        {{{0, 2, 1, 0}, 0}, {all(60), none}},
        {{{0, 2, 1, 0}, 1}, {all(1128), none}},
        {{{0, 3, 0, 0}, 0}, {all(1), none}},
        {{{0, 3, 0, 0}, 1}, {all(1), none}},
        {{{0, 3, 0, 1}, 0}, {all(45), all(13244)}},
        {{{0, 3, 0, 1}, 1}, {all(16215), all(13244)}},
        {{{0, 3, 1, 0}, 0}, {all(59), none}},
        {{{0, 3, 1, 0}, 1}, {all(17296), none}},
        {{{1, 0, 0, 0}, 0}, {all(1), none}},
        {{{1, 0, 0, 0}, 1}, {all(62), none}},
        {{{1, 0, 0, 1}, 0}, {all(48), none}},
        {{{1, 0, 0, 1}, 1}, {all(61), none}},
        {{{1, 0, 1, 0}, 0}, {all(61), none}},
        {{{1, 0, 1, 0}, 1}, {all(61), none}},
        {{{1, 1, 0, 0}, 0}, {all(1), none}},
        {{{1, 1, 0, 0}, 1}, {all(61), none}},
        {{{1, 1, 0, 1}, 0}, {all(47), all(14)}},
        {{{1, 1, 0, 1}, 1}, {all(2820), all(58 * 14)}},
        {{{1, 1, 0, 2}, 0}, {all(1081), all(616)}},
        {{{1, 1, 0, 2}, 1}, {all(2714), all(35112)}},
        {{{1, 1, 1, 0}, 0}, {all(60), none}},
        {{{1, 1, 1, 0}, 1}, {all(60 * 48), none}},
        {{{1, 1, 1, 1}, 0}, {all(2773), all(57 * 14)}},
        {{{1, 1, 1, 1}, 1}, {all(2773), all(57 * 14)}},
        {{{1, 1, 2, 0}, 0}, {{3540, 1770, 0}, none}},
        {{{1, 1, 2, 0}, 1}, {all(2832), none}},
        {{{1, 2, 0, 0}, 0}, {all(1), none}},
        {{{1, 2, 0, 0}, 1}, {all(60), none}},
        {{{1, 2, 0, 1}, 0}, {all(46), all(616)}},
        {{{1, 2, 0, 1}, 1}, {all(23 * 2773), all(57 * 616)}},
        {{{1, 2, 1, 0}, 0}, {all(59), none}},
        {{{1, 2, 1, 0}, 1}, {all(24 * 2773), none}},
        {{{2, 0, 0, 0}, 0}, {all(1), none}},
        {{{2, 0, 0, 0}, 1}, {{62 * 61, 1891, 0}, none}},
        {{{2, 0, 0, 1}, 0}, {all(48), none}},
        {{{2, 0, 0, 1}, 1}, {{61 * 60, 1830, 0}, none}},
        {{{2, 0, 0, 2}, 0}, {all(1128), none}},
        {{{2, 0, 0, 2}, 1}, {{3540, 1770, 0}, none}},
        {{{2, 0, 1, 0}, 0}, {all(60), none}},
        {{{2, 0, 1, 0}, 1}, {{61 * 60, 1830, 0}, none}},
        {{{2, 0, 1, 1}, 0}, {all(2832), none}},
        {{{2, 0, 1, 1}, 1}, {{3540, 1770, 0}, none}},
        {{{2, 0, 2, 0}, 0}, {{2 * 1770, 1770, 0}, none}},
        {{{2, 0, 2, 0}, 1}, {{2 * 1770, 1770, 0}, none}},
        {{{2, 1, 0, 0}, 0}, {all(1), none}},
        {{{2, 1, 0, 0}, 1}, {{61 * 60, 1830, 0}, none}},
        {{{2, 1, 0, 1}, 0}, {all(47), all(14)}},
        {{{2, 1, 0, 1}, 1}, {{60 * 2773, 30 * 2773, 0}, {58 * 57 * 14, 1653 * 14, 0}}},
        {{{2, 1, 1, 0}, 0}, {all(59), none}},
        {{{2, 1, 1, 0}, 1}, {{3540 * 48, 1770 * 48, 0}, none}},
        {{{3, 0, 0, 0}, 0}, {all(1), none}},
        {{{3, 0, 0, 0}, 1}, {{62 * 61 * 60, 62 * 1830, 37820}, none}},
        {{{3, 0, 0, 1}, 0}, {all(48), none}},
        {{{3, 0, 0, 1}, 1}, {{60 * 3599, 30 * 3599, 35990}, none}},
        {{{3, 0, 1, 0}, 0}, {all(59), none}},
        {{{3, 0, 1, 0}, 1}, {{2 * 107970, 61 * 1770, 35990}, none}},
    };
    return table;
}

TEST(NalimovIndex, CountsOfAllTablesAreBaseTablesTimesTheFactorsOfTheirClass) {
    std::map<std::pair<bool, std::vector<int>>, std::uint64_t> totals;
    const auto total = [&totals](bool pawns, const std::vector<int>& kinds) {
        auto [found, isNew] = totals.try_emplace({pawns, kinds}, 0);
        if (isNew) {
            found->second = Base(pawns, kinds);
        }
        return found->second;
    };
    std::set<std::pair<Class, int>> used;
    for (int table = 1; table <= NalimovTableCount; ++table) {
        const NalimovMaterial men =
            NalimovMaterialOf(NalimovSignatures[static_cast<std::size_t>(table)].name);
        const bool hasPawns = men.first[Pawn] + men.second[Pawn] != 0;
        Class row{};
        row[1] = men.first[Pawn];
        row[3] = men.second[Pawn];
        for (int type = Knight; type <= Queen; ++type) {
            row[0] += men.first[static_cast<std::size_t>(type)];
            row[2] += men.second[static_cast<std::size_t>(type)];
        }
        for (const int side : {0, 1}) {
            const auto found = ClassTable().find({row, side});
            ASSERT_NE(found, ClassTable().end()) << table;
            used.insert(found->first);
            const Factors& factors = found->second;
            const NalimovMenCounts& mover = side == 0 ? men.first : men.second;
            const NalimovMenCounts& resting = side == 0 ? men.second : men.first;
            std::vector<int> pieces;
            int alike = 1;
            for (int type = Knight; type <= Queen; ++type) {
                const auto place = static_cast<std::size_t>(type);
                pieces.insert(pieces.end(), mover[place], type + 1);
                alike = std::max<int>(alike, resting[place]);
            }
            std::vector<int> group = pieces;
            group.insert(group.end(), mover[Pawn], 1);
            if (group.empty()) {
                group.insert(group.end(), resting[Pawn], 0);
            }
            const auto which = static_cast<std::size_t>(alike - 1);
            std::uint64_t expected = total(hasPawns, group) * factors.ordinary[which];
            if (factors.enPassant[which] != 0) {
                expected += total(hasPawns, pieces) * factors.enPassant[which];
            }
            expected -= NalimovSignatures[static_cast<std::size_t>(table)]
                            .unreached[static_cast<std::size_t>(side)];
            EXPECT_EQ(NalimovCalculator(table, side).Positions(), expected)
                << NalimovSignatures[static_cast<std::size_t>(table)].name << " " << side;
        }
    }
    EXPECT_EQ(used.size(), ClassTable().size());
}

TEST(NalimovIndex, NoTableHasMoreExtentsThanItsFileNamesHaveRoomFor) {
    std::uint64_t most = 0;
    for (int table = 1; table <= NalimovTableCount; ++table) {
        const std::uint32_t flags = NalimovSignatures[static_cast<std::size_t>(table)].flags;
        for (const int side : {0, 1}) {
            const std::uint64_t bytes = NalimovCalculator(table, side).Positions() *
                                        ((flags & NalimovTwoByte) != 0 ? 2 : 1);
            if ((flags & NalimovSplit) != 0) {
                EXPECT_GE(bytes >> 31U, 1U) << table << ": a split table is larger than an extent";
                most = std::max(most, (bytes >> 31U) + 1);
            }
        }
    }
    EXPECT_EQ(most, 17U);
}

// --- Worked members, square by square ------------------------------------------------------------

struct Men {
    Square k1, k2;  // mover's and other king, in the frame of the enumeration
};

/// Squares of `placed` below `square`.
int Below(Square square, const std::vector<Square>& placed) {
    return static_cast<int>(
        std::count_if(placed.begin(), placed.end(), [square](Square s) { return s < square; }));
}

std::uint64_t Two(int a, int b) {
    return static_cast<std::uint64_t>(std::min(a, b)) +
           Choose(static_cast<std::uint64_t>(std::max(a, b)), 2);
}

std::uint64_t Pair462(const Men& kings) {
    return Base(false, {}, kings.k1, kings.k2);
}

/// A position of a table, written as "Kb1 Nc3 / Kh8 p...": men of the first side, then the second.
/// The squares are those of the frame, so that the tests can work with them directly.
TablePosition At(const std::string& text) {
    TablePosition position;
    NalimovPieceList* list = &position.first;
    std::array<int, 5> count{};
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '/') {
            list = &position.second;
            count = {};
        } else if (std::string("KPNBRQE").find(text[at]) != std::string::npos) {
            const Square square = MakeSquare(text[at + 1] - 'a', text[at + 2] - '1');
            const std::size_t type = std::string("PNBRQ").find(text[at]);
            if (text[at] == 'K') {
                list->squares[NalimovPieceList::KingSlot] = square;
            } else if (text[at] == 'E') {
                position.epSquare = square;
            } else {
                list->squares[type * 3 + static_cast<std::size_t>(count[type]++)] = square;
            }
            at += 2;
        }
    }
    return position;
}

std::uint64_t IndexOf(std::string_view name, int side, const TablePosition& position,
                      bool invert = false) {
    return NalimovCalculator(TableNumber(name), side)(position.first, position.second,
                                                      position.epSquare, invert);
}

std::uint64_t IndexOf(std::string_view name, int side, const std::string& position) {
    return IndexOf(name, side, At(position));
}

TEST(NalimovIndex, KingAndPawn) {
    EXPECT_EQ(IndexOf("kpk", 0, "Kb3 Pc4 / Kf6"),
              Base(true, {1}, B3, F6) + static_cast<std::uint64_t>(Ordinal(1, F6, B3, C4)));
    // With Black to move all squares are turned, and the pawn's checks do not matter.
    EXPECT_EQ(IndexOf("kpk", 1, "Kf6 Pc4 / Kb3"),
              Base(true, {0}, B6, F3) + static_cast<std::uint64_t>(Ordinal(0, F3, B6, C5)));
    EXPECT_NE(IndexOf("kpk", 1, "Ke5 Pc4 / Kb5"), CNalimovCalculator::NoIndex) << "in check";
    EXPECT_EQ(IndexOf("kpk", 0, "Ka1 Pc4 / Kb5"), CNalimovCalculator::NoIndex) << "impossible";
}

TEST(NalimovIndex, KingAndKnight) {
    EXPECT_EQ(IndexOf("knk", 0, "Kb1 Nc4 / Kf6"),
              Base(false, {2}, B1, F6) + static_cast<std::uint64_t>(Ordinal(2, F6, B1, C4)));
    EXPECT_EQ(IndexOf("knk", 1, "Kf6 Nc4 / Kb1"),
              Pair462({B1, F6}) * 62 + static_cast<std::uint64_t>(C4 - Below(C4, {B1, F6})));
    EXPECT_EQ(IndexOf("knkn", 0, "Kb1 Nc4 / Kf6 Nd7"),
              (Base(false, {2}, B1, F6) + static_cast<std::uint64_t>(Ordinal(2, F6, B1, C4))) * 61 +
                  static_cast<std::uint64_t>(D7 - Below(D7, {B1, F6, C4})));
    EXPECT_EQ(IndexOf("knkp", 0, "Kb3 Nc4 / Kf6 Pd7"),
              (Base(true, {2}, B3, F6) + static_cast<std::uint64_t>(Ordinal(2, F6, B3, C4))) * 48 +
                  static_cast<std::uint64_t>(D7 - 8));
}

TEST(NalimovIndex, BareKingAgainstQueenAndRook) {
    EXPECT_EQ(IndexOf("kqrk", 1, "Kf6 Qh2 Rc7 / Kb1"),
              (Pair462({B1, F6}) * 62 + static_cast<std::uint64_t>(H2 - Below(H2, {B1, F6}))) * 61 +
                  static_cast<std::uint64_t>(C7 - Below(C7, {B1, F6, H2})));
}

TEST(NalimovIndex, PawnAgainstPawn) {
    const std::uint64_t group =
        Base(true, {1}, B3, F6) + static_cast<std::uint64_t>(Ordinal(1, F6, B3, C4));
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pc4 / Kf6 Pd7"),
              group * 47 + static_cast<std::uint64_t>(D7 - 8 - 1));
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pc4 / Kf6 Pa3"),
              group * 47 + static_cast<std::uint64_t>(A3 - 8));
    const std::uint64_t ordinary = Base(true, {1}) * 47;
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pe5 Ed6 / Kh8 Pd5"),
              ordinary + Base(true, {}, B3, H8) * 14 + 3)
        << "taker + 7: its file less 1";
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pc5 Ed6 / Kh8 Pd5"),
              ordinary + Base(true, {}, B3, H8) * 14 + 9)
        << "taker + 9: its file and 7";
    EXPECT_EQ(IndexOf("kpkp", 1, "Kh8 Pd4 Ed3 / Kb3 Pe4"),
              ordinary + Base(true, {}, B6, H1) * 14 + 3)
        << "for Black the taker is looked for at - 9 and - 7, the kings are turned";
    EXPECT_EQ(IndexOf("kpkp", 1, "Kh8 Pd4 Ed3 / Kb3 Pc4"),
              ordinary + Base(true, {}, B6, H1) * 14 + 9);
}

TEST(NalimovIndex, QueenAndPawnAgainstPawn) {
    const std::uint64_t queen = static_cast<std::uint64_t>(Ordinal(5, F6, B3, H2));
    const std::uint64_t group = Base(true, {5, 1}, B3, F6) + queen * Rest(1, F6, B3) +
                                static_cast<std::uint64_t>(Ordinal(1, F6, B3, C4));
    EXPECT_EQ(IndexOf("kqpkp", 0, "Kb3 Qh2 Pc4 / Kf6 Pd7"),
              group * 47 + static_cast<std::uint64_t>(D7 - 8 - 1));
    EXPECT_EQ(IndexOf("kqpkp", 0, "Kb3 Qh2 Pe5 Ed6 / Kh8 Pd5"),
              Base(true, {5, 1}) * 47 +
                  (Base(true, {5}, B3, H8) + static_cast<std::uint64_t>(Ordinal(5, H8, B3, H2))) *
                      14 +
                  3);
    // Black to move: its pawn and the kings are enumerated on turned squares, the others are not.
    const std::uint64_t turned =
        Base(true, {1}, B6, F3) + static_cast<std::uint64_t>(Ordinal(1, F3, B6, D2));
    EXPECT_EQ(IndexOf("kqpkp", 1, "Kf6 Qh2 Pc4 / Kb3 Pd7"),
              (turned * 60 + static_cast<std::uint64_t>(H2 - Below(H2, {F6, B3, D7, C4}))) * 47 +
                  static_cast<std::uint64_t>(C4 - 8 - Below(C4, {D7})));
}

TEST(NalimovIndex, TwoPairsOfKnights) {
    const std::uint64_t own = Two(Ordinal(2, F6, B1, C3), Ordinal(2, F6, B1, H3));
    const std::vector<Square> placed{B1, F6, C3, H3};
    EXPECT_EQ(IndexOf("knnknn", 0, "Kb1 Nc3 Nh3 / Kf6 Nd7 Na2"),
              (Base(false, {2, 2}, B1, F6) + own) * 1770 +
                  Two(D7 - Below(D7, placed), A2 - Below(A2, placed)));
}

TEST(NalimovIndex, QueensAndPawnAgainstQueen) {
    const std::uint64_t queens = Two(Ordinal(5, F6, B3, A4), Ordinal(5, F6, B3, H2));
    const std::uint64_t group = Base(true, {5, 5, 1}, B3, F6) + queens * Rest(1, F6, B3) +
                                static_cast<std::uint64_t>(Ordinal(1, F6, B3, C4));
    EXPECT_EQ(IndexOf("kqqpkq", 0, "Kb3 Qa4 Qh2 Pc4 / Kf6 Qd8"),
              group * 59 + static_cast<std::uint64_t>(D8 - Below(D8, {B3, F6, A4, H2, C4})));
    const std::vector<Square> placed{F6, B3, D8, C4};
    EXPECT_EQ(IndexOf("kqqpkq", 1, "Kf6 Qa4 Qh2 Pc4 / Kb3 Qd8"),
              (Base(true, {5}, B3, F6) + static_cast<std::uint64_t>(Ordinal(5, F6, B3, D8))) *
                      1770 * 48 +
                  Two(A4 - Below(A4, placed), H2 - Below(H2, placed)) * 48 +
                  static_cast<std::uint64_t>(C4 - 8));
}

TEST(NalimovIndex, TwoPawnsAgainstPawnThatCanBeTakenInPassing) {
    const std::uint64_t pair = Base(true, {}, B3, H8);
    // d6 was passed by the pawn that went from d7 to d5; e5 takes; h6 stands above all four.
    EXPECT_EQ(IndexOf("kppkp", 0, "Kb3 Pe5 Ph7 Ed6 / Kh8 Pd5"),
              Base(true, {1, 1}) * 46 + pair * 616 + static_cast<std::uint64_t>(H7 - 8 - 4) * 14 +
                  3);
    EXPECT_EQ(IndexOf("kppkp", 0, "Kb3 Pe5 Pa2 Ed6 / Kh8 Pd5"),
              Base(true, {1, 1}) * 46 + pair * 616 + 3);
    EXPECT_EQ(IndexOf("kppkp", 0, "Kb3 Pc5 Pe5 Ed6 / Kh8 Pd5"),
              Base(true, {1, 1}) * 46 + pair * 616 + static_cast<std::uint64_t>(C5 - 8) * 14 + 3)
        << "of two takers the one on the h-file side is asked first";
}

TEST(NalimovIndex, PairsOfPawnsThatCanBeTakenInPassing) {
    const std::uint64_t ordinary = Base(true, {1, 1}) * 1035;
    // The other resting pawn g3 has one pawn below it, the mover's a2; a2 itself has none.
    EXPECT_EQ(IndexOf("kppkpp", 0, "Kb3 Pe5 Pa2 Ed6 / Kh8 Pd5 Pg3"),
              ordinary + Base(true, {}, B3, H8) * 26488 +
                  (static_cast<std::uint64_t>(G3 - 8 - 1) * 44 + 0) * 14 + 3);
}

TEST(NalimovIndex, BareKingAgainstPawnsIsEnumeratedOnTurnedSquares) {
    // The kings and the pawns are turned, the knight is not; what is below it neither.
    const std::uint64_t pawn =
        Base(true, {0}, B6, F3) + static_cast<std::uint64_t>(Ordinal(0, F3, B6, C5));
    EXPECT_EQ(IndexOf("knpk", 1, "Kf6 Nh3 Pc4 / Kb3"),
              pawn * 61 + static_cast<std::uint64_t>(H3 - Below(H3, {F6, B3, C4})));
    EXPECT_EQ(IndexOf("knpk", 1, "Kf6 Nd4 Pc4 / Kb3"),
              pawn * 61 + static_cast<std::uint64_t>(D4 - Below(D4, {F6, B3, C4})));
    EXPECT_EQ(IndexOf("kppk", 1, "Kf6 Pc4 Pa2 / Kb3"),
              Base(true, {0, 0}, B6, F3) + Two(Ordinal(0, F3, B6, C5), Ordinal(0, F3, B6, A7)));
}

TEST(NalimovIndex, PawnsOfOneSideOnlyHaveNoPlacesForCapturesInPassing) {
    // No position of these classes can have a passed square; if it is set, it changes nothing.
    EXPECT_EQ(Positions("kqpkrr", 0), Base(true, {5, 1}) * 1770);
    EXPECT_EQ(Positions("kqqkpp", 0) + 129720, Base(true, {5, 5}) * 1128);
    EXPECT_EQ(IndexOf("kqpkrr", 0, "Kb3 Qa4 Pe5 Ed6 / Kf6 Rh1 Rh2"),
              IndexOf("kqpkrr", 0, "Kb3 Qa4 Pe5 / Kf6 Rh1 Rh2"));
}

TEST(NalimovIndex, PawnBeforePieceAgainstGroupOfTwo) {
    // A piece and a pawn against two men: the pawn is worth 59 places, the piece one.
    const auto step = [](std::string_view name, int side, const std::string& from,
                         const std::string& to) {
        return IndexOf(name, side, to) - IndexOf(name, side, from);
    };
    EXPECT_EQ(step("kqqkrp", 0, "Kb3 Qa1 Qa2 / Kf6 Rd8 Pc6", "Kb3 Qa1 Qa2 / Kf6 Re8 Pc6"), 1U);
    EXPECT_EQ(step("kqqkrp", 0, "Kb3 Qa1 Qa2 / Kf6 Rd8 Pc6", "Kb3 Qa1 Qa2 / Kf6 Rd8 Pd6"), 59U);
    EXPECT_EQ(step("kqpkrp", 0, "Kb3 Qa1 Pa2 / Kf6 Rd8 Pc6", "Kb3 Qa1 Pa2 / Kf6 Re8 Pc6"), 1U);
    EXPECT_EQ(step("kqpkrp", 0, "Kb3 Qa1 Pa2 / Kf6 Rd8 Pc6", "Kb3 Qa1 Pa2 / Kf6 Rd8 Pd6"), 59U);
    EXPECT_EQ(step("kqpkpp", 1, "Kf6 Qd8 Pc6 / Kb3 Pa2 Pa3", "Kf6 Qe8 Pc6 / Kb3 Pa2 Pa3"), 1U);
    EXPECT_EQ(step("kqpkrr", 1, "Kf6 Qd8 Pc6 / Kb3 Ra1 Ra2", "Kf6 Qd8 Pd6 / Kb3 Ra1 Ra2"), 59U);
    // Against one man the pawn stays last.
    EXPECT_EQ(step("kqpkq", 1, "Kf6 Qd8 Pc6 / Kb3 Qa1", "Kf6 Qd8 Pd6 / Kb3 Qa1"), 1U);
    EXPECT_EQ(step("kqpkq", 1, "Kf6 Qd8 Pc6 / Kb3 Qa1", "Kf6 Qe8 Pc6 / Kb3 Qa1"), 48U);
}

TEST(NalimovIndex, SingleBeforePairOnBoardWithoutPawns) {
    const auto step = [](std::string_view name, const std::string& from, const std::string& to) {
        return IndexOf(name, 1, to) - IndexOf(name, 1, from);
    };
    EXPECT_EQ(step("kqqrk", "Kf6 Qa8 Qb8 Rc8 / Kb1", "Kf6 Qa8 Qb8 Rd8 / Kb1"), 1830U);
    EXPECT_EQ(step("kqrrk", "Kf6 Ra8 Rb8 Qc8 / Kb1", "Kf6 Ra8 Rb8 Qd8 / Kb1"), 1830U);
    EXPECT_EQ(step("kqqrkn", "Kf6 Qa8 Qb8 Rc8 / Kb1 Na1", "Kf6 Qa8 Qb8 Rd8 / Kb1 Na1"), 1770U);
    // With a pawn on the board the stronger piece comes first.
    EXPECT_EQ(step("kqqrkp", "Kf6 Qa8 Qb8 Rc8 / Kb1 Pa2", "Kf6 Qa8 Qb8 Rd8 / Kb1 Pa2"), 1U);
    EXPECT_EQ(step("kqrrkp", "Kf6 Ra8 Rb8 Qc8 / Kb1 Pa2", "Kf6 Ra8 Rb8 Qd8 / Kb1 Pa2"), 1770U);
}

TEST(NalimovIndex, ThreeAlikeAreACombination) {
    const std::vector<Square> placed{B1, F6};
    EXPECT_EQ(IndexOf("knnnk", 1, "Kf6 Nc3 Nh3 Na2 / Kb1"),
              Pair462({B1, F6}) * 37820 + static_cast<std::uint64_t>(A2 - Below(A2, placed)) +
                  Choose(static_cast<std::uint64_t>(C3 - Below(C3, placed)), 2) +
                  Choose(static_cast<std::uint64_t>(H3 - Below(H3, placed)), 3));
}

TEST(NalimovIndex, KnownWrongPlacesOfTwoPawnsAgainstPawnAreOneFamily) {
    const std::vector<std::pair<std::string, std::uint64_t>> family = {
        {"Kc3 Pe3 Pe4 / Ka3 Pb7", 0x362BC7C}, {"Kc3 Pe3 Pe4 / Ka3 Pb6", 0x362DE44},
        {"Kd3 Pe3 Pe4 / Ka3 Pb7", 0x3637648}, {"Kd3 Pe3 Pe4 / Ka3 Pb6", 0x3639810},
        {"Kd3 Pe3 Pe4 / Kb3 Pb5", 0x38D4F29}, {"Kc3 Pe3 Pe4 / Ka2 Pb5", 0x40A2CAB},
        {"Kd1 Pe3 Pe4 / Kb2 Pb5", 0x43C778C}};
    for (const auto& [position, index] : family) {
        EXPECT_EQ(IndexOf("kppkp", 1, position), index) << position;
    }
}

// --- Proofs --------------------------------------------------------------------------------------

/// What BRENQUIL_NALIMOV_MEN asks for beyond the usual tests; 0 when it is not set.
int ChosenMen() {
    const char* const men = std::getenv("BRENQUIL_NALIMOV_MEN");
    return men == nullptr ? 0 : std::atoi(men);
}

void ExpectProven(int table, int side, std::uint64_t stride) {
    const IndexProof proof = ProveIndices(table, side, stride);
    const auto& name = NalimovSignatures[static_cast<std::size_t>(table)].name;
    EXPECT_GT(proof.positions, 0U);
    EXPECT_EQ(proof.outside, 0U) << name << " " << side;
    EXPECT_EQ(proof.shared, 0U) << name << " " << side;
    EXPECT_EQ(proof.split, 0U) << name << " " << side;
    if (ChosenMen() != 0) {
        std::cout << name << " " << side << ": " << proof.positions << " positions, largest index "
                  << proof.largest << std::endl;  // flushed: this takes long
    }
}

TEST(NalimovIndex, PositionsOfThreeMenHaveEachAnIndexOfItsOwnAndImagesShareIt) {
    for (int table = 1; table < NalimovFirstFourMen; ++table) {
        ExpectProven(table, 0, 1);
        ExpectProven(table, 1, 1);
    }
}

TEST(NalimovIndexProof, PositionsOfFourMenHaveEachAnIndexOfItsOwnAndImagesShareIt) {
    for (const std::string_view name : {"kpkp", "knkp", "knkn", "krkb", "kppk", "knpk", "kqqk"}) {
        ExpectProven(TableNumber(name), 0, 1);
        ExpectProven(TableNumber(name), 1, 1);
    }
}

/// With BRENQUIL_NALIMOV_MEN=4 all tables of four men (minutes), with 5 those of five (an hour);
/// otherwise one of five men.
TEST(NalimovIndexProof, PositionsOfChosenTablesHaveEachAnIndexOfItsOwn) {
    const int men = ChosenMen();
    const int first = men == 5 ? NalimovFirstFiveMen
                    : men == 4 ? NalimovFirstFourMen
                               : TableNumber("kppkp");
    const int end = men == 5 ? NalimovFirstSixMen : men == 4 ? NalimovFirstFiveMen : first + 1;
    constexpr std::uint64_t ImagesEvery = 101;
    for (int table = first; table < end; ++table) {
        ExpectProven(table, 0, men == 4 ? 1 : ImagesEvery);
        ExpectProven(table, 1, men == 4 ? 1 : ImagesEvery);
    }
}

void ExpectLargestIndexIsLast(int firstTable, int end) {
    for (int table = firstTable; table < end; ++table) {
        for (const int side : {0, 1}) {
            EXPECT_EQ(test::LargestLegalIndex(table, side) + 1,
                      NalimovCalculator(table, side).Positions())
                << NalimovSignatures[static_cast<std::size_t>(table)].name << " " << side;
        }
    }
}

TEST(NalimovIndex, LargestIndexOfTablesUpToFourMenIsOneLessThanTheirPositions) {
    ExpectLargestIndexIsLast(1, NalimovFirstFiveMen);
}

/// With BRENQUIL_NALIMOV_MEN=6 those of six men, which takes minutes; otherwise those of five.
TEST(NalimovIndexProof, LargestIndexOfEveryTableIsOneLessThanItsPositions) {
    if (ChosenMen() == 6) {
        ExpectLargestIndexIsLast(NalimovFirstSixMen, NalimovTableCount + 1);
    } else {
        ExpectLargestIndexIsLast(NalimovFirstFiveMen, NalimovFirstSixMen);
    }
}

TEST(NalimovIndex, MirrorImageOfPawnPositionHasTheSameIndex) {
    const TablePosition position = At("Kb3 Qh2 Pc4 / Kf6 Pd7");
    const TablePosition mirrored = test::Mapped(position, [](Square s) { return s ^ 7; });
    EXPECT_EQ(IndexOf("kqpkp", 0, position), IndexOf("kqpkp", 0, mirrored));
    EXPECT_EQ(IndexOf("kqpkp", 1, position), IndexOf("kqpkp", 1, mirrored));
}

TEST(NalimovIndex, ExchangedColoursOfPawnPositionHaveTheSameIndex) {
    const TablePosition position = At("Kb3 Pe5 Ed6 / Kh8 Pd5");
    const TablePosition turned = test::Mapped(position, [](Square s) { return s ^ 56; });
    EXPECT_EQ(IndexOf("kpkp", 0, position, false), IndexOf("kpkp", 0, turned, true));
}

TEST(NalimovIndex, SymmetricPawnTableReadsSideOneAsSideZero) {
    const TablePosition position = At("Kb3 Na1 Pa2 / Kf6 Nd8 Pc6");
    TablePosition exchanged = test::Mapped(position, [](Square s) { return s ^ 56; });
    std::swap(exchanged.first, exchanged.second);
    EXPECT_EQ(IndexOf("knpknp", 1, position), IndexOf("knpknp", 0, exchanged));
}

TEST(NalimovIndex, EightImagesOfPositionWithoutPawnsHaveTheSameIndex) {
    const TablePosition position = At("Kb1 Nc4 / Kf6 Nd7");
    for (int image = 1; image < 8; ++image) {
        const TablePosition mapped = test::Mapped(position, [image](Square s) {
            const Square turned = (image & 4) != 0 ? MakeSquare(RankOf(s), FileOf(s)) : s;
            return turned ^ ((image & 1) != 0 ? 7 : 0) ^ ((image & 2) != 0 ? 56 : 0);
        });
        EXPECT_EQ(IndexOf("knkn", 0, mapped), IndexOf("knkn", 0, position)) << image;
    }
}

TEST(NalimovIndex, KingOnDiagonalBringsTheOtherKingToTheLowerHalf) {
    // The mover's king is on the diagonal, the other one above it: the board is reflected.
    EXPECT_EQ(IndexOf("knk", 0, "Kb2 Nd1 / Ke7"), IndexOf("knk", 0, "Kb2 Na4 / Kg5"));
    // Both on the diagonal: an image in the diagonal keeps its own place.
    const std::uint64_t lower = IndexOf("knk", 0, "Kb2 Nd1 / Ke5");
    const std::uint64_t upper = IndexOf("knk", 0, "Kb2 Na4 / Ke5");
    EXPECT_NE(lower, upper);
    EXPECT_LT(lower, Positions("knk", 0));
    EXPECT_LT(upper, Positions("knk", 0));
}

TEST(NalimovIndex, ImpossiblePositionsHaveNoIndex) {
    constexpr std::uint64_t None = CNalimovCalculator::NoIndex;
    EXPECT_EQ(IndexOf("knk", 0, "Kb1 Nc4 / Kb2"), None) << "kings beside each other";
    EXPECT_EQ(IndexOf("knk", 0, "Kb1 Nc4 / "), None) << "a king is missing";
    EXPECT_EQ(IndexOf("knk", 0, "Kb1 Nc4 / Kd6"), None) << "a knight's check";
    EXPECT_EQ(IndexOf("kqk", 0, "Kb1 Qd5 / Kd6"), None) << "a queen's check from beside";
    EXPECT_EQ(IndexOf("kpk", 0, "Kb1 Pd8 / Ka6"), None) << "a pawn on the last rank";
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pe5 Ed6 / Kh8 Pc5"), None) << "nobody passed";
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Ph5 Ed6 / Kh8 Pd5"), None) << "nobody takes";
    EXPECT_EQ(IndexOf("kpkp", 0, "Kb3 Pe5 Ed5 / Kh8 Pd4"), None) << "not a passed square";
}

}  // namespace
}  // namespace brenquil
