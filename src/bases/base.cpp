#include "bases/base.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace brenquil {

namespace {

/// Orders by priority, equal ones as they came.
void Insert(std::vector<IBase*>& list, IBase& base) {
    list.push_back(&base);
    std::vector<IBase*> ordered;
    for (std::uint32_t priority = 0; priority < CBaseList::Priorities; ++priority) {
        for (IBase* const candidate : list) {
            if (candidate->GetPriority() == priority) {
                ordered.push_back(candidate);
            }
        }
    }
    list = std::move(ordered);
}

}  // namespace

void CBaseList::Add(IBase& base, int menInSearch) {
    assert(menInSearch >= 0);
    menInSearch_ = std::max(menInSearch_, menInSearch);
    Insert(bases_, base);
    if (menInSearch > 0) {
        Insert(askedInSearch_, base);
    }
}

[[gnu::noinline]] bool CBaseList::AskInSearch(Score& score, const CPosition& position, int depth,
                                              int ply) {
    for (IBase* const base : askedInSearch_) {
        if (base->ProbeSearch(score, position, depth, ply)) {
            hits.AddLossily(1);
            return true;
        }
    }
    return false;
}

bool CBaseList::ProbeRoot(Move& move, const CPosition& position) {
    for (IBase* const base : bases_) {
        if (base->ProbeRoot(move, position)) {
            hits.AddLossily(1);
            return true;
        }
    }
    return false;
}

}  // namespace brenquil
