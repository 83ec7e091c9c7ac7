#include "interface/program/bench.h"

#include "interface/engine.h"
#include "interface/program/bench_positions.h"
#include "interface/uci/uci_text.h"
#include "platform/clock.h"

#include <cassert>
#include <memory>
#include <string>

namespace brenquil {

namespace {

/// Swallows the lines of the searches themselves.
class CSilentSink final : public ILineSink {
public:
    void Write(const std::string&) override {}
};

std::uint64_t SearchPosition(CEngine& engine, std::string_view fen, int depth) {
    engine.NewGame();
    engine.SetPosition(fen);
    SearchLimits limits;
    limits.depth = depth;
    engine.Go(limits);
    engine.WaitForSearch();
    return engine.Nodes();
}

}  // namespace

std::uint64_t RunBench(ILineSink& sink, const BenchSettings& settings, CDialect dialect) {
    assert(settings.depth >= 1 && settings.depth <= DeepestIteration);
    assert(settings.threads >= 1 && settings.hash >= 0);
    CSilentSink silence;
    const auto engine = std::make_unique<CEngine>(silence, dialect);
    engine->SetOption("Hash", std::to_string(settings.hash));
    engine->SetOption("Threads", std::to_string(settings.threads));
    CLineOutput report(sink);

    std::uint64_t nodes = 0;
    std::uint32_t milliseconds = 0;
    for (const std::string_view fen : BenchPositions) {
        const std::uint32_t start = TickCount();
        const std::uint64_t positionNodes = SearchPosition(*engine, fen, settings.depth);
        milliseconds += TickCount() - start;
        nodes += positionNodes;
        report.PrintLine(std::to_string(positionNodes) + "  " + std::string(fen));
    }

    report.PrintLine("nodes: " + std::to_string(nodes));
    report.PrintLine("time:  " + SecondsText(milliseconds));
    report.PrintLine(std::to_string(nodes) + " nodes " +
                     std::to_string(NodesPerSecond(nodes, milliseconds)) + " nps");
    return nodes;
}

}  // namespace brenquil
