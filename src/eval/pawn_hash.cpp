#include "eval/pawn_hash.h"

namespace brenquil {

bool CPawnHash::Resize(std::size_t count) noexcept {
    // The old block goes first, so that both need not fit into memory together.
    entries_ = nullptr;
    slotOf_ = CExactModulo();
    pages_.Release();
    if (count == 0) {
        return true;
    }
    pages_ = CPages::Allocate(count * sizeof(PawnEntry));
    if (pages_.Data() == nullptr) {
        return false;
    }
    // Zero bytes are an empty entry, so the pages are left for the first use to touch.
    entries_ = pages_.As<PawnEntry>();
    slotOf_ = CExactModulo(count);
    return true;
}

}  // namespace brenquil
