// What changes files as a whole: making folders, renaming, removing; and bringing a file's bytes to
// the disk.
//
// Names are byte strings as in platform/file_stream.h. A failure is told by the result, and
// LastFileError says why in words. No exceptions, except for lack of memory in the texts.
#pragma once

#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

namespace brenquil {

/// Gives a file another name in the same folder; a file of that name is replaced in one step, so
/// that at no moment there is none or half of one.
[[nodiscard]] bool RenameFile(const std::string& from, const std::string& to) noexcept;

/// Removes a file. True also when there was none.
[[nodiscard]] bool RemoveFile(const std::string& name) noexcept;

/// Makes a folder in one that exists. True also when it is there already.
[[nodiscard]] bool MakeDirectory(const std::string& name) noexcept;

/// The names in a folder, without the folder, in no order; nothing when it cannot be read.
[[nodiscard]] std::optional<std::vector<std::string>> NamesInDirectory(const std::string& path);

/// Writes out what the stream holds and waits until the system has it on the disk.
[[nodiscard]] bool FlushToDisk(std::FILE* stream) noexcept;

/// A folder that one program at a time works in: while an object holds it, no other one can.
/// Nothing is left behind by a program that is ended. Where the system knows no such locks, all
/// succeed.
class CFolderLock {
public:
    /// Holds nothing.
    CFolderLock() noexcept = default;
    CFolderLock(const CFolderLock&) = delete;
    CFolderLock& operator=(const CFolderLock&) = delete;

    CFolderLock(CFolderLock&& other) noexcept : handle_(other.handle_) { other.handle_ = None; }

    CFolderLock& operator=(CFolderLock&& other) = delete;
    ~CFolderLock();

    /// Takes the folder. False if another object, of this program or of another one, holds it.
    [[nodiscard]] bool Take(const std::string& folder);

private:
    static constexpr std::intptr_t None = -1;

    std::intptr_t handle_ = None;  // a descriptor or a handle of the system
};

/// Why the last call of this header, or of the C library's files, failed on this thread.
[[nodiscard]] std::string LastFileError();

}  // namespace brenquil
