// The option group "Nalimov Tablebases": where the tables lie, how much of them is cached and when
// they are asked.
#pragma once

#include "platform/memory.h"
#include "text/option.h"

#include <cstdint>

namespace brenquil {

/// The options of the Nalimov tables.
class CNalimovOptions final : public COptionGroup {
public:
    /// When the tables are asked; the order is that of the option's advertised words.
    enum Usage : std::int32_t { Never, OnRoot, InSearch };

    CNalimovOptions() : COptionGroup("Nalimov Tablebases") {}

    COptionPath path = AddPath({"NalimovPath", "Nalimov Path"});
    COptionSpin cache = AddSpin({"NalimovCache", "Nalimov Cache"}, DefaultTableCacheMegabytes, 1,
                                256);  ///< mebibytes
    COptionCombo usage = AddCombo("Nalimov Usage", "OnRoot", {"Never", "OnRoot", "InSearch"});
    COptionSpin minDepth = AddSpin("Nalimov Min Depth", 6, 1, 100);
};

}  // namespace brenquil
