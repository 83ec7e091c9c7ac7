// The option group "Memory": the size of the hash table.
//
// The group does not know the table; it is given one function that resizes and one that tells the
// present size, both in mebibytes. The first runs once in the constructor, with the default, so the
// table exists as soon as the group does.
#pragma once

#include "text/option.h"

#include <cstdint>
#include <functional>

namespace brenquil {

/// The options of the memory that all search threads share.
class CMemoryOptions final : public COptionGroup {
public:
    /// @param resize       called with the wanted size; whether it can be had is its own affair
    /// @param currentSize  asked for the size that stands for a text that is no number
    CMemoryOptions(const std::function<void(std::int32_t megabytes)>& resize,
                   const std::function<std::int32_t()>& currentSize);

    COptionSpin hash;  ///< hash table size in mebibytes
};

}  // namespace brenquil
