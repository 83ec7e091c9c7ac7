// Compressed table files: any bytes as header, code and blocks.
//
// The parts that only say "this is such a file" (banner, fixed numbers, checksum) are put right
// before the header is read, because a fuzzer would otherwise never get past them; every fourth
// input is read as it is. The fuzzer begins with the small files in corpus/nalimov, which it has
// found by itself.

#include "bases/nalimov/data_comp.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace {

using namespace brenquil;

void Write32(std::vector<std::uint8_t>& bytes, std::size_t at, std::uint32_t value) {
    for (std::size_t byte = 0; byte < 4; ++byte) {
        bytes[at + byte] = static_cast<std::uint8_t>(value >> (24 - 8 * byte));
    }
}

/// Makes the fixed part of the header one that is accepted, changing no more than it has to.
void PutRight(std::vector<std::uint8_t>& file) {
    constexpr std::string_view Banner = "Compressed by DATACOMP v 1.0 by a fuzzer\r\n";
    constexpr std::size_t FixedSize = 80;
    if (file.size() < FixedSize + 5) {
        file.resize(FixedSize + 5);
    }
    std::fill_n(file.begin(), 64, std::uint8_t{0});
    std::copy(Banner.begin(), Banner.end(), file.begin());
    const std::size_t smallest = FixedSize + 4;
    const std::size_t wanted = std::size_t{file[66]} << 8U | file[67];
    const std::size_t headerSize = std::clamp(wanted, smallest, file.size());
    Write32(file, 64, static_cast<std::uint32_t>(headerSize));
    // Small blocks find the same faults, only sooner; 13 is the size of real ones.
    file[70] = file[70] % 16 == 13 ? 13 : file[70] % 11;
    file[71] = 24;
    Write32(file, 72, static_cast<std::uint32_t>(file[74] % 2U << 8U | file[75]));
    Write32(file, 76, 0x4001F5);
    Write32(file, headerSize - 4, DataCompChecksum(std::span(file).first(headerSize - 4)));
}

/// Decodes into memory of exactly the promised size, so that the sanitizer sees each step too far.
void DecodeBlock(const DataCompInfo& info, const std::vector<std::uint8_t>& file,
                 std::uint32_t block) {
    const std::size_t start = std::min<std::size_t>(DataCompBlockStart(info, block), file.size());
    const std::size_t end = std::min<std::size_t>(DataCompBlockStart(info, block + 1), file.size());
    const std::vector<std::uint8_t> stored(file.begin() +
                                               static_cast<std::ptrdiff_t>(std::min(start, end)),
                                           file.begin() + static_cast<std::ptrdiff_t>(end));
    DecodeState state;
    state.cookie = DecodeState::Cookie;
    state.size = block + 1 == info.blocks ? info.lastBlockSize : info.blockSize;
    const auto target = std::make_unique<std::uint8_t[]>(state.size + DataCompSpareBytes);
    state.target = target.get();
    state.stored = stored.data();
    state.storedSize = static_cast<std::uint32_t>(stored.size());
    if (DataCompDecode(info, state, state.size) && state.position != state.size) {
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::vector<std::uint8_t> file(data, data + size);
    if (size == 0 || data[size - 1] % 4 != 0) {
        PutRight(file);
    }
    std::unique_ptr<DataCompInfo> info;
    if (DataCompParse(&info, file) != DataCompOk) {
        return 0;
    }
    for (std::uint32_t block = 0; block < std::min(info->blocks, 3U); ++block) {
        DecodeBlock(*info, file, block);
    }
    return 0;
}
