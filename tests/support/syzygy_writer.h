// Makes Syzygy table files for tests: small, valid, and of any shape that the format allows.
//
//     WdlTable table{"KQvK"};
//     table.value = [](const TbPosition& position) { return 2; };   // -2 to 2
//     WriteBytes(folder / "KQvK.rtbw", MakeWdlFile(table));
//
// It is independent on purpose: the program that makes tables writes one kind of file, the best
// that it can; here a test says what a file is like, and nothing of that program is used.
//
// The values are given by a function of the position, with White as the side that the name gives
// first, so a table can hold the truth (see the solver) or anything that a test wants to find
// again. Of placements that mirror each other and share a place in the table the function is
// asked for one, be it a legal position or not. Values are compressed as the format wants it,
// though with less skill than by a real generator.
#pragma once

#include "bases/syzygy/tb_board.h"
#include "bases/syzygy/tb_index.h"
#include "syzygy_solver.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil::testing_support {

using Bytes = std::vector<std::uint8_t>;

/// How a sequence of values is compressed.
struct StreamShape {
    unsigned blockSize = 6;    ///< log2 of a block's bytes
    unsigned indexBits = 7;    ///< log2 of the values between two rows of the index
    unsigned pairings = 12;    ///< symbols that stand for two others
    unsigned emptyBlocks = 0;  ///< blocks at the end that have a size and no data
    bool singleValue = true;   ///< equal values are stored as one
};

/// One compressed sequence, before its parts are spread over a file.
struct StreamParts {
    Bytes header;
    Bytes indexTable;
    Bytes sizeTable;
    Bytes data;
};

/// Compresses values.
/// @param flags  the low bits of the first byte
[[nodiscard]] StreamParts MakeStream(const std::vector<std::uint8_t>& values,
                                     const StreamShape& shape, std::uint8_t flags, bool wdl);

/// A win/draw/loss table.
struct WdlTable {
    std::string name;
    std::function<int(const TbPosition&)> value;  ///< -2 to 2
    bool split = true;                            ///< both sides to move are stored
    bool hasFiles = true;                         ///< with pawns: all four file groups are stored
    unsigned order = 0;                           ///< place of the leading group among the others
    unsigned secondOrder = 1;
    StreamShape stream{};
};

[[nodiscard]] Bytes MakeWdlFile(const WdlTable& table);

/// A table of one value, made without looking at any position, for materials of any size.
[[nodiscard]] Bytes MakeFlatWdlFile(const std::string& name, int value);

/// A distance table of the stored value 0 for one side to move.
[[nodiscard]] Bytes MakeFlatDtzFile(const std::string& name, unsigned side);

/// A distance table.
struct DtzTable {
    std::string name;
    std::function<int(const TbPosition&)> wdl;    ///< class of the position
    std::function<int(const TbPosition&)> value;  ///< what the table is to hold for it, before maps
    unsigned side = 0;                            ///< the side to move that is stored
    bool hasMap = false;
    bool winPlies = true;
    bool lossPlies = true;
    bool hasFiles = true;
    unsigned order = 0;
    unsigned secondOrder = 1;
    StreamShape stream{};
};

[[nodiscard]] Bytes MakeDtzFile(const DtzTable& table);

/// The values that the tables of an ending hold in truth.
[[nodiscard]] std::function<int(const TbPosition&)> SolvedClasses(CSyzygySolver& solver,
                                                                  const std::string& name);

/// The stored distances that belong to them, with wins and losses counted in plies.
[[nodiscard]] std::function<int(const TbPosition&)> SolvedDistances(CSyzygySolver& solver,
                                                                    const std::string& name);

/// Writes a file.
void WriteBytes(const std::filesystem::path& path, const Bytes& bytes);

/// Writes both tables of a solved ending.
void WriteSolvedTables(CSyzygySolver& solver, const std::filesystem::path& folder,
                       const std::string& name);

/// The position of an index of the solver.
[[nodiscard]] TbPosition PositionOf(const SolvedEnding& ending, std::size_t index);

/// The men of a table on random squares, with either side to move; not tested for legality.
[[nodiscard]] TbPosition RandomPosition(const std::string& name, std::mt19937_64& random);

/// The position that a FEN's board, side and en passant square describe.
[[nodiscard]] TbPosition PositionOfFen(std::string_view fen);

}  // namespace brenquil::testing_support
