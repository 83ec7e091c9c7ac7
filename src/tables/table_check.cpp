#include "tables/table_check.h"

#include "bases/nalimov/nalimov_index.h"
#include "bases/syzygy/tb_probe.h"
#include "tables/ending_solver.h"
#include "tables/nalimov_bytes.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_error.h"
#include "tables/table_file.h"
#include "tables/table_maker.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <mutex>
#include <set>

namespace brenquil {

namespace {

constexpr std::size_t ChunkSize = std::size_t{1} << 14U;

/// Counts faults of a table and describes the first one by its place, whatever thread meets it.
class CFaults {
public:
    void Add(std::uint64_t order, const std::function<std::string()>& describe) {
        ++count_;
        const std::lock_guard guard(mutex_);
        if (first_.empty() || order < firstOrder_) {
            firstOrder_ = order;
            first_ = describe();
        }
    }

    [[nodiscard]] std::uint64_t Count() const noexcept { return count_; }

    [[nodiscard]] std::string Text() const {
        return count_ == 0
                 ? std::string()
                 : CountText(count_) + (count_ == 1 ? " fault: " : " faults, the first: ") + first_;
    }

private:
    std::atomic<std::uint64_t> count_{0};
    std::mutex mutex_;
    std::uint64_t firstOrder_ = 0;
    std::string first_;
};

/// Calls `look(place, squares, side to move)` for every legal position, shared out.
template <class Look>
void ForPositions(const Ending& ending, const CEndingIndex& index, CWorkers& workers,
                  CProgress& progress, const Look& look) {
    const std::size_t chunks = (index.SliceSize() + ChunkSize - 1) / ChunkSize;
    const std::size_t count = chunks * index.Slices();
    progress.BeginPhase("checking", 2 * index.SliceSize() * index.Slices());
    std::atomic<std::size_t> done{0};
    workers.ForEach(count, [&](std::size_t item, std::size_t thread) {
        const std::size_t first = item % chunks * ChunkSize;
        const std::size_t end = std::min(index.SliceSize(), first + ChunkSize);
        for (std::size_t at = first; at < end; ++at) {
            const CEndingIndex::Place place = {item / chunks, at};
            const EndingSquares squares = index.SquaresOf(place);
            for (const Colour colour : {White, Black}) {
                if (CEndingNode(ending, squares, colour).IsLegal()) {
                    look(place, squares, colour);
                }
            }
        }
        const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
        if (thread == 0) {
            progress.Report(static_cast<double>(finished) / static_cast<double>(count));
        }
    });
}

std::string Describe(const Ending& ending, const EndingSquares& squares, Colour sideToMove,
                     const std::string& found, const std::string& expected) {
    return FenOfEnding(ending, squares, sideToMove) + " holds " + found + ", should be " + expected;
}

std::string TextOfDistance(int code) {
    if (code == 0) {
        return "a draw";
    }
    return code > 0 ? "a win in " + std::to_string(code) : "a loss in " + std::to_string(-code - 1);
}

/// What the moves of a position come to, by the values behind them.
int ExpectedDistance(CEndingNode& node, const CEndingExits<DistanceToMate>& exits,
                     const SolvedValues& values) {
    node.PrepareMoves();
    ExitSum sum = exits.Find(node);
    const Ending& ending = node.Of();
    for (std::size_t man = 0; man < ending.pieces; ++man) {
        if (ending.man[man].colour != node.SideToMove()) {
            continue;
        }
        for (Bitboard targets = node.QuietTargets(man); targets != 0;) {
            EndingSquares after = node.Squares();
            after[man] = PopLowestBit(targets);
            DistanceToMate::Add(sum, values.At(after, ~node.SideToMove()));
        }
    }
    if (!sum.hasMove) {
        return node.IsInCheck() ? DistanceToMate::LossCode(0) : 0;
    }
    return CodeOfExits<DistanceToMate>(sum);
}

class CChecker {
public:
    CChecker(const std::string& folder, std::uint64_t memoryBytes, CWorkers& workers,
             CProgress& progress)
        : folder_(folder),
          workers_(workers),
          progress_(progress),
          nalimov_({folder, workers, progress}, false),
          syzygy_({folder, workers, progress}),
          distances_(nalimov_, memoryBytes),
          classes_(syzygy_, memoryBytes) {}

    [[nodiscard]] CheckOutcome Run() {
        struct Task {
            ITableFamily* family;
            int ending;
        };

        std::vector<Task> tasks;
        for (ITableFamily* const family :
             {static_cast<ITableFamily*>(&nalimov_), static_cast<ITableFamily*>(&syzygy_)}) {
            for (const int number : WithSuccessors(AllEndings())) {
                if (IsThere(*family, EndingOf(number))) {
                    tasks.push_back({family, number});
                }
            }
        }
        if (tasks.empty()) {
            throw CTableError("there are no tables of three to five men in " + folder_);
        }
        for (std::size_t place = 0; place < tasks.size(); ++place) {
            const auto [family, number] = tasks[place];
            progress_.BeginTable(family->NameOf(EndingOf(number)), place + 1, tasks.size());
            Check(*family, EndingOf(number));
        }
        return outcome_;
    }

private:
    static std::vector<int> AllEndings() {
        std::vector<int> all;
        for (int number = 1; number <= EndingCount; ++number) {
            all.push_back(number);
        }
        return all;
    }

