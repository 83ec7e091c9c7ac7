#include "tables/program.h"

#include "platform/file_changes.h"
#include "platform/processor.h"
#include "tables/command_words.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_check.h"
#include "tables/table_error.h"
#include "tables/table_file.h"
#include "tables/table_maker.h"
#include "tables/table_show.h"
#include "tables/table_statistics.h"
#include "tables/workers.h"

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string_view>

namespace brenquil {

namespace {

constexpr int Failure = 1;
constexpr int Misuse = 2;
constexpr int Interrupted = 130;

constexpr std::uint64_t DefaultMemory = std::uint64_t{4} << 30U;

constexpr const char* Usage =
    R"(usage: brenquil-tables make nalimov|syzygy WHAT... DIR    make tables
       brenquil-tables check [WHAT...] DIR               hold every value against the rules
       brenquil-tables show 'FEN' DIR                    what the tables know of a position
       brenquil-tables statistics DIR                    counts, longest mates
       brenquil-tables [COMMAND] --help | --version

WHAT is 3, 4 or 5, for all endings of up to that many men, or names of endings such as kqkr.
What an ending can turn into is made with it.

  --threads N     work on N threads (default: all that the machine has)
  --memory N      use up to N gibibytes, or 512M for mebibytes (default: 4)
  --force         make: make again what is there
  --plain         make nalimov: write plain files, not compressed ones
  --quiet         make, check: print no progress
  --json          show: print JSON
  --markdown      statistics: print a table in Markdown
  --svg           statistics: print a picture
)";

constexpr const char* MakeUsage =
    R"(usage: brenquil-tables make nalimov|syzygy WHAT... DIR

Solves endings from the rules of chess and writes their tables into the folder DIR, which is made
if it is not there. nalimov tables tell the moves to mate, syzygy tables win, draw or loss under
the fifty-move rule and the half-moves to the next capture or pawn move.

WHAT is 3, 4 or 5, for all endings of up to that many men, or names of endings such as kqkr or
KQvKR. What an ending can turn into is made with it. A table that is there and sound is not made
again, so a run that was ended goes on where it stopped.

  --threads N     work on N threads (default: all that the machine has)
  --memory N      use up to N gibibytes, or 512M for mebibytes (default: 4)
  --force         make again what is there
  --plain         nalimov: write plain files, not compressed ones
  --quiet         print no progress

    brenquil-tables make nalimov 4 tables
    brenquil-tables make syzygy kqkr krkp tables
)";

constexpr const char* CheckUsage =
    R"(usage: brenquil-tables check [WHAT...] DIR

Holds every value of every table in the folder DIR against the rules of chess, and the two families
against each other. A table is checked with the help of those that it can turn into. Ends with
status 0 if all are sound, with 1 if one is faulty, damaged or could not be checked.

WHAT is 3, 4 or 5, for the endings of up to that many men, or names of endings such as kqkr; then
only their tables are checked. Those that they turn into are taken at their word.

  --threads N     work on N threads (default: all that the machine has)
  --memory N      use up to N gibibytes, or 512M for mebibytes (default: 4)
  --quiet         print nothing; the exit status tells
)";

constexpr const char* ShowUsage =
    R"(usage: brenquil-tables show 'FEN' DIR

Prints a position of up to five men, what the tables in the folder DIR know of it and of each of its
moves, and the best line, to mate if there is one.

  --json          print JSON, for scripts

    brenquil-tables show '8/8/8/4k3/8/8/3QK3/8 w - - 0 1' tables
)";

constexpr const char* StatisticsUsage =
    R"(usage: brenquil-tables statistics DIR

Prints for each table in the folder DIR how many positions are won, drawn and lost for the side to
move, the longest mate and a position that has it.

  --markdown      print a table in Markdown
  --svg           print a picture: bars of won, drawn and lost, and how the distances are spread
  --threads N     work on N threads (default: all that the machine has)
  --memory N      use up to N gibibytes, or 512M for mebibytes (default: 4)
)";

constexpr const char* UsageHint = "brenquil-tables --help tells how it is used\n";

