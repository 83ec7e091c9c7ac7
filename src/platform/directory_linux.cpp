#include "platform/directory.h"

#include <sys/stat.h>

namespace brenquil {

char PathSeparator() noexcept {
    return '/';
}

bool DirectoryExists(const std::string& path) noexcept {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool DriveExists(char /*letter*/) noexcept {
    return true;
}

bool DriveIsReady(char /*letter*/) noexcept {
    return true;
}

}  // namespace brenquil
