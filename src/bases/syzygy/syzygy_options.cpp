#include "bases/syzygy/syzygy_options.h"

namespace brenquil {

CSyzygyOptions::CSyzygyOptions(const OptionCallback& load) : COptionGroup("Syzygy Tablebases") {
    AddPath(path, "Syzygy Path", "Syzygy Path", EmptyPath, load);
    AddCheck(use, "Syzygy Use", "Syzygy Use", true);
    AddCheck(fiftyMovesRule, "Syzygy 50 Moves Rule", "Syzygy 50 Moves Rule", true);
}

}  // namespace brenquil
