#include "bases/nalimov/nalimov_tables.h"

#include "bases/nalimov/nalimov_fatal.h"
#include "platform/directory.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <iterator>
#include <mutex>
#include <new>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace brenquil {

namespace {

constexpr std::size_t LongestDirectory = 1023;
constexpr std::uint64_t LargestSizedFile = std::uint64_t{1} << 31;

/// The pieces of a path, empty ones included.
std::vector<std::string> CutPath(std::string_view path) {
    std::vector<std::string> pieces;
    for (;;) {
        const std::size_t end = path.find_first_of(",;");
        pieces.emplace_back(path.substr(0, end));
        if (end == std::string_view::npos) {
            return pieces;
        }
        path.remove_prefix(end + 1);
    }
}

bool NeedsSeparator(std::string_view directory) noexcept {
    return !directory.empty() && directory.back() != '\\' && directory.back() != '/';
}

std::string PlainName(const std::string& directory, const NalimovTable& table, int side,
                      int extent) {
    constexpr std::string_view ExtentLetters = "0123456789abcdefghijklmnopqrstuvwxyz";
    std::string name = directory;
    if (NeedsSeparator(directory)) {
        name += PathSeparator();
    }
    name += table.name;
    if (table.IsSplit()) {
        name += '.';
        name += ExtentLetters[extent];
    }
    name += side == 0 ? ".nbw" : ".nbb";
    return name;
}

/// The names under which a compressed file may lie, for file systems that know fewer points or
/// fewer letters, in the order in which they are tried.
std::vector<std::string> CompressedNames(const std::string& plainName, const NalimovTable& table) {
    std::vector<std::string> names{plainName + ".emd"};
    if (table.IsSplit()) {
        return names;
    }
    const std::size_t sidePoint = plainName.size() - std::string_view(".nbw").size();
    std::string name = names.front();
    name[sidePoint] = '_';
    names.push_back(name);
    name[plainName.size()] = '_';
    names.push_back(name);
    if (table.index < NalimovFirstSixMen) {
        name[plainName.size()] = '.';
        name.erase(sidePoint, 1);
        names.push_back(name);
    }
    return names;
}

/// May a file of that many positions be this one: all of the side, a full extent or the last one.
bool IsExpectedSize(const NalimovTable& table, int side, std::uint64_t size) noexcept {
    const std::uint64_t positions = table.positions[side];
    if (size == positions) {
        return true;
    }
    const std::uint64_t extent = std::uint64_t{1}
                              << (table.IsTwoByte() ? NalimovExtentShift - 1 : NalimovExtentShift);
    return table.IsSplit() && (size == extent || size == positions % extent);
}

void CheckPlainFile(IHost& host, CNalimovFile& file, const std::string& name,
                    const NalimovTable& table, int side) {
    if (table.IsTwoByte() || table.positions[side] >= LargestSizedFile) {
        return;
    }
    const std::optional<std::uint64_t> size = file.Size();
    if (!size) {
        NalimovFatal(host, "Seek in " + name + " failed");
    }
    if (!IsExpectedSize(table, side, *size)) {
        NalimovFatal(host, name + " corrupted ");
    }
}

[[noreturn]] void ReportUnreadable(IHost& host, const std::string& name, std::uint32_t error) {
    std::string reason = "error " + std::to_string(error);
    switch (error & 0xFFU) {
    case DataCompReadError: reason = "read error"; break;
    case DataCompOutOfMemory: reason = "out of memory"; break;
    case DataCompFileBroken: reason = "file broken"; break;
    default: break;
    }
    NalimovFatal(host, "Unable to read " + name + " - " + reason);
}

std::unique_ptr<DataCompInfo> OpenCompressed(IHost& host, CNalimovFile& file,
                                             const std::string& name, const NalimovTable& table,
                                             int side) {
    std::unique_ptr<DataCompInfo> info;
    if (const std::uint32_t error = DataCompOpen(&info, file); error != DataCompOk) {
        ReportUnreadable(host, name, error);
    }
    if (info->blockSize != NalimovBlockSize) {
        NalimovFatal(host, name + ": Unsupported block size " + std::to_string(info->blockSize));
    }
    const std::uint64_t bytes =
        (std::uint64_t{info->blocks} - 1) * NalimovBlockSize + info->lastBlockSize;
    if (!IsExpectedSize(table, side, table.IsTwoByte() ? bytes / 2 : bytes)) {
        NalimovFatal(host, name + " corrupted ");
    }
    return info;
}

NalimovCounts CountsOf(const NalimovMenCounts& white, const NalimovMenCounts& black) noexcept {
    NalimovCounts counts{};
    std::copy(white.begin(), white.end(), counts.begin());
    std::copy(black.begin(), black.end(), counts.begin() + std::ssize(white));
    return counts;
}

int MenOfTable(int table) noexcept {
    if (table >= NalimovFirstSixMen) {
        return 6;
    }
    if (table >= NalimovFirstFiveMen) {
        return 5;
    }
    if (table >= NalimovFirstFourMen) {
        return 4;
    }
    return table >= 1 ? 3 : 0;
}

}  // namespace

int NalimovTable::Extents(int side) const noexcept {
    if (!IsSplit()) {
        return 1;
    }
    const std::uint64_t bytes = positions[side] * (IsTwoByte() ? 2 : 1);
    return static_cast<int>(bytes >> NalimovExtentShift) + 1;
}

