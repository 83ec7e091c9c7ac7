#include "search/search.h"

#include <cassert>

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
    nodes_ = 0;
    claims_ = 0;
    countdown_ = Endless;
    master_ = nullptr;
    currentLine_.count = 0;
    history_.fill({});
    killers_.fill({});
}

void CSearch::SetMaster(ISearchMaster& master, std::int64_t checks) noexcept {
    assert(checks > 0);
    master_ = &master;
    countdown_ = checks;
}

void CSearch::BuildLine(PvLine& line, int ply, Move move) const noexcept {
    assert(ply >= 0 && ply <= MaxPly && !move.IsNone());
    line.count = 0;
    line.Append(move);
    for (const Move reply : pv_[ply + 1]) {
        line.Append(reply);
    }
}

}  // namespace brenquil
