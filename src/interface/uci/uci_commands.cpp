#include "interface/uci/uci_commands.h"

#include "board/position_text.h"
#include "interface/program/program_info.h"
#include "interface/uci/go_parser.h"
#include "text/text.h"

#include <string>
#include <vector>

namespace brenquil {

namespace {

constexpr std::size_t CastlingField = 2;  ///< counted from 0 among the fields of a FEN

}  // namespace

void HandleUci(CEngine& engine) {
    CProtocol& protocol = engine.protocol;
    protocol.mode = CommandMode::Uci;
    protocol.PrintLine("id name " + std::string(ProgramTitle));
    protocol.PrintLine("id author " + std::string(ProgramAuthor));
    for (const COptionGroup* group : engine.optionGroups) {
        for (const COption* option : group->uciOptions) {
            protocol.PrintLine(option->UciLine());
        }
    }
    protocol.PrintLine("uciok");
}

void HandleSetOption(CEngine& engine, std::string_view line) {
    const std::string name = ValueOf(line, "name", "value");
    const std::string value = ValueOf(line, "value", "name");
    const bool known = SetOption(engine.optionGroups, name, value);
    if (!engine.outputOptions.debug.enabled) {
        return;
    }
    engine.protocol.PrintInfoString(known ? name + " = " + value : "unknown option: " + name);
}

void HandlePosition(CEngine& engine, std::string_view line) {
    SetGamePosition(engine, ValueOf(line, "fen", "moves"));
    for (const std::string& word : Split(ValueOf(line, "moves", "fen"), ' ')) {
        PlayMoveText(engine, word);
    }
}

void HandleGo(CEngine& engine, std::string_view line) {
    engine.master.EndSearch();
    const SearchLimits limits =
        ParseGo(line, engine.master.position, engine.outputOptions.chess960.enabled);
    if (!engine.master.Start(limits)) {
        engine.protocol.PrintInfoString("The system gives no thread for the search");
    }
}

void HandleDebug(CEngine& engine, std::string_view line) {
    const bool isOn = ValueOf(line, "debug") == "on";
    SetOption(engine.optionGroups, "Debug", isOn ? "true" : "false");
}

void HandleNewGame(CEngine& engine) {
    SetGamePosition(engine, "");
    engine.hashTable.Clear();
}

void SetGamePosition(CEngine& engine, std::string_view fen) {
    engine.master.EndSearch();
    CPositionText(engine.master.position).SetFen(fen);
    engine.protocol.fileLetterCastling = HasFileLetterCastling(fen);
}

void PlayMoveText(CEngine& engine, std::string_view word) {
    engine.master.EndSearch();
    CPosition& position = engine.master.position;
    const Move move =
        CPositionText::TextToMove(word, position, engine.outputOptions.chess960.enabled);
    if (move.IsNone() || !position.MakeMove(move)) {
        engine.protocol.PrintInfoString("Illegal move: " + std::string(word));
    }
}

bool HasFileLetterCastling(std::string_view fen) {
    constexpr std::string_view FileLetters = "ABCDEFGHabcdefgh";
    const std::vector<std::string> fields = Split(fen, ' ');
    return fields.size() > CastlingField &&
           fields[CastlingField].find_first_of(FileLetters) != std::string::npos;
}

}  // namespace brenquil
