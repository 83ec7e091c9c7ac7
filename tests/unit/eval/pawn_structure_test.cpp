#include "eval/pawn_structure.h"
#include "eval/piece_square.h"
#include "evaluation_setup.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {
namespace {

class PawnStructure : public testing::Test {
protected:
    const PawnEntry& Entry(std::string_view fen) {
        setup_.Set(fen);
        return GetPawnEntry(setup_.position, setup_.pawnHash, entry_);
    }

    /// The sums of a colour without the piece-square values of its pawns and kings.
    TermPair Terms(std::string_view fen, Colour colour) {
        const PawnEntry& entry = Entry(fen);
        TermPair terms(entry.middlegame[colour], entry.endgame[colour]);
        for (Square square = A1; square <= H8; ++square) {
            const Piece piece = setup_.position.PieceOn(square);
            if (piece == MakePiece(Pawn, colour) || piece == MakePiece(King, colour)) {
                terms -= PieceSquare[piece][square];
            }
        }
        return terms;
    }

    /// The same for White, having made sure that the mirrored position says the same of Black.
    TermPair WhiteTerms(const std::string& fen) {
        const TermPair terms = Terms(fen, White);
        EXPECT_EQ(Terms(CPositionText::FlipFen(fen), Black), terms) << fen;
        return terms;
    }

    int WhiteShelter(const std::string& fen) {
        const int danger = Entry(fen).shelterDanger[White];
        EXPECT_EQ(Entry(CPositionText::FlipFen(fen)).shelterDanger[Black], danger) << fen;
        EXPECT_EQ(Entry(CPositionText::FlipFen(fen)).shelterDanger[Black],
                  ShelterDanger(setup_.position, LowestBit(setup_.position.PiecesOf(King, Black)),
                                Black));
        return danger;
    }

