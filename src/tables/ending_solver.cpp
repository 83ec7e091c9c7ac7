#include "tables/ending_solver.h"

#include "bases/syzygy/tb_index_tables.h"
#include "platform/bits.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <map>
#include <type_traits>
#include <vector>

namespace brenquil {

namespace {

constexpr std::uint8_t NeverLost = 254;  ///< has a move that does not lose, or no move
constexpr std::uint8_t NoPosition = 255;
constexpr std::size_t SmallSlice = std::size_t{1} << 18U;

[[noreturn]] void FailForMemory(const Ending& ending, std::size_t bytes) {
    throw COutOfMemory("out of memory: solving " + ending.name + " needs " +
                       std::to_string(bytes >> 20U) + " MiB more");
}

[[noreturn]] void FailForDistance(const Ending& ending) {
    throw CTableError(ending.name + " has distances that its tables cannot hold");
}

/// Solves one slice after the other. `Shared`: other threads work on the same slice.
template <class Rules, bool Shared>
class CSliceSolver {
public:
    using Code = typename Rules::Code;
    using Values = CEndingValues<Code>;

    CSliceSolver(Values& values, const SolvedEndings& solved, CWorkers& workers)
        : values_(values),
          ending_(values.Of()),
          index_(values.Index()),
          exits_(solved, values),
          workers_(workers),
          isFolded_(ending_.Pawns() == 0) {
        for (const Colour colour : {White, Black}) {
            counts_[colour] = CPages::Allocate(index_.SliceSize());
            if (counts_[colour].Data() == nullptr) {
                FailForMemory(ending_, 2 * index_.SliceSize());
            }
        }
    }

    /// @param report  called with the share of the work that is done, 0 to 1
    template <class Report>
    void Solve(std::size_t slice, const Report& report) {
        slice_ = slice;
        std::fill(isDue_.begin(), isDue_.end(), false);
        for (const Colour colour : {White, Black}) {
            codes_[colour] = values_.Slice(colour, slice);
        }
        const std::size_t chunks = (index_.SliceSize() + ChunkSize - 1) / ChunkSize;
        std::atomic<std::size_t> done{0};
        for (const Colour colour : {White, Black}) {
            workers_.ForEach(chunks, [&](std::size_t chunk, std::size_t thread) {
                Survey(colour, chunk);
                const std::size_t count = done.fetch_add(1, std::memory_order_relaxed) + 1;
                if (thread == 0) {
                    report(0.5 * Share(count, 2 * chunks));
                }
            });
        }
        for (int plies = 0; plies <= Rules::MostPlies; ++plies) {
            if (!isDue_[plies].load(std::memory_order_relaxed)) {
                continue;
            }
            for (const Colour colour : {White, Black}) {
                workers_.ForEach(
                    chunks, [&](std::size_t chunk, std::size_t) { Settle(colour, chunk, plies); });
            }
            report(0.5 + 0.5 * plies / (plies + 30.0));
        }
    }

private:
    [[nodiscard]] static constexpr Code WinIn(int plies) noexcept {
        return static_cast<Code>(Rules::WinCode(plies));
    }

    [[nodiscard]] static constexpr Code LossIn(int plies) noexcept {
        return static_cast<Code>(Rules::LossCode(plies));
    }

    [[nodiscard]] std::uint8_t* Counts(Colour colour) noexcept {
        return counts_[colour].As<std::uint8_t>();
    }

    void Survey(Colour colour, std::size_t chunk) {
        const std::size_t end = std::min(index_.SliceSize(), (chunk + 1) * ChunkSize);
        for (std::size_t index = chunk * ChunkSize; index < end; ++index) {
            const EndingSquares squares = index_.SquaresOf({slice_, index});
            CEndingNode node(ending_, squares, colour);
            Counts(colour)[index] = node.IsLegal() ? Judge(node, index) : NoPosition;
        }
    }

