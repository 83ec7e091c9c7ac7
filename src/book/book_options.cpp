#include "book/book_options.h"

namespace brenquil {

CBookOptions::CBookOptions(const OptionCallback& load, const OptionCallback& setMode)
    : COptionGroup("Book") {
    AddCheck(ownBook, "OwnBook", "Book Use", true);
    AddPath(bookPath, "Book Path", "Book Path", EmptyPath, load);
    AddCombo(bookMode, "Book Mode", "Book Mode", "Wide",
             {"Wide", "Standard", "Tournament", "BestMove"}, setMode);
}

}  // namespace brenquil
