#include "tables/table_maker.h"

#include "tables/ending_solver.h"
#include "tables/table_error.h"

#include <algorithm>
#include <cstddef>

namespace brenquil {

namespace {

constexpr std::uint8_t SideBit(Colour colour) noexcept {
    return colour == White ? 2 : 1;
}

constexpr std::uint8_t BothSides = SideBit(White) | SideBit(Black);

/// By ending: the sides to move that are looked up in it, as bits.
std::vector<std::uint8_t> SidesNeeded(const Ending& ending) {
    std::vector<std::uint8_t> needed(EndingCount + 1);
    const auto add = [&](std::size_t captured, std::size_t promoted, PieceType type, Colour mover) {
        const EndingExit& exit = ending.Exit(captured, promoted, type);
        needed[exit.ending] |= SideBit(exit.flipped ? mover : ~mover);
    };
    for (std::size_t captured = 2; captured < ending.men; ++captured) {
        add(captured, Ending::NoMan, Pawn, ~ending.man[captured].colour);
    }
    for (std::size_t pawn = ending.pieces; pawn < ending.men; ++pawn) {
        const Colour mover = ending.man[pawn].colour;
        for (const PieceType type : {Queen, Rook, Bishop, Knight}) {
            add(Ending::NoMan, pawn, type, mover);
            for (std::size_t captured = 2; captured < ending.men; ++captured) {
                if (ending.man[captured].colour != mover) {
                    add(captured, pawn, type, mover);
                }
            }
        }
    }
    needed[0] = 0;
    return needed;
}

std::uint64_t BytesOf(const SolvedValues& values) {
    std::uint64_t bytes = 0;
    for (const Colour colour : {White, Black}) {
        bytes += values.Has(colour) ? values.BytesOfSide() : 0;
    }
    return bytes;
}

std::uint64_t BytesOf(const std::vector<std::uint8_t>& needed) {
    std::uint64_t bytes = 0;
    for (int number = 1; number <= EndingCount; ++number) {
        for (const Colour colour : {White, Black}) {
            if ((needed[number] & SideBit(colour)) != 0) {
                bytes += KeptBytesOfSide(EndingOf(number));
            }
        }
    }
    return bytes;
}

}  // namespace

std::uint64_t BytesToMake(const ITableFamily& family, const Ending& ending) {
    return family.MakingBytes(ending) + BytesOf(SidesNeeded(ending));
}

const SolvedEndings& CSolvedStore::SuccessorsOf(const Ending& ending, std::uint64_t workBytes) {
    return LoadAll(ending, SidesNeeded(ending), workBytes);
}

const SolvedEndings& CSolvedStore::WithSuccessorsOf(const Ending& ending, std::uint64_t workBytes) {
    Sides needed = SidesNeeded(ending);
    needed[ending.number] = BothSides;
    return LoadAll(ending, needed, workBytes);
}

std::shared_ptr<const SolvedValues> CSolvedStore::ValuesOf(const Ending& ending) {
    Sides needed(EndingCount + 1);
    needed[ending.number] = BothSides;
    return LoadAll(ending, needed, 0)[ending.number];
}

void CSolvedStore::Clear() noexcept {
    solved_ = {};
    recent_.clear();
}

const SolvedEndings& CSolvedStore::LoadAll(const Ending& ending, const Sides& needed,
                                           std::uint64_t workBytes) {
    const std::uint64_t bytes = workBytes + BytesOf(needed);
    if (bytes > memoryBytes_) {
        constexpr std::uint64_t Gibibyte = std::uint64_t{1} << 30U;
        throw COutOfMemory("out of memory: " + ending.name + " needs " + SizeText(bytes) +
                           "; allow more with --memory " +
                           std::to_string((bytes + Gibibyte - 1) / Gibibyte));
    }
    MakeRoom(workBytes, needed);
    for (int number = 1; number <= EndingCount; ++number) {
        if (needed[number] != 0) {
            Load(number, needed[number]);
        }
    }
    return solved_;
}

void CSolvedStore::Keep(std::shared_ptr<SolvedValues> values) {
    const int number = values->Of().number;
    solved_[number] = std::move(values);
    recent_.erase(std::remove(recent_.begin(), recent_.end(), number), recent_.end());
    recent_.push_back(number);
}

/// Gives back what is not needed, the longest unused first, until all that is needed and `bytes`
/// more fit.
void CSolvedStore::MakeRoom(std::uint64_t bytes, const Sides& needed) {
    for (int number = 1; number <= EndingCount; ++number) {
        const std::shared_ptr<SolvedValues>& values = solved_[number];
        for (const Colour colour : {White, Black}) {
            const bool isThere = values != nullptr && values->Has(colour);
            if (isThere || (needed[number] & SideBit(colour)) != 0) {
                bytes += KeptBytesOfSide(EndingOf(number));
            }
        }
    }
    for (std::size_t place = 0; bytes > memoryBytes_ && place < recent_.size(); ++place) {
        const int number = recent_[place];
        for (const Colour colour : {White, Black}) {
            if (solved_[number]->Has(colour) && (needed[number] & SideBit(colour)) == 0) {
                bytes -= solved_[number]->BytesOfSide();
                solved_[number]->Release(colour);
            }
        }
        if (BytesOf(*solved_[number]) == 0) {
            solved_[number] = nullptr;
        }
    }
    std::erase_if(recent_, [this](int number) { return solved_[number] == nullptr; });
}

void CSolvedStore::Load(int number, unsigned sides) {
    std::shared_ptr<SolvedValues>& values = solved_[number];
    if (values == nullptr) {
        Keep(std::make_shared<SolvedValues>(EndingOf(number)));
    } else {
        Keep(values);
    }
    for (const Colour colour : {White, Black}) {
        if ((sides & SideBit(colour)) != 0 && !values->Has(colour)) {
            family_.Read(colour, *values);
        }
    }
}

void MakeTables(ITableFamily& family, const MakingPlan& plan, CProgress& progress) {
    CSolvedStore store(family, plan.memoryBytes);
    const std::vector<int> order = WithSuccessors(plan.endings);
    std::uint64_t total = 0;
    std::size_t made = 0;
    const auto start = std::chrono::steady_clock::now();
    for (std::size_t place = 0; place < order.size(); ++place) {
        const Ending& ending = EndingOf(order[place]);
        const std::string name = family.NameOf(ending);
        progress.BeginTable(name, place + 1, order.size());
        if (!plan.force) {
            std::string culprit;
            const TableState state = family.Look(ending, culprit);
            if (state == TableState::Sound) {
                progress.EndTable("is there");
                continue;
            }
            if (state == TableState::Damaged) {
                throw CTableError(culprit + " is damaged; remove it, or make it anew with --force");
            }
        }
        const SolvedEndings& solved = store.SuccessorsOf(ending, family.MakingBytes(ending));
        std::uint64_t bytes = 0;
        store.Keep(family.Make(ending, solved, bytes));
        total += bytes;
        ++made;
        progress.EndTable(SizeText(bytes));
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    progress.Say(std::to_string(made) + (made == 1 ? " table" : " tables") + " made, " +
                 SizeText(total) + ", " + DurationText(seconds.count()));
}

}  // namespace brenquil
