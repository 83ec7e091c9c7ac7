// Folders of damaged tables for `brenquil-tables check`, `show` and `statistics`.
//
//     tools/fuzz --runs 20000 tables
//
// Sound tables of king and bishop against king and of king and queen against king, of both
// families, are made once, each in a folder of its own: what a command does with the others would
// cost time and find nothing. Of an input the first byte chooses a file, the second what happens to
// it: bytes of it are changed (three bytes of the input each: place and value), it is cut short, it
// is replaced by the rest of the input, or a plain file is put beside the compressed one. Each
// command may then say anything, and has to come to an end.

#include "../support/data_comp_writer.h"
#include "private_folder.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_check.h"
#include "tables/table_error.h"
#include "tables/table_file.h"
#include "tables/table_maker.h"
#include "tables/table_show.h"
#include "tables/table_statistics.h"

#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

using namespace brenquil;

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint64_t Memory = std::uint64_t{1} << 30U;

Bytes Contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// The workers and the voice of all commands.
struct Tools {
    CWorkers workers{1};
    CProgress progress{CProgress::Output::Silent};
};

Tools& Shared() {
    static Tools tools;
    return tools;
}

struct SoundFile {
    std::string folder;
    std::string name;
    Bytes bytes;
};

void Store(const SoundFile& file, const std::string& name, const Bytes& bytes) {
    std::ofstream(PathOf(file.folder, name), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

/// As the tests compress: the tables' own program looks for the best way, which takes long under a
/// fuzzer.
Bytes Compressed(const Bytes& bytes) {
    test::CDataCompWriter writer;
    writer.AddBytes(bytes);
    return writer.Finish();
}

/// The sound files; they lie in their folders when an input begins.
const std::vector<SoundFile>& SoundFiles() {
    static const std::vector<SoundFile> files = [] {
        (void)EnterPrivateFolder();
        std::vector<SoundFile> made;
        for (const std::string ending : {"kbk", "kqk"}) {
            for (const bool isNalimov : {true, false}) {
                const std::string folder = ending + (isNalimov ? "_nalimov" : "_syzygy");
                (void)PrepareFolder(folder);
                const MakingPlan plan = {{EndingOfName(ending)}, Memory, false};
                const TableSetting setting = {folder, Shared().workers, Shared().progress};
                CNalimovFamily nalimov(setting, {.plain = true});
                CSyzygyFamily syzygy(setting);
                ITableFamily* const family =
                    isNalimov ? static_cast<ITableFamily*>(&nalimov) : &syzygy;
                MakeTables(*family, plan, Shared().progress);
                for (const std::string& name : NamesIn(folder)) {
                    SoundFile file = {folder, name, Contents(PathOf(folder, name))};
                    if (isNalimov) {
                        (void)RemoveFile(PathOf(folder, name));
                        file.name += ".emd";
                        file.bytes = Compressed(file.bytes);
                        Store(file, file.name, file.bytes);
                    }
                    made.push_back(std::move(file));
                }
            }
        }
        return made;
    }();
    return files;
}

Bytes Damaged(const Bytes& sound, unsigned way, const Bytes& input) {
    Bytes bytes = sound;
    if (way == 1) {
        return input;
    }
    if (way == 2 && input.size() >= 2) {
        bytes.resize((std::size_t{input[0]} << 8U | input[1]) % (bytes.size() + 1));
        return bytes;
    }
    for (std::size_t at = 0; at + 2 < input.size(); at += 3) {
        bytes[(std::size_t{input[at]} << 8U | input[at + 1]) % bytes.size()] = input[at + 2];
    }
    return bytes;
}

template <class Command>
void Try(const Command& command) {
    try {
        command();
    } catch (const CTableError&) {  // it has been said what is wrong
    }
}

}  // namespace

// Both are called by libFuzzer under these names.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
    (void)SoundFiles();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) {
        return 0;
    }
    const std::vector<SoundFile>& files = SoundFiles();
    const SoundFile& chosen = files[data[0] % files.size()];
    const unsigned way = data[1] % 4;
    const Bytes input(data + 2, data + size);
    const std::string plainName = chosen.name.substr(0, chosen.name.rfind('.'));
    const bool addsPlain = way == 3 && chosen.name.ends_with(".emd");
    Store(chosen, addsPlain ? plainName : chosen.name, Damaged(chosen.bytes, way, input));

    Tools& tools = Shared();
    for (const char* const fen :
         {"8/8/8/4k3/8/8/3QK3/8 w - - 0 1", "3bk3/8/8/8/4K3/8/8/8 w - - 0 1"}) {
        Try([&] { (void)ShowPosition(fen, chosen.folder, data[1] >= 128); });
    }
    Try([&] { (void)CheckTables({chosen.folder, {}, Memory}, tools.workers, tools.progress); });
    if (data[1] / 4 % 16 == 0) {
        Try([&] {
            const FolderStatistics found =
                CollectStatistics(chosen.folder, Memory, tools.workers, tools.progress);
            (void)StatisticsText(found.tables, StatisticsForm::Picture);
        });
    }

    if (addsPlain) {
        (void)RemoveFile(PathOf(chosen.folder, plainName));
    } else {
        Store(chosen, chosen.name, chosen.bytes);
    }
    return 0;
}
