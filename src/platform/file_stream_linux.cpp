#include "platform/file_stream.h"

#include <cassert>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/stat.h>
#include <sys/types.h>
#include <unistd.h>

namespace brenquil {

static_assert(sizeof(off_t) == sizeof(std::uint64_t));

namespace {

/// What the first letter of a mode of the C library asks of the system.
int FlagsOf(const char* mode) noexcept {
    const bool isUpdate = std::strchr(mode, '+') != nullptr;
    const int access = isUpdate ? O_RDWR : *mode == 'r' ? O_RDONLY : O_WRONLY;
    switch (*mode) {
    case 'w': return access | O_CREAT | O_TRUNC;
    case 'a': return access | O_CREAT | O_APPEND;
    default: return access;
    }
}

bool IsRegularFile(int descriptor) noexcept {
    struct stat status = {};
    return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

std::FILE* OpenStream(const std::string& name, const char* mode) noexcept {
    assert(*mode == 'r' || *mode == 'w' || *mode == 'a');
    constexpr mode_t ReadableAndWritable = 0666;  // less what the user's mask takes away
    // Not blocking, for the opening of pipes and for the reading of what the system shows as a file
    // and fills as things happen (/proc/kmsg). Regular files never block.
    const int descriptor =
        open(name.c_str(), FlagsOf(mode) | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, ReadableAndWritable);
    if (descriptor < 0) {
        return nullptr;
    }
    std::FILE* const stream = IsRegularFile(descriptor) ? fdopen(descriptor, mode) : nullptr;
    if (stream == nullptr) {
        close(descriptor);
    }
    return stream;
}

bool SeekStream(std::FILE* stream, std::uint64_t place) noexcept {
    return place <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
           fseeko(stream, place, SEEK_SET) == 0;
}

std::optional<std::uint64_t> StreamPlace(std::FILE* stream) noexcept {
    const off_t place = ftello(stream);
    return place < 0 ? std::nullopt : std::optional<std::uint64_t>(place);
}

std::optional<std::uint64_t> StreamSize(std::FILE* stream) noexcept {
    return fseeko(stream, 0, SEEK_END) == 0 ? StreamPlace(stream) : std::nullopt;
}

}  // namespace brenquil
