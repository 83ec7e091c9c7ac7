#include "tables/emd_writer.h"

#include "bases/nalimov/data_comp.h"
#include "tables/huffman.h"
#include "tables/repetitions.h"
#include "tables/table_error.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstring>
#include <functional>
#include <memory>
#include <numeric>
#include <string_view>

namespace brenquil {

namespace {

constexpr unsigned BlockBits = 13;
constexpr std::size_t Slots = DataCompInfo::Slots;
constexpr std::uint32_t Literals = 256;
constexpr std::uint32_t LengthsOfSlot = 32;
constexpr std::size_t Symbols = 1024;
constexpr unsigned LongestWord = 24;  ///< far from the 31 that are allowed
constexpr std::string_view Banner = "Compressed by DATACOMP v 1.0 made by brenquil-tables\r\n";
constexpr std::size_t BannerSize = 64;
constexpr std::uint32_t Mark = 0x4001F5;

using Bytes = std::span<const std::uint8_t>;
using Distances = std::array<std::uint32_t, Slots>;

/// Bits of a symbol in 256ths.
using Costs = std::array<std::uint32_t, Symbols>;
using Frequencies = std::vector<std::uint64_t>;

/// A symbol and what follows it: symbol in bits 0 to 9, extra number from bit 10 on.
using Token = std::uint32_t;

struct MatchCode {
    std::uint32_t code;  ///< within the slot
    std::uint32_t extra;
    unsigned extraBits;
};

MatchCode CodeOfLength(std::uint32_t length) noexcept {
    constexpr std::uint32_t LongestPlain = 15;
    if (length <= LongestPlain) {
        return {length - 1, 0, 0};
    }
    const unsigned magnitude = std::bit_width(length - 14) - 1;
    return {14 + magnitude, length - 14 - (1U << magnitude), magnitude};
}

unsigned ExtraBitsOf(std::uint32_t symbol) noexcept {
    if (symbol < Literals) {
        return 0;
    }
    const std::uint32_t code = (symbol - Literals) % LengthsOfSlot;
    return code > 14 ? code - 14 : 0;
}

Bytes BlockOf(Bytes contents, std::size_t block) noexcept {
    const std::size_t start = block * EmdBlockSize;
    return contents.subspan(start, std::min(EmdBlockSize, contents.size() - start));
}

std::vector<std::size_t> SampleOf(std::size_t blocks, std::size_t most) {
    std::vector<std::size_t> sample;
    for (std::size_t item = 0; item < std::min(blocks, most); ++item) {
        sample.push_back(blocks <= most ? item : item * blocks / most);
    }
    return sample;
}

// ---- distances

/// The distances at which most is repeated, that one first.
std::vector<std::uint32_t> FrequentDistances(Bytes contents, const std::vector<std::size_t>& sample,
                                             CWorkers& workers) {
    constexpr std::size_t Candidates = 128;
    const std::size_t farthest = std::min(contents.size(), EmdBlockSize) - 1;
    std::vector<std::uint64_t> scores(farthest + 1);
    workers.ForEach(farthest, [&](std::size_t item, std::size_t) {
        for (const std::size_t block : sample) {
            scores[item + 1] += CountPlaces(StartsOfRuns(BlockOf(contents, block), item + 1));
        }
    });
    std::vector<std::uint32_t> distances(farthest);
    std::iota(distances.begin(), distances.end(), 1U);
    std::stable_sort(distances.begin(), distances.end(),
                     [&](std::uint32_t a, std::uint32_t b) { return scores[a] > scores[b]; });
    distances.resize(std::min(distances.size(), Candidates));
    return distances;
}

/// What each of some distances reaches of the blocks of a sample, and what those that were chosen
/// reach together.
class CCoverage {
public:
    CCoverage(Bytes contents, const std::vector<std::size_t>& sample,
              const std::vector<std::uint32_t>& distances, CWorkers& workers)
        : reached_(distances.size(), std::vector<PlaceSet>(sample.size())),
          covered_(sample.size()) {
        workers.ForEach(distances.size(), [&](std::size_t item, std::size_t) {
            for (std::size_t block = 0; block < sample.size(); ++block) {
                const Bytes bytes = BlockOf(contents, sample[block]);
                reached_[item][block] = PlacesOfRuns(StartsOfRuns(bytes, distances[item]));
            }
        });
    }

    /// How many places the distance adds to those that are covered.
    [[nodiscard]] std::uint64_t GainOf(std::size_t item) const {
        std::uint64_t gain = 0;
        for (std::size_t block = 0; block < covered_.size(); ++block) {
            gain += CountPlacesWithout(reached_[item][block], covered_[block]);
        }
        return gain;
    }

