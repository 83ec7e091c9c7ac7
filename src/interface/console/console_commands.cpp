#include "interface/console/console_commands.h"

#include "board/position_text.h"
#include "board/static_exchange.h"
#include "interface/command_loop.h"
#include "interface/console/cpu_report.h"
#include "interface/console/help_text.h"
#include "interface/console/perft.h"
#include "interface/console/self_test.h"
#include "interface/move_notation.h"
#include "interface/program/batch_file.h"
#include "interface/program/ini_file.h"
#include "interface/uci/uci_commands.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brenquil {

namespace {

constexpr int Ranks = 8;
constexpr int Files = 8;

void Undo(CEngine& engine, std::string_view) {
    engine.TakeBack();
}

void New(CEngine& engine, std::string_view) {
    HandleNewGame(engine);
}

void Help(CEngine& engine, std::string_view) {
    for (const std::string_view line : HelpText) {
        engine.protocol.PrintLine(line);
    }
}

/// test [-960] [-m] [-b] [-e] [-h]: without any of the last four, all of them. The figures, which
/// take minutes, must not mix with the lines of a search, so that is ended first.
void Test(CEngine& engine, std::string_view line) {
    engine.EndSearch();
    const std::vector<std::string> words = Split(ValueOf(line, "test"), ' ');
    const auto has = [&words](std::string_view word) {
        return std::find(words.begin(), words.end(), word) != words.end();
    };
    const bool all = !has("-m") && !has("-b") && !has("-e") && !has("-h");
    const auto test = std::make_unique<CSelfTest>(
        engine.protocol.Sink(),
        [&engine](const CPosition& position) { return engine.Evaluate(position); }, has("-960"));
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

/// batch <file>: the name is the whole rest of the line and may hold blanks.
void Batch(CEngine& engine, std::string_view line) {
    RunBatch(ValueOf(line, "batch"), engine.protocol.pendingLines);
}

/// perft <n> [-d]: the last number wins, "-d" stands anywhere.
void Perft(CEngine& engine, std::string_view line) {
    int depth = 0;
    bool divided = false;
    for (const std::string& word : Split(ValueOf(line, "perft"), ' ')) {
        if (IsNumeric(word)) {
            depth = ToInteger(word);
        }
        divided = divided || word == "-d";
    }
    engine.EndSearch();
    if (depth == 0) {
        return;
    }
    const auto perft =
        std::make_unique<CPerft>(engine.protocol.Sink(), ListNotation(engine.Output()));
    CPositionText(perft->position).SetFen(engine.Fen());
    if (divided) {
        perft->PerftDivide(depth);
    } else {
        perft->Perft(depth);
    }
}

/// Eight rows between two empty lines, the top rank first. `TextOf` gives the text of a square.
template <class TextOf>
void Draw(CLineOutput& output, TextOf textOf) {
    output.PrintLine("");
    for (int rank = Ranks - 1; rank >= 0; --rank) {
        std::string row;
        for (int file = 0; file < Files; ++file) {
            row += textOf(MakeSquare(file, rank));
        }
        output.PrintLine(row);
    }
    output.PrintLine("");
}

/// print <num>: draws a number as a bitboard. A sign or point is taken for a digit of its own.
void Print(CEngine& engine, std::string_view line) {
    const std::string digits = ValueOf(line, "print");
    if (!IsNumeric(digits)) {
        return;
    }
    Bitboard number = 0;
    for (const char digit : digits) {
        number = number * 10 + (digit - '0');
    }
    Draw(engine.protocol,
         [number](Square square) { return (number & BitOf(square)) != 0 ? "1" : "."; });
}

void Board(CEngine& engine, std::string_view) {
    const CPosition& position = engine.Position();
    Draw(engine.protocol, [&position](Square square) {
        const Piece piece = position.PieceOn(square);
        return piece == PieceNone ? "." : PieceToText(piece);
    });
}

void Moves(CEngine& engine, std::string_view) {
    for (const std::string& row : engine.ListMoves()) {
        engine.protocol.PrintLine(row);
    }
}

/// fen [<fen>]: prints the position, or sets it and prints nothing.
void Fen(CEngine& engine, std::string_view line) {
    const std::string fen = ValueOf(line, "fen");
    if (fen.empty()) {
        engine.protocol.PrintLine(engine.Fen());
    } else {
        engine.SetPosition(fen);
    }
}

void Flip(CEngine& engine, std::string_view) {
    engine.Flip();
}

void Eval(CEngine& engine, std::string_view) {
    engine.protocol.PrintLine("eval: " + std::to_string(engine.Evaluate(engine.Position())));
}

void See(CEngine& engine, std::string_view line) {
    const CPosition& position = engine.Position();
    const Move move = engine.TextToMove(ValueOf(line, "see"));
    if (move.IsNone()) {
        engine.protocol.PrintLine("invalid move!");
        return;
    }
    engine.protocol.PrintLine("score: " + std::to_string(StaticExchange(position, move)));
}

void Ini(CEngine& engine, std::string_view) {
    WriteIni(engine.Options(), engine.protocol);
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

struct ConsoleCommand {
    std::string_view word;
    void (*handler)(CEngine& engine, std::string_view line);
};

constexpr std::array Commands{
    ConsoleCommand{"undo", Undo},   ConsoleCommand{"new", New},     ConsoleCommand{"help", Help},
    ConsoleCommand{"test", Test},   ConsoleCommand{"batch", Batch}, ConsoleCommand{"perft", Perft},
    ConsoleCommand{"print", Print}, ConsoleCommand{"board", Board}, ConsoleCommand{"moves", Moves},
    ConsoleCommand{"fen", Fen},     ConsoleCommand{"flip", Flip},   ConsoleCommand{"eval", Eval},
    ConsoleCommand{"see", See},     ConsoleCommand{"ini", Ini},     ConsoleCommand{"cpu", Cpu},
};

/// Plays the line if the whole of it is a move here. A move outranks every command word.
bool PlayIfMove(CEngine& engine, std::string_view line) {
    if (!CPositionText::IsMoveTextForm(line) || engine.TextToMove(line).IsNone()) {
        return false;
    }
    engine.PlayMoveText(line);
    return true;
}

}  // namespace

void DispatchConsole(CEngine& engine, std::string_view word, std::string_view line) {
    assert(word == CommandWord(line));
    if (PlayIfMove(engine, line)) {
        return;
    }
    // The word finds the file, but the whole line counts as its name: with further words nothing
    // runs.
    if (!ResolveBatchName(std::string(word)).empty()) {
        RunBatch(std::string(line), engine.protocol.pendingLines);
        return;
    }
    for (const ConsoleCommand& command : Commands) {
        if (command.word == word) {
            command.handler(engine, line);
            return;
        }
    }
}

}  // namespace brenquil
