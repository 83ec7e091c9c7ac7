#include "interface/console/console_commands.h"

#include "board/position_text.h"
#include "board/static_exchange.h"
#include "interface/console/cpu_report.h"
#include "interface/console/help_text.h"
#include "interface/console/move_listing.h"
#include "interface/console/perft.h"
#include "interface/console/self_test.h"
#include "interface/move_notation.h"
#include "interface/program/batch_file.h"
#include "interface/program/ini_file.h"
#include "interface/uci/uci_commands.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brenquil {

namespace {

constexpr int Ranks = 8;
constexpr int Files = 8;

/// Takes back the move of the last record. After a FEN with a later move number that is a record
/// which no move of this game wrote: the position knows and stays as it is. A number beyond the
/// undo stack has no record at all.
void Undo(CEngine& engine, std::string_view) {
    CPosition& position = engine.master.position;
    if (position.ply > 1 && position.ply <= CPosition::UndoCapacity) {
        position.UndoMove(position.undo[position.ply - 1].move);
    }
}

void New(CEngine& engine, std::string_view) {
    HandleNewGame(engine);
}

void Help(CEngine& engine, std::string_view) {
    for (const std::string_view line : HelpText) {
        engine.protocol.PrintLine(line);
    }
}

/// test [-960] [-m] [-b] [-e] [-h]: without a choice among the last four, all of them.
void Test(CEngine& engine, std::string_view line) {
    const std::vector<std::string> words = Split(ValueOf(line, "test"), ' ');
    const auto has = [&words](std::string_view word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    const bool all = !has("-m") && !has("-b") && !has("-e") && !has("-h");
    const auto test = std::make_unique<CSelfTest>(
        engine.sink, [&engine](const CPosition& position) { return engine.Evaluate(position); },
        has("-960"));
    if (all || has("-m")) {
        test->TestMoveGeneration();
    }
    if (all || has("-b")) {
        test->TestBoard();
    }
    if (all || has("-e")) {
        test->TestEvaluation();
    }
    if (all || has("-h")) {
        test->TestHash();
    }
}

/// batch <file>: the name is all the rest of the line and may hold blanks.
void Batch(CEngine& engine, std::string_view line) {
    RunBatch(ValueOf(line, "batch"), engine.protocol);
}

/// perft <n> [-d]: the last number wins, "-d" stands anywhere.
void Perft(CEngine& engine, std::string_view line) {
    std::int32_t depth = 0;
    bool divided = false;
    for (const std::string& word : Split(ValueOf(line, "perft"), ' ')) {
        if (IsNumeric(word)) {
            depth = ToInteger(word);
        }
        divided = divided || word == "-d";
    }
    if (depth == 0) {
        return;
    }
    const auto perft = std::make_unique<CPerft>(engine.sink, ListNotation(engine.outputOptions));
    CPositionText(perft->position).SetFen(CPositionText(engine.master.position).GetFen());
    if (divided) {
        perft->PerftDivide(depth);
    } else {
        perft->Perft(depth);
    }
}

/// Eight rows between two empty lines, the top rank first. `TextOf` gives the text of a square.
template <class TextOf>
void Draw(CProtocol& protocol, TextOf textOf) {
    protocol.PrintLine("");
    for (int rank = Ranks - 1; rank >= 0; --rank) {
        std::string row;
        for (int file = 0; file < Files; ++file) {
            row += textOf(MakeSquare(file, rank));
        }
        protocol.PrintLine(row);
    }
    protocol.PrintLine("");
}

/// print <num>: draws a number as a bitboard. A sign or point is taken for a digit of its own.
void Print(CEngine& engine, std::string_view line) {
    const std::string digits = ValueOf(line, "print");
    if (!IsNumeric(digits)) {
        return;
    }
    Bitboard number = 0;
    for (const char digit : digits) {
        number = number * 10 + static_cast<Bitboard>(digit - '0');
    }
    Draw(engine.protocol,
         [number](Square square) { return (number & BitOf(square)) != 0 ? "1" : "."; });
}

void Board(CEngine& engine, std::string_view) {
    const CPosition& position = engine.master.position;
    Draw(engine.protocol, [&position](Square square) {
        const Piece piece = position.PieceOn(square);
        return piece == PieceNone ? "." : PieceToText(piece);
    });
}

void Moves(CEngine& engine, std::string_view) {
    for (const std::string& row : ListMoves(engine.bases, engine.master.position, true,
                                            ListNotation(engine.outputOptions))) {
        engine.protocol.PrintLine(row);
    }
}

/// fen [<fen>]: prints the position, or sets it and prints nothing.
void Fen(CEngine& engine, std::string_view line) {
    const std::string fen = ValueOf(line, "fen");
    if (fen.empty()) {
        engine.protocol.PrintLine(CPositionText(engine.master.position).GetFen());
    } else {
        SetGamePosition(engine, fen);
    }
}

void Flip(CEngine& engine, std::string_view) {
    CPositionText text(engine.master.position);
    text.SetFen(CPositionText::FlipFen(text.GetFen()));
}

void Eval(CEngine& engine, std::string_view) {
    engine.protocol.PrintLine("eval: " + std::to_string(engine.Evaluate(engine.master.position)));
}

void See(CEngine& engine, std::string_view line) {
    const CPosition& position = engine.master.position;
    const Move move = CPositionText::TextToMove(ValueOf(line, "see"), position,
                                                engine.outputOptions.chess960.enabled);
    if (move.IsNone()) {
        engine.protocol.PrintLine("invalid move!");
        return;
    }
    engine.protocol.PrintLine("score: " + std::to_string(StaticExchange(position, move)));
}

void Ini(CEngine& engine, std::string_view) {
    WriteIni(engine.optionGroups, engine.protocol);
}

/// cpu [<leaf> <register> <bit>]
void Cpu(CEngine& engine, std::string_view line) {
    const std::string words = ValueOf(line, "cpu");
    if (words.empty()) {
        for (const std::string& row : CpuReport()) {
            engine.protocol.PrintLine(row);
        }
    } else if (const std::optional<std::string> flag = CpuFlag(words)) {
        engine.protocol.PrintLine(*flag);
    }
}

/// Whether a command touches what a running search reads; the search is ended before it then.
enum class Search { Ends, GoesOn };

struct ConsoleCommand {
    std::string_view word;
    void (*handler)(CEngine& engine, std::string_view line);
    Search search;
};

// clang-format off
constexpr std::array Commands{
    ConsoleCommand{"undo", Undo, Search::Ends},
    ConsoleCommand{"new", New, Search::Ends},
    ConsoleCommand{"help", Help, Search::GoesOn},
    ConsoleCommand{"test", Test, Search::Ends},
    ConsoleCommand{"batch", Batch, Search::GoesOn},
    ConsoleCommand{"perft", Perft, Search::Ends},
    ConsoleCommand{"print", Print, Search::GoesOn},
    ConsoleCommand{"board", Board, Search::Ends},
    ConsoleCommand{"moves", Moves, Search::Ends},
    ConsoleCommand{"fen", Fen, Search::Ends},
    ConsoleCommand{"flip", Flip, Search::Ends},
    ConsoleCommand{"eval", Eval, Search::Ends},
    ConsoleCommand{"see", See, Search::Ends},
    ConsoleCommand{"ini", Ini, Search::GoesOn},
    ConsoleCommand{"cpu", Cpu, Search::GoesOn},
};

// clang-format on

/// Plays the line if the whole of it is a move here. A move outranks every command word.
bool PlayIfMove(CEngine& engine, std::string_view line) {
    if (!CPositionText::IsMoveTextForm(line)) {
        return false;
    }
    engine.master.EndSearch();
    const Move move = CPositionText::TextToMove(line, engine.master.position,
                                                engine.outputOptions.chess960.enabled);
    if (move.IsNone()) {
        return false;
    }
    PlayMoveText(engine, line);
    return true;
}

}  // namespace

void DispatchConsole(CEngine& engine, std::string_view word, std::string_view line) {
    if (PlayIfMove(engine, line)) {
        return;
    }
    // The word finds the file, but the whole line is its name: with further words nothing runs.
    if (!ResolveBatchName(std::string(word)).empty()) {
        RunBatch(std::string(line), engine.protocol);
        return;
    }
    for (const ConsoleCommand& command : Commands) {
        if (command.word == word) {
            if (command.search == Search::Ends) {
                engine.master.EndSearch();
            }
            command.handler(engine, line);
            return;
        }
    }
}

}  // namespace brenquil
