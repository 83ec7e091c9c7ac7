// Compressed table files of any shape that the format allows, for the tests of the decoder.
//
// It is independent on purpose: the mirror image of the reader's decoder, which shares no code with
// it nor with the program that makes tables. That program writes one shape; here a test says which
// tokens, codes and sizes a file has. It looks for matches at the 24 distances of a file, so all
// kinds of matches occur in its output, and keeps a block uncoded where coding does not pay.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace brenquil::test {

using Bytes = std::vector<std::uint8_t>;

/// Collects bits, the most significant one of each byte first.
class CBitWriter {
public:
    void Write(std::uint64_t value, unsigned bits);

    [[nodiscard]] const Bytes& Result() const noexcept { return bytes_; }

private:
    Bytes bytes_;
    std::size_t count_ = 0;
};

/// Word lengths of a code and, from them, its words.
struct PrefixCode {
    /// Words in order of length and symbol, from all zeros on.
    explicit PrefixCode(std::vector<std::uint32_t> wordLengths);

    void Write(CBitWriter& bits, std::size_t symbol) const {
        bits.Write(words[symbol], lengths[symbol]);
    }

    std::vector<std::uint32_t> lengths;
    std::vector<std::uint64_t> words;
};

/// The lengths that make the shortest text for these frequencies.
[[nodiscard]] std::vector<std::uint32_t> WordLengths(const std::vector<std::uint64_t>& frequency);

/// A symbol of the main code and the bits after it.
struct Token {
    std::uint32_t symbol = 0;
    std::uint64_t extra = 0;
    unsigned extraBits = 0;

    [[nodiscard]] static Token Literal(std::uint8_t byte) { return {byte, 0, 0}; }

    /// A match of `length` bytes, 1 to 262143, at the distance of a slot.
    [[nodiscard]] static Token Match(std::uint32_t slot, std::uint32_t length);
};

/// A compressed file.
class CDataCompWriter {
public:
    static constexpr std::uint32_t BlockSize = 8192;
    static constexpr std::size_t Symbols = 1024;

    std::array<std::uint32_t, 24> distances = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10,  12,  14,
                                               16, 20, 24, 32, 40, 59, 60, 61, 64, 128, 777, 4096};
    std::uint32_t blockBits = 13;
    std::string notice = "for tests only";

    /// Adds a block as given tokens that decode to `size` bytes.
    void AddTokens(std::vector<Token> tokens, std::uint32_t size);

    /// Adds a block that is stored as it is.
    void AddUncoded(Bytes bytes);

    /// Cuts the bytes into blocks and codes each.
    void AddBytes(std::span<const std::uint8_t> bytes);

    [[nodiscard]] Bytes Finish() const;

    /// Puts the sum right after a change in the header.
    static void RepairChecksum(Bytes& file);

    /// Bit by bit, as the definition has it.
    [[nodiscard]] static std::uint32_t Checksum(std::span<const std::uint8_t> bytes);

    /// Code lengths in the form for more than 128 of them: runs, in two codes of their own.
    static void WriteLengths(CBitWriter& bits, const std::vector<std::uint32_t>& lengths);

    /// Code lengths in the form for up to 128 of them.
    static void WritePlainLengths(CBitWriter& bits, const std::vector<std::uint32_t>& lengths);

private:
    struct Block {
        std::vector<Token> tokens;
        Bytes bytes;
        std::uint32_t size;
    };

    [[nodiscard]] static Bytes Coded(const Block& block, const PrefixCode& code);

    /// At each place the longest match of all distances, if it is worth one.
    [[nodiscard]] std::vector<Token> FindTokens(std::span<const std::uint8_t> block) const;

    [[nodiscard]] Bytes Banner() const;

    static void Append16(Bytes& bytes, std::uint32_t value);

    static void Append32(Bytes& bytes, std::uint32_t value);

    std::vector<Block> blocks_;
};

}  // namespace brenquil::test