    /// Notes what is plain about a position.
    /// @return how many quiet moves would have to lose for it to be lost
    [[nodiscard]] std::uint8_t Judge(CEndingNode& node, std::size_t index) {
        node.PrepareMoves();
        int quiet = 0;
        for (std::size_t man = 0; man < ending_.pieces; ++man) {
            if (ending_.man[man].colour == node.SideToMove()) {
                quiet += PopCount(node.QuietTargets(man));
            }
        }
        const ExitSum sum = exits_.Find(node);
        Code& code = codes_[node.SideToMove()][index];
        if (sum.bestWin != NoDistance) {
            code = WinIn(sum.bestWin);
            MarkDue(sum.bestWin);
            return NeverLost;
        }
        if (sum.canDraw) {
            return NeverLost;
        }
        if (quiet == 0) {
            if (sum.hasMove || node.IsInCheck()) {
                code = LossIn(sum.worstLoss);
                MarkDue(sum.worstLoss);
            }
            return NeverLost;
        }
        return ToByte(quiet);
    }

    void MarkDue(int plies) {
        if (plies > Rules::MostPlies) {
            FailForDistance(ending_);
        }
        isDue_[plies].store(true, std::memory_order_relaxed);
    }

    /// Takes back moves from all positions that are decided in `plies`.
    void Settle(Colour colour, std::size_t chunk, int plies) {
        const Code win = plies == 0 ? LossIn(0) : WinIn(plies);
        const Code loss = LossIn(plies);
        // Codes of one family may stand for two numbers of plies, of which only one occurs.
        const bool hasWins = plies != 0 && Rules::PliesOf(win) == plies;
        const bool hasLosses = Rules::PliesOf(loss) == plies;
        const Code* const codes = codes_[colour];
        const std::size_t end = std::min(index_.SliceSize(), (chunk + 1) * ChunkSize);
        constexpr std::size_t Step = 64;
        for (std::size_t start = chunk * ChunkSize; start < end; start += Step) {
            unsigned found = 0;
            for (std::size_t at = start; at < start + Step; ++at) {
                found |= (codes[at] == win ? 1U : 0U) | (codes[at] == loss ? 1U : 0U);
            }
            if (found == 0) {
                continue;
            }
            for (std::size_t at = start; at < start + Step; ++at) {
                if (hasWins && codes[at] == win) {
                    TakeBack(colour, at,
                             [&](std::size_t before) { Worsen(~colour, before, plies); });
                } else if (hasLosses && codes[at] == loss) {
                    TakeBack(colour, at, [&](std::size_t before) { Win(~colour, before, plies); });
                }
            }
        }
    }

    /// Calls `visit` with the place of each position from which a quiet move of a piece leads here;
    /// some of the places are not positions.
    template <class Visit>
    void TakeBack(Colour colour, std::size_t index, const Visit& visit) {
        const EndingSquares squares = index_.SquaresOf({slice_, index});
        const Colour mover = ~colour;
        Bitboard occupied = 0;
        for (std::size_t man = 0; man < ending_.men; ++man) {
            occupied |= BitOf(squares[man]);
        }
        for (std::size_t man = 0; man < ending_.pieces; ++man) {
            if (ending_.man[man].colour != mover) {
                continue;
            }
            Bitboard origins =
                AttacksOfMan(ending_.man[man].type, mover, squares[man], occupied) & ~occupied;
            if (man == 0) {
                TakeBackWhiteKing(squares, index, origins, visit);
                continue;
            }
            const std::size_t shift = index_.ShiftOf(man);
            const std::size_t others = index & ~(std::size_t{63} << shift);
            while (origins != 0) {
                const std::size_t origin = PopLowestBit(origins);
                visit(others | origin << shift);
            }
        }
    }

    /// Where the board is folded by this king, what it leaves may be another image of the board.
    /// Each position of a pair of reflections has its own moves: with the king on the diagonal both
    /// are places, elsewhere one place stands for both. So from beside the diagonal both images of
    /// a position on it lead here, and from the diagonal only what lies on this side of it does.
    template <class Visit>
    void TakeBackWhiteKing(const EndingSquares& squares, std::size_t index, Bitboard origins,
                           const Visit& visit) {
        const std::size_t shift = index_.KingShift();
        if (!isFolded_) {
            const std::size_t others = index & ((std::size_t{1} << shift) - 1);
            while (origins != 0) {
                visit(others | index_.KingField(PopLowestBit(origins)) << shift);
            }
            return;
        }
        const bool isOnDiagonal = OffDiagonal[squares[0]] == 0;
        while (origins != 0) {
            const Square origin = PopLowestBit(origins);
            const Square mask = (FileOf(origin) > 3 ? H1 : 0) ^ (RankOf(origin) > 3 ? A8 : 0);
            const bool isAbove = OffDiagonal[origin ^ mask] > 0;
            const bool comesFromDiagonal = OffDiagonal[origin ^ mask] == 0;
            if (isOnDiagonal && isAbove) {
                continue;
            }
            EndingSquares before{};
            for (std::size_t man = 0; man < ending_.pieces; ++man) {
                before[man] = (man == 0 ? origin : squares[man]) ^ mask;
                before[man] = isAbove ? DiagonalFlip[before[man]] : before[man];
            }
            visit(IndexOf(before));
            if (!isOnDiagonal && comesFromDiagonal) {
                for (std::size_t man = 0; man < ending_.pieces; ++man) {
                    before[man] = DiagonalFlip[before[man]];
                }
                visit(IndexOf(before));
            }
        }
    }

