#include "platform/directory.h"
#include "platform/windows_name.h"

#include <array>
#include <windows.h>

namespace brenquil {

char PathSeparator() noexcept {
    return '\\';
}

bool DirectoryExists(const std::string& path) noexcept {
    const DWORD attributes = GetFileAttributesW(WindowsName(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool DriveExists(char letter) noexcept {
    constexpr unsigned char CaseBit = 0x20;
    const int index = (static_cast<unsigned char>(letter) | CaseBit) - 'a';
    return index >= 0 && index < 26 && ((GetLogicalDrives() >> index) & 1U) != 0;
}

bool DriveIsReady(char letter) noexcept {
    const std::array<char, 5> pattern = {letter, ':', '\\', '*', '\0'};
    WIN32_FIND_DATAA entry;
    HANDLE const search = FindFirstFileA(pattern.data(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return GetLastError() != ERROR_NOT_READY;
    }
    FindClose(search);
    return true;
}

}  // namespace brenquil