    EvaluationSetup setup_;
    PawnEntry entry_;
};

TEST_F(PawnStructure, PlainChainHasNoTermsBesideItsSquares) {
    EXPECT_EQ(WhiteTerms("4k3/p6p/1pppppp1/8/8/8/PPPPPPPP/4K3 w - - 0 1"), TermPair(0, 0));
}

TEST_F(PawnStructure, PawnSquareValuesAreAdded) {
    const PawnEntry& entry = Entry("4k3/p6p/1pppppp1/8/8/8/PPPPPPPP/4K3 w - - 0 1");
    EXPECT_EQ(entry.middlegame[White], -10 - 6 - 17 - 20 - 19 + 14 + 26 - 16 - 14);
    EXPECT_EQ(entry.endgame[White], 15 + 9 + 17 + 20 + 21 + 16 - 2 - 5 - 32);
}

TEST_F(PawnStructure, PassedPawnsByRank) {
    // On the e-file, isolated: 22 and 22.
    EXPECT_EQ(WhiteTerms("k7/8/8/8/8/8/4P3/K7 w - - 0 1"), TermPair(4 - 22, 4 - 22));
    EXPECT_EQ(WhiteTerms("k7/8/8/8/8/4P3/8/K7 w - - 0 1"), TermPair(-19 - 22, 17 - 22));
    EXPECT_EQ(WhiteTerms("k7/8/8/8/4P3/8/8/K7 w - - 0 1"), TermPair(-8 - 22, 32 - 22));
    EXPECT_EQ(WhiteTerms("k7/8/8/4P3/8/8/8/K7 w - - 0 1"), TermPair(19 - 22, 51 - 22));
    EXPECT_EQ(WhiteTerms("k7/8/4P3/8/8/8/8/K7 w - - 0 1"), TermPair(48 - 22, 67 - 22));
    EXPECT_EQ(WhiteTerms("k7/4P3/8/8/8/8/8/K7 w - - 0 1"), TermPair(58 - 22, 90 - 22));
}

TEST_F(PawnStructure, EnemyPawnAheadOrBesideAheadStopsAPassedPawn) {
    EXPECT_EQ(WhiteTerms("k7/4p3/8/8/4P3/8/8/K7 w - - 0 1"), TermPair(-22, -22));
    EXPECT_EQ(WhiteTerms("k7/3p4/8/8/4P3/8/8/K7 w - - 0 1"), TermPair(-22, -22));
    EXPECT_EQ(WhiteTerms("k7/5p2/8/8/4P3/8/8/K7 w - - 0 1"), TermPair(-22, -22));
    // Level, behind or two files away it does not.
    EXPECT_EQ(WhiteTerms("k7/8/8/8/3pP3/8/8/K7 w - - 0 1"), TermPair(-8 - 22, 32 - 22));
    EXPECT_EQ(WhiteTerms("k7/8/8/8/4P3/4p3/8/K7 w - - 0 1"), TermPair(-8 - 22, 32 - 22));
    EXPECT_EQ(WhiteTerms("k7/6p1/8/8/4P3/8/8/K7 w - - 0 1"), TermPair(-8 - 22, 32 - 22));
}

TEST_F(PawnStructure, OnlyTheRearDoubledPawnPays) {
    // Black's e7 keeps both from being passed; isolated twice.
    EXPECT_EQ(WhiteTerms("k7/4p3/8/8/4P3/4P3/8/K7 w - - 0 1"),
              TermPair(-18 - 2 * 22, -21 - 2 * 22));
    EXPECT_EQ(WhiteTerms("k7/4p3/8/4P3/8/8/4P3/K7 w - - 0 1"),
              TermPair(-18 - 2 * 22, -21 - 2 * 22));
}

TEST_F(PawnStructure, RearTwoOfThreeOnAFilePay) {
    EXPECT_EQ(WhiteTerms("k7/4p3/8/4P3/4P3/4P3/8/K7 w - - 0 1"),
              TermPair(-2 * 18 - 3 * 22, -2 * 21 - 3 * 22));
}

TEST_F(PawnStructure, DoubledPawnsMayBothBePassed) {
    EXPECT_EQ(WhiteTerms("k7/8/8/8/4P3/4P3/8/K7 w - - 0 1"),
              TermPair(-8 - 19 - 18 - 2 * 22, 32 + 17 - 21 - 2 * 22));
}

TEST_F(PawnStructure, DoubledPenaltyByFile) {
    const std::vector<TermPair> expected = {{36, 46}, {9, 25},  {2, 31}, {23, 24},
                                            {18, 21}, {20, 19}, {0, 29}, {26, 44}};
    for (int file = 0; file < 8; ++file) {
        const auto at = [&](int rank) { return BitOf(MakeSquare(file, rank)); };
        const auto fenOf = [&](Bitboard white) {
            std::string fen = "k7/";
            for (int rank = 6; rank >= 1; --rank) {
                for (int f = 0; f < 8; ++f) {
                    fen += (white & BitOf(MakeSquare(f, rank))) != 0 ? 'P' : rank == 6 ? 'p' : '1';
                }
                fen += '/';
            }
            return fen + "K7 w - - 0 1";
        };
        const TermPair one = WhiteTerms(fenOf(at(2)));
        const TermPair two = WhiteTerms(fenOf(at(2) | at(3)));
        // The second pawn pays isolation again, and the rear one for the doubling.
        EXPECT_EQ(TermPair() - (two - one - one), expected[static_cast<std::size_t>(file)])
            << "file " << file;
    }
}

TEST_F(PawnStructure, IsolatedPenaltyByFile) {
    const std::vector<TermPair> expected = {{1, 5},   {5, 13},  {14, 21}, {13, 26},
                                            {22, 22}, {14, 16}, {14, 10}, {20, 6}};
    for (int file = 0; file < 8; ++file) {
        std::string rank = "11111111";
        rank[static_cast<std::size_t>(file)] = 'P';
        const TermPair terms = WhiteTerms("k7/pppppppp/8/8/8/" + rank + "/8/K7 w - - 0 1");
        EXPECT_EQ(TermPair() - terms, expected[static_cast<std::size_t>(file)]) << "file " << file;
    }
}

TEST_F(PawnStructure, NeighbourOnAnyRankEndsIsolation) {
    EXPECT_EQ(WhiteTerms("k7/3p4/4p3/3P4/8/8/4P3/K7 w - - 0 1"), TermPair(0, 0));
}

TEST_F(PawnStructure, UndefendedPawnBehindAnAttackedSquareIsBackward) {
    // e3 with the neighbours c2 and g2 far off: isolated and backward, not passed.
    for (const char* fen : {"k7/8/8/3p4/8/4P3/8/K7 w - - 0 1", "k7/8/8/5p2/8/4P3/8/K7 w - - 0 1"}) {
        EXPECT_EQ(WhiteTerms(fen), TermPair(-22 - 8, -22 - 7)) << fen;
    }
}

TEST_F(PawnStructure, DefendedPawnIsNotBackward) {
    // d2 guards e3. d2 and e3 are not passed pawns because of d5; d2's own front, d3, is not
    // attacked.
    EXPECT_EQ(WhiteTerms("k7/8/8/3p4/8/4P3/3P4/K7 w - - 0 1"), TermPair(0, 0));
    EXPECT_EQ(WhiteTerms("k7/8/8/5p2/8/4P3/5P2/K7 w - - 0 1"), TermPair(0, 0));
}

TEST_F(PawnStructure, PawnOfEitherColourInFrontEndsBackwardness) {
    // Black's e4 holds e3's front square, which d5 attacks.
    EXPECT_EQ(WhiteTerms("k7/8/8/3p4/4p3/4P3/8/K7 w - - 0 1"), TermPair(-22, -22));
    // White's own e4 does: the front pawn is not backward, as nothing attacks e5.
    EXPECT_EQ(WhiteTerms("k7/8/8/3p4/4P3/4P3/8/K7 w - - 0 1"),
              TermPair(-2 * 22 - 18, -2 * 22 - 21));
}

TEST_F(PawnStructure, PieceInFrontDoesNotEndBackwardness) {
    EXPECT_EQ(WhiteTerms("k7/8/8/3p4/4n3/4P3/8/K7 w - - 0 1"), TermPair(-22 - 8, -22 - 7));
}

TEST_F(PawnStructure, FreeButUnattackedFrontIsNotBackward) {
    EXPECT_EQ(WhiteTerms("k7/8/3p4/8/8/4P3/8/K7 w - - 0 1"), TermPair(-22, -22));
}

TEST_F(PawnStructure, BackwardEdgePawnsAreRewardedInTheMiddlegame) {
    EXPECT_EQ(WhiteTerms("7k/8/8/1p6/8/P7/8/7K w - - 0 1"), TermPair(-1 + 4, -5 - 2));
    EXPECT_EQ(WhiteTerms("7k/8/8/6p1/8/7P/8/7K w - - 0 1"), TermPair(-20 + 1, -6 - 3));
}

TEST_F(PawnStructure, BackwardPenaltyByFile) {
    const std::vector<TermPair> expected = {{-4, 2}, {3, 7}, {2, 13}, {21, 14},
                                            {8, 7},  {7, 1}, {13, 1}, {-1, 3}};
    for (int file = 0; file < 8; ++file) {
        std::string white = "11111111";
        white[static_cast<std::size_t>(file)] = 'P';
        std::string black = "11111111";
        black[static_cast<std::size_t>(file < 7 ? file + 1 : file - 1)] = 'p';
        const TermPair attacked = WhiteTerms("k7/8/8/" + black + "/8/" + white + "/8/K7 w - - 0 1");
        const TermPair quiet = WhiteTerms("k7/8/" + black + "/8/8/" + white + "/8/K7 w - - 0 1");
        EXPECT_EQ(quiet - attacked, expected[static_cast<std::size_t>(file)]) << "file " << file;
    }
}

TEST_F(PawnStructure, PawnsOnTheEdgeRanksAreSafe) {
    // A pawn on its last rank gains nothing as a passed pawn and has no front.
    EXPECT_EQ(WhiteTerms("P6k/8/8/8/8/8/8/7K w - - 0 1"), TermPair(-1, -5));
    EXPECT_EQ(WhiteTerms("7k/8/8/8/8/8/8/P6K w - - 0 1"), TermPair(-1, -5));
}

/// What the rules say of one white pawn, without its square's value; literally.
TermPair PlainPawnTerms(Square square, Bitboard own, Bitboard enemy) {
    constexpr TermPair Doubled[] = {{36, 46}, {9, 25},  {2, 31}, {23, 24},
                                    {18, 21}, {20, 19}, {0, 29}, {26, 44}};
    constexpr TermPair Isolated[] = {{1, 5},   {5, 13},  {14, 21}, {13, 26},
                                     {22, 22}, {14, 16}, {14, 10}, {20, 6}};
    constexpr TermPair Backward[] = {{-4, 2}, {3, 7}, {2, 13}, {21, 14},
                                     {8, 7},  {7, 1}, {13, 1}, {-1, 3}};
    const int file = FileOf(square);
    const int rank = RankOf(square);
    const auto has = [](Bitboard pawns, int onFile, int onRank) {
        return onFile >= 0 && onFile <= 7 && onRank >= 0 && onRank <= 7 &&
               (pawns & BitOf(MakeSquare(onFile, onRank))) != 0;
    };
    bool isPassed = true;
    bool isDoubled = false;
    bool isIsolated = true;
    for (int ahead = 0; ahead <= 7; ++ahead) {
        for (const int beside : {file - 1, file, file + 1}) {
            isPassed = isPassed && !(ahead > rank && has(enemy, beside, ahead));
            isIsolated = isIsolated && (beside == file || !has(own, beside, ahead));
        }
        isDoubled = isDoubled || (ahead > rank && has(own, file, ahead));
    }
    const bool isBackward = rank < 7 && !has(own, file - 1, rank - 1) &&
                            !has(own, file + 1, rank - 1) && !has(own | enemy, file, rank + 1) &&
                            (has(enemy, file - 1, rank + 2) || has(enemy, file + 1, rank + 2));
    TermPair terms;
    terms += isPassed ? PassedBonus[rank] : TermPair();
    terms -= isDoubled ? Doubled[file] : TermPair();
    terms -= isIsolated ? Isolated[file] : TermPair();
    terms -= isBackward ? Backward[file] : TermPair();
    return terms;
}

TEST_F(PawnStructure, SetsOfPawnsAgreeWithTheRulesForEachPawn) {
    std::mt19937_64 random(61);
    for (int round = 0; round < 3000; ++round) {
        const auto density = 1 + random() % 8;
        std::string fen;
        Bitboard white = 0;
        Bitboard black = 0;
        for (int rank = 7; rank >= 0; --rank) {
            for (int file = 0; file < 8; ++file) {
                const bool isPawn = random() % 16 < density;
                const bool isWhite = random() % 2 == 0;
                fen += isPawn ? (isWhite ? 'P' : 'p') : '1';
                const Bitboard bit = isPawn ? BitOf(MakeSquare(file, rank)) : 0;
                white |= isWhite ? bit : 0;
                black |= isWhite ? 0 : bit;
            }
            fen += rank > 0 ? "/" : " w - - 0 1";
        }
        TermPair expected;
        for (Bitboard pawns = white; pawns != 0;) {
            expected += PlainPawnTerms(PopLowestBit(pawns), white, black);
        }
        ASSERT_EQ(WhiteTerms(fen), expected) << fen;
    }
}

TEST_F(PawnStructure, KingsAreInTheSums) {
    const PawnEntry& entry = Entry("6k1/8/8/8/8/8/8/1K6 w - - 0 1");
    EXPECT_EQ(entry.middlegame[White], 27);
    EXPECT_EQ(entry.endgame[White], -38);
    EXPECT_EQ(entry.middlegame[Black], 30);
    EXPECT_EQ(entry.endgame[Black], -33);
    EXPECT_EQ(entry.shelterDanger[White], 18);
    EXPECT_EQ(entry.shelterDanger[Black], 18);
}

TEST_F(PawnStructure, SeveralKingsCountEach) {
    const PawnEntry& entry = Entry("8/8/8/8/8/8/8/1K4K1 w - - 0 1");
    EXPECT_EQ(entry.middlegame[White], 27 + 30);
    EXPECT_EQ(entry.endgame[White], -38 - 33);
    EXPECT_EQ(entry.shelterDanger[White], 36);
    EXPECT_EQ(entry.middlegame[Black], 0);
    EXPECT_EQ(entry.shelterDanger[Black], 0);
}

TEST_F(PawnStructure, ShelterOfOwnPawnsByRank) {
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/5PPP/6K1 w - - 0 1"), 0);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/6P1/5P1P/6K1 w - - 0 1"), 2);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/6P1/8/5P1P/6K1 w - - 0 1"), 2);
    EXPECT_EQ(WhiteShelter("4k3/8/8/6P1/8/8/5P1P/6K1 w - - 0 1"), 2);
    EXPECT_EQ(WhiteShelter("4k3/8/6P1/8/8/8/5P1P/6K1 w - - 0 1"), 2);
    EXPECT_EQ(WhiteShelter("4k3/6P1/8/8/8/8/5P1P/6K1 w - - 0 1"), 4);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/5P1P/6K1 w - - 0 1"), 6);
}

