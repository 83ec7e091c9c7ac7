// The program for browsers and Node: the engine as a module that is given lines and gives lines.
//
// The host makes the module, calls brenquil_start once and then brenquil_line for each line of
// input; output goes to the functions that host.js declares. With threads the reading loop is a
// thread that sleeps until a line comes. Without, brenquil_line obeys the line before it returns,
// and the search runs from the host's event loop.

#include "interface/command_loop.h"
#include "interface/dialect.h"
#include "interface/engine.h"
#include "interface/line_source.h"
#include "interface/program/banner.h"
#include "interface/program/bench.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"
#include "platform/process.h"

#include <condition_variable>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <emscripten.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

extern "C" {
// Takes over the text, which is freed there.
void brenquil_output(char* line);
}

namespace {

using namespace brenquil;

#if defined(__EMSCRIPTEN_PTHREADS__)
constexpr bool HasThreads = true;
#else
constexpr bool HasThreads = false;
#endif

/// Gives every line to the host.
class CHostSink final : public ILineSink {
public:
    void Write(const std::string& line) override {
        const std::size_t length = line.size() - 1;  // the host wants no line feed
        auto* const copy = static_cast<char*>(std::malloc(length + 1));
        if (copy == nullptr) {
            return;
        }
        std::memcpy(copy, line.data(), length);
        copy[length] = '\0';
        brenquil_output(copy);
    }
};

/// Lines of input that wait to be read. Any thread may push, one reads. With threads the reader
/// sleeps until there is a line.
class CLineQueue final : public ILineSource {
public:
    void Push(std::string line) {
        const std::lock_guard lock(mutex_);
        lines_.push_back(std::move(line));
        arrived_.notify_one();
    }

    [[nodiscard]] std::optional<std::string> TakeLine() override {
        std::unique_lock lock(mutex_);
        if (HasThreads) {
            arrived_.wait(lock, [this] { return !lines_.empty(); });
        }
        if (lines_.empty()) {
            return std::nullopt;
        }
        std::string line = std::move(lines_.front());
        lines_.pop_front();
        return line;
    }

    [[nodiscard]] bool HasEnded() const override { return false; }

    [[nodiscard]] bool IsEmpty() {
        const std::lock_guard lock(mutex_);
        return lines_.empty();
    }

private:
    std::mutex mutex_;
    std::condition_variable arrived_;
    std::deque<std::string> lines_;
};

/// The program's objects. Never destroyed: a search that is still running reads them.
struct Program {
    explicit Program(CDialect dialect) : engine(sink, dialect) {}

    CHostSink sink;
    CEngine engine;
    CLineQueue input;
    CCommandLoop loop{engine, input};
};

void Begin(Program& program) {
    program.engine.protocol.logSink = AppendToLog;
    LoadIni(program.engine.Options());
    PrintBanner(program.engine.protocol);
}

/// Obeys the lines that there are, and those that they bring; for a host without threads.
void ObeyWaitingLines(Program& program) {
    while (!program.input.IsEmpty() || !program.engine.protocol.pendingLines.lines.empty()) {
        if (!program.loop.Pass()) {
            EndProcess(0);
        }
    }
}

Program* program = nullptr;

}  // namespace

extern "C" {

/// Makes the engine and prints its banner. Called once, first. `strict` is the dialect of
/// --strict-uci.
EMSCRIPTEN_KEEPALIVE void brenquil_start(bool strict) {
    const CDialect dialect = strict ? CDialect::Strict() : CDialect();
    program = std::make_unique<Program>(dialect).release();
    if (HasThreads) {
        std::thread([] {
            Begin(*program);
            program->loop.Run();
            EndProcess(0);
        }).detach();
    } else {
        Begin(*program);
    }
}

/// Takes one line of input, without its line feed.
EMSCRIPTEN_KEEPALIVE void brenquil_line(const char* line) {
    program->input.Push(line);
    if (!HasThreads) {
        ObeyWaitingLines(*program);
    }
}

/// Runs the bench instead of an engine; `depth` 0 is the usual one. Without threads it returns when
/// the bench has ended.
EMSCRIPTEN_KEEPALIVE void brenquil_bench(int depth) {
    const auto run = [depth] {
        CHostSink sink;
        BenchSettings settings;
        settings.depth = depth > 0 ? depth : settings.depth;
        RunBench(sink, settings);
        EndProcess(0);
    };
    if (HasThreads) {
        std::thread(run).detach();
    } else {
        run();
    }
}
}
