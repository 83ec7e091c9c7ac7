#include "tables/nalimov_family.h"

#include "platform/file_changes.h"
#include "platform/file_mapping.h"
#include "tables/emd_writer.h"
#include "tables/ending_solver.h"
#include "tables/nalimov_bytes.h"
#include "tables/rules.h"
#include "tables/table_error.h"
#include "tables/table_file.h"

#include <algorithm>

namespace brenquil {

namespace {

constexpr const char* CompressedSuffix = ".emd";

std::string PlainName(const Ending& ending, int side) {
    return ending.name + (side == 0 ? ".nbw" : ".nbb");
}

int FileCount(const Ending& ending) {
    return HasOneNalimovFile(ending) ? 1 : 2;
}

}  // namespace

std::vector<NalimovFileChoice> NalimovFilesThere(const std::string& folder, const Ending& ending,
                                                 int side) {
    std::vector<NalimovFileChoice> files;
    const std::string plain = PlainName(ending, side);
    if (IsTableFile(PathOf(folder, plain))) {
        files.push_back({plain, false});
    }
    if (IsTableFile(PathOf(folder, plain + CompressedSuffix))) {
        files.push_back({plain + CompressedSuffix, true});
    }
    return files;
}

std::optional<NalimovFileChoice> FindNalimovFile(const std::string& folder, const Ending& ending,
                                                 int side) {
    const std::vector<NalimovFileChoice> files = NalimovFilesThere(folder, ending, side);
    return files.empty() ? std::nullopt : std::optional(files.front());
}

std::vector<std::uint8_t> ReadNalimovFile(const std::string& folder, const NalimovFileChoice& file,
                                          CWorkers& workers) {
    CFileMapping mapping;
    const std::string path = PathOf(folder, file.name);
    if (!mapping.Open(path)) {
        if (LengthOfFile(path) == std::uint64_t{0}) {
            return {};
        }
        throw CTableError("cannot read " + path + ": " + LastFileError());
    }
    if (file.isCompressed) {
        return DecompressEmd(mapping.Bytes(), workers);
    }
    return {mapping.Bytes().begin(), mapping.Bytes().end()};
}

std::vector<std::string> CNalimovFamily::FilesOf(const Ending& ending) const {
    std::vector<std::string> names;
    for (int side = 0; side < FileCount(ending); ++side) {
        names.push_back(PlainName(ending, side));
        names.push_back(PlainName(ending, side) + CompressedSuffix);
    }
    return names;
}

TableState CNalimovFamily::Look(const Ending& ending, std::string& culprit) const {
    TableState state = TableState::Sound;
    for (int side = 0; side < FileCount(ending); ++side) {
        const auto files = NalimovFilesThere(setting_.folder, ending, side);
        if (files.empty() || (writing_.plain && files.front().isCompressed)) {
            return TableState::Absent;
        }
        for (const NalimovFileChoice& file : files) {
            const std::vector<std::uint8_t> contents =
                ReadNalimovFile(setting_.folder, file, setting_.workers);
            if (contents.size() != NalimovPlaces(ending, side)) {
                culprit = file.name;
                state = TableState::Damaged;
            }
        }
    }
    return state;
}

std::shared_ptr<SolvedValues>
CNalimovFamily::Make(const Ending& ending, const SolvedEndings& solved, std::uint64_t& bytes) {
    std::shared_ptr<SolvedValues> values = KeepValues<DistanceToMate>(
        SolveEnding<DistanceToMate>(ending, solved, setting_.workers, setting_.progress),
        setting_.workers);
    bytes = 0;
    for (int side = 0; side < FileCount(ending); ++side) {
        std::vector<std::uint8_t> contents =
            NalimovBytes(*values, solved, side, setting_.workers, setting_.progress);
        const std::string plainName = PlainName(ending, side);
        const std::string compressedName = plainName + CompressedSuffix;
        if (!writing_.plain) {
            contents = CompressEmd(contents, setting_.workers, setting_.progress);
        }
        WriteTableFile(PathOf(setting_.folder, writing_.plain ? plainName : compressedName),
                       contents);
        bytes += contents.size();
        const std::string other =
            PathOf(setting_.folder, writing_.plain ? compressedName : plainName);
        if (writing_.replaces && !RemoveFile(other)) {
            throw CTableError("cannot remove " + other + ": " + LastFileError());
        }
    }
    return values;
}

void CNalimovFamily::Read(Colour sideToMove, SolvedValues& values) {
    const Ending& ending = values.Of();
    const int side = sideToMove == White || HasOneNalimovFile(ending) ? 0 : 1;
    const auto file = FindNalimovFile(setting_.folder, ending, side);
    if (!file) {
        throw CTableError("the table " + ending.name + " is not there");
    }
    const std::vector<std::uint8_t> contents =
        ReadNalimovFile(setting_.folder, *file, setting_.workers);
    if (contents.size() != NalimovPlaces(ending, side)) {
        throw CTableError(file->name + " is damaged");
    }
    ReadNalimovValues(contents, sideToMove, values, setting_.workers, setting_.progress);
}

std::uint64_t CNalimovFamily::MakingBytes(const Ending& ending) const {
    // After the solving: the contents of one file, and what they are compressed to. Of all tables
    // of three and four men that is two fifths at most, so half is room enough.
    const std::uint64_t file = std::max(NalimovPlaces(ending, 0), NalimovPlaces(ending, 1));
    const std::uint64_t writing =
        2 * KeptBytesOfSide(ending) + file + (writing_.plain ? 0 : file / 2);
    return std::max(SolvingBytes<DistanceToMate>(ending, setting_.workers.Count()), writing);
}

}  // namespace brenquil