TEST_F(PawnStructure, ShelterLooksAtTheLowestPawnOfAFile) {
    EXPECT_EQ(WhiteShelter("4k3/8/6P1/8/8/8/5PPP/6K1 w - - 0 1"), 0);
    EXPECT_EQ(WhiteShelter("4k3/8/6p1/8/8/6p1/5PPP/6K1 w - - 0 1"), 2);
}

TEST_F(PawnStructure, StormCountsMostDeepInThePosition) {
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/5PpP/6K1 w - - 0 1"), 6 + 3);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/6p1/5PPP/6K1 w - - 0 1"), 2);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/6p1/8/5PPP/6K1 w - - 0 1"), 1);
    EXPECT_EQ(WhiteShelter("4k3/8/8/6p1/8/8/5PPP/6K1 w - - 0 1"), 0);
}

TEST_F(PawnStructure, KingOnAnEdgeFileIsSeenFromTheFileBeside) {
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/5PPP/7K w - - 0 1"), 0);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/PPP5/K7 w - - 0 1"), 0);
    EXPECT_EQ(WhiteShelter("4k3/8/8/8/8/8/PP6/K7 w - - 0 1"), 6);
}

TEST_F(PawnStructure, ShelterIgnoresTheKingsRank) {
    EXPECT_EQ(WhiteShelter("4k3/8/8/6K1/8/8/5PPP/8 w - - 0 1"), 0);
}

