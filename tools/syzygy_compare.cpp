// Compares Syzygy tables with the solver of the test tree, position by position.
//
//     syzygy_compare PATH [NAME...]
//
// PATH is the list of folders that the option takes. Without names all endings of three and four
// men are compared. Every placement of the men on all squares with both sides to move is asked for
// its class, en passant rights included, and for its distance. A distance by a search of one ply
// costs some dozens of probes, so of those one in eight is taken.
//
// A table may count in moves instead of plies; it is then right to within one ply. A mate in one
// of a side that the table does not store comes out as 2.
//
// One line for each ending; ends with code 1 if anything differs.

#include "bases/syzygy/tb_probe.h"
#include "board/attacks.h"
#include "syzygy_solver.h"
#include "syzygy_writer.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace brenquil;
using namespace brenquil::testing_support;

/// One position in eight, without regard to where its men stand.
bool IsInSample(std::size_t index) {
    return (index / 2 * 0x9E3779B97F4A7C15U) >> 61U == 0;
}

struct Counts {
    std::uint64_t classes = 0;
    std::uint64_t distances = 0;
    std::uint64_t enPassant = 0;
    std::uint64_t rounded = 0;
    std::uint64_t mates = 0;
    std::uint64_t faults = 0;
};

class CComparison {
public:
    CComparison(CSyzygyTables& tables, CSyzygySolver& solver, const std::string& name)
        : tables_(tables), solver_(solver), ending_(solver.Solve(name)) {}

    const Counts& Run() {
        for (std::size_t index = 0; index < ending_.Size(); ++index) {
            if (ending_.Class(index) == SolvedEnding::Illegal) {
                continue;
            }
            const TbPosition position = PositionOf(ending_, index);
            TbSuccess success = TbSuccess::Found;
            const int wdl = TbProbeWdl(tables_, position, success);
            ++counts_.classes;
            if (success == TbSuccess::Failed || wdl != ending_.Class(index)) {
                Fault("class", index, wdl, ending_.Class(index));
                continue;
            }
            CompareDistance(position, index, wdl);
            CompareEnPassant(position, index);
        }
        return counts_;
    }

private:
    void CompareDistance(const TbPosition& position, std::size_t index, int wdl) {
        const DtzEntry* const table = tables_.TbFindDtz(position);
        if (table == nullptr) {
            Fault("missing distance table", index, 0, 0);
            return;
        }
        const bool mirrored = MaterialKey(position, false) != table->shape.key;
        const unsigned side = mirrored == position.turn ? 1 : 0;
        const bool isStored = table->shape.symmetric || (table->groups[0].flags & 1U) == side;
        if (!isStored && !IsInSample(index)) {
            return;
        }
        TbSuccess success = TbSuccess::Found;
        const int dtz = TbProbeDtz(tables_, position, success);
        const int wanted = wdl > 0 ? ending_.Distance(index) : -ending_.Distance(index);
        ++counts_.distances;
        if (success != TbSuccess::Failed && dtz == (wdl == 0 ? 0 : wanted)) {
            return;
        }
        const int excess = std::abs(dtz) - std::abs(wanted);
        const bool hasSign = success != TbSuccess::Failed && wdl != 0 && (dtz > 0) == (wdl > 0);
        if (hasSign && !isStored && wanted == 1 && dtz == 2) {
            ++counts_.mates;
        } else if (hasSign && (excess == 1 || excess == -1) && CountsMoves(*table)) {
            ++counts_.rounded;
        } else {
            Fault("distance", index, dtz, wanted);
        }
    }

    /// Does the table count anything in moves.
    static bool CountsMoves(const DtzEntry& table) {
        constexpr unsigned Plies = DtzEntry::WinPliesFlag | DtzEntry::LossPliesFlag;
        for (const DtzEntry::Group& group : table.groups) {
            if (group.side.stream != nullptr && (group.flags & Plies) != Plies) {
                return true;
            }
        }
        return false;
    }

