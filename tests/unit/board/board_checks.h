// What the tests of the board room share: positions to test on, and comparisons of all fields.
#pragma once

#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "slow_chess.h"

#include <array>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// Always the same numbers: the engine of the standard library without its distributions, which
/// differ from one library to the next.
class CRandom {
public:
    explicit CRandom(std::uint64_t seed) : engine_(seed) {}

    [[nodiscard]] std::uint64_t Word() { return engine_(); }

    /// 0 to limit - 1.
    [[nodiscard]] int Below(int limit) {
        return static_cast<int>(engine_() % static_cast<std::uint64_t>(limit));
    }

    [[nodiscard]] bool OneIn(int chances) { return Below(chances) == 0; }

private:
    std::mt19937_64 engine_;
};

/// Everything of a position but its undo stack.
struct PositionFields {
    explicit PositionFields(const CPosition& position);

    ReversibleState state;
    std::int32_t ply;
    Colour sideToMove;
    std::array<Bitboard, PieceCodes> pieces;
    std::array<Bitboard, 2> colours;
    SquareTable<Piece> board;
    SquareTable<std::uint8_t> rightsMask;
    std::array<std::int32_t, 2> colourCount;
    std::array<std::int32_t, PieceCodes> pieceCount;
    MenKey menKey;
    std::array<CastlingRecord, CastlingRightsCount> castling;
};

/// The names of the fields in which two positions differ; empty if there is none.
[[nodiscard]] std::string Differences(const PositionFields& a, const PositionFields& b);
[[nodiscard]] std::string Differences(const CPosition& a, const CPosition& b);

/// Are the undo records below `ply` the same?
[[nodiscard]] bool HasSameHistory(const CPosition& a, const CPosition& b, std::int32_t ply);

/// Rebuilds bitboards, counts, keys and the check from the mailbox and names what disagrees; empty
/// if all is well. `foreignPawnKingKey` is what the key of pawns and kings holds beyond its men.
[[nodiscard]] std::string DerivedFaults(const CPosition& position,
                                        std::uint64_t foreignPawnKingKey = 0);

/// Names what the slow rules see differently from the position; empty if nothing.
[[nodiscard]] std::string Disagreements(const CPosition& position, const SlowPosition& slow);

[[nodiscard]] CPosition FromFen(std::string_view fen);
[[nodiscard]] std::string FenOf(const CPosition& position);

/// The words of a list without their sort keys.
[[nodiscard]] std::vector<std::uint32_t> Words(const MoveList& list);
[[nodiscard]] std::vector<std::uint32_t> GeneratedWords(const CPosition& position, MoveKinds wanted,
                                                        Bitboard fromMask = AllSquares,
                                                        Bitboard toMask = AllSquares);
/// The moves in coordinates, castling by the king's target, separated by blanks.
[[nodiscard]] std::string MovesText(const CPosition& position, const MoveList& list);

/// The generated move of that text (castling by the king's target); `NoMove` if there is none.
[[nodiscard]] Move FindMove(const CPosition& position, std::string_view text);

/// Start position `number` (0 to 959) of Chess960 by its published numbering, in which 518 is the
/// usual one; with the castling field in file letters.
[[nodiscard]] std::string Chess960StartFen(int number);

/// Openings, middle games and endings with checks, pins, castling, promotions and en passant.
[[nodiscard]] const std::vector<std::string>& SampleFens();

/// `count` positions met in random games from the sample positions and Chess960 starts.
[[nodiscard]] std::vector<CPosition> RandomPositions(int count, std::uint64_t seed);

/// A position that no game reaches: men anywhere, any number of kings, pawns on all ranks, a random
/// side to move, en passant square and clock.
[[nodiscard]] std::string LawlessFen(CRandom& random);

/// A random generated move, with a preference for castling, en passant and promotion. The list must
/// not be empty.
[[nodiscard]] Move PickMove(const MoveList& list, CRandom& random);

/// How many times less work a build should do that is many times slower, as CTest says; at least 1.
[[nodiscard]] int WorkDivisor();

/// A folder or file of the data shared between repositories; an empty text if it is not there.
/// `variable` may name the root in the environment; `beside` is the root's name in ../shared.
[[nodiscard]] std::string SharedPath(const char* variable, std::string_view beside,
                                     std::string_view name);

}  // namespace brenquil
