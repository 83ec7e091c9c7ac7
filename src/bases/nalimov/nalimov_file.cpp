#include "bases/nalimov/nalimov_file.h"

#include "platform/file_stream.h"

#include <cstdio>

namespace brenquil {

bool CNalimovFile::Open(const std::string& name) noexcept {
    if (!file_.Open(name)) {
        return false;
    }
    (void)std::setvbuf(file_.file, nullptr, _IONBF, 0);
    return true;
}

bool CNalimovFile::Seek(std::uint64_t offset) noexcept {
    return SeekStream(file_.file, offset);
}

std::optional<std::uint64_t> CNalimovFile::Size() noexcept {
    return StreamSize(file_.file);
}

std::size_t CNalimovFile::Read(std::span<std::uint8_t> buffer) noexcept {
    return std::fread(buffer.data(), 1, buffer.size(), file_.file);
}

bool CNalimovFile::HasFailed() const noexcept {
    return std::ferror(file_.file) != 0;
}

}  // namespace brenquil
