#include "platform/file_mapping.h"
#include "platform/windows_name.h"

#include <cstddef>
#include <windows.h>

namespace brenquil {

namespace {

/// Opens for reading; INVALID_HANDLE_VALUE when that fails.
HANDLE OpenFileForReading(const std::string& path) noexcept {
    return CreateFileW(WindowsName(path).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                       OPEN_EXISTING, FILE_FLAG_RANDOM_ACCESS, nullptr);
}

/// The size of an open file; nothing for pipes and devices, which have names but no length.
std::optional<std::uint64_t> SizeOfFile(HANDLE file) noexcept {
    LARGE_INTEGER size = {};
    if (GetFileType(file) != FILE_TYPE_DISK || GetFileSizeEx(file, &size) == 0) {
        return {};
    }
    return size.QuadPart;
}

/// The whole of an open file as memory, nullptr when that fails.
const std::uint8_t* MapWholeFile(HANDLE file) noexcept {
    HANDLE const mapping = CreateFileMappingA(file, nullptr, PAGE_READONLY, 0, 0, nullptr);
    if (mapping == nullptr) {
        return nullptr;
    }
    const void* const view = MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 0);
    // The view keeps the mapping and the file by itself. Closing must not hide why there is no
    // view.
    const DWORD error = GetLastError();
    CloseHandle(mapping);
    SetLastError(error);
    return static_cast<const std::uint8_t*>(view);
}

}  // namespace

bool CFileMapping::Open(const std::string& path) noexcept {
    Close();
    HANDLE const file = OpenFileForReading(path);
    if (file == INVALID_HANDLE_VALUE) {
        error_ = GetLastError();
        return false;
    }
    SetLastError(0);
    const std::size_t size = SizeOfFile(file).value_or(0);
    if (size > 0) {
        data_ = MapWholeFile(file);
    }
    error_ = data_ == nullptr ? GetLastError() : 0;
    CloseHandle(file);
    size_ = data_ == nullptr ? 0 : size;
    return data_ != nullptr;
}

void CFileMapping::Close() noexcept {
    if (data_ != nullptr) {
        UnmapViewOfFile(data_);
    }
    data_ = nullptr;
    size_ = 0;
}

std::optional<std::uint64_t> LengthOfFile(const std::string& path) noexcept {
    HANDLE const file = OpenFileForReading(path);
    if (file == INVALID_HANDLE_VALUE) {
        return {};
    }
    const std::optional<std::uint64_t> size = SizeOfFile(file);
    CloseHandle(file);
    return size;
}

}  // namespace brenquil
