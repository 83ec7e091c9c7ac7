#include "platform/file_stream.h"
#include "platform/windows_name.h"

#include <cassert>
#include <io.h>
#include <limits>
#include <windows.h>

namespace brenquil {

namespace {

bool IsOnDisk(std::FILE* stream) noexcept {
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
    return GetFileType(handle) == FILE_TYPE_DISK;
}

}  // namespace

std::FILE* OpenStream(const std::string& name, const char* mode) noexcept {
    assert(*mode == 'r' || *mode == 'w' || *mode == 'a');
    const std::wstring wideName = WindowsName(name);
    const std::wstring wideMode = WindowsName(mode);
    std::FILE* const stream =
        wideName.empty() ? nullptr : _wfopen(wideName.c_str(), wideMode.c_str());
    if (stream != nullptr && !IsOnDisk(stream)) {
        (void)std::fclose(stream);
        return nullptr;
    }
    return stream;
}

bool SeekStream(std::FILE* stream, std::uint64_t place) noexcept {
    return place <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) &&
           _fseeki64(stream, place, SEEK_SET) == 0;
}

std::optional<std::uint64_t> StreamPlace(std::FILE* stream) noexcept {
    const std::int64_t place = _ftelli64(stream);
    return place < 0 ? std::nullopt : std::optional<std::uint64_t>(place);
}

std::optional<std::uint64_t> StreamSize(std::FILE* stream) noexcept {
    return _fseeki64(stream, 0, SEEK_END) == 0 ? StreamPlace(stream) : std::nullopt;
}

}  // namespace brenquil
