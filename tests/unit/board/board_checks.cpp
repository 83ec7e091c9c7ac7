#include "board_checks.h"

#include "board/polyglot_keys.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace brenquil {

namespace {

bool IsSameRecord(const CastlingRecord& a, const CastlingRecord& b) {
    return a.kingFrom == b.kingFrom && a.kingTo == b.kingTo && a.rookFrom == b.rookFrom &&
           a.rookTo == b.rookTo && a.emptyMask == b.emptyMask && a.kingPath == b.kingPath &&
           a.letter == b.letter;
}

bool IsSameState(const ReversibleState& a, const ReversibleState& b) {
    return a.key == b.key && a.pawnKingKey == b.pawnKingKey && a.halfmoveClock == b.halfmoveClock &&
           a.enPassant == b.enPassant && a.castlingRights == b.castlingRights &&
           a.inCheck == b.inCheck;
}

/// Adds the name of a field to a list of faults.
void Note(std::string& faults, bool isRight, const char* name) {
    if (!isRight) {
        faults += name;
        faults += ' ';
    }
}

}  // namespace

PositionFields::PositionFields(const CPosition& position)
    : state(position),
      ply(position.ply),
      sideToMove(position.sideToMove),
      pieces(position.pieces),
      colours(position.colours),
      board(position.board),
      rightsMask(position.rightsMask),
      colourCount(position.colourCount),
      pieceCount(position.pieceCount),
      menKey(position.menKey),
      castling(position.castling) {}

std::string Differences(const PositionFields& a, const PositionFields& b) {
    std::string names;
    Note(names, a.state.key == b.state.key, "key");
    Note(names, a.state.pawnKingKey == b.state.pawnKingKey, "pawnKingKey");
    Note(names, a.state.halfmoveClock == b.state.halfmoveClock, "halfmoveClock");
    Note(names, a.state.enPassant == b.state.enPassant, "enPassant");
    Note(names, a.state.castlingRights == b.state.castlingRights, "castlingRights");
    Note(names, a.state.inCheck == b.state.inCheck, "inCheck");
    Note(names, a.ply == b.ply, "ply");
    Note(names, a.sideToMove == b.sideToMove, "sideToMove");
    Note(names, a.pieces == b.pieces, "pieces");
    Note(names, a.colours == b.colours, "colours");
    Note(names, a.board == b.board, "board");
    Note(names, a.rightsMask == b.rightsMask, "rightsMask");
    Note(names, a.colourCount == b.colourCount, "colourCount");
    Note(names, a.pieceCount == b.pieceCount, "pieceCount");
    Note(names, a.menKey == b.menKey, "menKey");
    Note(names, std::equal(a.castling.begin(), a.castling.end(), b.castling.begin(), IsSameRecord),
         "castling");
    return names;
}

std::string Differences(const CPosition& a, const CPosition& b) {
    return Differences(PositionFields(a), PositionFields(b));
}

bool HasSameHistory(const CPosition& a, const CPosition& b, std::int32_t ply) {
    for (std::int32_t i = 0; i < ply; ++i) {
        const UndoRecord& x = a.undo[i];
        const UndoRecord& y = b.undo[i];
        if (!IsSameState(x, y) || x.move.word != y.move.word || x.movedPiece != y.movedPiece ||
            x.capturedPiece != y.capturedPiece) {
            return false;
        }
    }
    return true;
}

std::string DerivedFaults(const CPosition& position, std::uint64_t foreignPawnKingKey) {
    std::array<Bitboard, PieceCodes> pieces{};
    std::array<Bitboard, 2> colours{};
    std::array<std::int32_t, 2> colourCount{};
    std::array<std::int32_t, PieceCodes> pieceCount{};
    std::uint64_t menKey = 0;
    std::uint64_t key = 0;
    std::uint64_t pawnKingKey = foreignPawnKingKey;
    for (int square = 0; square < 64; ++square) {
        const unsigned man = position.board[square];
        if (man == 12) {
            continue;
        }
        pieces[man] |= std::uint64_t{1} << square;
        colours[man % 2] |= std::uint64_t{1} << square;
        ++colourCount[man % 2];
        ++pieceCount[man];
        const bool isDark = (square / 8 + square % 8) % 2 == 0;
        const std::size_t field = (man == 4 || man == 5) && isDark ? man + 6 : man;
        menKey += man < 10 ? std::uint64_t{1} << 5 * field : 0;
        const std::uint64_t number = PolyglotKeys[man * 64 + square];
        key ^= number;
        pawnKingKey ^= man < 2 || man > 9 ? number : 0;
    }
    for (int index = 0; index < 4; ++index) {
        key ^= (position.castlingRights >> index & 1U) != 0 ? PolyglotKeys[768 + index] : 0;
    }
    if (position.enPassant != 64) {
        key ^= PolyglotKeys[772 + position.enPassant % 8];
    }
    key ^= position.sideToMove == White ? PolyglotKeys[780] : 0;

    std::string faults;
    Note(faults, position.pieces == pieces, "pieces");
    Note(faults, position.colours == colours, "colours");
    Note(faults, position.colourCount == colourCount, "colourCount");
    Note(faults, position.pieceCount == pieceCount, "pieceCount");
    // The mark of a crowd stays when men are taken off.
    const bool isCrowd = colourCount[Black] > 31 || colourCount[White] > 31;
    Note(faults, (position.menKey & ~CrowdMark) == menKey, "menKey");
    Note(faults, !isCrowd || !IsExact(position.menKey), "mark of menKey");
    Note(faults, position.key == key, "key");
    Note(faults, position.pawnKingKey == pawnKingKey, "pawnKingKey");
    return faults;
}

