#include "platform/special_file.h"

#include <sys/stat.h>

namespace brenquil {

bool IsSpecialFile(const std::string& path) noexcept {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode);
}

}  // namespace brenquil