    [[nodiscard]] std::size_t IndexOf(const EndingSquares& squares) const noexcept {
        std::size_t place = index_.KingField(squares[0]);
        for (std::size_t man = 1; man < ending_.pieces; ++man) {
            place = place << 6U | squares[man];
        }
        return place;
    }

    /// A move from here leads to a position that is lost in `plies`.
    void Win(Colour colour, std::size_t index, int plies) {
        if (Counts(colour)[index] == NoPosition) {
            return;
        }
        const Code win = WinIn(plies + 1);
        Code& code = codes_[colour][index];
        const Code old = Load(code);
        if (old == 0 || old > win) {
            Store(code, win);
            MarkDue(plies + 1);
        }
    }

    /// One more move from here leads to a position that is won in `plies`.
    void Worsen(Colour colour, std::size_t index, int plies) {
        std::uint8_t& count = Counts(colour)[index];
        if (Load(count) >= NeverLost || !CountDown(count)) {
            return;
        }
        const EndingSquares squares = index_.SquaresOf({slice_, index});
        CEndingNode node(ending_, squares, colour);
        node.PrepareMoves();
        const int distance = std::max(plies + 1, exits_.Find(node).worstLoss);
        Store(codes_[colour][index], LossIn(distance));
        MarkDue(distance);
    }

    template <class Word>
    [[nodiscard]] static Word Load(Word& word) noexcept {
        if constexpr (Shared) {
            return std::atomic_ref<Word>(word).load(std::memory_order_relaxed);
        } else {
            return word;
        }
    }

    template <class Word>
    static void Store(Word& word, Word value) noexcept {
        if constexpr (Shared) {
            std::atomic_ref<Word>(word).store(value, std::memory_order_relaxed);
        } else {
            word = value;
        }
    }

    /// @return whether nothing is left
    [[nodiscard]] static bool CountDown(std::uint8_t& count) noexcept {
        if constexpr (Shared) {
            return std::atomic_ref<std::uint8_t>(count).fetch_sub(1, std::memory_order_relaxed) ==
                   1;
        } else {
            return --count == 0;
        }
    }

