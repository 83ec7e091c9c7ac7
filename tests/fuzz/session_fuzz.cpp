// Whole sessions: any bytes as what a person or a front end sends, line by line, to a whole engine.
//
// An input is text. A line that begins with "@" names what the lines after it are:
//
//     @input       lines for the command loop; an input begins with these
//     @together    lines for the command loop that do not wait for a search to end
//     @ini         the ini file, read before the first line
//     @a.cmd @b.cmd @help.cmd @book.bin        files of these names in the working folder
//
// What would take long is made short before it is obeyed: searches get a limit of nodes, counts and
// sizes lose digits. Beyond what the sanitizers see, these things must hold: each `isready` has its
// one answer, each `go` its one end, the move of an unhurried search is legal and the position is
// as it was before, and every output line is one line.

#include "../support/open_engine.h"
#include "board/move_generator.h"
#include "board/position_text.h"
#include "interface/command_loop.h"
#include "interface/line_source.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"
#include "interface/program/program_info.h"
#include "private_folder.h"
#include "text/text.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

using namespace brenquil;

namespace {

constexpr int LargestNumberOfPasses = 80;
constexpr int LargestNumberOfSearches = 6;
constexpr int LargestNumberOfPerfts = 2;
constexpr std::string_view LimitOfASearch = "go nodes 120 ";
constexpr std::string_view NoBestMove = "No best move!";

constexpr std::array<std::string_view, 4> FileNames = {"a.cmd", "b.cmd", "help.cmd", "book.bin"};

[[noreturn]] void Fail(const std::string& reason, std::string_view line) {
    std::fprintf(stderr, "session: %s: %.*s\n", reason.c_str(), static_cast<int>(line.size()),
                 line.data());
    std::abort();
}

/// Counts what has come out.
class CCountingSink final : public ILineSink {
public:
    void Write(const std::string& line) override {
        if (line.find('\n') != line.size() - 1) {
            Fail("not one line", line);
        }
        const std::string_view text = std::string_view(line).substr(0, line.size() - 1);
        const std::lock_guard lock(mutex_);
        answers_ += text == "readyok";
        if (text.starts_with("bestmove ") || text == NoBestMove ||
            text == "info string " + std::string(NoBestMove)) {
            ++ends_;
            lastEnd_ = text;
            changed_.notify_all();
        }
    }

    [[nodiscard]] int Answers() {
        const std::lock_guard lock(mutex_);
        return answers_;
    }

    [[nodiscard]] int Ends() {
        const std::lock_guard lock(mutex_);
        return ends_;
    }

    /// Waits a little for the end of a search.
    /// @return whether there have been as many ends
    [[nodiscard]] bool WaitForEnds(int count) {
        constexpr auto Patience = std::chrono::milliseconds(10);
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, Patience, [&] { return ends_ >= count; });
    }

    /// The move of the last end; empty if there was none to play.
    [[nodiscard]] std::string LastMove() {
        const std::lock_guard lock(mutex_);
        const std::vector<std::string> words = Split(lastEnd_, ' ');
        return words.size() > 1 && words.front() == "bestmove" ? words[1] : std::string();
    }

private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int answers_ = 0;
    int ends_ = 0;
    std::string lastEnd_;
};

/// Whether a text is the name, in any notation, of a legal move.
bool NamesLegalMove(const CPosition& position, const std::string& text) {
    const auto copy = std::make_unique<CPosition>(position);
    MoveList list;
    CMoveGenerator(*copy).GenerateMoves(list, MoveKinds::All);
    for (const Move move : list) {
        for (const CastlingNotation notation :
             {CastlingNotation::KingTarget, CastlingNotation::KingTakesRook,
              CastlingNotation::Name}) {
            if (CPositionText::MoveToText(move, *copy, notation) == text && copy->MakeMove(move)) {
                return true;
            }
        }
    }
    return false;
}

std::string FenOf(CPosition& position) {
    return CPositionText(position).GetFen();
}

