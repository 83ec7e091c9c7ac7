#include "bases/nalimov/nalimov_file.h"

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
    constexpr std::uint64_t Step = std::uint64_t{1} << 30;
    constexpr std::uint64_t Limit = std::uint64_t{1} << 31;  // what a 32-bit long cannot hold
    if (offset < Limit) {
        return std::fseek(file_.file, static_cast<long>(offset), SEEK_SET) == 0;
    }
    bool isDone = std::fseek(file_.file, 0, SEEK_SET) == 0;
    for (; isDone && offset >= Step; offset -= Step) {
        isDone = std::fseek(file_.file, static_cast<long>(Step), SEEK_CUR) == 0;
    }
    return isDone && std::fseek(file_.file, static_cast<long>(offset), SEEK_CUR) == 0;
}

std::optional<std::uint64_t> CNalimovFile::Size() noexcept {
    if (std::fseek(file_.file, 0, SEEK_END) != 0) {
        return std::nullopt;
    }
    const long size = std::ftell(file_.file);
    return size < 0 ? std::nullopt : std::optional(static_cast<std::uint64_t>(size));
}

std::size_t CNalimovFile::Read(std::span<std::uint8_t> buffer) noexcept {
    return std::fread(buffer.data(), 1, buffer.size(), file_.file);
}

bool CNalimovFile::HasFailed() const noexcept {
    return std::ferror(file_.file) != 0;
}

}  // namespace brenquil
