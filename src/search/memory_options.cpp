#include "search/memory_options.h"

#include "text/text.h"

namespace brenquil {

CMemoryOptions::CMemoryOptions(const std::function<void(std::int32_t megabytes)>& resize,
                               const std::function<std::int32_t()>& currentSize)
    : COptionGroup("Memory") {
    AddSpin(hash, "Hash", "Hash", 64, 0, 16384, [resize, currentSize](const std::string& value) {
        resize(IsNumeric(value) ? ToInteger(value) : currentSize());
    });
}

}  // namespace brenquil