CNalimovTables::CNalimovTables(IHost& host) : host_(host) {
    for (int number = 0; number <= NalimovTableCount; ++number) {
        NalimovTable& table = Table(number);
        const NalimovSignature& signature = NalimovSignatures[number];
        table.index = number;
        table.flags = signature.flags;
        table.name = signature.name;
    }
}

void CNalimovTables::ChooseCalculators() {
    for (NalimovTable& table : tables_) {
        for (const int side : {0, 1}) {
            const std::size_t place = side;
            table.calculators[place] = &NalimovCalculator(table.index, side);
            table.positions[place] = table.calculators[place]->Positions();
        }
    }
    hasCalculators_ = true;
}

int CNalimovTables::RegisterAll(const std::string& path) {
    Forget();
    int best = 0;
    for (const std::string& directory : CutPath(path)) {
        if (directory.size() > LongestDirectory) {
            host_.Fail(IHost::Stream::Output, {});
        }
        // Saves some thousand attempts that fail. A piece that already ends in a separator could be
        // the beginning of a name.
        if (NeedsSeparator(directory) && !DirectoryExists(directory)) {
            continue;
        }
        if (!hasCalculators_) {
            ChooseCalculators();
        }
        for (int number = 1; number <= NalimovTableCount; ++number) {
            NalimovTable& table = Table(number);
            for (int side = 0; side < (table.IsSymmetric() ? 1 : 2); ++side) {
                if (RegisterSide(directory, table, side)) {
                    best = std::max(best, number);
                }
            }
        }
    }
    menLoaded = MenOfTable(best);
    return menLoaded;
}

void CNalimovTables::Forget() {
    menLoaded = 0;
    drives_ = Drives();
    hasCompressedFiles_ = false;
    for (NalimovTable& table : tables_) {
        table.sides = {};
    }
}

/// Extents are looked for up to the first that is not there.
bool CNalimovTables::RegisterSide(const std::string& directory, NalimovTable& table, int side) {
    const int extents = table.Extents(side);
    int found = 0;
    while (found < extents && RegisterOne(directory, table, side, found)) {
        ++found;
    }
    return found != 0;
}

bool CNalimovTables::MayReadDrive(const std::string& directory) {
    if (directory.size() < 2 || directory[1] != ':') {
        return true;
    }
    const char letter = static_cast<char>(directory[0] | 0x20);  // to a small letter
    if (letter < 'a' || letter > 'z') {
        return true;
    }
    const std::size_t drive = letter - 'a';
    if (!drives_.isChecked[drive]) {
        if (!DriveExists(letter)) {
            return false;
        }
        drives_.isChecked[drive] = true;
        drives_.isNotReady[drive] = !DriveIsReady(letter);
    }
    return !drives_.isNotReady[drive];
}

bool CNalimovTables::RegisterOne(const std::string& directory, NalimovTable& table, int side,
                                 int extent) {
    assert(hasCalculators_);
    assert(side == 0 || side == 1);
    assert(extent >= 0 && extent < NalimovMaximumExtents);
    std::unique_ptr<NalimovSide>& slot = table.sides[side];
    const std::size_t place = extent;
    if (slot != nullptr && !slot->extents[place].fileName.empty()) {
        return true;
    }
    if (!MayReadDrive(directory)) {
        return false;
    }
    try {
        std::unique_ptr<DataCompInfo> info;
        CNalimovFile file;
        std::string name = PlainName(directory, table, side, extent);
        if (file.Open(name)) {
            CheckPlainFile(host_, file, name, table, side);
        } else {
            const std::vector<std::string> names = CompressedNames(name, table);
            const auto found = std::find_if(names.begin(), names.end(),
                                            [&file](const auto& each) { return file.Open(each); });
            if (found == names.end()) {
                return false;
            }
            name = *found;
            info = OpenCompressed(host_, file, name, table, side);
            hasCompressedFiles_ = true;
        }
        EnterMaterial(table);
        if (slot == nullptr) {
            slot = std::make_unique<NalimovSide>();
        }
        slot->extents[place].fileName = std::move(name);
        slot->extents[place].decodeInfo = std::move(info);
        slot->extents[place].usable = true;
    } catch (const std::bad_alloc&) {
        NalimovFatal(host_,
                     "Cannot allocate " + std::to_string(sizeof(NalimovSide)) + " bytes of memory");
    }
    return true;
}

void CNalimovTables::EnterMaterial(const NalimovTable& table) {
    const NalimovMaterial material = NalimovMaterialOf(table.name);
    const bool isEntered = tree_.Enter(CountsOf(material.first, material.second), table.index) &&
                           (table.IsSymmetric() ||
                            tree_.Enter(CountsOf(material.second, material.first), -table.index));
    if (!isEntered) {
        NalimovFatal(host_, "Unable to register " + std::string(table.name));
    }
}

void CNalimovTables::CloseFiles() {
    for (NalimovTable& table : tables_) {
        for (const std::unique_ptr<NalimovSide>& side : table.sides) {
            if (side == nullptr) {
                continue;
            }
            for (NalimovExtent& extent : side->extents) {
                const std::lock_guard guard(side->fileLock);
                extent.file.Close();
            }
        }
    }
}

}  // namespace brenquil
