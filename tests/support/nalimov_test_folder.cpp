#include "nalimov_test_folder.h"

#include "data_comp_writer.h"

#include <fstream>
#include <random>
#include <system_error>

namespace brenquil::test {

CTestFolder::CTestFolder() {
    std::random_device random;
    do {
        path_ =
            std::filesystem::temp_directory_path() / ("nalimov_test_" + std::to_string(random()));
    } while (!std::filesystem::create_directory(path_));
}

CTestFolder::~CTestFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

void CTestFolder::Write(const std::string& name, std::span<const std::uint8_t> bytes) const {
    std::ofstream file(path_ / name, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

void CTestFolder::WriteSparse(const std::string& name, std::uint64_t size) const {
    Write(name, {});
    std::filesystem::resize_file(path_ / name, size);
}

void CTestFolder::Poke(const std::string& name, std::uint64_t offset, const Bytes& bytes) const {
    std::fstream file(path_ / name, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(offset));
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
}

Bytes Compressed(std::span<const std::uint8_t> bytes) {
    CDataCompWriter writer;
    writer.AddBytes(bytes);
    return writer.Finish();
}

void SetUp(CPosition& position, const TablePosition& men, int side, bool invert) {
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

Score ScoreOfPlies(int plies) {
    if (plies == CSolvedMates::Draw) {
        return 0;
    }
    const int moves = (plies + 1) / 2;
    return plies % 2 == 1 ? 32000 - 2 * moves : 2 * moves - 32000;
}

}  // namespace brenquil::test
