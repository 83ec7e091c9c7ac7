// Ini and batch files of any bytes. The first byte chooses.
//
// Both readers come to an end. What an ini file has set is written and read back unchanged, empty
// texts and those too long for a line left out; what a batch file queues are commands without line
// ends, remarks and outer blanks.
//
// What comes back depends on the values alone. Most inputs set nothing, or the same as the one
// before, and the way there and back is long: the same values do not go it again.

#include "../support/recording_host.h"
#include "book/book_options.h"
#include "eval/evaluation_options.h"
#include "interface/line_output.h"
#include "interface/output_options.h"
#include "interface/pending_lines.h"
#include "interface/program/batch_file.h"
#include "interface/program/ini_file.h"
#include "interface/program/program_info.h"
#include "private_folder.h"
#include "search/memory_options.h"
#include "search/search_options.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

using namespace brenquil;

namespace {

/// An ini line longer than this is read in pieces.
constexpr std::size_t LongestValue = 400;

class CSilentSink final : public ILineSink {
public:
    void Write(const std::string&) override {}
};

/// The options of the program, without the table, book and log that they steer.
struct Options {
    test::CRecordingHost host;
    CHashTable hashTable;
    CMemoryOptions memory{host, hashTable};
    CSearchOptions search;
    CEvaluationOptions evaluation;
    COutputOptions output{evaluation};
    CBookOptions book;
    OptionGroupList groups{&memory, &search, &evaluation, &output, &book};
    const std::vector<std::string> defaults = Values();

    [[nodiscard]] std::vector<std::string> Values() const {
        std::vector<std::string> values;
        for (const COptionGroup* group : groups) {
            for (const COption* option : group->iniOptions) {
                values.push_back(option->value);
            }
        }
        return values;
    }

    [[nodiscard]] bool Holds(const std::vector<std::string>& values) const {
        auto value = values.begin();
        for (const COptionGroup* group : groups) {
            for (const COption* option : group->iniOptions) {
                if (value == values.end() || option->value != *value++) {
                    return false;
                }
            }
        }
        return value == values.end();
    }

    void Reset() {
        host.printed.clear();
        auto value = defaults.begin();
        for (const COptionGroup* group : groups) {
            for (COption* option : group->iniOptions) {
                option->SetValue(*value++);
            }
        }
    }
};

void CheckIni(std::string_view bytes) {
    const std::string name(IniFileName);
    WriteWhole(name, bytes);
    static Options& options = *std::make_unique<Options>().release();
    static std::vector<std::string> lastBroughtBack;
    static bool haveDefaultsComeBack = false;
    options.Reset();
    LoadIni(options.groups);
    const bool areDefaults = options.Holds(options.defaults);
    if (areDefaults ? haveDefaultsComeBack : options.Holds(lastBroughtBack)) {
        return;
    }
    const std::vector<std::string> values = options.Values();
    if (std::any_of(values.begin(), values.end(), [](const std::string& value) {
            return value.empty() || value.size() > LongestValue;
        })) {
        return;
    }
    std::remove(name.c_str());
    CSilentSink sink;
    CLineOutput output(sink);
    WriteIni(options.groups, output);
    options.Reset();
    LoadIni(options.groups);
    if (!options.Holds(values)) {
        std::abort();
    }
    if (areDefaults) {
        haveDefaultsComeBack = true;
    } else {
        lastBroughtBack = values;
    }
}

void CheckBatch(std::string_view bytes) {
    WriteWhole("a.cmd", bytes);
    CPendingLines pending;
    RunBatch("a", pending);
    for (const PendingLine& line : pending.lines) {
        if (line.text.empty() || line.text.find_first_of("\r\n#") != std::string::npos ||
            line.text.front() == ' ' || line.text.back() == ' ') {
            std::abort();
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isReady = EnterPrivateFolder();
    if (!isReady || size == 0) {
        return 0;
    }
    const std::string_view bytes = AsText(data, size).substr(1);
    if (data[0] % 2 == 0) {
        CheckIni(bytes);
    } else {
        CheckBatch(bytes);
    }
    return 0;
}
