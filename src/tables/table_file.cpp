#include "tables/table_file.h"

#include "platform/directory.h"
#include "platform/file_mapping.h"
#include "tables/table_error.h"
#include "tables/workers.h"
#include "text/file.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <string_view>

namespace brenquil {

namespace {

constexpr std::string_view TableSuffixes[] = {".nbw",     ".nbb",  ".nbw.emd",
                                              ".nbb.emd", ".rtbw", ".rtbz"};

[[noreturn]] void FailToWrite(const std::string& path) {
    throw CTableError("cannot write " + path + ": " + LastFileError());
}

/// A file to write, byte for byte.
class CBytesFile final : public CFile {
public:
    [[nodiscard]] const char* Mode() const noexcept override { return "wb"; }
};

/// A file under its first name; removed unless it gets its last one.
class CUnfinishedFile {
public:
    explicit CUnfinishedFile(const std::string& path)
        : path_(path), unfinished_(path + UnfinishedSuffix) {
        if (!stream_.Open(unfinished_)) {
            FailToWrite(path_);
        }
    }

    CUnfinishedFile(const CUnfinishedFile&) = delete;
    CUnfinishedFile& operator=(const CUnfinishedFile&) = delete;

    ~CUnfinishedFile() {
        stream_.Close();
        if (!isFinished_) {
            (void)RemoveFile(unfinished_);
        }
    }

    void Write(std::span<const std::uint8_t> bytes) {
        constexpr std::size_t Piece = std::size_t{1} << 22U;
        while (!bytes.empty()) {
            ThrowIfEnding();
            const auto piece = bytes.first(std::min(Piece, bytes.size()));
            if (std::fwrite(piece.data(), 1, piece.size(), stream_.file) != piece.size()) {
                FailToWrite(path_);
            }
            bytes = bytes.subspan(piece.size());
        }
    }

    /// What is on the disk cannot be lost by closing.
    void Finish() {
        if (!FlushToDisk(stream_.file)) {
            FailToWrite(path_);
        }
        stream_.Close();
        if (!RenameFile(unfinished_, path_)) {
            FailToWrite(path_);
        }
        isFinished_ = true;
    }

private:
    std::string path_;
    std::string unfinished_;
    CBytesFile stream_;
    bool isFinished_ = false;
};

/// Is it what this program writes: a table's name and the suffix.
bool IsUnfinished(std::string_view name) noexcept {
    const std::string_view suffix = UnfinishedSuffix;
    return name.ends_with(suffix) && IsTableName(name.substr(0, name.size() - suffix.size()));
}

/// The reader of Syzygy tables takes a semicolon for the end of a folder's name.
void RequireOneFolder(const std::string& folder) {
    if (folder.find(';') != std::string::npos) {
        throw CTableError("a folder of tables must have a name without a semicolon: " + folder);
    }
}

}  // namespace

std::string PathOf(const std::string& folder, const std::string& name) {
    if (folder.empty() || folder.back() == '/' || folder.back() == PathSeparator()) {
        return folder + name;
    }
    return folder + PathSeparator() + name;
}

void WriteTableFile(const std::string& path, std::span<const std::uint8_t> bytes) {
    CUnfinishedFile file(path);
    file.Write(bytes);
    file.Finish();
}

bool IsTableFile(const std::string& path) {
    return LengthOfFile(path).has_value();
}

bool IsTableName(std::string_view name) noexcept {
    return std::any_of(std::begin(TableSuffixes), std::end(TableSuffixes),
                       [name](std::string_view suffix) { return name.ends_with(suffix); });
}

std::vector<std::string> NamesIn(const std::string& folder) {
    std::optional<std::vector<std::string>> names = NamesInDirectory(folder);
    if (!names) {
        throw CTableError("cannot read the folder " + folder + ": " + LastFileError());
    }
    return std::move(*names);
}

void RequireFolder(const std::string& folder) {
    RequireOneFolder(folder);
    if (!DirectoryExists(folder)) {
        throw CTableError("there is no folder " + (folder.empty() ? "''" : folder));
    }
    (void)NamesIn(folder);
}

CFolderLock PrepareFolder(const std::string& folder) {
    RequireOneFolder(folder);
    if (!MakeDirectory(folder)) {
        throw CTableError("cannot make the folder " + (folder.empty() ? "''" : folder) + ": " +
                          LastFileError());
    }
    if (!DirectoryExists(folder)) {
        throw CTableError("cannot make the folder " + folder + ": there is a file of that name");
    }
    CFolderLock lock;
    if (!lock.Take(folder)) {
        throw CTableError("another run is making tables in " + folder);
    }
    for (const std::string& name : NamesIn(folder)) {
        if (IsUnfinished(name) && !RemoveFile(PathOf(folder, name))) {
            throw CTableError("cannot remove " + PathOf(folder, name) + ": " + LastFileError());
        }
    }
    return lock;
}

}  // namespace brenquil
