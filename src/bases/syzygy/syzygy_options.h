// The option group "Syzygy Tablebases": where the tables lie and how they are used.
#pragma once

#include "text/option.h"

namespace brenquil {

/// The options of the Syzygy tables.
class CSyzygyOptions final : public COptionGroup {
public:
    CSyzygyOptions() : COptionGroup("Syzygy Tablebases") {}

    COptionPath path = AddPath("Syzygy Path");
    COptionCheck use = AddCheck("Syzygy Use", true);
    COptionCheck fiftyMovesRule = AddCheck("Syzygy 50 Moves Rule", true);
};

}  // namespace brenquil
