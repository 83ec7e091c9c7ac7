#include "bases/syzygy/tb_hash.h"

#include <cassert>

namespace brenquil {

void CTbHash::Clear() noexcept {
    for (Bucket& bucket : buckets_) {
        bucket.fill({});
    }
}

bool CTbHash::Add(std::uint64_t key, TbEntry& entry) {
    assert(key != 0);
    for (Slot& slot : BucketOf(key)) {
        if (slot.entry == nullptr) {
            slot.key = key;
            slot.entry = &entry;
            return true;
        }
    }
    return false;
}

}  // namespace brenquil
