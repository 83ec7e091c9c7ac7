#include "interface/uci/uci_commands.h"

#include "interface/console/perft.h"
#include "interface/move_notation.h"
#include "interface/program/program_info.h"
#include "interface/uci/go_parser.h"
#include "interface/uci/strict_go.h"
#include "text/text.h"

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <utility>

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

namespace {

/// The option of that name in any letter case, offered over UCI or in the ini file; null if there
/// is none.
COption* FindOption(const OptionGroupList& groups, std::string_view name) {
    const std::string wanted = ToLower(name);
    const auto isWanted = [&wanted](const COption* option) {
        return !wanted.empty() &&
               (ToLower(option->uciName) == wanted || ToLower(option->iniName) == wanted);
    };
    for (const COptionGroup* group : groups) {
        for (const auto* options : {&group->uciOptions, &group->iniOptions}) {
            const auto found = std::find_if(options->begin(), options->end(), isWanted);
            if (found != options->end()) {
                return *found;
            }
        }
    }
    return nullptr;
}

/// "name" and "value" count as words here, the first of each; they may occur inside an option's
/// name.
std::pair<std::string, std::string> NameAndValue(std::string_view line) {
    const std::string lower = ToLower(line);
    const std::size_t name = lower.find(" name ");
    if (name == std::string::npos) {
        return {};
    }
    const std::size_t start = name + std::string_view(" name ").size();
    const std::size_t value = lower.find(" value", start - 1);
    const std::size_t end = std::min(value, line.size());
    const std::size_t valueEnd = value + std::string_view(" value").size();
    return {TrimBlanks(line.substr(start, std::max(end, start) - start)),
            value == std::string::npos ? "" : TrimBlanks(line.substr(valueEnd))};
}

/// Sets a value that the option advertises, and reports what it cannot take.
void SetOptionStrictly(CEngine& engine, std::string_view line) {
    const auto [name, text] = NameAndValue(line);
    CProtocol& protocol = engine.protocol;
    COption* const option = FindOption(engine.Options(), name);
    if (option == nullptr) {
        protocol.PrintInfoString("unknown option: " + name);
        return;
    }
    const std::optional<std::string> value = option->Fitting(text);
    if (!value) {
        protocol.PrintInfoString("no value of " + option->uciName + ": " + text);
        return;
    }
    if (*value != text && IsNumeric(text)) {
        protocol.PrintInfoString(option->uciName + " is " + *value + ", not " + text);
    }
    option->SetValue(*value);
    if (engine.Output().debug.enabled) {
        protocol.PrintInfoString(option->uciName + " = " + *value);
    }
}

/// `go` as match tools and scripts mean it.
void GoStrictly(CEngine& engine, std::string_view line) {
    const StrictGo go = ParseStrictGo(
        line, [&engine](std::string_view word) { return engine.TextToLegalMove(word); },
        engine.MoveOverhead());
    for (const std::string& remark : go.remarks) {
        engine.protocol.PrintInfoString(remark);
    }
    if (go.perftDepth) {
        const auto perft = std::make_unique<CPerft>(engine.protocol.Sink(),
                                                    LineNotation(engine.protocol, engine.Output()));
        perft->position = engine.Position();
        perft->onLongWork = engine.onLongWork;
        perft->PerftSplit(*go.perftDepth);
        return;
    }
    engine.Go(go.limits);
}

}  // namespace

void HandleSetOption(CEngine& engine, std::string_view line) {
    if (engine.protocol.dialect.ChecksOptions()) {
        SetOptionStrictly(engine, line);
        return;
    }
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
    if (engine.protocol.dialect.ReadsGoWordByWord()) {
        GoStrictly(engine, line);
        return;
    }
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