/// Leaves of each number its first digit, and that below a limit.
std::string WithSmallNumbers(std::string_view line, int limit) {
    std::string text;
    for (const char character : line) {
        const bool isDigit = character >= '0' && character <= '9';
        const bool follows = !text.empty() && text.back() >= '0' && text.back() <= '9';
        if (!isDigit) {
            text += character;
        } else if (!follows) {
            text += static_cast<char>('0' + (character - '0') % limit);
        }
    }
    return text;
}

/// A line that sets none of the numbers which cost memory or threads to much.
std::string WithSmallSettings(std::string_view line) {
    std::string plain(line);
    std::erase(plain, '\r');  // the readers of files drop them, also out of the middle of a word
    for (const std::string_view name : {"Hash", "NalimovCache", "Nalimov Cache", "Threads"}) {
        if (plain.find(name) != std::string::npos) {
            return WithSmallNumbers(line, name == "Threads" ? 3 : 10);
        }
    }
    return std::string(line);
}

/// The parts of an input.
struct Script {
    struct Line {
        std::string text;
        bool waits = true;
    };

    std::vector<Line> input;
    std::string ini;
    std::map<std::string, std::string> files;
};

Script ReadScript(std::string_view bytes) {
    Script script;
    std::string part = "input";
    std::istringstream lines{std::string(bytes)};
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with('@')) {
            part = line.substr(1);
        } else if (part == "ini") {
            script.ini += WithSmallSettings(line) + "\n";
        } else if (std::find(FileNames.begin(), FileNames.end(), part) != FileNames.end()) {
            script.files[part] += line + "\n";
        } else {
            script.input.push_back({line, part != "together"});
        }
    }
    return script;
}

/// One engine for all inputs, put back to its first state between them: to make one takes longer
/// than most sessions.
class CSession {
public:
    CSession() {
        engine_->protocol.logSink = AppendToLog;
        (void)SetOption(engine_->optionGroups, "Hash", "1");
        for (const COptionGroup* group : engine_->optionGroups) {
            for (const auto* options : {&group->uciOptions, &group->iniOptions}) {
                for (COption* option : *options) {
                    values_.emplace_back(option, option->value);
                }
            }
        }
        *firstPosition_ = engine_->master.position;
    }

    void Run(const Script& script) {
        Begin(script);
        for (const Script::Line& line : script.input) {
            if (!Obey(line.text, line.waits) || !ObeyPending(line.waits)) {
                break;
            }
        }
        End();
    }

private:
    void Begin(const Script& script) {
        passes_ = searches_ = perfts_ = 0;
        endsBefore_ = sink_.Ends();
        for (const auto& [name, bytes] : script.files) {
            WriteWhole(name, bytes);
            written_.push_back(name);
        }
        if (!script.ini.empty()) {
            WriteWhole(std::string(IniFileName), script.ini);
            LoadIni(engine_->optionGroups);
        }
    }

    /// What the batch files have brought.
    bool ObeyPending(bool waits) {
        auto& pending = engine_->protocol.pendingLines.lines;
        while (!pending.empty()) {
            const std::string text = pending.front().text;
            // Its echo could be taken for the end of a search.
            const std::string tame = text.find("best") == std::string::npos ? Tame(text) : "";
            pending.front().text = tame;
            std::istringstream nothing;
            if (!Pass(tame, nothing, waits)) {
                return false;
            }
        }
        return true;
    }

    /// A line of the input; the loop takes one carriage return off its end.
    bool Obey(std::string line, bool waits) {
        const bool hasReturn = line.ends_with('\r');
        if (hasReturn) {
            line.pop_back();
        }
        const std::string tame = Tame(line);
        std::istringstream input(tame + (hasReturn ? "\r\n" : "\n"));
        return Pass(tame, input, waits);
    }

