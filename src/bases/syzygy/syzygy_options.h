// The option group "Syzygy Tablebases": where the tables lie and how they are used.
#pragma once

#include "text/option.h"

namespace brenquil {

/// The options of the Syzygy tables.
class CSyzygyOptions final : public COptionGroup {
public:
    /// @param load  called with each new path, the unset one of the constructor included
    explicit CSyzygyOptions(const OptionCallback& load = {});

    COptionPath path;
    COptionCheck use;
    COptionCheck fiftyMovesRule;
};

}  // namespace brenquil
