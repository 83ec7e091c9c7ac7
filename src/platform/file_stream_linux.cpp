#include "platform/file_stream.h"

#include <limits>
#include <sys/types.h>

namespace brenquil {

static_assert(sizeof(off_t) == sizeof(std::uint64_t));

std::FILE* OpenStream(const std::string& name, const char* mode) noexcept {
    return std::fopen(name.c_str(), mode);  // NOLINT(cppcoreguidelines-owning-memory)
}

bool SeekStream(std::FILE* stream, std::uint64_t place) noexcept {
    return place <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()) &&
           fseeko(stream, static_cast<off_t>(place), SEEK_SET) == 0;
}

std::optional<std::uint64_t> StreamPlace(std::FILE* stream) noexcept {
    const off_t place = ftello(stream);
    return place < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(place));
}

std::optional<std::uint64_t> StreamSize(std::FILE* stream) noexcept {
    return fseeko(stream, 0, SEEK_END) == 0 ? StreamPlace(stream) : std::nullopt;
}

}  // namespace brenquil