    void Choose(std::size_t item) {
        for (std::size_t block = 0; block < covered_.size(); ++block) {
            const PlaceSet& added = reached_[item][block];
            PlaceSet& covered = covered_[block];
            std::transform(added.begin(), added.end(), covered.begin(), covered.begin(),
                           std::bit_or<>());
        }
    }

private:
    std::vector<std::vector<PlaceSet>> reached_;  ///< by distance and block
    std::vector<PlaceSet> covered_;               ///< by block
};

/// One after the other, each time the distance that adds most.
Distances ChooseDistances(Bytes contents, std::size_t blocks, CWorkers& workers) {
    constexpr std::size_t SampleBlocks = 32;
    const std::vector<std::size_t> sample = SampleOf(blocks, SampleBlocks);
    const std::vector<std::uint32_t> distances = FrequentDistances(contents, sample, workers);
    CCoverage coverage(contents, sample, distances, workers);
    std::vector<std::size_t> left(distances.size());
    std::iota(left.begin(), left.end(), std::size_t{0});
    Distances chosen{};
    chosen.fill(1);
    for (std::size_t slot = 0; slot < Slots && !left.empty(); ++slot) {
        std::vector<std::uint64_t> gains(left.size());
        std::transform(left.begin(), left.end(), gains.begin(),
                       [&](std::size_t item) { return coverage.GainOf(item); });
        // When everything is covered, the most frequent ones follow.
        const auto best = std::max_element(gains.begin(), gains.end()) - gains.begin();
        chosen[slot] = distances[left[best]];
        coverage.Choose(left[best]);
        left.erase(left.begin() + best);
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

// ---- cutting a block into tokens

class CBlockCutter {
public:
    CBlockCutter(const Distances& distances, const Costs& costs) noexcept
        : distances_(distances), costs_(costs) {}

    /// The cheapest sequence of literals and matches.
    void Cut(Bytes block, std::vector<Token>& tokens) {
        const std::size_t size = block.size();
        cost_[size] = 0;
        runs_.fill(0);
        for (std::size_t at = size; at-- > 0;) {
            std::uint32_t best = costs_[block[at]] + cost_[at + 1];
            Token token = block[at];
            std::uint32_t length = 1;
            const auto consider = [&](std::uint32_t slot, std::uint32_t run) {
                const MatchCode match = CodeOfLength(run);
                const std::uint32_t symbol = Literals + slot * LengthsOfSlot + match.code;
                const std::uint32_t cost = costs_[symbol] + 256 * match.extraBits + cost_[at + run];
                if (cost < best) {
                    best = cost;
                    token = symbol | match.extra << 10U;
                    length = run;
                }
            };
            for (std::uint32_t slot = 0; slot < Slots; ++slot) {
                const std::size_t distance = distances_[slot];
                if (distance > at || block[at] != block[at - distance]) {
                    runs_[slot] = 0;
                    continue;
                }
                const std::uint32_t run = ++runs_[slot];
                consider(slot, run);
                // A little shorter may save the extra bits.
                if (run > 15) {
                    const unsigned magnitude = std::bit_width(run - 14) - 1;
                    consider(slot, (1U << magnitude) + 13);
                }
            }
            cost_[at] = best;
            token_[at] = token;
            length_[at] = length;
        }
        for (std::size_t at = 0; at < size; at += length_[at]) {
            tokens.push_back(token_[at]);
        }
    }

private:
    const Distances& distances_;
    const Costs& costs_;
    std::array<std::uint32_t, Slots> runs_{};
    std::array<std::uint32_t, EmdBlockSize + 1> cost_{};
    std::array<Token, EmdBlockSize> token_{};
    std::array<std::uint32_t, EmdBlockSize> length_{};
};

Costs FirstCosts() noexcept {
    constexpr std::uint32_t LiteralCost = 5 * 256;
    constexpr std::uint32_t MatchCost = 7 * 256;
    Costs costs{};
    for (std::size_t symbol = 0; symbol < Symbols; ++symbol) {
        costs[symbol] = symbol < Literals ? LiteralCost : MatchCost;
    }
    return costs;
}

/// What symbols would cost in an ideal code; a symbol that did not occur costs more than the
/// rarest.
Costs CostsOf(const Frequencies& frequencies) {
    double total = 0;
    for (const std::uint64_t frequency : frequencies) {
        total += static_cast<double>(frequency) + 0.1;
    }
    Costs costs{};
    for (std::size_t symbol = 0; symbol < Symbols; ++symbol) {
        const double bits = std::log2(total / (static_cast<double>(frequencies[symbol]) + 0.1));
        costs[symbol] = static_cast<std::uint32_t>(std::lround(256 * std::min(bits, 24.0)));
    }
    return costs;
}

/// Costs that fit what the cutting of a sample comes to.
Costs TrainCosts(Bytes contents, std::size_t blocks, const Distances& distances,
                 CWorkers& workers) {
    constexpr std::size_t SampleBlocks = 256;
    constexpr int Rounds = 4;
    const std::vector<std::size_t> sample = SampleOf(blocks, SampleBlocks);
    Costs costs = FirstCosts();
    for (int round = 0; round < Rounds; ++round) {
        std::vector<std::vector<Token>> tokens(sample.size());
        workers.ForEach(sample.size(), [&](std::size_t item, std::size_t) {
            std::make_unique<CBlockCutter>(distances, costs)
                ->Cut(BlockOf(contents, sample[item]), tokens[item]);
        });
        Frequencies frequencies(Symbols);
        for (const std::vector<Token>& block : tokens) {
            for (const Token token : block) {
                ++frequencies[token % Symbols];
            }
        }
        costs = CostsOf(frequencies);
    }
    return costs;
}

// ---- the file

/// Word lengths in the form for up to 128 of them.
void WritePlainLengths(CBitWriter& bits, std::span<const std::uint32_t> lengths) {
    constexpr unsigned Width = 5;
    constexpr std::uint32_t MostZeros = 15;
    bits.Write(0, 1);
    bits.Write(Width, 5);
    for (std::size_t at = 0; at < lengths.size(); ++at) {
        bits.Write(lengths[at], Width);
        if (lengths[at] == 0) {
            std::uint32_t zeros = 0;
            while (zeros < MostZeros && at + 1 < lengths.size() && lengths[at + 1] == 0) {
                ++zeros;
                ++at;
            }
            bits.Write(zeros, 4);
        }
    }
}

/// The form for more: runs, their lengths in a code of their own.
void WriteRunLengths(CBitWriter& bits, std::span<const std::uint32_t> lengths) {
    constexpr std::uint32_t HalfCode = 32;
    constexpr std::uint32_t LastPlainRun = 31;

    struct Run {
        std::uint32_t value;
        std::uint32_t count;
    };

    std::vector<Run> runs;
    for (const std::uint32_t length : lengths) {
        if (!runs.empty() && runs.back().value == length) {
            ++runs.back().count;
        } else {
            runs.push_back({length, 1});
        }
    }
    const auto magnitudeOf = [](std::uint32_t run) -> unsigned {
        return std::bit_width(run - LastPlainRun) - 1;
    };
    const auto symbolOf = [&](std::uint32_t run) {
        return run <= LastPlainRun ? run : HalfCode + magnitudeOf(run);
    };
    Frequencies values(2 * HalfCode);
    Frequencies counts(2 * HalfCode);
    for (const Run& run : runs) {
        ++values[run.count == 1 ? run.value : run.value + HalfCode];
        if (run.count > 1) {
            ++counts[symbolOf(run.count - 2)];
        }
    }
    const PrefixCode valueCode(CodeLengths(values, LongestWord));
    const PrefixCode countCode(CodeLengths(counts, LongestWord));
    bits.Write(0, 1);
    std::vector<std::uint32_t> both = valueCode.lengths;
    both.insert(both.end(), countCode.lengths.begin(), countCode.lengths.end());
    WritePlainLengths(bits, both);
    for (const Run& run : runs) {
        if (run.count == 1) {
            valueCode.Write(bits, run.value);
            continue;
        }
        valueCode.Write(bits, run.value + HalfCode);
        const std::uint32_t count = run.count - 2;
        countCode.Write(bits, symbolOf(count));
        if (count > LastPlainRun) {
            const unsigned magnitude = magnitudeOf(count);
            bits.Write(count - LastPlainRun - (1U << magnitude), magnitude);
        }
    }
}

struct CodedBlock {
    std::vector<Token> tokens;
    ByteList stored;
};

std::vector<std::uint8_t> Assemble(Bytes contents, const std::vector<CodedBlock>& blocks,
                                   const Distances& distances, const PrefixCode& code) {
    CBitWriter sizes;
    // A whole block has the size 0.
    const auto writeSize = [&](std::size_t size) { sizes.Write(size % EmdBlockSize, BlockBits); };
    std::uint64_t total = 0;
    for (const CodedBlock& block : blocks) {
        writeSize(block.stored.size());
        total += block.stored.size();
    }
    const std::size_t last = contents.size() - (blocks.size() - 1) * EmdBlockSize;
    writeSize(last);
    for (const std::uint32_t distance : distances) {
        sizes.Write(distance, BlockBits);
    }
    CBitWriter lengths;
    WriteRunLengths(lengths, code.lengths);

    ByteList file(Banner.begin(), Banner.end());
    file.resize(BannerSize);
    constexpr std::size_t FixedSize = 80;
    const std::size_t headerSize =
        FixedSize + 8 * blocks.size() + sizes.Bytes().size() + lengths.Bytes().size() + 4;
    if (headerSize + total > UINT32_MAX) {
        throw CTableError("a compressed file would pass 4 GiB, which the format does not allow");
    }
    file.reserve(headerSize + total);
    AppendBig(file, headerSize, 4);
    AppendBig(file, 0, 2);
    file.push_back(BlockBits);
    file.push_back(Slots);
    AppendBig(file, blocks.size(), 4);
    AppendBig(file, Mark, 4);
    for (std::size_t block = 0; block < blocks.size(); ++block) {
        AppendBig(file, DataCompChecksum(BlockOf(contents, block)), 4);
        AppendBig(file, DataCompChecksum(blocks[block].stored), 4);
    }
    Append(file, sizes.Bytes());
    Append(file, lengths.Bytes());
    AppendBig(file, DataCompChecksum(file), 4);
    for (const CodedBlock& block : blocks) {
        Append(file, block.stored);
    }
    return file;
}

}  // namespace

std::vector<std::uint8_t> CompressEmd(Bytes contents, CWorkers& workers, CProgress& progress) {
    const std::size_t blocks = (contents.size() + EmdBlockSize - 1) / EmdBlockSize;
    progress.BeginPhase("compressing", contents.size());
    const Distances distances = ChooseDistances(contents, blocks, workers);
    const Costs costs = TrainCosts(contents, blocks, distances, workers);

    std::vector<CodedBlock> coded(blocks);
    std::vector<Frequencies> counted(workers.Count(), Frequencies(Symbols));
    std::atomic<std::size_t> done{0};
    workers.ForEach(blocks, [&](std::size_t block, std::size_t thread) {
        const auto cutter = std::make_unique<CBlockCutter>(distances, costs);
        cutter->Cut(BlockOf(contents, block), coded[block].tokens);
        coded[block].tokens.shrink_to_fit();
        for (const Token token : coded[block].tokens) {
            ++counted[thread][token % Symbols];
        }
        const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
        if (thread == 0) {
            progress.Report(Share(finished, blocks));
        }
    });
    Frequencies frequencies(Symbols);
    for (const Frequencies& some : counted) {
        std::transform(some.begin(), some.end(), frequencies.begin(), frequencies.begin(),
                       std::plus<>());
    }
    const PrefixCode code(CodeLengths(frequencies, LongestWord));
    workers.ForEach(blocks, [&](std::size_t block, std::size_t) {
        CBitWriter bits;
        for (const Token token : coded[block].tokens) {
            const std::uint32_t symbol = token % Symbols;
            code.Write(bits, symbol);
            bits.Write(token >> 10U, ExtraBitsOf(symbol));
        }
        const Bytes plain = BlockOf(contents, block);
        if (bits.Bytes().size() < plain.size()) {
            coded[block].stored = bits.Bytes();
        } else {
            coded[block].stored.assign(plain.begin(), plain.end());
        }
        std::vector<Token>().swap(coded[block].tokens);
    });
    return Assemble(contents, coded, distances, code);
}

std::vector<std::uint8_t> DecompressEmd(Bytes file, CWorkers& workers) {
    std::unique_ptr<DataCompInfo> info;
    if (DataCompParse(&info, file) != DataCompOk || info->blockSize != EmdBlockSize ||
        DataCompBlockStart(*info, info->blocks) != file.size()) {
        return {};
    }
    const std::size_t size = (std::size_t{info->blocks} - 1) * EmdBlockSize + info->lastBlockSize;
    std::vector<std::uint8_t> contents(size);
    std::atomic<bool> isSound{true};
    workers.ForEach(info->blocks, [&](std::size_t item, std::size_t) {
        const auto block = static_cast<std::uint32_t>(item);
        const std::uint32_t start = DataCompBlockStart(*info, block);
        const std::uint32_t length = DataCompBlockStart(*info, block + 1) - start;
        std::array<std::uint8_t, EmdBlockSize + DataCompSpareBytes> target{};
        DecodeState state;
        state.cookie = DecodeState::Cookie;
        state.target = target.data();
        state.stored = file.data() + start;
        state.block = block;
        state.size = block + 1 == info->blocks ? info->lastBlockSize : info->blockSize;
        state.storedSize = length;
        if (length == state.size) {
            std::memcpy(target.data(), state.stored, length);
        } else if (!DataCompDecode(*info, state, state.size)) {
            isSound = false;
        }
        std::memcpy(contents.data() + item * EmdBlockSize, target.data(), state.size);
    });
    return isSound ? contents : std::vector<std::uint8_t>();
}

}  // namespace brenquil
