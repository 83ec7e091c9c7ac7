#include "tables/table_statistics.h"

#include "tables/ending_node.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_error.h"
#include "tables/table_maker.h"

#include <algorithm>
#include <cstddef>
#include <mutex>

namespace brenquil {

namespace {

/// Counts one value of a side to move.
void Count(SideStatistics& side, int code, bool isSyzygy) {
    const bool isWin = code > 0;
    if (code == 0) {
        ++side.draws;
        return;
    }
    std::size_t distance = 0;
    if (isSyzygy) {
        side.spoilt += std::abs(code) == 1 ? 1 : 0;
    } else {
        distance = isWin ? code : -code - 1;
    }
    ++(isWin ? side.wins : side.losses);
    std::vector<std::uint64_t>& counts = isWin ? side.winsIn : side.lossesIn;
    if (!isSyzygy) {
        if (counts.size() <= distance) {
            counts.resize(distance + 1);
        }
        ++counts[distance];
    }
}

void Merge(std::vector<std::uint64_t>& into, const std::vector<std::uint64_t>& from) {
    into.resize(std::max(into.size(), from.size()));
    std::transform(from.begin(), from.end(), into.begin(), into.begin(), std::plus<>());
}

void Merge(SideStatistics& into, const SideStatistics& from) {
    into.wins += from.wins;
    into.draws += from.draws;
    into.losses += from.losses;
    into.spoilt += from.spoilt;
    Merge(into.winsIn, from.winsIn);
    Merge(into.lossesIn, from.lossesIn);
}

/// The first position with that code; there is one.
std::string FirstWith(const SolvedValues& values, Colour colour, int code) {
    const CEndingIndex& index = values.Index();
    for (std::size_t slice = 0; slice < index.Slices(); ++slice) {
        const std::int8_t* const codes = values.Slice(colour, slice);
        for (std::size_t at = 0; at < index.SliceSize(); ++at) {
            if (codes[at] != code) {
                continue;
            }
            const CEndingIndex::Place place = {slice, at};
            const EndingSquares squares = index.SquaresOf(place);
            if (CEndingNode(values.Of(), squares, colour).IsLegal() &&
                index.IsCanonical(place, squares)) {
                return FenOfEnding(values.Of(), squares, colour);
            }
        }
    }
    return {};
}

TableStatistics CountTable(const SolvedValues& values, const std::string& name, bool isSyzygy,
                           CWorkers& workers, CProgress& progress) {
    TableStatistics table;
    table.name = name;
    table.isSyzygy = isSyzygy;
    const CEndingIndex& index = values.Index();
    const std::size_t chunks = (index.SliceSize() + ChunkSize - 1) / ChunkSize;
    progress.BeginPhase("counting", 2 * values.Places());
    std::mutex mutex;
    workers.ForEach(chunks * index.Slices(), [&](std::size_t item, std::size_t thread) {
        std::array<SideStatistics, 2> some;
        const std::size_t first = item % chunks * ChunkSize;
        const std::size_t end = std::min(index.SliceSize(), first + ChunkSize);
        for (std::size_t at = first; at < end; ++at) {
            const CEndingIndex::Place place = {item / chunks, at};
            const EndingSquares squares = index.SquaresOf(place);
            if (!index.IsCanonical(place, squares)) {
                continue;
            }
            for (const Colour colour : {White, Black}) {
                if (CEndingNode(values.Of(), squares, colour).IsLegal()) {
                    Count(some[colour == White ? 0 : 1], values.At(place, colour), isSyzygy);
                }
            }
        }
        const std::lock_guard guard(mutex);
        for (std::size_t side = 0; side < 2; ++side) {
            Merge(table.sides[side], some[side]);
        }
        if (thread == 0) {
            progress.Report(Share(item, chunks * index.Slices()));
        }
    });
    for (const Colour colour : {White, Black}) {
        SideStatistics& side = table.sides[colour == White ? 0 : 1];
        const int win = static_cast<int>(side.winsIn.size()) - 1;
        const int loss = static_cast<int>(side.lossesIn.size()) - 1;
        if (std::max(win, loss) >= 0) {
            side.longestIsLoss = loss >= win;
            side.longest = std::max(win, loss);
            side.longestFen =
                FirstWith(values, colour, side.longestIsLoss ? -side.longest - 1 : side.longest);
        }
    }
    return table;
}

std::string Percent(std::uint64_t part, std::uint64_t whole) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f %%", whole == 0 ? 0.0 : 100 * Share(part, whole));
    return text;
}

using Row = std::vector<std::string>;

std::vector<Row> RowsOf(const std::vector<TableStatistics>& tables) {
    std::vector<Row> rows = {{"table", "to move", "positions", "won", "drawn", "lost",
                              "longest mate", "position with it"}};
    for (const TableStatistics& table : tables) {
        for (std::size_t place = 0; place < 2; ++place) {
            const SideStatistics& side = table.sides[place];
            std::string longest = "-";
            if (table.isSyzygy) {
                longest = side.spoilt == 0 ? "-" : CountText(side.spoilt) + " by the 50-move rule";
            } else if (!side.longestFen.empty()) {
                longest =
                    (side.longestIsLoss ? "mated in " : "mate in ") + std::to_string(side.longest);
            }
            rows.push_back({place == 0 ? table.name : "", place == 0 ? "white" : "black",
                            CountText(side.Positions()), Percent(side.wins, side.Positions()),
                            Percent(side.draws, side.Positions()),
                            Percent(side.losses, side.Positions()), longest,
                            side.longestFen.empty() ? "-" : side.longestFen});
        }
    }
    return rows;
}

std::string AsColumns(const std::vector<Row>& rows, bool isMarkdown) {
    std::vector<std::size_t> widths(rows.front().size());
    for (const Row& row : rows) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], row[column].size());
        }
    }
    // Numbers to the right.
    const auto isNumber = [](std::size_t column) { return column >= 2 && column <= 5; };
    std::string text;
    for (std::size_t line = 0; line < rows.size(); ++line) {
        std::string row = isMarkdown ? "|" : "";
        for (std::size_t column = 0; column < rows[line].size(); ++column) {
            const std::string& cell = rows[line][column];
            const std::string blanks(widths[column] - cell.size(), ' ');
            row += isMarkdown ? " " : "";
            row += isNumber(column) ? blanks + cell : cell + blanks;
            row += isMarkdown ? " |" : "  ";
        }
        row.erase(row.find_last_not_of(' ') + 1);
        text += row + "\n";
        if (line == 0 && isMarkdown) {
            text += "|";
            for (std::size_t column = 0; column < widths.size(); ++column) {
                text += std::string(widths[column] + 1, '-') + (isNumber(column) ? ":|" : "-|");
            }
            text += "\n";
        }
    }
    return text;
}

