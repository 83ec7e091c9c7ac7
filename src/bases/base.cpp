#include "bases/base.h"

#include <algorithm>
#include <cassert>
#include <utility>

namespace brenquil {

void CBaseList::Add(IBase& base, int menInSearch) {
    assert(menInSearch >= 0);
    menInSearch_ = std::max(menInSearch_, menInSearch);
    bases_.push_back(&base);
    std::vector<IBase*> ordered;
    for (std::uint32_t priority = 0; priority < Priorities; ++priority) {
        for (IBase* const candidate : bases_) {
            if (candidate->GetPriority() == priority) {
                ordered.push_back(candidate);
            }
        }
    }
    bases_ = std::move(ordered);
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