[[noreturn]] void RefuseName(const std::string& word) {
    const auto isMan = [](char letter) {
        return std::string_view("kqrbnpKQRBNP").find(letter) != std::string_view::npos;
    };
    const auto men = std::count_if(word.begin(), word.end(), isMan);
    const bool isNumber = word == "6" || word == "7";
    if (isNumber || (men > 5 && std::all_of(word.begin(), word.end(), [&](char letter) {
                         return isMan(letter) || letter == 'v';
                     }))) {
        throw CMisuse("'" + word + "': tables are made of up to five men, kings included");
    }
    throw CMisuse("'" + word + "' is neither 3, 4 or 5 nor the name of an ending, such as kqkr");
}

std::vector<int> EndingsOf(const std::string& word) {
    std::vector<int> endings;
    if (word == "3" || word == "4" || word == "5") {
        const std::size_t most = word.front() - '0';
        for (int number = 1; number <= EndingCount; ++number) {
            if (EndingOf(number).men <= most) {
                endings.push_back(number);
            }
        }
    } else if (const int number = EndingOfName(word); number != 0) {
        endings.push_back(number);
    } else {
        RefuseName(word);
    }
    return endings;
}

std::vector<int> EndingsOfAll(const std::vector<std::string>& words) {
    std::vector<int> endings;
    for (const std::string& word : words) {
        const std::vector<int> more = EndingsOf(word);
        endings.insert(endings.end(), more.begin(), more.end());
    }
    return endings;
}

std::size_t ThreadsOf(CCommandWords& arguments) {
    constexpr std::size_t MostThreads = 256;
    return arguments.Number("--threads", ProcessorCount(), MostThreads);
}

int Make(CCommandWords arguments) {
    CWorkers workers(ThreadsOf(arguments));
    MakingPlan plan;
    plan.memoryBytes = arguments.Size("--memory", DefaultMemory);
    plan.force = arguments.Flag("--force");
    const bool plain = arguments.Flag("--plain");
    const bool quiet = arguments.Flag("--quiet");
    const std::vector<std::string>& words = arguments.Rest();
    if (words.size() < 3) {
        throw CMisuse("make needs a family, what to make and a folder");
    }
    const std::string& family = words.front();
    if (family != "nalimov" && family != "syzygy") {
        throw CMisuse("the family is nalimov or syzygy, not '" + family + "'");
    }
    plan.endings = EndingsOfAll({words.begin() + 1, words.end() - 1});
    const CFolderLock lock = PrepareFolder(words.back());
    CProgress progress(quiet ? CProgress::Output::Silent : CProgress::OutputOfSystem());
    if (family == "nalimov") {
        CNalimovFamily nalimov({words.back(), workers, progress}, {plain, plan.force});
        MakeTables(nalimov, plan, progress);
    } else {
        CSyzygyFamily syzygy({words.back(), workers, progress});
        MakeTables(syzygy, plan, progress);
    }
    return 0;
}

int Check(CCommandWords arguments) {
    CWorkers workers(ThreadsOf(arguments));
    const std::uint64_t memory = arguments.Size("--memory", DefaultMemory);
    const bool quiet = arguments.Flag("--quiet");
    const std::vector<std::string>& words = arguments.Rest();
    if (words.empty()) {
        throw CMisuse("check needs a folder");
    }
    const CheckingPlan plan{words.back(), EndingsOfAll({words.begin(), words.end() - 1}), memory};
    RequireFolder(plan.folder);
    CProgress progress(quiet ? CProgress::Output::Silent : CProgress::OutputOfSystem());
    const CheckOutcome outcome = CheckTables(plan, workers, progress);
    progress.Say(std::to_string(outcome.sound) + " sound, " + std::to_string(outcome.faulty) +
                 " faulty, " + std::to_string(outcome.unchecked) + " not checked");
    return outcome.IsGood() ? 0 : Failure;
}

