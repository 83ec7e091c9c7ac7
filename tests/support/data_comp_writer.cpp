#include "data_comp_writer.h"

#include <algorithm>
#include <bit>
#include <queue>
#include <tuple>

namespace brenquil::test {

void CBitWriter::Write(std::uint64_t value, unsigned bits) {
    for (unsigned bit = bits; bit-- > 0;) {
        if (count_ % 8 == 0) {
            bytes_.push_back(0);
        }
        const auto mask = static_cast<std::uint8_t>(0x80U >> (count_ % 8));
        bytes_.back() |= (value >> bit & 1U) != 0 ? mask : std::uint8_t{0};
        ++count_;
    }
}

PrefixCode::PrefixCode(std::vector<std::uint32_t> wordLengths)
    : lengths(std::move(wordLengths)), words(lengths.size()) {
    std::uint64_t word = 0;
    for (std::uint32_t length = 1; length < 32; ++length, word <<= 1U) {
        for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
            if (lengths[symbol] == length) {
                words[symbol] = word++;
            }
        }
    }
}

std::vector<std::uint32_t> WordLengths(const std::vector<std::uint64_t>& frequency) {
    struct Tree {
        std::uint64_t weight;
        std::vector<std::size_t> symbols;
    };

    const auto heavier = [](const Tree& a, const Tree& b) {
        return std::tuple(a.weight, a.symbols.front()) > std::tuple(b.weight, b.symbols.front());
    };
    std::priority_queue<Tree, std::vector<Tree>, decltype(heavier)> trees(heavier);
    std::vector<std::uint32_t> lengths(frequency.size());
    for (std::size_t symbol = 0; symbol < frequency.size(); ++symbol) {
        if (frequency[symbol] != 0) {
            trees.push({frequency[symbol], {symbol}});
        }
    }
    if (trees.size() == 1) {
        lengths[trees.top().symbols.front()] = 1;
    }
    while (trees.size() > 1) {
        Tree joined = trees.top();
        trees.pop();
        const Tree other = trees.top();
        trees.pop();
        joined.weight += other.weight;
        joined.symbols.insert(joined.symbols.end(), other.symbols.begin(), other.symbols.end());
        for (const std::size_t symbol : joined.symbols) {
            ++lengths[symbol];
        }
        trees.push(std::move(joined));
    }
    return lengths;
}

Token Token::Match(std::uint32_t slot, std::uint32_t length) {
    const std::uint32_t base = 256 + slot * 32;
    if (length <= 15) {
        return {base + length - 1, 0, 0};
    }
    const auto magnitude = static_cast<unsigned>(std::bit_width(length - 14) - 1);
    return {base + 14 + magnitude, length - 14 - (1U << magnitude), magnitude};
}

void CDataCompWriter::AddTokens(std::vector<Token> tokens, std::uint32_t size) {
    blocks_.push_back({std::move(tokens), {}, size});
}

void CDataCompWriter::AddUncoded(Bytes bytes) {
    const auto size = static_cast<std::uint32_t>(bytes.size());
    blocks_.push_back({{}, std::move(bytes), size});
}

void CDataCompWriter::AddBytes(std::span<const std::uint8_t> bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += BlockSize) {
        const auto block = bytes.subspan(at, std::min<std::size_t>(BlockSize, bytes.size() - at));
        blocks_.push_back({FindTokens(block), Bytes(block.begin(), block.end()),
                           static_cast<std::uint32_t>(block.size())});
    }
}

Bytes CDataCompWriter::Finish() const {
    std::vector<std::uint64_t> frequency(Symbols);
    for (const Block& block : blocks_) {
        for (const Token& token : block.tokens) {
            ++frequency[token.symbol];
        }
    }
    const PrefixCode code(WordLengths(frequency));
    CBitWriter sizes;
    Bytes contents;
    for (const Block& block : blocks_) {
        Bytes stored = Coded(block, code);
        if (block.tokens.empty() || (!block.bytes.empty() && stored.size() >= block.size)) {
            stored = block.bytes;
        }
        sizes.Write(stored.size() & ((1U << blockBits) - 1), blockBits);
        contents.insert(contents.end(), stored.begin(), stored.end());
    }
    sizes.Write(blocks_.back().size & ((1U << blockBits) - 1), blockBits);
    for (const std::uint32_t distance : distances) {
        sizes.Write(distance, blockBits);
    }
    CBitWriter lengths;
    WriteLengths(lengths, code.lengths);

    Bytes file = Banner();
    const std::size_t headerSize =
        80 + 8 * blocks_.size() + sizes.Result().size() + lengths.Result().size() + 4;
    Append32(file, static_cast<std::uint32_t>(headerSize));
    Append16(file, 0);
    file.push_back(static_cast<std::uint8_t>(blockBits));
    file.push_back(24);
    Append32(file, static_cast<std::uint32_t>(blocks_.size()));
    Append32(file, 0x4001F5);
    file.resize(file.size() + 8 * blocks_.size(), 0xEE);
    file.insert(file.end(), sizes.Result().begin(), sizes.Result().end());
    file.insert(file.end(), lengths.Result().begin(), lengths.Result().end());
    Append32(file, Checksum(file));
    file.insert(file.end(), contents.begin(), contents.end());
    return file;
}