// ---- the picture

constexpr const char* WonColour = "#2b7a4b";
constexpr const char* DrawnColour = "#b8b8b8";
constexpr const char* LostColour = "#b5422f";

std::string Number(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", value);
    return text;
}

std::string Rectangle(double x, double y, double width, double height, const char* colour,
                      const std::string& title) {
    return "<rect x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" width=\"" + Number(width) +
           "\" height=\"" + Number(height) + "\" fill=\"" + colour + "\"><title>" + title +
           "</title></rect>\n";
}

std::string Label(double x, double y, const char* anchor, int size, const std::string& text) {
    return "<text x=\"" + Number(x) + "\" y=\"" + Number(y) + "\" font-size=\"" +
           std::to_string(size) + "\" text-anchor=\"" + anchor + "\">" + text + "</text>\n";
}

constexpr double Left = 90;
constexpr double BarWidth = 300;
constexpr double HistogramLeft = 520;
constexpr double HistogramWidth = 440;
constexpr double RowHeight = 84;
constexpr double TopHeight = 60;

std::string BarOf(const SideStatistics& side, double y, const char* mover) {
    constexpr double Height = 16;
    const std::uint64_t whole = std::max<std::uint64_t>(1, side.Positions());
    std::string text = Label(Left + 40, y + 13, "end", 11, mover);
    double x = Left + 46;
    const auto add = [&](std::uint64_t part, const char* colour, const char* what) {
        const double width = BarWidth * Share(part, whole);
        if (part != 0) {
            text += Rectangle(x, y, width, Height, colour,
                              std::string(what) + " " + CountText(part) + " (" +
                                  Percent(part, side.Positions()) + ")");
        }
        x += width;
    };
    add(side.wins, WonColour, "won");
    add(side.draws, DrawnColour, "drawn");
    add(side.losses, LostColour, "lost");
    return text;
}

/// Wins of both sides to move above the line, losses below it, each column in its share of the
/// highest one.
std::string HistogramOf(const TableStatistics& table, double y) {
    std::vector<std::uint64_t> wins;
    std::vector<std::uint64_t> losses;
    for (const SideStatistics& side : table.sides) {
        Merge(wins, side.winsIn);
        Merge(losses, side.lossesIn);
    }
    const std::size_t columns = std::max(wins.size(), losses.size());
    if (columns == 0) {
        return Label(HistogramLeft + HistogramWidth / 2, y + 36, "middle", 11,
                     table.isSyzygy ? "classes only" : "no mates");
    }
    std::uint64_t highest = 1;
    for (const auto* const counts : {&wins, &losses}) {
        for (const std::uint64_t count : *counts) {
            highest = std::max(highest, count);
        }
    }
    constexpr double Half = 29;
    const double middle = y + Half;
    const std::size_t width = std::max<std::size_t>(columns, 20);  // in columns
    const double step = HistogramWidth * Share(1, width);
    std::string text;
    for (std::size_t distance = 0; distance < columns; ++distance) {
        const double x = HistogramLeft + HistogramWidth * Share(distance, width);
        const auto draw = [&](const std::vector<std::uint64_t>& counts, bool isWin) {
            const std::uint64_t count = distance < counts.size() ? counts[distance] : 0;
            if (count == 0) {
                return;
            }
            // At least half a pixel: the longest mates are few.
            const double height = std::max(0.5, Half * Share(count, highest));
            text += Rectangle(x, isWin ? middle - height : middle, step * 0.85, height,
                              isWin ? WonColour : LostColour,
                              std::string(isWin ? "won" : "lost") + " in " +
                                  std::to_string(distance) + ": " + CountText(count));
        };
        draw(wins, true);
        draw(losses, false);
    }
    text += "<line x1=\"" + Number(HistogramLeft) + "\" y1=\"" + Number(middle) + "\" x2=\"" +
            Number(HistogramLeft + HistogramWidth) + "\" y2=\"" + Number(middle) +
            "\" stroke=\"#444\" stroke-width=\"0.6\"/>\n";
    text += Label(HistogramLeft, y + 2 * Half + 12, "start", 10, "0");
    text += Label(HistogramLeft + HistogramWidth * Share(columns, width), y + 2 * Half + 12, "end",
                  10, std::to_string(columns - 1) + " moves");
    return text;
}

