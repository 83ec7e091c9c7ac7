#include "interface/uci/uci_commands.h"

#include "interface/program/program_info.h"
#include "interface/uci/go_parser.h"
#include "text/text.h"

#include <string>

namespace brenquil {

void HandleUci(CEngine& engine) {
    CProtocol& protocol = engine.protocol;
    protocol.mode = CommandMode::Uci;
    protocol.PrintLine("id name " + std::string(ProgramTitle));
    protocol.PrintLine("id author " + std::string(ProgramAuthor));
    for (const COptionGroup* group : engine.Options()) {
        for (const COption* option : group->uciOptions) {
            protocol.PrintLine(option->UciLine());
        }
    }
    protocol.PrintLine("uciok");
}

void HandleSetOption(CEngine& engine, std::string_view line) {
    const std::string name = ValueOf(line, "name", "value");
    const std::string value = ValueOf(line, "value", "name");
    const bool known = engine.SetOption(name, value);
    if (!engine.Output().debug.enabled) {
        return;
    }
    engine.protocol.PrintInfoString(known ? name + " = " + value : "unknown option: " + name);
}

void HandlePosition(CEngine& engine, std::string_view line) {
    engine.SetPosition(ValueOf(line, "fen", "moves"));
    for (const std::string& word : Split(ValueOf(line, "moves", "fen"), ' ')) {
        engine.PlayMoveText(word);
    }
}

void HandleGo(CEngine& engine, std::string_view line) {
    engine.Go(ParseGo(line, engine.Position(), engine.Output().chess960.enabled));
}

void HandleDebug(CEngine& engine, std::string_view line) {
    const bool isOn = ValueOf(line, "debug") == "on";
    engine.SetOption("Debug", isOn ? "true" : "false");
}

void HandleNewGame(CEngine& engine) {
    engine.NewGame();
}

}  // namespace brenquil
