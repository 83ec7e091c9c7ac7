#include "eval/evaluation.h"

#include "board/score.h"
#include "eval/endgame.h"
#include "eval/interpolation.h"
#include "eval/pawn_structure.h"
#include "eval/piece_terms.h"

#include <cstdint>
#include <optional>

namespace brenquil {

namespace {

/// For bishops on both colours of squares. A constant that does not follow the piece values.
constexpr std::int64_t BishopPairBonus = 50;

constexpr std::int32_t ShelterWeight = 6;

/// White's material less Black's, bishop pairs included. 64 bits, here and in the sums with it,
/// because the options can hold any number.
std::int64_t MaterialBalance(const Material& material) noexcept {
    return std::int64_t{material.value[White]} - material.value[Black] +
           BishopPairBonus * (static_cast<int>(material.hasBishopPair[White]) -
                              static_cast<int>(material.hasBishopPair[Black]));
}

}  // namespace

CEvaluation::CEvaluation(const CPosition& position, const CEvaluationOptions& options,
                         CPawnHash& pawnHash, const CKpkBitbase& bitbase) noexcept
    : position_(position), options_(options), pawnHash_(pawnHash), bitbase_(bitbase) {}

Score CEvaluation::Evaluate(Score alpha, Score beta) noexcept {
    if (CannotMate(position_, White) && CannotMate(position_, Black)) {
        return DrawScore;
    }

    const Material material = ComputeMaterial(position_, options_.pieceValues);
    if (options_.useEndgameEval.enabled) {
        if (const std::optional<Score> score = EvaluateEndgame(position_, material, bitbase_)) {
            return *score;
        }
    }

    const bool whiteToMove = position_.sideToMove == White;
    const std::int64_t balance = MaterialBalance(material);
    const std::int64_t ownBalance = whiteToMove ? balance : -balance;
    const std::int64_t lazyMargin = options_.lazyEvalMargin.number;
    if (lazyMargin > 0) {
        // The bounds are returned, not the material.
        if (ownBalance >= beta + lazyMargin) {
            return beta;
        }
        if (ownBalance <= alpha - lazyMargin) {
            return alpha;
        }
    }

    const Score positional = PositionalScore(material.phase);
    const std::int64_t score = ownBalance + (whiteToMove ? positional : -positional);
    if (options_.analyse.enabled) {
        return static_cast<Score>(score);
    }
    // The contempt favours White, whoever the engine plays: required.
    const std::int64_t contempt = options_.contempt.number;
    return static_cast<Score>(whiteToMove ? score + contempt : score - contempt);
}

/// Everything but material, from White's view.
Score CEvaluation::PositionalScore(std::int32_t phase) noexcept {
    const std::uint64_t key =
        position_.sideToMove == White ? position_.key ^ SideKey : position_.key;
    if (const std::optional<Score> known = positionalCache_.Find(key)) {
        return *known;
    }
    const TermPair terms = PieceTerms(position_) + PawnTerms();
    const Score score = Interpolate(terms.Middlegame(), terms.Endgame(), phase);
    positionalCache_.Store(key, score);
    return score;
}

/// The terms of pawns and kings, the shelter included, from White's view.
TermPair CEvaluation::PawnTerms() noexcept {
    const std::uint64_t key = position_.pawnKingKey;
    CPawnCache::Entry& cached = pawnCache_.Slot(key);
    if (cached.key != key) {
        const PawnEntry& pawns = GetPawnEntry(position_, pawnHash_, localEntry_);
        const std::int32_t shelter = pawns.shelterDanger[Black] - pawns.shelterDanger[White];
        cached = {key, TermPair(pawns.middlegame[White] - pawns.middlegame[Black] +
                                    ShelterWeight * shelter,
                                pawns.endgame[White] - pawns.endgame[Black])};
    }
    return cached.terms;
}

}  // namespace brenquil