std::string Disagreements(const CPosition& position, const SlowPosition& slow) {
    bool isSameBoard = true;
    for (int square = 0; square < 64; ++square) {
        isSameBoard &= position.board[square] == slow.board[static_cast<std::size_t>(square)];
    }
    std::string faults;
    Note(faults, isSameBoard, "board");
    Note(faults, position.sideToMove == slow.side, "sideToMove");
    Note(faults, position.enPassant == slow.enPassant, "enPassant");
    Note(faults, position.halfmoveClock == slow.clock, "halfmoveClock");
    Note(faults, position.castlingRights == slow.RightsBits(), "castlingRights");
    Note(faults, position.inCheck == slow.IsAnyKingAttacked(slow.side), "inCheck");
    return faults;
}

CPosition FromFen(std::string_view fen) {
    CPosition position;
    CPositionText(position).SetFen(fen);
    return position;
}

std::string FenOf(const CPosition& position) {
    CPosition copy = position;
    return CPositionText(copy).GetFen();
}

std::vector<std::uint32_t> Words(const MoveList& list) {
    std::vector<std::uint32_t> words;
    for (const Move move : list) {
        words.push_back(move.word);
    }
    return words;
}

std::vector<std::uint32_t> GeneratedWords(const CPosition& position, MoveKinds wanted,
                                          Bitboard fromMask, Bitboard toMask) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, wanted, fromMask, toMask);
    return Words(list);
}

std::string MovesText(const CPosition& position, const MoveList& list) {
    std::string text;
    for (const Move move : list) {
        text += text.empty() ? "" : " ";
        text += CPositionText::MoveToText(move, position, CastlingNotation::KingTarget);
    }
    return text;
}

Move FindMove(const CPosition& position, std::string_view text) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    for (const Move move : list) {
        if (CPositionText::MoveToText(move, position, CastlingNotation::KingTarget) == text) {
            return move;
        }
    }
    return NoMove;
}

std::string Chess960StartFen(int number) {
    std::string row(8, ' ');
    const auto freeSquare = [&row](int which) {
        std::size_t file = 0;
        for (;; ++file) {
            if (row[file] == ' ' && which-- == 0) {
                return file;
            }
        }
    };
    row[static_cast<std::size_t>(number % 4 * 2 + 1)] = 'B';
    row[static_cast<std::size_t>(number / 4 % 4 * 2)] = 'B';
    row[freeSquare(number / 16 % 6)] = 'Q';
    constexpr std::array<std::array<int, 2>, 10> KnightPairs = {
        {{0, 1}, {0, 2}, {0, 3}, {0, 4}, {1, 2}, {1, 3}, {1, 4}, {2, 3}, {2, 4}, {3, 4}}};
    const auto& pair = KnightPairs[static_cast<std::size_t>(number / 96)];
    const std::size_t first = freeSquare(pair[0]);
    const std::size_t second = freeSquare(pair[1]);
    row[first] = 'N';
    row[second] = 'N';
    const std::size_t leftRook = freeSquare(0);
    row[leftRook] = 'R';
    row[freeSquare(0)] = 'K';
    const std::size_t rightRook = freeSquare(0);
    row[rightRook] = 'R';

    std::string small = row;
    std::string castling = {static_cast<char>('A' + rightRook), static_cast<char>('A' + leftRook),
                            static_cast<char>('a' + rightRook), static_cast<char>('a' + leftRook)};
    std::transform(row.begin(), row.end(), small.begin(),
                   [](char c) { return static_cast<char>(c - 'A' + 'a'); });
    return small + "/pppppppp/8/8/8/8/PPPPPPPP/" + row + " w " + castling + " - 0 1";
}

