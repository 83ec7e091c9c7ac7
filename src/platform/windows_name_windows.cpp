#include "platform/windows_name.h"

#include <cstddef>
#include <new>
#include <windows.h>

namespace brenquil {

namespace {

/// Empty when the name is not written in that code page.
std::wstring Convert(const std::string& name, UINT codePage) {
    const int bytes = static_cast<int>(name.size());
    const int length =
        MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, name.data(), bytes, nullptr, 0);
    std::wstring wide(length, L'\0');
    (void)MultiByteToWideChar(codePage, MB_ERR_INVALID_CHARS, name.data(), bytes, wide.data(),
                              length);
    return wide;
}

}  // namespace

std::wstring WindowsName(const std::string& name) noexcept {
    // No name of a file is as long as this.
    constexpr std::size_t Longest = 1U << 20U;
    if (name.empty() || name.size() > Longest) {
        return {};
    }
    try {
        std::wstring wide = Convert(name, CP_UTF8);
        return wide.empty() ? Convert(name, CP_ACP) : wide;
    } catch (const std::bad_alloc&) {
        return {};
    }
}

}  // namespace brenquil