    /// One pass of the command loop, and what must hold after it.
    bool Pass(const std::string& line, std::istringstream& input, bool waits) {
        if (++passes_ > LargestNumberOfPasses) {
            return false;
        }
        const std::vector<std::string> words = Split(line, ' ');
        const std::string word = words.empty() ? "" : ToLower(words.front());
        const bool isUci = engine_->protocol.IsUci();
        const int answers = sink_.Answers();
        CStreamSource source(input);
        if (!CCommandLoop(*engine_, source).Pass()) {
            return false;
        }
        if (isUci && sink_.Answers() != answers + (word == "isready" ? 1 : 0)) {
            Fail("answers to isready", line);
        }
        if (isUci && word == "go") {
            ++searches_;
            if (waits) {
                CheckSearch(line);
            }
        }
        return true;
    }

    /// Waits for the end of the search that has just been started. Meanwhile nobody may touch the
    /// position but the search, which leaves it as it was.
    void CheckSearch(const std::string& line) {
        const std::string fen = lastFen_;
        if (!sink_.WaitForEnds(endsBefore_ + searches_)) {
            engine_->master.EndSearch();  // `infinite`, for example, waits for a stop
        }
        engine_->master.WaitForSearch();
        if (sink_.Ends() != endsBefore_ + searches_) {
            Fail("ends of searches", line);
        }
        if (FenOf(engine_->master.position) != fen) {
            Fail("the position is another after the search", line);
        }
        const std::string move = sink_.LastMove();
        if (!move.empty() && !NamesLegalMove(engine_->master.position, move)) {
            Fail("illegal move " + move + " in " + fen, line);
        }
    }

    /// The line in a form that is obeyed in no time; empty for one that is not to be obeyed.
    std::string Tame(std::string_view line) {
        const std::vector<std::string> words = Split(line, ' ');
        const std::string word = words.empty() ? "" : ToLower(words.front());
        if (word.starts_with("test")) {
            return {};
        }
        if (word.starts_with("perft")) {
            return ++perfts_ > LargestNumberOfPerfts ? "" : WithSmallNumbers(line, 3);
        }
        if (word == "go") {
            if (searches_ >= LargestNumberOfSearches) {
                return {};
            }
            engine_->master.EndSearch();
            lastFen_ = FenOf(engine_->master.position);
            return std::string(LimitOfASearch) +
                   std::string(line.substr(line.find_first_not_of(' ') + 2));
        }
        return WithSmallSettings(line);
    }

    void End() {
        engine_->master.EndSearch();
        if (sink_.Ends() != endsBefore_ + searches_) {
            Fail("ends of searches", "at the end");
        }
        CProtocol& protocol = engine_->protocol;
        protocol.pendingLines.lines.clear();
        protocol.pendingLines.origin = nullptr;
        protocol.mode = CommandMode::Console;
        protocol.running = true;
        protocol.fileLetterCastling = false;
        for (const auto& [option, value] : values_) {
            option->SetValue(value);
        }
        engine_->master.position = *firstPosition_;
        if (searches_ > 0) {
            engine_->hashTable.Clear();
        }
        for (const std::string& name : written_) {
            std::remove(name.c_str());
        }
        written_.clear();
        std::remove(std::string(IniFileName).c_str());
        std::remove(std::string(LogFileName).c_str());
    }

    CCountingSink sink_;
    std::unique_ptr<test::COpenEngine> engine_ = std::make_unique<test::COpenEngine>(sink_);
    std::unique_ptr<CPosition> firstPosition_ = std::make_unique<CPosition>();
    std::vector<std::pair<COption*, std::string>> values_;
    std::vector<std::string> written_;
    std::string lastFen_;
    int passes_ = 0;
    int searches_ = 0;
    int perfts_ = 0;
    int endsBefore_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isReady = EnterPrivateFolder();
    // Never destroyed, like the engine of the program.
    static CSession& session = *std::make_unique<CSession>().release();
    if (isReady) {
        session.Run(ReadScript(AsText(data, size)));
    }
    return 0;
}
