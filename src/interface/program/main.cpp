// The program: makes the engine, reads the ini file, prints the banner and obeys commands, or runs
// the bench.

#include "interface/command_loop.h"
#include "interface/engine.h"
#include "interface/line_sink.h"
#include "interface/program/banner.h"
#include "interface/program/bench.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"
#include "interface/program/standard_input.h"
#include "platform/process.h"
#include "platform/standard_streams.h"
#include "text/text.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string_view>

namespace {

using namespace brenquil;

/// brenquil bench [depth]
void Bench(ILineSink& sink, std::string_view depthText) {
    const std::int32_t depth = ToInteger(depthText);
    RunBench(sink, depth > 0 ? depth : BenchDepth);
}

void Converse(CFileSink& sink) {
    static CStandardInput& input = *std::make_unique<CStandardInput>(std::cin).release();
    static CEngine& engine = *std::make_unique<CEngine>(sink).release();
    const auto leaveIfAsked = [] {
        if (input.IsEndWaiting()) {
            EndProcess(0);
        }
    };
    sink.onLongWait = leaveIfAsked;
    engine.SetLongWait(leaveIfAsked);

    // The log can be switched on by the ini file, and then holds the banner as well.
    engine.protocol.logSink = AppendToLog;
    LoadIni(engine.Options());
    PrintBanner(engine.protocol);
    CCommandLoop(engine, input).Run();
}

}  // namespace

int main(int argc, char* argv[]) {
    UseBinaryStandardStreams();
    // Otherwise each read flushes the output first, and waits for a search that writes to nobody.
    std::cin.tie(nullptr);
    static CFileSink& sink = *std::make_unique<CFileSink>(stdout).release();
    if (argc > 1 && std::string_view(argv[1]) == "bench") {
        Bench(sink, argc > 2 ? argv[2] : "");
    } else {
        Converse(sink);
    }
    // A search may still be running, and goes on looking at everything to its last instruction.
    // So nothing is ever destroyed, neither the two objects above nor those of the libraries.
    EndProcess(0);
}
