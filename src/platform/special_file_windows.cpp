#include "platform/special_file.h"

#include <windows.h>

namespace brenquil {

bool IsSpecialFile(const std::string& path) noexcept {
    constexpr DWORD Special = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
    const DWORD attributes = GetFileAttributesA(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & Special) != 0;
}

}  // namespace brenquil
