// A folder of table files that a test makes and that goes away with it, and positions for probing.
#pragma once

#include "bases/nalimov/nalimov_bases_dtm.h"
#include "board/position.h"
#include "nalimov_enumerator.h"
#include "nalimov_solver.h"
#include "nalimov_table_writer.h"
#include "recording_host.h"

#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace brenquil::test {

/// A new empty folder in the system's place for such things.
class CTestFolder {
public:
    CTestFolder() {
        std::random_device random;
        do {
            path_ = std::filesystem::temp_directory_path() /
                    ("nalimov_test_" + std::to_string(random()));
        } while (!std::filesystem::create_directory(path_));
    }

    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;

    ~CTestFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    [[nodiscard]] std::string Name() const { return path_.string(); }

    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return path_ / name;
    }

    void Write(const std::string& name, std::span<const std::uint8_t> bytes) const {
        WriteFile(path_ / name, bytes);
    }

    /// A file that has a size and almost no contents.
    void WriteSparse(const std::string& name, std::uint64_t size) const {
        Write(name, {});
        std::filesystem::resize_file(path_ / name, size);
    }

    /// Changes some bytes of a file.
    void Poke(const std::string& name, std::uint64_t offset, const Bytes& bytes) const {
        std::fstream file(path_ / name, std::ios::binary | std::ios::in | std::ios::out);
        file.seekp(static_cast<std::streamoff>(offset));
        file.write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
    }

private:
    std::filesystem::path path_;
};

/// The base with its defaults in force, and what it asks of its host.
struct NalimovEngine {
    NalimovEngine() { options.RunCallbacks(); }

    CRecordingHost host;
    CNalimovBasesDTM bases{host};
    CNalimovOptions& options = bases.options;
};

/// Sets up a position of a table, with the colours exchanged if `invert`.
inline void SetUp(CPosition& position, const TablePosition& men, int side, bool invert) {
    position.Clear();
    for (const bool ofFirst : {true, false}) {
        const NalimovPieceList& list = ofFirst ? men.first : men.second;
        const Colour colour = ofFirst != invert ? White : Black;
        for (std::size_t slot = 0; slot < list.squares.size(); ++slot) {
            if (list.squares[slot] != NalimovNoSquare) {
                const auto type = static_cast<PieceType>(slot / 3);
                position.board[list.squares[slot] ^ (invert ? 56 : 0)] = MakePiece(type, colour);
            }
        }
    }
    position.sideToMove = (side == 0) != invert ? White : Black;
    if (men.epSquare != NalimovNoSquare) {
        position.enPassant = static_cast<std::uint8_t>(men.epSquare ^ (invert ? 56 : 0));
    }
    position.SetupDerived();
}

/// Plies to mate of any position that the solver has prepared.
[[nodiscard]] inline std::uint8_t SolvedPlies(CEndgameSolver& solver, const CPosition& position) {
    std::vector<EndgameMan> men{{King, White}, {King, Black}};
    std::vector<Square> squares{LowestBit(position.PiecesOf(King, White)),
                                LowestBit(position.PiecesOf(King, Black))};
    for (const Colour colour : {White, Black}) {
        for (int type = Pawn; type <= Queen; ++type) {
            for (Bitboard left = position.PiecesOf(static_cast<PieceType>(type), colour);
                 left != 0;) {
                men.push_back({static_cast<PieceType>(type), colour});
                squares.push_back(PopLowestBit(left));
            }
        }
    }
    solver.Prepare(men);
    return solver.Value(men, squares, position.sideToMove, position.enPassant != SquareNone);
}

/// The score that a distance in plies should have: two plies a move.
[[nodiscard]] inline Score ScoreOfPlies(std::uint8_t plies) {
    if (plies == CSolvedEnding::Draw) {
        return 0;
    }
    const int moves = (plies + 1) / 2;
    return plies % 2 == 1 ? 32000 - 2 * moves : 2 * moves - 32000;
}

}  // namespace brenquil::test
