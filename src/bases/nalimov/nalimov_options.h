// The option group "Nalimov Tablebases": where the tables lie, how much of them is cached and when
// they are asked.
#pragma once

#include "platform/relaxed.h"
#include "text/option.h"

#include <cstdint>

namespace brenquil {

/// The options of the Nalimov tables.
class CNalimovOptions final : public COptionGroup {
public:
    /// When the tables are asked; the order is that of the option's advertised words.
    enum Usage : std::int32_t { Never, OnRoot, InSearch };

    /// @param registerTables  called with each new path, the unset one of the constructor included
    /// @param resizeCache     called with each new cache size, the default included
    explicit CNalimovOptions(const OptionCallback& registerTables = {},
                             const OptionCallback& resizeCache = {});

    COptionPath path;
    COptionSpin cache;  ///< mebibytes
    COptionCombo usage;
    COptionSpin minDepth;

    /// The usage in force: a `usage` text that is none of the advertised words leaves it.
    Relaxed<std::int32_t> nalimovUsage{Never};
};

}  // namespace brenquil
