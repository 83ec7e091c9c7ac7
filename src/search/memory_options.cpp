#include "search/memory_options.h"

#include "text/text.h"

#include <cstdint>

namespace brenquil {

CMemoryOptions::CMemoryOptions(IHost& host, CHashTable& hashTable)
    : COptionGroup("Memory"), host_(host), hashTable_(hashTable) {
    hash.onChange = [this](const std::string& megabytes) { Resize(megabytes); };
}

/// A text that is no number asks for the present size.
void CMemoryOptions::Resize(const std::string& megabytes) {
    if (!IsNumeric(megabytes)) {
        return;
    }
    const std::int32_t wanted = ToInteger(megabytes);
    const auto size = static_cast<std::uint32_t>(wanted);
    if (size == hashTable_.SizeMegabytes()) {
        return;
    }
    host_.EndSearch();
    if (!hashTable_.Resize(size)) {
        host_.Print("Hash of " + std::to_string(wanted) + " MB cannot be allocated, " +
                    std::to_string(hashTable_.SizeMegabytes()) + " MB stay in use");
    }
}

}  // namespace brenquil
