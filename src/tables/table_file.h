// Files of tables: reading whole ones, and writing them so that there never is half of one.
#pragma once

#include "platform/file_changes.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

/// What a file that is being written is called until it is whole.
inline constexpr const char* UnfinishedSuffix = ".part";

/// "folder/name", with the system's separator.
[[nodiscard]] std::string PathOf(const std::string& folder, const std::string& name);

/// Writes the bytes beside the final name, brings them to the disk and renames the file. What was
/// there under that name is replaced. Throws `CTableError`, and then the unfinished file is gone.
void WriteTableFile(const std::string& path, std::span<const std::uint8_t> bytes);

/// Is there a file of that name that can be opened.
[[nodiscard]] bool IsTableFile(const std::string& path);

/// Is that the name of a table file of either family.
[[nodiscard]] bool IsTableName(std::string_view name) noexcept;

/// Makes the folder if it is not there, and removes what an ended run has left unfinished in it.
/// Throws `CTableError` if nothing can be written there, or if another run is making tables there.
/// @return what keeps other runs out
[[nodiscard]] CFolderLock PrepareFolder(const std::string& folder);

/// The names in a folder, in no order. Throws `CTableError` if it cannot be read.
[[nodiscard]] std::vector<std::string> NamesIn(const std::string& folder);

/// Throws `CTableError` if there is no such folder or it cannot be read.
void RequireFolder(const std::string& folder);

}  // namespace brenquil
