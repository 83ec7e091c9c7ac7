// The option group "Book": whether, from which file and how boldly the opening book is played.
#pragma once

#include "text/option.h"

namespace brenquil {

/// The options of the opening book.
class CBookOptions final : public COptionGroup {
public:
    /// How the book move is chosen; the order is that of the option's advertised words.
    enum Mode : std::int32_t { Wide, Standard, Tournament, BestMove };

    /// @param load     called with each new path, the unset one of the constructor included
    /// @param setMode  called with each new mode text, the default of the constructor included
    explicit CBookOptions(const OptionCallback& load = {}, const OptionCallback& setMode = {});

    COptionCheck ownBook;
    COptionPath bookPath;
    COptionCombo bookMode;
};

}  // namespace brenquil