    /// Is any of the ending's files there.
    [[nodiscard]] bool IsThere(const ITableFamily& family, const Ending& ending) const {
        for (const std::string& name : family.FilesOf(ending)) {
            if (IsTableFile(PathOf(folder_, name))) {
                return true;
            }
        }
        return false;
    }

    void Check(ITableFamily& family, const Ending& ending) {
        try {
            std::string culprit;
            const TableState state = family.Look(ending, culprit);
            if (state == TableState::Damaged) {
                Fail("DAMAGED: " + culprit);
                return;
            }
            if (state == TableState::Absent) {
                Fail("INCOMPLETE: a file is missing");
                return;
            }
            for (const int number : WithSuccessors(ending.Successors())) {
                if (faulty_.count({family.Name(), number}) != 0) {
                    NotChecked("what it turns into is faulty: " + family.NameOf(EndingOf(number)));
                    return;
                }
                if (family.Look(EndingOf(number), culprit) != TableState::Sound) {
                    NotChecked("this needs " + family.NameOf(EndingOf(number)));
                    return;
                }
            }
            const std::string faults =
                &family == &nalimov_ ? CheckDistances(ending) : CheckClasses(ending);
            if (faults.empty()) {
                ++outcome_.sound;
                progress_.EndTable("sound");
            } else {
                faulty_.insert({family.Name(), ending.number});
                Fail("FAULTY: " + faults);
            }
        } catch (const CInterrupted&) {
            throw;
        } catch (const CTableError& error) {
            faulty_.insert({family.Name(), ending.number});
            Fail(std::string("FAULTY: ") + error.what());
        }
    }

    void Fail(const std::string& text) {
        ++outcome_.faulty;
        progress_.EndTable(text);
    }

    void NotChecked(const std::string& text) {
        ++outcome_.unchecked;
        progress_.EndTable("not checked: " + text);
    }

    [[nodiscard]] std::string CheckDistances(const Ending& ending) {
        const SolvedEndings& solved = distances_.SuccessorsOf(ending, 0);
        const std::shared_ptr<const SolvedValues> values = distances_.ValuesOf(ending);
        const CEndingExits<DistanceToMate> exits(solved, *values);
        CFaults faults;
        NalimovContents contents;
        const int files = HasOneNalimovFile(ending) ? 1 : 2;
        for (int side = 0; side < files; ++side) {
            const auto file = FindNalimovFile(folder_, ending, side);
            contents[side] = ReadNalimovFile(folder_, file.value(), workers_);
        }
        ForPositions(ending, values->Index(), workers_, progress_,
                     [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour) {
                         const std::int8_t found = values->At(place, colour);
                         CEndingNode node(ending, squares, colour);
                         const int expected = ExpectedDistance(node, exits, *values);
                         if (found != expected) {
                             faults.Add(place.slice << 40U | place.index << 1U | colour, [&] {
                                 return Describe(ending, squares, colour, TextOfDistance(found),
                                                 TextOfDistance(expected));
                             });
                         }
                         CheckInPassing(ending, squares, colour, exits, contents, faults);
                     });
        CheckMarks(ending, contents, *values, faults);
        return faults.Text();
    }

    /// The area of positions in which a pawn may be taken in passing.
    static void CheckInPassing(const Ending& ending, const EndingSquares& squares, Colour colour,
                               const CEndingExits<DistanceToMate>& exits,
                               const NalimovContents& contents, CFaults& faults) {
        ForDoubleSteps(ending, squares, colour, [&](std::size_t victim) {
            const std::uint64_t place = NalimovPlaceOf(ending, squares, colour, victim);
            if (place == CNalimovCalculator::NoIndex) {
                return;
            }
            bool isTaken = false;
            const std::uint8_t expected =
                NalimovByteOf(exits.CodeInPassing(squares, colour, victim, isTaken));
            const std::vector<std::uint8_t>& bytes =
                contents[colour == White || HasOneNalimovFile(ending) ? 0 : 1];
            if (place >= bytes.size() || bytes[place] != expected) {
                faults.Add(~std::uint64_t{0} >> 1U, [&] {
                    return FenOfEnding(ending, squares, colour) +
                           " is wrong where a pawn may be taken in passing";
                });
            }
        });
    }

