#include "tables/table_file.h"

#include "platform/directory.h"
#include "platform/file_changes.h"
#include "platform/file_mapping.h"
#include "tables/table_error.h"
#include "tables/workers.h"
#include "text/file.h"

#include <algorithm>
#include <string_view>

namespace brenquil {

namespace {

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

bool IsUnfinished(std::string_view name) {
    // Nothing but what this program has written: a table's name and the suffix.
    for (const std::string_view ending : {".nbw", ".nbb", ".emd", ".rtbw", ".rtbz"}) {
        if (name.ends_with(std::string(ending) + UnfinishedSuffix)) {
            return true;
        }
    }
    return false;
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

void RequireFolder(const std::string& folder) {
    if (!DirectoryExists(folder)) {
        throw CTableError("there is no folder " + folder);
    }
}

void PrepareFolder(const std::string& folder) {
    if (!MakeDirectory(folder) || !DirectoryExists(folder)) {
        throw CTableError("cannot make the folder " + folder + ": " + LastFileError());
    }
    for (const std::string& name : NamesInDirectory(folder)) {
        if (IsUnfinished(name) && !RemoveFile(PathOf(folder, name))) {
            throw CTableError("cannot remove " + PathOf(folder, name) + ": " + LastFileError());
        }
    }
}

}  // namespace brenquil
