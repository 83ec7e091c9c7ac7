// The program: does what its arguments ask for. Without any it makes the engine, reads the ini
// file, prints the banner and obeys commands.

#include "interface/command_loop.h"
#include "interface/engine.h"
#include "interface/line_sink.h"
#include "interface/program/arguments.h"
#include "interface/program/banner.h"
#include "interface/program/bench.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"
#include "interface/program/program_info.h"
#include "interface/program/standard_input.h"
#include "platform/process.h"
#include "platform/standard_streams.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace brenquil;

[[noreturn]] void Converse(CFileSink& sink, CDialect dialect) {
    static CStandardInput& input = *std::make_unique<CStandardInput>(std::cin).release();
    static CEngine& engine = *std::make_unique<CEngine>(sink, dialect).release();
    const auto leaveIfAsked = [] {
        if (input.IsEndWaiting()) {
            EndProcess(0);
        }
    };
    sink.onLongWait = leaveIfAsked;
    engine.SetLongWait(leaveIfAsked);
    if (dialect.EndsWithItsInput()) {
        // After a client that has died nobody reads the output. One that has only said all that it
        // had to say still waits for the answer.
        engine.onLongWork = [] {
            if (!StandardOutputHasReader()) {
                EndProcess(0);
            }
        };
    }

    // The log can be switched on by the ini file, and then holds the banner as well.
    engine.protocol.logSink = AppendToLog;
    LoadIni(engine.Options());
    PrintBanner(engine.protocol);
    CCommandLoop(engine, input).Run();
    // A search may still be running and reading anything. So nothing is ever destroyed, neither
    // these objects nor those of the libraries.
    EndProcess(0);
}

/// Does what the arguments ask for, and returns the exit status.
int Obey(const Arguments& arguments, CFileSink& sink) {
    switch (arguments.action) {
    case Arguments::Action::Converse: Converse(sink, arguments.dialect);
    case Arguments::Action::Bench: RunBench(sink, arguments.bench, arguments.dialect); break;
    case Arguments::Action::Version: sink.Write(std::string(ProgramTitle) + "\n"); break;
    case Arguments::Action::Help: sink.Write(UsageText()); break;
    case Arguments::Action::Refuse:
        CFileSink(stderr).Write("brenquil: " + arguments.fault +
                                "\nbrenquil --help tells what it understands\n");
        return Arguments::StatusOfMisuse;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    UseBinaryStandardStreams();
    // Otherwise each read flushes the output first, and waits for a search that is stuck writing to
    // nobody.
    std::cin.tie(nullptr);
    static CFileSink& sink = *std::make_unique<CFileSink>(stdout).release();
    const std::vector<std::string> words(argv + std::min(argc, 1), argv + argc);
    // Without a session no search is left here, and the program ends in the normal way, in which a
    // profiled program writes its counts.
    return Obey(ParseArguments(argc > 0 ? argv[0] : "", words), sink);
}
