// Memory is not paged here, so a mapping is a copy of the file.

#include "platform/file_mapping.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <sys/stat.h>

namespace brenquil {

namespace {

/// The whole of a file of that size; nullptr when it cannot be read or there is no room for it.
std::uint8_t* ReadWholeFile(const std::string& path, std::size_t size) noexcept {
    std::FILE* const file = std::fopen(path.c_str(), "rb");
    if (file == nullptr) {
        return nullptr;
    }
    auto* data = static_cast<std::uint8_t*>(std::malloc(size));
    if (data != nullptr && std::fread(data, 1, size, file) != size) {
        std::free(data);
        data = nullptr;
    }
    static_cast<void>(std::fclose(file));
    return data;
}

}  // namespace

bool CFileMapping::Open(const std::string& path) noexcept {
    Close();
    errno = 0;
    const std::uint64_t size = LengthOfFile(path).value_or(0);
    if (size > 0 && size <= std::numeric_limits<std::size_t>::max()) {
        data_ = ReadWholeFile(path, static_cast<std::size_t>(size));
    }
    error_ = data_ == nullptr ? errno : 0;
    size_ = data_ == nullptr ? 0 : static_cast<std::size_t>(size);
    return data_ != nullptr;
}

void CFileMapping::Close() noexcept {
    std::free(const_cast<std::uint8_t*>(data_));
    data_ = nullptr;
    size_ = 0;
}

std::optional<std::uint64_t> LengthOfFile(const std::string& path) noexcept {
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        return {};
    }
    return status.st_size;
}

}  // namespace brenquil
