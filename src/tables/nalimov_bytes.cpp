#include "tables/nalimov_bytes.h"

#include "bases/nalimov/nalimov_index.h"
#include "platform/bits.h"
#include "tables/ending_exits.h"
#include "tables/rules.h"

#include <atomic>

namespace brenquil {

namespace {

// Bytes of the largest distances, for which the others leave no room.
constexpr std::uint8_t SlowestWin = 0x80;   ///< in 127 moves
constexpr std::uint8_t SlowestLoss = 0x81;  ///< in 126 moves

/// Calls `work(slice, first index, end)` for all places, shared out.
template <class Work>
void ForPlaces(const CEndingIndex& index, CWorkers& workers, CProgress& progress,
               const Work& work) {
    const std::size_t chunks = (index.SliceSize() + ChunkSize - 1) / ChunkSize;
    const std::size_t count = chunks * index.Slices();
    std::atomic<std::size_t> done{0};
    workers.ForEach(count, [&](std::size_t item, std::size_t thread) {
        const std::size_t first = item % chunks * ChunkSize;
        work(item / chunks, first, std::min(index.SliceSize(), first + ChunkSize));
        const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
        if (thread == 0) {
            progress.Report(Share(finished, count));
        }
    });
}

/// Places and positions are many to one, so two threads can write the same value to one place.
void Put(std::vector<std::uint8_t>& bytes, std::uint64_t place, int code) noexcept {
    if (place != CNalimovCalculator::NoIndex) {
        std::atomic_ref<std::uint8_t>(bytes[place])
            .store(NalimovByteOf(code), std::memory_order_relaxed);
    }
}

}  // namespace

std::uint8_t NalimovByteOf(int code) noexcept {
    if (code == 0) {
        return 0;
    }
    if (code > 0) {
        return code == 127 ? SlowestWin : ToByte(127 - code);
    }
    const int moves = -code - 1;
    if (moves > 126) {
        return NalimovNoValue;
    }
    return moves == 126 ? SlowestLoss : ToByte(moves + 130);  // moves - 126 with its sign
}

int CodeOfNalimovByte(std::uint8_t byte) noexcept {
    if (byte == 0) {
        return 0;
    }
    if (byte == SlowestWin) {
        return 127;
    }
    if (byte == SlowestLoss) {
        return -127;
    }
    const int number = byte < 128 ? byte : byte - 256;
    return number > 0 ? 127 - number : -(number + 126) - 1;
}

bool HasOneNalimovFile(const Ending& ending) {
    return (NalimovSignatures[ending.number].flags & NalimovSymmetric) != 0;
}

std::uint64_t NalimovPlaces(const Ending& ending, int side) {
    return NalimovCalculator(ending.number, side).Positions();
}

std::uint64_t NalimovPlaceOf(const Ending& ending, const EndingSquares& squares, Colour sideToMove,
                             std::size_t victim) {
    NalimovPieceList first;
    NalimovPieceList second;
    first.squares[NalimovPieceList::KingSlot] = squares[0];
    second.squares[NalimovPieceList::KingSlot] = squares[1];
    for (std::size_t man = 2; man < ending.men; ++man) {
        const auto [type, colour] = ending.man[man];
        NalimovPieceList& list = colour == White ? first : second;
        std::size_t slot = type * NalimovPieceList::SlotsOfType;
        // From the lowest square on, whatever the order of like men is.
        Square square = squares[man];
        while (list.squares[slot] != NalimovNoSquare) {
            if (list.squares[slot] > square) {
                std::swap(list.squares[slot], square);
            }
            ++slot;
        }
        list.squares[slot] = square;
    }
    const Square passed = victim == Ending::NoMan
                            ? NalimovNoSquare
                            : squares[victim] + (sideToMove == White ? 8 : -8);
    return NalimovCalculator(ending.number, sideToMove == White ? 0 : 1)(first, second, passed,
                                                                         false);
}

std::vector<std::uint8_t> NalimovBytes(const SolvedValues& values, const SolvedEndings& solved,
                                       int side, CWorkers& workers, CProgress& progress) {
    const Ending& ending = values.Of();
    const CEndingIndex& index = values.Index();
    const Colour colour = side == 0 ? White : Black;
    const CEndingExits<DistanceToMate> exits(solved, values);
    std::vector<std::uint8_t> bytes(NalimovPlaces(ending, side), NalimovNoValue);
    progress.BeginPhase("numbering", values.Places());
    ForPlaces(index, workers, progress, [&](std::size_t slice, std::size_t at, std::size_t end) {
        for (; at < end; ++at) {
            const EndingSquares squares = index.SquaresOf({slice, at});
            if (!AreInOrder(ending, squares) || !CEndingNode(ending, squares, colour).IsLegal()) {
                continue;
            }
            Put(bytes, NalimovPlaceOf(ending, squares, colour, Ending::NoMan),
                values.At(CEndingIndex::Place{slice, at}, colour));
            ForDoubleSteps(ending, squares, colour, [&](std::size_t victim) {
                bool isTaken = false;
                Put(bytes, NalimovPlaceOf(ending, squares, colour, victim),
                    exits.CodeInPassing(squares, colour, victim, isTaken));
            });
        }
    });
    return bytes;
}

void ReadNalimovValues(std::span<const std::uint8_t> contents, Colour sideToMove,
                       SolvedValues& values, CWorkers& workers, CProgress& progress) {
    constexpr std::int8_t LossIn127 = -128;
    const Ending& ending = values.Of();
    const bool mayBeUnwritten = ending.name == "kppkp" && sideToMove == Black;
    values.Allocate(sideToMove);
    progress.BeginPhase("reading " + ending.name, values.Places());
    const CEndingIndex& index = values.Index();
    ForPlaces(index, workers, progress, [&](std::size_t slice, std::size_t at, std::size_t end) {
        std::int8_t* const codes = values.Slice(sideToMove, slice);
        for (; at < end; ++at) {
            const EndingSquares squares = index.SquaresOf({slice, at});
            if (!CEndingNode(ending, squares, sideToMove).IsLegal()) {
                continue;
            }
            const std::uint64_t place = NalimovPlaceOf(ending, squares, sideToMove, Ending::NoMan);
            const std::uint8_t byte = place < contents.size() ? contents[place] : NalimovNoValue;
            if (byte != NalimovNoValue) {
                codes[at] = static_cast<std::int8_t>(CodeOfNalimovByte(byte));
            } else if (mayBeUnwritten) {
                codes[at] = LossIn127;
            } else {
                throw CTableError("the table " + ending.name + " has no value for a position");
            }
        }
    });
}

}  // namespace brenquil