std::string AsPicture(const std::vector<TableStatistics>& tables) {
    const double height = TopHeight + RowHeight * static_cast<double>(tables.size()) + 10;
    std::string text = R"(<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 1000 )" +
                       Number(height) + "\" font-family=\"sans-serif\" fill=\"#222\">\n" +
                       R"(<rect width="1000" height=")" + Number(height) +
                       "\" fill=\"#ffffff\"/>\n";
    text += Label(20, 26, "start", 16, "Endgame tables");
    const auto legend = [&](double x, const char* colour, const char* what) {
        text += Rectangle(x, 36, 10, 10, colour, what) + Label(x + 15, 45, "start", 11, what);
    };
    legend(Left + 46, WonColour, "won");
    legend(Left + 106, DrawnColour, "drawn");
    legend(Left + 176, LostColour, "lost, for the side to move");
    text +=
        Label(HistogramLeft, 45, "start", 11, "moves to mate: wins above the line, losses below");
    for (std::size_t place = 0; place < tables.size(); ++place) {
        const TableStatistics& table = tables[place];
        const double y = TopHeight + RowHeight * static_cast<double>(place);
        if (place % 2 == 0) {
            text += R"(<rect x="10" y=")" + Number(y - 4) + R"(" width="980" height=")" +
                    Number(RowHeight - 2) + "\" fill=\"#f5f5f2\"/>\n";
        }
        text += Label(20, y + 32, "start", 15, table.name);
        text += BarOf(table.sides[0], y + 8, "white");
        text += BarOf(table.sides[1], y + 30, "black");
        // With the winner to move, as mates are counted in print.
        const std::size_t columns =
            std::max(table.sides[0].winsIn.size(), table.sides[1].winsIn.size());
        const std::string longest =
            columns == 0 ? "" : "longest mate: " + std::to_string(columns - 1) + " moves";
        text += Label(Left + 46, y + 66, "start", 11,
                      CountText(table.sides[0].Positions() + table.sides[1].Positions()) +
                          " positions" + (longest.empty() ? "" : "; " + longest));
        text += HistogramOf(table, y);
    }
    return text + "</svg>\n";
}

}  // namespace

FolderStatistics CollectStatistics(const std::string& folder, std::uint64_t memoryBytes,
                                   CWorkers& workers, CProgress& progress) {
    CNalimovFamily nalimov({folder, workers, progress});
    CSyzygyFamily syzygy({folder, workers, progress});
    FolderStatistics found;
    for (ITableFamily* const family : std::array<ITableFamily*, 2>{&nalimov, &syzygy}) {
        CSolvedStore store(*family, memoryBytes);
        for (int number = 1; number <= EndingCount; ++number) {
            const Ending& ending = EndingOf(number);
            progress.BeginTable(family->NameOf(ending), number, EndingCount);
            try {
                std::string culprit;
                const TableState state = family->Look(ending, culprit);
                if (state == TableState::Damaged) {
                    found.faults.push_back(culprit + " is damaged");
                } else if (state == TableState::Sound) {
                    found.tables.push_back(CountTable(*store.ValuesOf(ending),
                                                      family->NameOf(ending), family == &syzygy,
                                                      workers, progress));
                }
            } catch (const CInterrupted&) {
                throw;
            } catch (const CTableError& error) {
                found.faults.emplace_back(error.what());
            }
        }
    }
    if (found.tables.empty() && found.faults.empty()) {
        throw CTableError("there are no tables of three to five men in " + folder);
    }
    return found;
}

std::string StatisticsText(const std::vector<TableStatistics>& tables, StatisticsForm form) {
    if (form == StatisticsForm::Picture) {
        return AsPicture(tables);
    }
    return AsColumns(RowsOf(tables), form == StatisticsForm::Markdown);
}

}  // namespace brenquil
