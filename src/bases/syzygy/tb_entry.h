// The records of the known tables, and how a file becomes one.
//
// A table has up to four file groups (one without pawns) of up to two stored sides to move. A WDL
// file stores both sides or, where they are the same, the first; a DTZ file stores one side for
// each group and says which. Everything that a look-up relies on is checked against the file's
// length while it is read. A file that fails the checks is treated like one with a wrong magic.
#pragma once

#include "bases/syzygy/block_stream.h"
#include "bases/syzygy/tb_index.h"
#include "platform/file_mapping.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace brenquil {

inline constexpr std::size_t TbFileGroups = 4;

/// One stored side of one file group. Without a stream it is not stored.
struct TbSide {
    TbLayout layout;
    std::unique_ptr<BlockStream> stream;
};

/// A win/draw/loss table, from the moment when its file was found.
struct TbEntry {
    TbShape shape;
    CFileMapping file;
    TbBytes data;  ///< what `file` maps; empty until the table is read
    /// Set last when the table has been read, with release order, and read without the lock.
    std::atomic<bool> ready{false};
    std::array<std::array<TbSide, 2>, TbFileGroups> groups;  ///< [file group][side to move]
};

/// A distance table, from its reading until it falls out of the cache.
struct DtzEntry {
    static constexpr std::uint8_t SideFlag = 1;       ///< the side to move that is stored
    static constexpr std::uint8_t MapFlag = 2;        ///< values are places in a list
    static constexpr std::uint8_t WinPliesFlag = 4;   ///< wins are counted in plies, not moves
    static constexpr std::uint8_t LossPliesFlag = 8;  ///< losses likewise

    struct Group {
        TbSide side;
        std::uint8_t flags = 0;
        std::array<std::uint16_t, 4> mapStarts{};  ///< places of the lists in `map`
    };

    TbShape shape;
    CFileMapping file;
    TbBytes data;  ///< what `file` maps
    std::array<Group, TbFileGroups> groups;
    const std::uint8_t* map = nullptr;  ///< lists of values, the length of each before it
};

/// Reads the `data` of a WDL table into the entry. On failure a message goes to the standard error
/// stream, and the entry is as empty as before its mapping.
[[nodiscard]] bool ReadWdlTable(TbEntry& entry);

/// The same for a DTZ table, which cannot be used after a failure.
[[nodiscard]] bool ReadDtzTable(DtzEntry& entry);

/// Forgets what was read and ends the mapping.
void ReleaseWdlTable(TbEntry& entry) noexcept;

}  // namespace brenquil
