// The option group "Book": whether, from which file and how boldly the opening book is played.
#pragma once

#include "text/option.h"

#include <cstdint>

namespace brenquil {

/// The options of the opening book.
class CBookOptions final : public COptionGroup {
public:
    /// How the book move is chosen; the order is that of the option's advertised words.
    enum Mode : std::int32_t { Wide, Standard, Tournament, BestMove };

    CBookOptions() : COptionGroup("Book") {}

    COptionCheck ownBook = AddCheck({"OwnBook", "Book Use"}, true);
    COptionPath bookPath = AddPath("Book Path");
    COptionCombo bookMode =
        AddCombo("Book Mode", "Wide", {"Wide", "Standard", "Tournament", "BestMove"});
};

}  // namespace brenquil
