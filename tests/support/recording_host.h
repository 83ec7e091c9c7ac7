// A host that writes down what book, tables and memory ask of it.
#pragma once

#include "bases/host.h"

#include <string>
#include <string_view>
#include <vector>

namespace brenquil::test {

/// Fails like the engine.
class CRecordingHost final : public IHost {
public:
    void Print(std::string_view message) override { printed.emplace_back(message); }

    void PrintBare(std::string_view line) override { bareLines.emplace_back(line); }

    void EndSearch() override { ++searchesEnded; }

    std::vector<std::string> printed;
    std::vector<std::string> bareLines;
    int searchesEnded = 0;
};

}  // namespace brenquil::test