    Values& values_;
    const Ending& ending_;
    const CEndingIndex& index_;
    CEndingExits<Rules> exits_;
    CWorkers& workers_;
    bool isFolded_;
    std::size_t slice_ = 0;
    std::array<Code*, 2> codes_{};  // by side to move
    std::array<CPages, 2> counts_;  // by side to move
    std::array<std::atomic<bool>, Rules::MostPlies + 1> isDue_{};
};

/// The slices, furthest advanced first; those of one list do not need each other.
std::vector<std::vector<std::size_t>> Levels(const CEndingIndex& index) {
    std::map<int, std::vector<std::size_t>, std::greater<>> byAdvance;
    for (std::size_t slice = 0; slice < index.Slices(); ++slice) {
        byAdvance[index.Advance(slice)].push_back(slice);
    }
    std::vector<std::vector<std::size_t>> levels;
    levels.reserve(byAdvance.size());
    for (auto& [advance, slices] : byAdvance) {
        levels.push_back(std::move(slices));
    }
    return levels;
}

template <class Rules>
void SolveSmallSlices(CEndingValues<typename Rules::Code>& values, const SolvedEndings& solved,
                      CWorkers& workers, CProgress& progress) {
    using Solver = CSliceSolver<Rules, false>;
    CWorkers alone(1);
    std::vector<std::unique_ptr<Solver>> solvers;
    for (std::size_t thread = 0; thread < workers.Count(); ++thread) {
        solvers.push_back(std::make_unique<Solver>(values, solved, alone));
    }
    std::size_t done = 0;
    for (const std::vector<std::size_t>& level : Levels(values.Index())) {
        workers.ForEach(level.size(), [&](std::size_t item, std::size_t thread) {
            solvers[thread]->Solve(level[item], [](double) {});
        });
        done += level.size();
        progress.Report(Share(done, values.Index().Slices()));
    }
}

template <class Rules>
void SolveLargeSlices(CEndingValues<typename Rules::Code>& values, const SolvedEndings& solved,
                      CWorkers& workers, CProgress& progress) {
    CSliceSolver<Rules, true> solver(values, solved, workers);
    std::size_t done = 0;
    const std::size_t slices = values.Index().Slices();
    for (const std::vector<std::size_t>& level : Levels(values.Index())) {
        for (const std::size_t slice : level) {
            solver.Solve(slice, [&](double share) {
                progress.Report(Share(done, slices) + share * Share(1, slices));
            });
            ++done;
        }
    }
}

bool IsSmall(const CEndingIndex& index) noexcept {
    return index.SliceSize() <= SmallSlice && index.Slices() > 1;
}

}  // namespace

template <class Rules>
std::unique_ptr<CEndingValues<typename Rules::Code>>
SolveEnding(const Ending& ending, const SolvedEndings& solved, CWorkers& workers,
            CProgress& progress) {
    auto values = std::make_unique<CEndingValues<typename Rules::Code>>(ending);
    values->Allocate(White);
    values->Allocate(Black);
    progress.BeginPhase("solving", 2 * values->Places());
    if (IsSmall(values->Index())) {
        SolveSmallSlices<Rules>(*values, solved, workers, progress);
    } else {
        SolveLargeSlices<Rules>(*values, solved, workers, progress);
    }
    return values;
}

template <class Rules>
std::shared_ptr<SolvedValues> KeepValues(std::unique_ptr<CEndingValues<typename Rules::Code>> codes,
                                         CWorkers& workers) {
    if constexpr (std::is_same_v<typename Rules::Code, std::int8_t>) {
        return std::shared_ptr<SolvedValues>(std::move(codes));
    } else {
        auto kept = std::make_shared<SolvedValues>(codes->Of());
        kept->Allocate(White);
        kept->Allocate(Black);
        const std::size_t size = codes->Index().SliceSize();
        workers.ForEach(codes->Index().Slices(), [&](std::size_t slice, std::size_t) {
            for (const Colour colour : {White, Black}) {
                const auto* const from = codes->Slice(colour, slice);
                std::transform(from, from + size, kept->Slice(colour, slice), [](auto code) {
                    return static_cast<std::int8_t>(Rules::ValueOf(code));
                });
            }
        });
        return kept;
    }
}

template <class Rules>
std::uint64_t SolvingBytes(const Ending& ending, std::size_t threads) {
    const CEndingIndex index(ending);
    const std::uint64_t places = 2 * std::uint64_t{index.SliceSize()} * index.Slices();
    const std::uint64_t counts = 2 * index.SliceSize() * (IsSmall(index) ? threads : 1);
    return places * sizeof(typename Rules::Code) + counts;
}

std::uint64_t KeptBytesOfSide(const Ending& ending) {
    const CEndingIndex index(ending);
    return std::uint64_t{index.SliceSize()} * index.Slices();
}

template std::unique_ptr<CEndingValues<std::int8_t>>
SolveEnding<DistanceToMate>(const Ending&, const SolvedEndings&, CWorkers&, CProgress&);
template std::unique_ptr<CEndingValues<std::int16_t>>
SolveEnding<DistanceToZeroing>(const Ending&, const SolvedEndings&, CWorkers&, CProgress&);
template std::shared_ptr<SolvedValues>
KeepValues<DistanceToMate>(std::unique_ptr<CEndingValues<std::int8_t>>, CWorkers&);
template std::shared_ptr<SolvedValues>
KeepValues<DistanceToZeroing>(std::unique_ptr<CEndingValues<std::int16_t>>, CWorkers&);
template std::uint64_t SolvingBytes<DistanceToMate>(const Ending&, std::size_t);
template std::uint64_t SolvingBytes<DistanceToZeroing>(const Ending&, std::size_t);

}  // namespace brenquil
