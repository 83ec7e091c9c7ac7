#include "interface/program/batch_file.h"

#include "interface/program/program_info.h"
#include "text/file.h"
#include "text/text.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <vector>

namespace brenquil {

namespace {

constexpr char CommentMark = '#';

/// A line without its comment and outer blanks. A line that begins with the mark is all comment.
std::string CommandOf(std::string_view line) {
    if (line.starts_with(CommentMark)) {
        return {};
    }
    const std::vector<std::string> pieces = Split(line, CommentMark);
    return pieces.empty() ? std::string() : TrimBlanks(pieces.front());
}

}  // namespace

std::string ResolveBatchName(const std::string& name) {
    if (ToLower(name).find(BatchExtension) != std::string::npos && FileExists(name)) {
        return name;
    }
    std::string longer = name + std::string(BatchExtension);
    return FileExists(longer) ? longer : std::string();
}

void RunBatch(const std::string& name, CPendingLines& pending) {
    const std::string resolved = ResolveBatchName(name);
    const BatchChain& caller = pending.origin;
    if (caller && (pending.lines.size() >= MostLinesBeforeNestedBatch ||
                   std::find(caller->begin(), caller->end(), resolved) != caller->end())) {
        return;
    }
    CReadFile file;
    if (resolved.empty() || !file.Open(resolved)) {
        return;
    }
    auto chain = std::make_shared<std::vector<std::string>>();
    if (caller) {
        *chain = *caller;
    }
    chain->push_back(resolved);
    for (std::string line; file.ReadLine(line);) {
        std::string command = CommandOf(line);
        if (!command.empty()) {
            pending.lines.push_back({std::move(command), chain});
        }
    }
}

}  // namespace brenquil