void CDataCompWriter::RepairChecksum(Bytes& file) {
    const std::size_t size = std::size_t{file[64]} << 24U | std::size_t{file[65]} << 16U |
                             std::size_t{file[66]} << 8U | file[67];
    const std::uint32_t sum =
        Checksum(Bytes(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size) - 4));
    for (std::size_t byte = 0; byte < 4; ++byte) {
        file[size - 4 + byte] = static_cast<std::uint8_t>(sum >> (24 - 8 * byte));
    }
}

std::uint32_t CDataCompWriter::Checksum(std::span<const std::uint8_t> bytes) {
    std::uint32_t sum = 0;
    for (const std::uint8_t byte : bytes) {
        std::uint32_t entry = (byte ^ sum) & 0xFFU;
        for (int bit = 0; bit < 8; ++bit) {
            const bool wasSet = (entry & 1U) != 0;
            entry >>= 1U;
            if (!wasSet) {
                entry ^= 0xEDB88320U;
            }
        }
        sum = entry ^ (sum >> 8U);
    }
    return sum;
}

void CDataCompWriter::WriteLengths(CBitWriter& bits, const std::vector<std::uint32_t>& lengths) {
    struct Run {
        std::uint32_t value;
        std::uint64_t count;
    };

    std::vector<Run> runs;
    for (const std::uint32_t length : lengths) {
        if (!runs.empty() && runs.back().value == length) {
            ++runs.back().count;
        } else {
            runs.push_back({length, 1});
        }
    }
    const auto runSymbol = [](std::uint64_t value) {
        return value <= 31 ? value
                           : 32 + static_cast<std::uint64_t>(std::bit_width(value - 31)) - 1;
    };
    std::vector<std::uint64_t> valueFrequency(64);
    std::vector<std::uint64_t> runFrequency(64);
    for (const Run& run : runs) {
        ++valueFrequency[run.count == 1 ? run.value : run.value + 32];
        if (run.count > 1) {
            ++runFrequency[runSymbol(run.count - 2)];
        }
    }
    const PrefixCode valueCode(WordLengths(valueFrequency));
    const PrefixCode runCode(WordLengths(runFrequency));
    bits.Write(0, 1);
    std::vector<std::uint32_t> both = valueCode.lengths;
    both.insert(both.end(), runCode.lengths.begin(), runCode.lengths.end());
    WritePlainLengths(bits, both);
    for (const Run& run : runs) {
        if (run.count == 1) {
            valueCode.Write(bits, run.value);
            continue;
        }
        valueCode.Write(bits, run.value + 32);
        const std::uint64_t value = run.count - 2;
        runCode.Write(bits, runSymbol(value));
        if (value > 31) {
            const auto magnitude = static_cast<unsigned>(std::bit_width(value - 31) - 1);
            bits.Write(value - 31 - (std::uint64_t{1} << magnitude), magnitude);
        }
    }
}

void CDataCompWriter::WritePlainLengths(CBitWriter& bits,
                                        const std::vector<std::uint32_t>& lengths) {
    constexpr unsigned Width = 5;
    bits.Write(0, 1);
    bits.Write(Width, 5);
    for (std::size_t index = 0; index < lengths.size(); ++index) {
        bits.Write(lengths[index], Width);
        if (lengths[index] == 0) {
            std::size_t zeros = 0;
            while (zeros < 15 && index + 1 < lengths.size() && lengths[index + 1] == 0) {
                ++zeros;
                ++index;
            }
            bits.Write(zeros, 4);
        }
    }
}

Bytes CDataCompWriter::Coded(const Block& block, const PrefixCode& code) {
    CBitWriter bits;
    for (const Token& token : block.tokens) {
        code.Write(bits, token.symbol);
        bits.Write(token.extra, token.extraBits);
    }
    return bits.Result();
}

std::vector<Token> CDataCompWriter::FindTokens(std::span<const std::uint8_t> block) const {
    std::vector<Token> tokens;
    for (std::size_t at = 0; at < block.size();) {
        std::uint32_t best = 0;
        std::uint32_t bestSlot = 0;
        for (std::uint32_t slot = 0; slot < distances.size(); ++slot) {
            std::uint32_t length = 0;
            while (distances[slot] <= at && at + length < block.size() &&
                   block[at + length] == block[at + length - distances[slot]]) {
                ++length;
            }
            if (length > best) {
                best = length;
                bestSlot = slot;
            }
        }
        if (best >= 2) {
            tokens.push_back(Token::Match(bestSlot, best));
            at += best;
        } else {
            tokens.push_back(Token::Literal(block[at++]));
        }
    }
    return tokens;
}

Bytes CDataCompWriter::Banner() const {
    const std::string text = "Compressed by DATACOMP v 1.0 " + notice + "\r\n";
    Bytes banner(text.begin(), text.end());
    banner.resize(64);
    return banner;
}

void CDataCompWriter::Append16(Bytes& bytes, std::uint32_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

void CDataCompWriter::Append32(Bytes& bytes, std::uint32_t value) {
    Append16(bytes, value >> 16U);
    Append16(bytes, value);
}

}  // namespace brenquil::test
