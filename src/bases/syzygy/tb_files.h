// The directories in which Syzygy tables are looked for, and how a file in them is found and
// mapped.
//
// The list comes as one text with ";" between its pieces, on every platform. Directories are not
// tested and no trailing separator is looked for; the first one in which a file opens wins.
#pragma once

#include "bases/host.h"
#include "platform/file_mapping.h"

#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

inline constexpr std::string_view TbWdlSuffix = ".rtbw";
inline constexpr std::string_view TbDtzSuffix = ".rtbz";

class CTbPaths {
public:
    /// @param host  ends the program over a file that cannot be mapped
    explicit CTbPaths(IHost& host) noexcept : host_(host) {}

    /// Takes a new list. Empty pieces are left out.
    void Set(std::string_view list);

    /// The path of the first file of that name and suffix that can be opened; empty if there is
    /// none.
    [[nodiscard]] std::string TbOpenFile(std::string_view name, std::string_view suffix) const;

    /// Maps that file. False if there is none. An empty file is there, but nothing of it is mapped.
    /// A file that the system cannot map ends the program.
    [[nodiscard]] bool TbMapFile(std::string_view name, std::string_view suffix,
                                 CFileMapping& mapping) const;

private:
    IHost& host_;
    std::vector<std::string> directories_;
};

}  // namespace brenquil
