#include "tables/table_show.h"

#include "tables/ending_exits.h"
#include "tables/table_error.h"
#include "tables/table_lookup.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

namespace brenquil {

namespace {

/// A move with what is known of it, from the view of the side that makes it.
struct JudgedMove {
    ShownMove move;
    TableAnswer answer;
    int rank;  ///< the higher, the better
};

/// The same seen from the move before: a win in n moves has been one in n + 1.
TableAnswer OneMoveBefore(const TableAnswer& after, bool isZeroing) {
    TableAnswer before;
    if (after.mate) {
        const int code = *after.mate;
        before.mate = code == 0 ? 0 : code < 0 ? -code : -code - 1;
    }
    if (after.wdl) {
        before.wdl = -*after.wdl;
    }
    if (after.zeroing) {
        const int plies = *after.zeroing;
        if (isZeroing) {
            constexpr int Spoilt = 101;
            const int wdl = before.wdl.value_or(0);
            before.zeroing = wdl == 0 ? 0 : (wdl > 0 ? 1 : -1) * (wdl % 2 == 0 ? 1 : Spoilt);
        } else {
            before.zeroing = plies == 0 ? 0 : plies > 0 ? -plies - 1 : -plies + 1;
        }
    }
    return before;
}

int RankOf(const TableAnswer& answer) {
    if (answer.mate) {
        return RankOfCode<DistanceToMate>(*answer.mate);
    }
    constexpr int OfClass = 10000;
    const int wdl = answer.wdl.value_or(-3);
    const int plies = answer.zeroing.value_or(0);
    // The winner hurries, the loser does not.
    return wdl * OfClass - plies;
}

std::vector<JudgedMove> JudgeMoves(const ShownPosition& position, CTableLookup& tables) {
    std::vector<JudgedMove> judged;
    for (ShownMove& move : position.Moves()) {
        const TableAnswer answer = OneMoveBefore(tables.Ask(move.after), move.isZeroing);
        judged.push_back({std::move(move), answer, RankOf(answer)});
    }
    std::stable_sort(judged.begin(), judged.end(),
                     [](const JudgedMove& a, const JudgedMove& b) { return a.rank > b.rank; });
    return judged;
}

/// The moves of both sides as the tables would play them, to mate if there is one.
std::vector<std::string> MainLine(ShownPosition position, CTableLookup& tables) {
    constexpr std::size_t Longest = 300;
    std::vector<std::string> line;
    while (line.size() < Longest) {
        const std::vector<JudgedMove> moves = JudgeMoves(position, tables);
        if (moves.empty()) {
            break;
        }
        const JudgedMove& best = moves.front();
        const bool isDraw =
            best.answer.mate ? *best.answer.mate == 0 : best.answer.wdl.value_or(0) == 0;
        if (isDraw) {
            break;
        }
        line.push_back(best.move.text);
        position = best.move.after;
    }
    return line;
}

std::string MateText(int code) {
    if (code == 0) {
        return "draw";
    }
    if (code == -1) {
        return "mated";
    }
    return code > 0 ? "mate in " + std::to_string(code) : "mated in " + std::to_string(-code - 1);
}

std::string ClassText(int wdl) {
    switch (wdl) {
    case 2: return "win";
    case 1: return "win that the fifty-move rule spoils";
    case -1: return "loss that the fifty-move rule saves";
    case -2: return "loss";
    default: return "draw";
    }
}

std::string ZeroingText(const TableAnswer& answer) {
    if (!answer.zeroing || *answer.zeroing == 0) {
        return "";
    }
    return ", " + std::to_string(std::abs(*answer.zeroing)) +
           (std::abs(*answer.zeroing) == 1 ? " ply" : " plies") +
           " to the next capture or pawn move";
}

std::string ForPeople(const ShownPosition& position, const TableAnswer& answer,
                      const std::vector<JudgedMove>& moves, const std::vector<std::string>& line) {
    std::string text = position.Board() + "\n" + position.Fen() + "\n";
    std::string side = position.SideName();
    side[0] = side[0] == 'w' ? 'W' : 'B';
    text += side + " to move";
    if (moves.empty() && position.ending != 0) {
        text += position.IsInCheck() ? ", checkmated" : ", no move";
    }
    text += "\n\n";
    text += "Nalimov: " + (answer.mate ? MateText(*answer.mate) : std::string("no table")) + "\n";
    text += "Syzygy:  " +
            (answer.wdl ? ClassText(*answer.wdl) + ZeroingText(answer) : std::string("no table")) +
            "\n";
    if (!moves.empty()) {
        text += "\nMoves\n";
    }
    for (const JudgedMove& judged : moves) {
        char row[160];
        std::string classes = judged.answer.wdl ? ClassText(*judged.answer.wdl) : "-";
        if (judged.answer.zeroing && *judged.answer.zeroing != 0) {
            classes += " (" + std::to_string(std::abs(*judged.answer.zeroing)) + ")";
        }
        std::snprintf(row, sizeof row, "  %-6s  %-14s  %s\n", judged.move.text.c_str(),
                      judged.answer.mate ? MateText(*judged.answer.mate).c_str() : "-",
                      classes.c_str());
        text += row;
    }
    if (!line.empty()) {
        text += "\nLine\n ";
        constexpr std::size_t Width = 90;
        std::size_t column = 1;
        const bool blackBegins = position.SideName() == "black";
        for (std::size_t ply = 0; ply < line.size(); ++ply) {
            std::string word;
            const bool isWhite = (ply % 2 == 0) != blackBegins;
            if (isWhite || ply == 0) {
                const std::size_t number = (ply + (blackBegins ? 1 : 0)) / 2 + 1;
                word = std::to_string(number) + (isWhite ? ". " : "... ");
            }
            word += line[ply];
            if (column + word.size() + 1 > Width) {
                text += "\n ";
                column = 1;
            }
            text += " " + word;
            column += word.size() + 1;
        }
        text += "\n";
    }
    return text;
}

std::string JsonAnswer(const TableAnswer& answer) {
    std::string text = "\"nalimov\": ";
    if (!answer.mate) {
        text += "null";
    } else if (*answer.mate == 0) {
        text += R"({"result": "draw"})";
    } else {
        const int moves = *answer.mate > 0 ? *answer.mate : -*answer.mate - 1;
        text += std::string(R"({"result": ")") + (*answer.mate > 0 ? "win" : "loss") +
                R"(", "moves": )" + std::to_string(moves) + "}";
    }
    text += ", \"syzygy\": ";
    if (!answer.wdl) {
        return text + "null";
    }
    text += "{\"wdl\": " + std::to_string(*answer.wdl) + ", \"dtz\": ";
    text += answer.zeroing ? std::to_string(*answer.zeroing) : "null";
    return text + "}";
}

