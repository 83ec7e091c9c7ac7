#include "eval/evaluation.h"

#include "board/score.h"
#include "eval/endgame.h"
#include "eval/interpolation.h"
#include "eval/material.h"
#include "eval/pawn_structure.h"
#include "eval/piece_terms.h"

#include <array>
#include <cstdint>
#include <optional>

namespace brenquil {

namespace {

constexpr int ShelterWeight = 6;

/// What a position's key holds for the side to move, by `Colour`.
constexpr std::array<std::uint64_t, 2> SideKeys = {0, SideKey};

/// The terms of pawns and kings from White's view.
TermPair Weigh(const PawnSums& white, const PawnSums& black) noexcept {
    const int shelter = black.shelterDanger - white.shelterDanger;
    return white.terms - black.terms + TermPair(ShelterWeight * shelter, 0);
}

}  // namespace

CEvaluation::CEvaluation(const CPosition& position, const CEvaluationOptions& options,
                         CPawnHash& pawnHash, const CKpkBitbase& bitbase) noexcept
    : position_(position), options_(options), pawnHash_(pawnHash), bitbase_(bitbase) {}

/// 1 with White to move, -1 with Black: the factor between White's view and the mover's. It spares
/// the branches.
[[gnu::always_inline]] inline std::int64_t CEvaluation::OwnSign() const noexcept {
    return 2 * std::int64_t{position_.sideToMove} - 1;
}

/// The frequent cases end here without a call, or with one as the last step. So nothing has to be
/// kept across a call, and no register is saved: 2 % of a search's instructions.
Score CEvaluation::Evaluate(Score alpha, Score beta) noexcept {
    const MaterialEntry* const material = materialTable_.Known(position_, options_);
    if (material == nullptr || material->isSpecial) [[unlikely]] {
        return EvaluateClosely(alpha, beta);
    }
    return EvaluateOrdinary(*material, alpha, beta);
}

/// With men that have not been met lately, or that may be a draw or a known ending.
[[gnu::noinline]] Score CEvaluation::EvaluateClosely(Score alpha, Score beta) noexcept {
    const MaterialEntry& material = materialTable_.Find(position_, options_);
    if (material.isSpecial) {
        if (const std::optional<Score> score = SpecialScore(material.ending)) {
            return *score;
        }
    }
    return EvaluateOrdinary(material, alpha, beta);
}

[[gnu::always_inline]] inline Score
CEvaluation::EvaluateOrdinary(const MaterialEntry& material, Score alpha, Score beta) noexcept {
    // 64 bits from here on: margin and contempt can be any number.
    const std::int64_t ownBalance = OwnSign() * material.balance;
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
    const std::uint64_t key = position_.key ^ SideKeys[position_.sideToMove];
    if (const MaybeScore known = positionalCache_.Find(key)) {
        return Complete(ownBalance, *known);
    }
    return EvaluateAnew(ownBalance, key, material.phase);
}

/// `positional` is from White's view.
[[gnu::always_inline]] inline Score CEvaluation::Complete(std::int64_t ownBalance,
                                                          Score positional) const noexcept {
    // The contempt favours White, whoever the engine plays: required.
    std::int64_t rest = positional;
    if (!options_.analyse.enabled) {
        rest += options_.contempt.number;
    }
    return static_cast<Score>(ownBalance + OwnSign() * rest);
}

/// A draw as neither side can mate, or the score of a known ending.
std::optional<Score> CEvaluation::SpecialScore(EndingNumber ending) const noexcept {
    if (ending == UnknownEnding) {
        return DrawScore;
    }
    if (!options_.useEndgameEval.enabled) {
        return std::nullopt;
    }
    const Material material = ComputeMaterial(position_, options_.pieceValues);
    return EvaluateEnding(ending, position_, material, bitbase_);
}

/// Sums everything but material, for a position whose sum the cache lacks.
[[gnu::noinline]] Score CEvaluation::EvaluateAnew(std::int64_t ownBalance, std::uint64_t key,
                                                  int phase) noexcept {
    // Two statements, as a compiler may take the operands of one in either order.
    const TermPair pieceTerms = PieceTerms(position_);
    const TermPair terms = pieceTerms + PawnTerms();
    const Score positional = Interpolate(terms.Middlegame(), terms.Endgame(), phase);
    positionalCache_.Store(key, positional);
    return Complete(ownBalance, positional);
}

/// The terms of pawns and kings, the shelter included, from White's view.
TermPair CEvaluation::PawnTerms() noexcept {
    const std::uint64_t key = position_.pawnKingKey;
    CPawnCache::Entry& cached = pawnCache_.Slot(key);
    if (cached.key != key) {
        if (key == fetchedPawns_) {
            const PawnEntry& shared = GetPawnEntry(position_, pawnHash_, localEntry_);
            cached = {key, Weigh(shared.Sums(White), shared.Sums(Black))};
        } else {
            cached = {key, Weigh(SumPawns(position_, White), SumPawns(position_, Black))};
        }
    }
    return cached.terms;
}

}  // namespace brenquil
