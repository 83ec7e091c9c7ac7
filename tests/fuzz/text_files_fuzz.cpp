// Ini and batch files of any bytes. The first byte chooses: both readers come to an end, and what
// they queue are commands without line ends.

#include "interface/batch_file.h"
#include "interface/ini_file.h"
#include "interface/output_options.h"
#include "search/search_options.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

using namespace brenquil;

namespace {

class CSilentSink final : public ILineSink {
public:
    void Write(const std::string&) override {}
};

/// Works in a folder of its own from the first input on.
bool EnterFolder() {
    const std::filesystem::path folder =
        std::filesystem::temp_directory_path() /
        ("brenquil_fuzz_" + std::to_string(std::random_device()()));
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
    return true;
}

void WriteFile(const char* name, const std::uint8_t* data, std::size_t size) {
    std::ofstream file(name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isReady = EnterFolder();
    if (!isReady || size == 0) {
        return 0;
    }
    CSilentSink sink;
    CProtocol protocol(sink);
    if (data[0] % 2 == 0) {
        Relaxed<bool> analyse{false};
        COutputOptions output(protocol, analyse);
        CSearchOptions search;
        WriteFile("Brenquil3.00.ini", data + 1, size - 1);
        LoadIni({&search, &output});
        return 0;
    }
    WriteFile("a.cmd", data + 1, size - 1);
    RunBatch("a", protocol);
    for (const PendingLine& line : protocol.pendingLines) {
        if (line.text.empty() || line.text.find_first_of("\r\n#") != std::string::npos) {
            std::abort();
        }
    }
    return 0;
}
