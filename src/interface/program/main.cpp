// The program: makes the engine, reads the ini file, prints the banner and obeys commands, or runs
// the bench.

#include "interface/command_loop.h"
#include "interface/engine.h"
#include "interface/line_source.h"
#include "interface/program/banner.h"
#include "interface/program/bench.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"
#include "platform/standard_streams.h"
#include "text/text.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <string_view>

namespace {

using namespace brenquil;

/// brenquil bench [depth]
int Bench(ILineSink& sink, std::string_view depthText) {
    const std::int32_t depth = ToInteger(depthText);
    RunBench(sink, depth > 0 ? depth : BenchDepth);
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    UseBinaryStandardStreams();
    // Neither object is ever destroyed: a search that is still running when the program ends goes
    // on looking at them to its last instruction.
    static CFileSink& sink = *std::make_unique<CFileSink>(stdout).release();
    if (argc > 1 && std::string_view(argv[1]) == "bench") {
        return Bench(sink, argc > 2 ? argv[2] : "");
    }
    static CEngine& engine = *std::make_unique<CEngine>(sink).release();

    // The log can be switched on by the ini file, and then holds the banner as well.
    engine.protocol.logSink = AppendToLog;
    LoadIni(engine.Options());
    PrintBanner(engine.protocol);
    CStreamSource input(std::cin);
    CCommandLoop(engine, input).Run();
    return 0;
}
