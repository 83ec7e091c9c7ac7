#include "platform/file_mapping.h"

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brenquil {

namespace {

/// Opens for reading; below 0 when that fails.
int OpenFile(const std::string& path) noexcept {
    // Not blocking: opening a named pipe must not wait for somebody to write to it.
    return open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

/// The size of an open regular file; nothing for anything else.
std::optional<std::uint64_t> SizeOfFile(int descriptor) noexcept {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size < 0) {
        return {};
    }
    return status.st_size;
}

}  // namespace

bool CFileMapping::Open(const std::string& path) noexcept {
    Close();
    errno = 0;
    const int descriptor = OpenFile(path);
    if (descriptor < 0) {
        error_ = errno;
        return false;
    }
    const std::size_t size = SizeOfFile(descriptor).value_or(0);
    void* const mapped =
        size == 0 ? MAP_FAILED : mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    error_ = mapped == MAP_FAILED ? errno : 0;
    // The mapping holds the file by itself.
    close(descriptor);
    if (mapped == MAP_FAILED) {
        return false;
    }
    // Tables are read here and there; the pages beside one that was touched are unlikely to be
    // needed.
    madvise(mapped, size, MADV_RANDOM);
    data_ = static_cast<const std::uint8_t*>(mapped);
    size_ = size;
    return true;
}

void CFileMapping::Close() noexcept {
    if (data_ != nullptr) {
        munmap(const_cast<std::uint8_t*>(data_), size_);
    }
    data_ = nullptr;
    size_ = 0;
}

std::optional<std::uint64_t> LengthOfFile(const std::string& path) noexcept {
    const int descriptor = OpenFile(path);
    if (descriptor < 0) {
        return {};
    }
    const std::optional<std::uint64_t> size = SizeOfFile(descriptor);
    close(descriptor);
    return size;
}

}  // namespace brenquil