    /// A place that no position has must say so.
    void CheckMarks(const Ending& ending, const NalimovContents& contents,
                    const SolvedValues& values, CFaults& faults) {
        for (int side = 0; side < (HasOneNalimovFile(ending) ? 1 : 2); ++side) {
            const Colour colour = side == 0 ? White : Black;
            std::vector<std::uint8_t> isUsed(contents[side].size());
            const auto mark = [&isUsed](std::uint64_t place) {
                if (place < isUsed.size()) {
                    std::atomic_ref<std::uint8_t>(isUsed[place])
                        .store(1, std::memory_order_relaxed);
                }
            };
            ForPositions(ending, values.Index(), workers_, progress_,
                         [&](CEndingIndex::Place, const EndingSquares& squares, Colour mover) {
                             if (mover != colour) {
                                 return;
                             }
                             mark(NalimovPlaceOf(ending, squares, colour, Ending::NoMan));
                             ForDoubleSteps(ending, squares, colour, [&](std::size_t victim) {
                                 mark(NalimovPlaceOf(ending, squares, colour, victim));
                             });
                         });
            for (std::size_t place = 0; place < isUsed.size(); ++place) {
                if (isUsed[place] == 0 && contents[side][place] != NalimovNoValue) {
                    faults.Add(~std::uint64_t{0}, [&] {
                        return "place " + std::to_string(place) + " of side " +
                               std::to_string(side) + " has a value and no position";
                    });
                }
            }
        }
    }

    [[nodiscard]] std::string CheckClasses(const Ending& ending) {
        const SolvedEndings& solved = classes_.SuccessorsOf(ending, syzygy_.MakingBytes(ending));
        const auto codes = SolveEnding<DistanceToZeroing>(ending, solved, workers_, progress_);
        const bool hasDistances = HasNalimov(ending);
        const std::shared_ptr<const SolvedValues> distances =
            hasDistances ? distances_.ValuesOf(ending) : nullptr;
        CQuietHost host;
        CSyzygyTables tables(host);
        tables.SyzygyInit(folder_);
        CFaults faults;
        ForPositions(
            ending, codes->Index(), workers_, progress_,
            [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour) {
                const auto code = codes->At(place, colour);
                const int expected = DistanceToZeroing::ValueOf(code);
                TbSuccess success = TbSuccess::Failed;
                const TbPosition position = TbPositionOf(ending, squares, colour);
                const int found = TbProbeWdl(tables, position, success);
                const std::uint64_t order = place.slice << 40U | place.index << 1U | colour;
                if (success == TbSuccess::Failed || found != expected) {
                    faults.Add(order, [&] {
                        return Describe(ending, squares, colour, "class " + std::to_string(found),
                                        "class " + std::to_string(expected));
                    });
                }
                if (hasDistances) {
                    const std::int8_t mate = distances->At(place, colour);
                    if ((mate > 0) != (expected > 0) || (mate < 0) != (expected < 0)) {
                        faults.Add(order, [&] {
                            return FenOfEnding(ending, squares, colour) +
                                   ": the Nalimov table has " + TextOfDistance(mate) +
                                   ", the class is " + std::to_string(expected);
                        });
                    }
                }
            });
        CheckZeroing(ending, *codes, tables, faults);
        return faults.Text();
    }

    /// Distances; their reader is not made for several threads, so one does it.
    void CheckZeroing(const Ending& ending, const CEndingValues<std::int16_t>& codes,
                      CSyzygyTables& tables, CFaults& faults) {
        CWorkers alone(1);
        const CEndingIndex& index = codes.Index();
        // Every position up to four men; of five men each 61st, which no symmetry divides.
        const std::size_t step = ending.men < EndingMostMen ? 1 : 61;
        ForPositions(ending, index, alone, progress_,
                     [&](CEndingIndex::Place place, const EndingSquares& squares, Colour colour) {
                         if (place.index % step != 0) {
                             return;
                         }
                         const int code = codes.At(place, colour);
                         const int plies = std::max(1, DistanceToZeroing::PliesOf(code));
                         const int expected = code == 0 ? 0 : code > 0 ? plies : -plies;
                         TbSuccess success = TbSuccess::Failed;
                         const int found =
                             TbProbeDtz(tables, TbPositionOf(ending, squares, colour), success);
                         // Plies are held in halves, and a search of one ply stands between the
                         // side that is stored and the other.
                         if (success == TbSuccess::Failed || std::abs(found - expected) > 1) {
                             faults.Add(place.slice << 40U | place.index << 1U | colour, [&] {
                                 return Describe(ending, squares, colour,
                                                 "distance " + std::to_string(found),
                                                 std::to_string(expected));
                             });
                         }
                     });
    }

    [[nodiscard]] bool HasNalimov(const Ending& ending) const {
        std::string culprit;
        return faulty_.count({nalimov_.Name(), ending.number}) == 0 &&
               nalimov_.Look(ending, culprit) == TableState::Sound;
    }

    std::string folder_;
    CWorkers& workers_;
    CProgress& progress_;
    CNalimovFamily nalimov_;
    CSyzygyFamily syzygy_;
    CSolvedStore distances_;
    CSolvedStore classes_;
    CheckOutcome outcome_;
    std::set<std::pair<std::string, int>> faulty_;
};

}  // namespace

CheckOutcome CheckTables(const std::string& folder, std::uint64_t memoryBytes, CWorkers& workers,
                         CProgress& progress) {
    return CChecker(folder, memoryBytes, workers, progress).Run();
}

}  // namespace brenquil
