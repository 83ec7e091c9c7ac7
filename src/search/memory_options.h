// The option group "Memory": the size of the hash table.
#pragma once

#include "bases/host.h"
#include "platform/memory.h"
#include "search/hash_table.h"
#include "text/option.h"

#include <string>

namespace brenquil {

/// The options of the memory that all search threads share.
class CMemoryOptions final : public COptionGroup {
public:
    /// Both outlive the group. The table has no entries before the first run of the callbacks.
    /// @param host  ends the search before the table changes, and hears of a size that there is no
    ///              memory for
    CMemoryOptions(IHost& host, CHashTable& hashTable);

    COptionSpin hash =
        AddSpin("Hash", DefaultHashMegabytes, 0, 16384);  ///< table size in mebibytes

private:
    void Resize(const std::string& megabytes);

    IHost& host_;
    CHashTable& hashTable_;
};

}  // namespace brenquil