const std::vector<std::string>& SampleFens() {
    static const std::vector<std::string> fens = {
        std::string(StartFen),
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "8/3K4/2p5/p2b2r1/5k2/8/8/1q6 b - - 1 67",
        "8/7p/p5pb/4k3/P1pPn3/8/P5PP/1rB2RK1 b - d3 0 28",
        "rnbqkb1r/ppppp1pp/7n/4Pp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3",
        "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
        "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
        "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
        "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
        "2rkr3/5PP1/8/5Q2/5q2/8/5pp1/2RKR3 w CEce - 0 1",
        "nr1kqrbn/pbpppppp/1p6/8/8/1P6/PBPPPPPP/NR1KQRBN w FBfb - 0 1",
        "r1k1r2q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K1R2Q w EAea - 0 1",
        "r1k2r1q/p1ppp1pp/8/8/8/8/P1PPP1PP/R1K2R1Q w FAfa - 0 1",
        "8/8/8/4B2b/6nN/8/5P2/2R1K2k w C - 0 1",
        "2r5/8/8/8/8/8/6PP/k2KR3 w E - 0 1",
        "4r3/3k4/8/8/8/8/6PP/qR1K1R2 w FB - 0 1",
        "8/8/8/K2pP2q/8/8/8/4k3 w - d6 0 1",
        "1rk3r1/8/8/8/8/8/8/1R3KR1 w GBgb - 3 20",
    };
    return fens;
}

Move PickMove(const MoveList& list, CRandom& random) {
    std::vector<Move> special;
    for (const Move move : list) {
        if (move.Kind() != MoveKind::Normal) {
            special.push_back(move);
        }
    }
    if (!special.empty() && random.OneIn(3)) {
        return special[static_cast<std::size_t>(random.Below(static_cast<int>(special.size())))];
    }
    return list[random.Below(list.count)];
}

std::vector<CPosition> RandomPositions(int count, std::uint64_t seed) {
    CRandom random(seed);
    std::vector<CPosition> positions;
    positions.reserve(static_cast<std::size_t>(count));
    const auto& samples = SampleFens();
    while (static_cast<int>(positions.size()) < count) {
        CPosition position = FromFen(
            random.OneIn(2)
                ? samples[static_cast<std::size_t>(random.Below(static_cast<int>(samples.size())))]
                : Chess960StartFen(random.Below(960)));
        const int length = random.Below(120);
        for (int i = 0; i < length; ++i) {
            MoveList list;
            CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
            if (list.count == 0) {
                break;
            }
            (void)position.MakeMove(PickMove(list, random));
        }
        positions.push_back(position);
    }
    return positions;
}

std::string LawlessFen(CRandom& random) {
    constexpr std::string_view Letters = "pPnNbBrRqQkK";
    const int density = 2 + random.Below(8);
    std::string fen;
    for (int square = 0; square < 64; ++square) {
        if (square != 0 && square % 8 == 0) {
            fen += '/';
        }
        const bool isHome = square < 8 || square >= 56;
        if (isHome && random.OneIn(4)) {
            fen += square < 8 ? (random.OneIn(2) ? 'k' : 'r') : (random.OneIn(2) ? 'K' : 'R');
        } else if (random.OneIn(density)) {
            fen += Letters[static_cast<std::size_t>(random.Below(12))];
        } else {
            fen += '1';
        }
    }
    fen += random.OneIn(2) ? " w " : " b ";
    for (const char letter : {'K', 'Q', 'k', 'q'}) {
        if (!random.OneIn(3)) {
            fen += letter;
        }
    }
    fen += "- ";
    fen += SquareToText(random.Below(65));
    fen += ' ' + std::to_string(random.Below(200) - 100) + ' ' + std::to_string(random.Below(200));
    return fen;
}

int WorkDivisor() {
    const char* const factor = std::getenv("BRENQUIL_TIMEOUT_FACTOR");
    return factor == nullptr ? 1 : std::max(1, std::atoi(factor));
}

std::string SharedPath(const char* variable, std::string_view beside, std::string_view name) {
    const char* const root = std::getenv(variable);
    const std::filesystem::path folder =
        root != nullptr
            ? std::filesystem::path(root)
            : std::filesystem::path(BRENQUIL_TEST_FOLDER) / "../../../../shared" / beside;
    const std::filesystem::path path = folder / name;
    return std::filesystem::exists(path) ? path.string() : std::string();
}

}  // namespace brenquil