int Show(CCommandWords arguments) {
    const bool asJson = arguments.Flag("--json");
    const std::vector<std::string>& words = arguments.Rest();
    if (words.size() != 2) {
        throw CMisuse("show needs a FEN, in quotation marks, and a folder");
    }
    RequireFolder(words.back());
    const std::string text = ShowPosition(words.front(), words.back(), asJson);
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

int Statistics(CCommandWords arguments) {
    CWorkers workers(ThreadsOf(arguments));
    const std::uint64_t memory = arguments.Size("--memory", DefaultMemory);
    const bool markdown = arguments.Flag("--markdown");
    const bool picture = arguments.Flag("--svg");
    const std::vector<std::string>& words = arguments.Rest();
    if (words.size() != 1) {
        throw CMisuse("statistics needs a folder");
    }
    if (markdown && picture) {
        throw CMisuse("--markdown and --svg exclude each other");
    }
    RequireFolder(words.front());
    // What is printed goes to people or into a file, so only a terminal sees progress.
    const bool isTerminal = CProgress::OutputOfSystem() == CProgress::Output::Terminal;
    FolderStatistics found;
    {
        CProgress progress(isTerminal ? CProgress::Output::Terminal : CProgress::Output::Silent);
        found = CollectStatistics(words.front(), memory, workers, progress);
    }
    if (!found.tables.empty()) {
        const std::string text = StatisticsText(found.tables, markdown  ? StatisticsForm::Markdown
                                                              : picture ? StatisticsForm::Picture
                                                                        : StatisticsForm::Text);
        std::fwrite(text.data(), 1, text.size(), stdout);
    }
    for (const std::string& fault : found.faults) {
        std::fprintf(stderr, "brenquil-tables: %s\n", fault.c_str());
    }
    return found.faults.empty() ? 0 : Failure;
}

/// What tells how a command is used; nullptr if there is no such command.
const char* UsageOf(std::string_view command) noexcept {
    return command == "make"       ? MakeUsage
         : command == "check"      ? CheckUsage
         : command == "show"       ? ShowUsage
         : command == "statistics" ? StatisticsUsage
                                   : nullptr;
}

int Help(const std::string& command) {
    const char* const usage = command.empty() ? Usage : UsageOf(command);
    if (usage == nullptr) {
        throw CMisuse("unknown command '" + command + "'");
    }
    std::fputs(usage, stdout);
    return 0;
}

/// The first signal ends the work cleanly, a second one at once.
void HandleSignal(int signal) {
    RequestEnd();
    (void)std::signal(signal, SIG_DFL);
}

int RunCommand(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw CMisuse("a command is missing");
    }
    const std::string& command = arguments.front();
    if (command == "--help" || command == "-h" || command == "help") {
        return Help(arguments.size() > 1 ? arguments[1] : "");
    }
    if (command == "--version") {
        std::printf("brenquil-tables %s\n", BRENQUIL_VERSION);
        return 0;
    }
    CCommandWords rest({arguments.begin() + 1, arguments.end()});
    if (UsageOf(command) != nullptr && (rest.Flag("--help") || rest.Flag("-h"))) {
        return Help(command);
    }
    if (command == "make") {
        return Make(std::move(rest));
    }
    if (command == "check") {
        return Check(std::move(rest));
    }
    if (command == "show") {
        return Show(std::move(rest));
    }
    if (command == "statistics") {
        return Statistics(std::move(rest));
    }
    throw CMisuse("unknown command '" + command + "'");
}

/// Standard output may be a file on a full disk.
void RequireWritten() {
    if (std::fflush(stdout) != 0) {
        throw CTableError("cannot write the output: " + LastFileError());
    }
    if (std::ferror(stdout) != 0) {  // some time ago, so the reason is lost
        throw CTableError("cannot write the output");
    }
}

}  // namespace

int RunTablesProgram(const std::vector<std::string>& arguments) {
    (void)std::signal(SIGINT, HandleSignal);
    (void)std::signal(SIGTERM, HandleSignal);
    try {
        const int status = RunCommand(arguments);
        RequireWritten();
        return status;
    } catch (const CMisuse& misuse) {
        std::fprintf(stderr, "brenquil-tables: %s\n%s", misuse.what(), UsageHint);
        return Misuse;
    } catch (const CInterrupted&) {
        std::fputs("brenquil-tables: interrupted; what is finished stays\n", stderr);
        return Interrupted;
    } catch (const CTableError& error) {
        std::fprintf(stderr, "brenquil-tables: %s\n", error.what());
        return Failure;
    } catch (const std::bad_alloc&) {
        std::fputs("brenquil-tables: out of memory\n", stderr);
        return Failure;
    }
}

}  // namespace brenquil
