// What changes files as a whole: making folders, renaming, removing; and bringing a file's bytes to
// the disk.
//
// Names are byte strings as in platform/file_stream.h. A failure is told by the result, and
// LastFileError says why in words. No exceptions, except for want of memory in the texts.
#pragma once

#include <cstdio>
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

/// The names in a folder, without the folder, in no order; empty when it cannot be read.
[[nodiscard]] std::vector<std::string> NamesInDirectory(const std::string& path);

/// Writes out what the stream holds and waits until the system has it on the disk.
[[nodiscard]] bool FlushToDisk(std::FILE* stream) noexcept;

/// Why the last call of this header, or of the C library's files, failed on this thread.
[[nodiscard]] std::string LastFileError();

}  // namespace brenquil
