#include "platform/special_file.h"
#include "platform/windows_name.h"

#include <array>
#include <string_view>
#include <windows.h>

namespace brenquil {

namespace {

/// CON, AUX.txt and their like are devices in every directory; their full names say so.
bool IsDevice(const std::wstring& name) noexcept {
    std::array<wchar_t, 16> fullName{};
    // The full name of a device is short. For a longer one only the length comes back.
    const DWORD length = GetFullPathNameW(name.c_str(), fullName.size(), fullName.data(), nullptr);
    return length < fullName.size() && std::wstring_view(fullName.data()).starts_with(L"\\\\.\\");
}

}  // namespace

bool IsSpecialFile(const std::string& path) noexcept {
    constexpr DWORD Special = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
    const std::wstring name = WindowsName(path);
    const DWORD attributes = GetFileAttributesW(name.c_str());
    return (attributes != INVALID_FILE_ATTRIBUTES && (attributes & Special) != 0) || IsDevice(name);
}

}  // namespace brenquil
