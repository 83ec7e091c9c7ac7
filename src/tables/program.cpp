#include "tables/program.h"

#include "platform/processor.h"
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
#include <cstdio>
#include <new>
#include <stdexcept>

namespace brenquil {

namespace {

constexpr int Failure = 1;
constexpr int Misuse = 2;
constexpr int Interrupted = 130;

constexpr std::size_t DefaultGibibytes = 4;
constexpr std::size_t MostGibibytes = 4096;

constexpr const char* Usage =
    R"(usage: brenquil-tables make nalimov|syzygy WHAT... DIR    make tables
       brenquil-tables check DIR                         hold every value against the rules
       brenquil-tables show 'FEN' DIR                    what the tables know of a position
       brenquil-tables statistics DIR                    counts, longest mates
       brenquil-tables --help | --version

WHAT is 3, 4 or 5, for all endings of up to so many men, or names of endings such as kqkr.
What an ending can turn into is made with it.

  --threads N     work on N threads (default: all that the machine has)
  --memory N      use up to N gibibytes (default: 4)
  --force         make: make again what is there
  --plain         make nalimov: write plain files, not compressed ones
  --quiet         make, check: print no progress
  --json          show: print JSON
  --markdown      statistics: print a table in Markdown
  --svg           statistics: print a picture
)";

constexpr const char* UsageHint = "brenquil-tables --help tells how it is used\n";

/// Thrown where the arguments make no sense.
class CMisuse : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The words of a command, options taken out.
class CArguments {
public:
    explicit CArguments(std::vector<std::string> words) : words_(std::move(words)) {}

    /// Takes an option without a value out.
    [[nodiscard]] bool Flag(const std::string& name) {
        const auto found = std::find(words_.begin(), words_.end(), name);
        if (found == words_.end()) {
            return false;
        }
        words_.erase(found);
        return true;
    }

    /// Takes an option with a number out: `--name 3` or `--name=3`.
    [[nodiscard]] std::size_t Number(const std::string& name, std::size_t otherwise,
                                     std::size_t most) {
        for (auto word = words_.begin(); word != words_.end(); ++word) {
            std::string text;
            if (word->starts_with(name + "=")) {
                text = word->substr(name.size() + 1);
            } else if (*word == name && word + 1 != words_.end()) {
                text = *(word + 1);
                words_.erase(word + 1);
            } else if (*word != name) {
                continue;
            }
            words_.erase(word);
            const bool isNumber =
                !text.empty() && text.size() < 6 &&
                std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
            const std::size_t number = isNumber ? std::stoul(text) : 0;
            if (number == 0 || number > most) {
                throw CMisuse(name + " takes a number from 1 to " + std::to_string(most));
            }
            return number;
        }
        return otherwise;
    }

    /// What is left. Throws `CMisuse` if an option is among it.
    [[nodiscard]] const std::vector<std::string>& Rest() const {
        for (const std::string& word : words_) {
            if (word.size() > 1 && word.front() == '-') {
                throw CMisuse("unknown option " + word);
            }
        }
        return words_;
    }

private:
    std::vector<std::string> words_;
};

std::vector<int> EndingsOf(const std::string& word) {
    std::vector<int> endings;
    if (word == "3" || word == "4" || word == "5") {
        const auto most = static_cast<std::size_t>(word.front() - '0');
        for (int number = 1; number <= EndingCount; ++number) {
            if (EndingOf(number).men <= most) {
                endings.push_back(number);
            }
        }
    } else if (const int number = EndingOfName(word); number != 0) {
        endings.push_back(number);
    } else {
        throw CMisuse("'" + word +
                      "' is neither 3, 4 or 5 nor the name of an ending, such as kqkr");
    }
    return endings;
}

std::size_t ThreadsOf(CArguments& arguments) {
    constexpr std::size_t MostThreads = 256;
    return arguments.Number("--threads", static_cast<std::size_t>(ProcessorCount()), MostThreads);
}

int Make(CArguments arguments) {
    CWorkers workers(ThreadsOf(arguments));
    MakingPlan plan;
    plan.memoryBytes = std::uint64_t{arguments.Number("--memory", DefaultGibibytes, MostGibibytes)}
                    << 30U;
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
    for (std::size_t place = 1; place + 1 < words.size(); ++place) {
        const std::vector<int> more = EndingsOf(words[place]);
        plan.endings.insert(plan.endings.end(), more.begin(), more.end());
    }
    PrepareFolder(words.back());
    CProgress progress(quiet ? CProgress::Output::Silent : CProgress::OutputOfSystem());
    if (family == "nalimov") {
        CNalimovFamily nalimov({words.back(), workers, progress}, plain);
        MakeTables(nalimov, plan, progress);
    } else {
        CSyzygyFamily syzygy({words.back(), workers, progress});
        MakeTables(syzygy, plan, progress);
    }
    return 0;
}

int Check(CArguments arguments) {
    CWorkers workers(ThreadsOf(arguments));
    const std::uint64_t memory =
        std::uint64_t{arguments.Number("--memory", DefaultGibibytes, MostGibibytes)} << 30U;
    const bool quiet = arguments.Flag("--quiet");
    const std::vector<std::string>& words = arguments.Rest();
    if (words.size() != 1) {
        throw CMisuse("check needs a folder");
    }
    RequireFolder(words.front());
    CProgress progress(quiet ? CProgress::Output::Silent : CProgress::OutputOfSystem());
    const CheckOutcome outcome = CheckTables(words.front(), memory, workers, progress);
    progress.Say(std::to_string(outcome.sound) + " sound, " + std::to_string(outcome.faulty) +
                 " faulty, " + std::to_string(outcome.unchecked) + " not checked");
    return outcome.IsGood() ? 0 : Failure;
}

int Show(CArguments arguments) {
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

int Statistics(CArguments arguments) {
    CWorkers workers(ThreadsOf(arguments));
    const std::uint64_t memory =
        std::uint64_t{arguments.Number("--memory", DefaultGibibytes, MostGibibytes)} << 30U;
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
    std::string text;
    {
        CProgress progress(isTerminal ? CProgress::Output::Terminal : CProgress::Output::Silent);
        text = StatisticsText(CollectStatistics(words.front(), memory, workers, progress),
                              markdown  ? StatisticsForm::Markdown
                              : picture ? StatisticsForm::Picture
                                        : StatisticsForm::Text);
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return 0;
}

void HandleSignal(int /*signal*/) {
    RequestEnd();
}

int RunCommand(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        throw CMisuse("a command is missing");
    }
    const std::string& command = arguments.front();
    if (command == "--help" || command == "-h") {
        std::fputs(Usage, stdout);
        return 0;
    }
    if (command == "--version") {
        std::printf("brenquil-tables %s\n", BRENQUIL_VERSION);
        return 0;
    }
    CArguments rest({arguments.begin() + 1, arguments.end()});
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

}  // namespace

int RunTablesProgram(const std::vector<std::string>& arguments) {
    (void)std::signal(SIGINT, HandleSignal);
    (void)std::signal(SIGTERM, HandleSignal);
    try {
        return RunCommand(arguments);
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