    /// The same position with each en passant right that a last move could have left.
    void CompareEnPassant(TbPosition position, std::size_t index) {
        const auto squares = ending_.SquaresOf(index);
        const Colour us = position.turn ? White : Black;
        const Bitboard ours = position.pawns & position.Own();
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            const int back = us == White ? 8 : -8;
            if (ending_.men[i] != EndingMan{Pawn, ~us} ||
                RankOf(squares[i]) != (us == White ? 4 : 3)) {
                continue;
            }
            const Square passed = squares[i] + back;
            const Bitboard way = BitOf(passed) | BitOf(passed + back);
            if ((PawnAttacks[~us][passed] & ours) == 0 || (way & position.Occupied()) != 0) {
                continue;
            }
            position.ep = static_cast<std::uint8_t>(passed);
            TbSuccess success = TbSuccess::Found;
            const int wdl = TbProbeWdl(tables_, position, success);
            const std::vector<Square> placed(squares.begin(),
                                             squares.begin() + std::ssize(ending_.men));
            const int wanted = solver_.ClassOf(ending_.men, placed, us, passed);
            ++counts_.enPassant;
            if (success == TbSuccess::Failed || wdl != wanted) {
                Fault("en passant class", index, wdl, wanted);
            }
            const int dtz = TbProbeDtz(tables_, position, success);
            if (success == TbSuccess::Failed || (dtz > 0) != (wanted > 0) ||
                (dtz < 0) != (wanted < 0)) {
                Fault("en passant distance", index, dtz, wanted);
            }
        }
    }

    void Fault(const char* what, std::size_t index, int got, int wanted) {
        if (++counts_.faults > 10) {
            return;
        }
        std::printf("%s: %s of", ending_.name.c_str(), what);
        const auto squares = ending_.SquaresOf(index);
        for (std::size_t i = 0; i < ending_.men.size(); ++i) {
            std::printf(" %c%c", 'a' + FileOf(squares[i]), '1' + RankOf(squares[i]));
        }
        std::printf(", %s to move: %d instead of %d\n",
                    SolvedEnding::ToMove(index) == White ? "White" : "Black", got, wanted);
    }

    CSyzygyTables& tables_;
    CSyzygySolver& solver_;
    const SolvedEnding& ending_;
    Counts counts_;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char* argv[]) {
    if (argc < 2) {
        std::fputs("syzygy_compare PATH [NAME...]\n", stderr);
        return 2;
    }
    CSyzygyTables tables;
    tables.SetPath(argv[1]);
    std::vector<std::string> names(argv + 2, argv + argc);
    if (names.empty()) {
        for (const std::string& name : AllTableNames()) {
            if (name.size() <= 5) {
                names.push_back(name);
            }
        }
    }
    CSyzygySolver solver;
    Counts all;
    const auto start = std::chrono::steady_clock::now();
    for (const std::string& name : names) {
        const auto begin = std::chrono::steady_clock::now();
        (void)solver.Solve(name);
        const double solved = SecondsSince(begin);
        const Counts counts = CComparison(tables, solver, name).Run();
        std::printf(
            "%-6s classes %llu, distances %llu (%llu rounded, %llu mates), en passant %llu, "
            "faults %llu; solved in %.1f s, all %.1f s\n",
            name.c_str(), static_cast<unsigned long long>(counts.classes),
            static_cast<unsigned long long>(counts.distances),
            static_cast<unsigned long long>(counts.rounded),
            static_cast<unsigned long long>(counts.mates),
            static_cast<unsigned long long>(counts.enPassant),
            static_cast<unsigned long long>(counts.faults), solved, SecondsSince(begin));
        std::fflush(stdout);
        all.classes += counts.classes;
        all.distances += counts.distances;
        all.enPassant += counts.enPassant;
        all.faults += counts.faults;
    }
    std::printf("all: classes %llu, distances %llu, en passant %llu, faults %llu, %.0f s\n",
                static_cast<unsigned long long>(all.classes),
                static_cast<unsigned long long>(all.distances),
                static_cast<unsigned long long>(all.enPassant),
                static_cast<unsigned long long>(all.faults), SecondsSince(start));
    return all.faults == 0 ? 0 : 1;
}
