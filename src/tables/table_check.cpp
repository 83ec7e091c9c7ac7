#include "tables/table_check.h"

#include "tables/class_check.h"
#include "tables/distance_check.h"
#include "tables/ending_solver.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_error.h"
#include "tables/table_file.h"
#include "tables/table_maker.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <set>

namespace brenquil {

namespace {

class CChecker {
public:
    CChecker(const CheckingPlan& plan, CWorkers& workers, CProgress& progress)
        : folder_(plan.folder),
          endings_(plan.endings.begin(), plan.endings.end()),
          workers_(workers),
          progress_(progress),
          nalimov_({plan.folder, workers, progress}),
          syzygy_({plan.folder, workers, progress}),
          distances_(nalimov_, plan.memoryBytes),
          classes_(syzygy_, plan.memoryBytes) {}

    [[nodiscard]] CheckOutcome Run() {
        struct Task {
            ITableFamily* family;
            int ending;
        };

        std::vector<Task> tasks;
        for (ITableFamily* const family : Families()) {
            for (const int number : WithSuccessors(AllEndings())) {
                if (IsAsked(number) && IsThere(*family, EndingOf(number))) {
                    tasks.push_back({family, number});
                }
            }
        }
        const std::vector<std::string> strangers =
            endings_.empty() ? Strangers() : std::vector<std::string>();
        if (tasks.empty() && strangers.empty()) {
            throw CTableError(endings_.empty()
                                  ? "there are no tables of three to five men in " + folder_
                                  : "none of these tables is in " + folder_);
        }
        for (std::size_t place = 0; place < tasks.size(); ++place) {
            const auto [family, number] = tasks[place];
            progress_.BeginTable(family->NameOf(EndingOf(number)), place + 1, tasks.size());
            Check(*family, EndingOf(number));
        }
        for (const std::string& name : strangers) {
            ++outcome_.unchecked;
            progress_.Say(name + "  not checked: no table of three to five men has this name");
        }
        return outcome_;
    }

private:
    [[nodiscard]] std::array<ITableFamily*, 2> Families() noexcept { return {&nalimov_, &syzygy_}; }

    static std::vector<int> AllEndings() {
        std::vector<int> all;
        for (int number = 1; number <= EndingCount; ++number) {
            all.push_back(number);
        }
        return all;
    }

    /// Files with the endings of tables that no table of up to five men has, in ascending order.
    [[nodiscard]] std::vector<std::string> Strangers() {
        std::set<std::string> known;
        for (const int number : AllEndings()) {
            for (const ITableFamily* const family : Families()) {
                for (const std::string& name : family->FilesOf(EndingOf(number))) {
                    known.insert(name);
                }
            }
        }
        std::vector<std::string> strangers;
        for (const std::string& name : NamesIn(folder_)) {
            if (IsTableName(name) && known.count(name) == 0) {
                strangers.push_back(name);
            }
        }
        std::sort(strangers.begin(), strangers.end());
        return strangers;
    }

    [[nodiscard]] bool IsAsked(int number) const {
        return endings_.empty() || endings_.count(number) != 0;
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
            for (const int number : WithSuccessors(ending.successors)) {
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
                &family == &nalimov_ ? CheckNalimov(ending) : CheckSyzygy(ending);
            if (faults.empty()) {
                ++outcome_.sound;
                progress_.EndTable("sound");
            } else {
                faulty_.insert({family.Name(), ending.number});
                Fail("FAULTY: " + faults);
            }
        } catch (const CInterrupted&) {
            throw;
        } catch (const COutOfMemory& error) {
            NotChecked(error.what());
        } catch (const std::bad_alloc&) {
            NotChecked("out of memory");
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

    [[nodiscard]] std::string CheckNalimov(const Ending& ending) {
        CTableFaults faults;
        NalimovContents contents;
        const int files = HasOneNalimovFile(ending) ? 1 : 2;
        std::uint64_t bytes = DistanceCheckBytes(ending);
        std::uint64_t largest = 0;
        for (int side = 0; side < files; ++side) {
            const std::uint64_t places = NalimovPlaces(ending, side);
            bytes += places;
            largest = std::max(largest, places);
        }
        const SolvedEndings& solved = distances_.WithSuccessorsOf(ending, bytes + largest);
        for (int side = 0; side < files; ++side) {
            const auto forms = NalimovFilesThere(folder_, ending, side);
            for (const NalimovFileChoice& form : forms) {
                std::vector<std::uint8_t> held = ReadNalimovFile(folder_, form, workers_);
                if (contents[side].empty()) {
                    contents[side] = std::move(held);
                } else if (held != contents[side]) {
                    faults.Add(CTableFaults::WithoutPosition,
                               [&] { return form.name + " differs from " + forms.front().name; });
                }
            }
        }
        CheckDistances(ending, solved, contents, workers_, progress_, faults);
        return faults.Text();
    }

    [[nodiscard]] std::string CheckSyzygy(const Ending& ending) {
        // The memory is for one family at a time, but for what both know of this ending.
        const bool hasDistances = HasNalimov(ending);
        distances_.Clear();
        const std::uint64_t own = hasDistances ? 2 * KeptBytesOfSide(ending) : 0;
        const SolvedEndings& solved =
            classes_.SuccessorsOf(ending, syzygy_.MakingBytes(ending) + own);
        const auto codes = SolveEnding<DistanceToZeroing>(ending, solved, workers_, progress_);
        const std::shared_ptr<const SolvedValues> distances =
            hasDistances ? distances_.ValuesOf(ending) : nullptr;
        CTableFaults faults;
        CheckClasses(folder_, *codes, distances.get(), workers_, progress_, faults);
        return faults.Text();
    }

    [[nodiscard]] bool HasNalimov(const Ending& ending) const {
        std::string culprit;
        return faulty_.count({nalimov_.Name(), ending.number}) == 0 &&
               nalimov_.Look(ending, culprit) == TableState::Sound;
    }

    std::string folder_;
    std::set<int> endings_;  ///< those that are asked for; empty for all
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

CheckOutcome CheckTables(const CheckingPlan& plan, CWorkers& workers, CProgress& progress) {
    return CChecker(plan, workers, progress).Run();
}

}  // namespace brenquil
