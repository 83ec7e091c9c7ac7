// An opening book of any bytes: the questions end, and every move that comes back can be asked of
// the board. The last byte of an input chooses the position.

#include "../support/recording_host.h"
#include "board/move_generator.h"
#include "board/position_text.h"
#include "book/book.h"
#include "private_folder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

using namespace brenquil;

namespace {

constexpr const char* Path = "book.bin";

constexpr std::array<std::string_view, 4> Fens = {
    StartFen, "r3k2r/8/8/3pP3/8/8/6p1/R3K2R w KQkq d6 0 1",
    "r3k2r/1P6/8/8/3pP3/8/8/R3K2R b KQkq e3 0 1", "8/8/8/8/8/8/8/8 w - - 0 249"};

/// The bytes in 16-byte records, every second key replaced by one that is asked for.
std::vector<std::uint8_t> WithKeys(const std::uint8_t* data, std::size_t size, std::uint64_t key) {
    std::vector<std::uint8_t> bytes(data, data + size);
    for (std::size_t record = 0; record + CBookFile::RecordSize <= size;
         record += 2 * CBookFile::RecordSize) {
        for (std::size_t i = 0; i < 8; ++i) {
            bytes[record + i] = static_cast<std::uint8_t>(key >> (56 - 8 * i));
        }
    }
    return bytes;
}

/// The positions that are asked about. They are never changed, so that they are made once.
const CPosition& PositionOf(std::uint8_t choice) {
    static const auto positions = [] {
        std::array<std::unique_ptr<CPosition>, Fens.size()> made;
        for (std::size_t i = 0; i < Fens.size(); ++i) {
            made[i] = std::make_unique<CPosition>();
            CPositionText(*made[i]).SetFen(Fens[i]);
        }
        return made;
    }();
    return *positions[choice % Fens.size()];
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool isReady = EnterPrivateFolder();
    if (!isReady || size == 0) {
        return 0;
    }
    static test::CRecordingHost host;
    static const auto book = std::make_unique<CBook>(host);
    host.printed.clear();
    const CPosition& position = PositionOf(data[size - 1]);
    const std::vector<std::uint8_t> bytes = WithKeys(data, size, position.key);
    WriteWhole(Path, AsText(bytes.data(), bytes.size()));
    // A path that is set again is not read again.
    book->options.SetOption("Book Path", "<empty>");
    book->options.SetOption("Book Path", Path);
    MoveList list;
    book->LookUp(list, position);
    for (const Move move : list) {
        if (!CMoveGenerator(position).IsStoredMoveValid(move)) {
            std::abort();
        }
        BaseMoveInfo info;
        if (!book->ProbeMoveInfo(info, move, position)) {
            std::abort();
        }
    }
    Move move = NoMove;
    if (book->ProbeRoot(move, position) != (list.count > 0)) {
        std::abort();
    }
    return 0;
}
