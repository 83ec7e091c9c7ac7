// The static score of a position, as the search's leaves and the console ask for it.
//
//     CEvaluation evaluation(position, options, pawnHash, bitbase);   // once per thread
//     const Score score = evaluation.Evaluate(alpha, beta);
//
// In this order: draws by insufficient material, known endings, an early exit on material alone,
// pawn structure and king shelter, piece terms, the weighing of middlegame and endgame, contempt.
// There is no bonus for the turn, drawish endings are not scaled down and the fifty-move clock
// plays no part. The score depends on the position and the options alone. What survives a call (the
// pawn hash, the material table and the two caches) holds what the board determines.
//
// Each thread has an object of its own for its own position, of about 260 KiB; the pawn hash is
// shared without locks. Some hundred nanoseconds a call.
#pragma once

#include "board/position.h"
#include "board/types.h"
#include "eval/evaluation_caches.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "eval/material_table.h"
#include "eval/pawn_hash.h"
#include "eval/term_pair.h"

#include <cstdint>
#include <optional>

namespace brenquil {

class CEvaluation {
public:
    /// Keeps references to all four; the options are read anew on every call.
    CEvaluation(const CPosition& position, const CEvaluationOptions& options, CPawnHash& pawnHash,
                const CKpkBitbase& bitbase) noexcept;

    /// The score from the side to move's view. When the material is further outside the window than
    /// the option "Lazy Eval Margin" allows, the bound itself is returned. -32000 and 32000 always
    /// get the full score.
    [[nodiscard]] Score Evaluate(Score alpha, Score beta) noexcept;

    /// Fetches the pawn hash's entry of the position for an evaluation soon after, unless this
    /// thread knows the pawns itself. An evaluation without it computes what it does not know: that
    /// takes less time than a wait for far memory. The score is the same.
    void FetchPawns() noexcept {
        const std::uint64_t key = position_.pawnKingKey;
        if (pawnCache_.Slot(key).key != key) {
            pawnHash_.Prefetch(key);
            fetchedPawns_ = key;
        }
    }

private:
    [[nodiscard]] Score EvaluateClosely(Score alpha, Score beta) noexcept;
    [[nodiscard]] Score EvaluateOrdinary(const MaterialEntry& material, Score alpha,
                                         Score beta) noexcept;
    [[nodiscard]] std::optional<Score> SpecialScore(EndingNumber ending) const noexcept;
    [[nodiscard]] Score EvaluateAnew(std::int64_t ownBalance, std::uint64_t key,
                                     int phase) noexcept;
    [[nodiscard]] std::int64_t OwnSign() const noexcept;
    [[nodiscard]] Score Complete(std::int64_t ownBalance, Score positional) const noexcept;
    [[nodiscard]] TermPair PawnTerms() noexcept;

    const CPosition& position_;
    const CEvaluationOptions& options_;
    CPawnHash& pawnHash_;
    const CKpkBitbase& bitbase_;
    PawnEntry localEntry_;            ///< stands in when the pawn hash has no memory
    std::uint64_t fetchedPawns_ = 0;  ///< the `pawnKingKey` that was fetched last
    CMaterialTable materialTable_;
    CPawnCache pawnCache_;
    CPositionalCache positionalCache_;
};

}  // namespace brenquil
