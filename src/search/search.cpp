#include "search/search.h"

#include "platform/clock.h"

namespace brenquil {

CSearch::CSearch(CPosition& position, const SearchContext& context)
    : position_(position),
      hash_(context.hash),
      bases_(context.bases),
      options_(context.options),
      generator_(position),
      evaluation_(position, context.evaluationOptions, context.hash.pawnHash, context.kpkBitbase) {
    ResetSearch();
}

void CSearch::ResetSearch() noexcept {
    stop_ = false;
    pause_ = false;
    outputMoves_ = false;
    receiver_ = nullptr;
    startTick_ = TickCount();
    lastTick_ = startTick_;
    hardLimit_ = NoTimeLimit;
    softLimit_ = NoTimeLimit;
    nodes_ = 0;
    countdown_ = CountdownStart;
    bestLine_.count = 0;
    currentLine_.count = 0;
    history_.fill({});
    killers_.fill({});
}

}  // namespace brenquil