std::string ForScripts(const ShownPosition& position, const TableAnswer& answer,
                       const std::vector<JudgedMove>& moves, const std::vector<std::string>& line) {
    std::string text = "{\n  \"fen\": \"" + position.Fen() + "\",\n  \"ending\": \"" +
                       (position.ending == 0 ? "kk" : EndingOf(position.ending).name) +
                       "\",\n  \"turn\": \"" + position.SideName() + "\",\n  " +
                       JsonAnswer(answer) + ",\n  \"moves\": [";
    for (std::size_t place = 0; place < moves.size(); ++place) {
        text += std::string(place == 0 ? "\n" : ",\n") + R"(    {"move": ")" +
                moves[place].move.text + "\", " + JsonAnswer(moves[place].answer) + "}";
    }
    text += moves.empty() ? "],\n" : "\n  ],\n";
    text += "  \"line\": [";
    for (std::size_t ply = 0; ply < line.size(); ++ply) {
        text += (ply == 0 ? "\"" : ", \"") + line[ply] + "\"";
    }
    return text + "]\n}\n";
}

}  // namespace

std::string ShowPosition(const std::string& fen, const std::string& folder, bool asJson) {
    const ShownPosition position = ShownPosition::FromFen(fen);
    CTableLookup tables(folder);
    const TableAnswer answer = tables.Ask(position);
    const std::vector<JudgedMove> moves = JudgeMoves(position, tables);
    if (!answer.mate && !answer.wdl) {
        const std::string name = EndingOf(position.ending).name;
        if (!tables.Damaged().empty()) {
            throw CTableError(tables.Damaged().front() + " is damaged");
        }
        throw CTableError("no table in " + folder + " knows this position; it would be " + name);
    }
    const std::vector<std::string> line = MainLine(position, tables);
    return asJson ? ForScripts(position, answer, moves, line)
                  : ForPeople(position, answer, moves, line);
}

}  // namespace brenquil
