// Compares Syzygy tables with the solver of the test tree, position by position.
//
//     syzygy_compare [--every-distance] PATH [NAME...]
//
// PATH is the list of folders that the option takes. Without names all endings of three and four
// men are compared. Every placement of the men on all squares with both sides to move is asked for
// its class, en passant rights included, and for its distance.
//
// A distance that the table does not store comes from a search of one ply and costs some dozens of
// probes. Of placements that are reflections of each other only one is asked for it, unless
// --every-distance is given: what the search finds has been compared on all squares.
//
// A table may count in moves instead of plies; it is then right to within one ply. A mate in one
// of a side that the table does not store comes out as 2.
//
// An ending of more men, which the solver cannot solve, is asked for a million random positions,
// the same ones each time: what the table says of one must follow from what is said of the
// positions behind its moves. Positions with a move into a table that is not there are left out.
//
// One line for each ending; ends with code 1 if anything differs.

#include "bases/syzygy/tb_probe.h"
#include "board/attacks.h"
#include "syzygy_solver.h"
#include "syzygy_writer.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace brenquil;
using namespace brenquil::testing_support;

/// One of the placements at least that are reflections of each other: by White's king on the files
/// a to d, without pawns in the triangle a1-d1-d4.
bool IsUnreflected(const SolvedEnding& ending, std::size_t index) {
    const Square king = ending.SquaresOf(index)[0];
    const bool hasPawns = ending.name.find('P') != std::string::npos;
    return FileOf(king) < 4 && (hasPawns || RankOf(king) <= FileOf(king));
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
    CComparison(CSyzygyTables& tables, CSyzygySolver& solver, const std::string& name,
                bool everyDistance)
        : tables_(tables),
          solver_(solver),
          ending_(solver.Solve(name)),
          everyDistance_(everyDistance) {}

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
        if (!isStored && !everyDistance_ && !IsUnreflected(ending_, index)) {
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
    const bool everyDistance_;
    Counts counts_;
};

/// Holds a table against itself and the tables that moves lead to.
class CMovesComparison {
public:
    static constexpr int Rounds = 1000000;

    CMovesComparison(CSyzygyTables& tables, std::string name)
        : tables_(tables), name_(std::move(name)) {}

    const Counts& Run() {
        std::mt19937_64 random(20250101);
        for (int round = 0; round < Rounds; ++round) {
            const TbPosition position = RandomPosition(name_, random);
            if (TbIsValid(position)) {
                Compare(position);
            }
        }
        return counts_;
    }

private:
    /// The best that the moves of a position lead to.
    struct Best {
        int wdl = -3;          ///< -3 without a move
        bool zeroing = false;  ///< a capture or pawn move wins
        int shortest = 9999;   ///< fewest plies to zeroing of the winner's other moves
        int longest = 1;       ///< most plies of the loser's moves
        bool isWhole = true;   ///< all tables are there, those of distances too
        bool hasClass = true;  ///< all tables of classes are there
    };

    void Compare(const TbPosition& position) {
        TbSuccess success = TbSuccess::Found;
        const int wdl = TbProbeWdl(tables_, position, success);
        Best best = BestOf(position);
        if (success == TbSuccess::Failed || !best.hasClass) {
            return;
        }
        if (best.wdl == -3) {
            best.wdl = TbInCheck(position) ? -2 : 0;
        }
        ++counts_.classes;
        // Where the fifty moves just do or do not suffice, a quiet move can cross the border.
        const bool isBorder = !best.zeroing && std::abs(best.wdl) == 2 && wdl == best.wdl / 2;
        if (wdl != best.wdl && !isBorder) {
            Fault("class", wdl, best.wdl);
        }
        const int dtz = TbProbeDtz(tables_, position, success);
        if (success == TbSuccess::Failed || !best.isWhole || wdl % 2 != 0) {
            return;
        }
        ++counts_.distances;
        int wanted = 0;
        if (wdl != 0) {
            wanted = wdl < 0 ? -best.longest : best.shortest;
        }
        if (best.zeroing) {
            wanted = 1;
        }
        if (dtz == wanted) {
            return;
        }
        if (std::abs(dtz - wanted) <= 2 && wdl != 0 && !best.zeroing) {
            ++counts_.rounded;  // one ply here and one behind the move
        } else {
            Fault("distance", dtz, wanted);
        }
    }

    Best BestOf(const TbPosition& position) {
        Best best;
        TbMoveList list;
        TbGenMoves(position, list);
        TbPosition next;
        for (const TbMove move : list) {
            if (!TbDoMove(next, position, move)) {
                continue;
            }
            TbSuccess success = TbSuccess::Found;
            const int wdl = -TbProbeWdl(tables_, next, success);
            best.hasClass &= success != TbSuccess::Failed;
            best.zeroing |= next.rule50 == 0 && wdl == 2;
            best.wdl = std::max(best.wdl, wdl);
            if (next.rule50 == 0 || wdl == 0) {
                continue;
            }
            const int dtz = std::abs(TbProbeDtz(tables_, next, success));
            best.isWhole &= success != TbSuccess::Failed;
            if (wdl > 0) {
                best.shortest = std::min(best.shortest, dtz + 1);
            } else {
                best.longest = std::max(best.longest, dtz + 1);
            }
        }
        return best;
    }

    void Fault(const char* what, int got, int wanted) {
        if (++counts_.faults <= 10) {
            std::printf("%s: %s %d instead of %d\n", name_.c_str(), what, got, wanted);
        }
    }

    CSyzygyTables& tables_;
    const std::string name_;
    Counts counts_;
};

double SecondsSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace

int main(int argc, char* argv[]) {
    std::vector<std::string> names(argv + 1, argv + argc);
    const bool everyDistance = !names.empty() && names.front() == "--every-distance";
    if (everyDistance) {
        names.erase(names.begin());
    }
    const bool isAsked = !names.empty() && (names.front() == "--help" || names.front() == "-h");
    const bool isWrong = names.empty() || std::ranges::any_of(names, [](const std::string& name) {
                             return name.starts_with("-");
                         });
    if (isAsked || isWrong) {
        std::fputs("syzygy_compare [--every-distance] PATH [NAME...]\n", isAsked ? stdout : stderr);
        return isAsked ? 0 : 2;
    }
    CPlainHost host;
    CSyzygyTables tables(host);
    tables.SetPath(names.front());
    names.erase(names.begin());
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
        const bool isSmall = name.size() <= 5;
        if (isSmall) {
            (void)solver.Solve(name);
        }
        const double solved = SecondsSince(begin);
        const Counts counts = isSmall ? CComparison(tables, solver, name, everyDistance).Run()
                                      : CMovesComparison(tables, name).Run();
        if (isSmall) {
            solver.DropDistances(name);
        }
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
