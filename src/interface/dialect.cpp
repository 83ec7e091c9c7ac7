#include "interface/dialect.h"

#include "text/text.h"

#include <string>

namespace brenquil {

CDialect CDialect::OfProgram(std::string_view path) {
    constexpr std::string_view Extension = ".exe";
    std::string name = ToLower(path.substr(path.find_last_of("/\\") + 1));
    if (name.ends_with(Extension)) {
        name.resize(name.size() - Extension.size());
    }
    return CDialect(name.ends_with("-strict"));
}

}  // namespace brenquil
