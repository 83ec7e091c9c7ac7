// The option group "Memory": the size of the hash table, and what happens when it is set.
#pragma once

#include "bases/host.h"
#include "platform/memory.h"
#include "search/hash_table.h"
#include "text/option.h"
#include "text/text.h"

#include <cstdint>
#include <string>

namespace brenquil {

/// The options of the memory that all search threads share.
class CMemoryOptions final : public COptionGroup {
public:
    /// Both outlive the group. The table has no entries before the first run of the callbacks.
    /// @param host  ends the search before the table changes, and hears of a size that there is no
    ///              memory for
    CMemoryOptions(IHost& host, CHashTable& hashTable)
        : COptionGroup("Memory"), host_(host), hashTable_(hashTable) {
        hash.onChange = [this](const std::string& megabytes) { Resize(megabytes); };
    }

    COptionSpin hash =
        AddSpin("Hash", DefaultHashMegabytes, 0, 16384);  ///< table size in mebibytes

private:
    /// Gives the table that many mebibytes; a text that is not a number asks for the present size.
    void Resize(const std::string& megabytes) {
        if (!IsNumeric(megabytes)) {
            return;
        }
        const std::int32_t wanted = ToInteger(megabytes);
        const std::uint32_t size = wanted;
        if (size == hashTable_.SizeMegabytes()) {
            return;
        }
        host_.EndSearch();
        if (!hashTable_.Resize(size)) {
            host_.Print("Hash of " + std::to_string(wanted) + " MB cannot be allocated, " +
                        std::to_string(hashTable_.SizeMegabytes()) + " MB stay in use");
        }
    }

    IHost& host_;
    CHashTable& hashTable_;
};

}  // namespace brenquil
