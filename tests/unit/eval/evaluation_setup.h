// What the tests of the evaluation share: a position with everything an evaluation needs, and
// positions from random play.
#pragma once

#include "board/move_generator.h"
#include "board/position.h"
#include "board/position_text.h"
#include "eval/evaluation.h"

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

inline const CKpkBitbase& TestBitbase() {
    static const CKpkBitbase bitbase;
    return bitbase;
}

inline constexpr Score WideAlpha = -32000;
inline constexpr Score WideBeta = 32000;

/// A position with its evaluation, default options and, unless asked for, no pawn hash.
struct EvaluationSetup {
    explicit EvaluationSetup(std::size_t pawnEntries = 0) {
        hasRoom = pawnHash.Resize(pawnEntries);
    }

    void Set(std::string_view fen) { CPositionText(position).SetFen(fen); }

    /// With the sums of the pawns from the pawn hash, if there is one.
    Score Full(std::string_view fen) {
        Set(fen);
        if (pawnHash.HasMemory()) {
            evaluation.FetchPawns();
        }
        return evaluation.Evaluate(WideAlpha, WideBeta);
    }

    CPosition position;
    CEvaluationOptions options;
    CPawnHash pawnHash;
    CEvaluation evaluation{position, options, pawnHash, TestBitbase()};
    bool hasRoom = false;
};

/// FENs of positions from random games of up to 150 half-moves; the same for the same seed.
inline std::vector<std::string> RandomPlay(std::size_t count, std::uint64_t seed) {
    std::mt19937_64 generator(seed);
    std::vector<std::string> fens;
    CPosition position;
    while (fens.size() < count) {
        CPositionText(position).SetFen(StartFen);
        for (int ply = 0; ply < 150 && fens.size() < count; ++ply) {
            MoveList moves;
            CMoveGenerator(position).GenerateMoves(moves, MoveKinds::All);
            bool hasMoved = false;
            while (moves.count > 0 && !hasMoved) {
                const auto index =
                    static_cast<std::int32_t>(generator() % static_cast<unsigned>(moves.count));
                hasMoved = position.MakeMove(moves[index]);
                moves[index] = moves[moves.count - 1];
                moves.RemoveLast();
            }
            if (!hasMoved) {
                break;
            }
            fens.push_back(CPositionText(position).GetFen());
        }
    }
    return fens;
}

/// The same board with the other side to move. The en passant field must be "-".
inline std::string WithOtherTurn(std::string fen) {
    char& turn = fen[fen.find(' ') + 1];
    turn = turn == 'w' ? 'b' : 'w';
    return fen;
}

}  // namespace brenquil