/// The shelter square by square, as it would be counted by hand.
int CountedShelter(const CPosition& position, Square kingSquare, Colour colour) {
    constexpr int Own[] = {0, 0, 2, 2, 2, 2, 4, 0};
    constexpr int Storm[] = {0, 3, 2, 1, 0, 0, 0, 0};
    const int centre = std::min(std::max(FileOf(kingSquare), 1), 6);
    int danger = 0;
    for (int file = centre - 1; file <= centre + 1; ++file) {
        int own = 6;
        int storm = 0;
        for (int rank = 7; rank >= 0; --rank) {
            const Piece piece =
                position.PieceOn(MakeSquare(file, colour == White ? rank : 7 - rank));
            if (piece == MakePiece(Pawn, colour)) {
                own = Own[rank];
            } else if (piece == MakePiece(Pawn, ~colour)) {
                storm = Storm[rank];
            }
        }
        danger += own + storm;
    }
    return danger;
}

// Pawns on all eight ranks, as a position may be set up, and a king on each square.
TEST_F(PawnStructure, ShelterIsAsCountedSquareBySquare) {
    std::mt19937 generator(61);
    for (int round = 0; round < 300; ++round) {
        const auto density = 1 + generator() % 8;
        std::string fen;
        for (int square = 0; square < 64; ++square) {
            fen += generator() % 16 >= density ? '1' : generator() % 2 == 0 ? 'P' : 'p';
            if (square % 8 == 7) {
                fen += square < 63 ? '/' : ' ';
            }
        }
        setup_.Set(fen + "w - - 0 1");
        for (Square square = A1; square <= H8; ++square) {
            for (const Colour colour : {Black, White}) {
                ASSERT_EQ(ShelterDanger(setup_.position, square, colour),
                          CountedShelter(setup_.position, square, colour))
                    << fen << ' ' << square;
            }
        }
    }
}

}  // namespace
}  // namespace brenquil
