#include "tables/table_lookup.h"

#include "bases/nalimov/nalimov_index.h"
#include "bases/syzygy/tb_probe.h"
#include "platform/bits.h"
#include "tables/emd_writer.h"
#include "tables/nalimov_bytes.h"
#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_file.h"

#include <array>
#include <cstddef>

namespace brenquil {

CTableLookup::CTableLookup(std::string folder) : folder_(std::move(folder)) {
    syzygy_.SyzygyInit(folder_);
}

TableAnswer CTableLookup::Ask(const ShownPosition& position) {
    TableAnswer answer;
    if (position.ending == 0) {
        answer.mate = answer.wdl = answer.zeroing = 0;
        return answer;
    }
    answer.mate = AskMate(position);
    const Ending& ending = EndingOf(position.ending);
    TbPosition board = TbPositionOf(ending, position.squares, position.sideToMove);
    if (position.victim != Ending::NoMan) {
        board.ep = ToByte(position.squares[position.victim] + Forward(position.sideToMove));
    }
    TbSuccess success = TbSuccess::Failed;
    const int wdl = TbProbeWdl(syzygy_, board, success);
    if (success != TbSuccess::Failed) {
        answer.wdl = wdl;
        const int distance = TbProbeDtz(syzygy_, board, success);
        if (success != TbSuccess::Failed) {
            answer.zeroing = distance;
        }
    }
    return answer;
}

const CTableLookup::OpenFile* CTableLookup::FileOf(int number, int side) {
    const auto known = files_.find({number, side});
    if (known != files_.end()) {
        return known->second.get();
    }
    std::unique_ptr<OpenFile>& place = files_[{number, side}];
    const Ending& ending = EndingOf(number);
    const auto choice = FindNalimovFile(folder_, ending, side);
    if (!choice) {
        return nullptr;
    }
    auto file = std::make_unique<OpenFile>();
    bool isSound = file->mapping.Open(PathOf(folder_, choice->name));
    if (isSound && choice->isCompressed) {
        isSound =
            DataCompParse(&file->info, file->mapping.Bytes()) == DataCompOk &&
            file->info->blockSize == EmdBlockSize &&
            DataCompBlockStart(*file->info, file->info->blocks) == file->mapping.Size() &&
            (std::uint64_t{file->info->blocks} - 1) * EmdBlockSize + file->info->lastBlockSize ==
                NalimovPlaces(ending, side);
    } else if (isSound) {
        isSound = file->mapping.Size() == NalimovPlaces(ending, side);
    }
    if (!isSound) {
        damaged_.push_back(choice->name);
        return nullptr;
    }
    place = std::move(file);
    return place.get();
}

std::optional<std::uint8_t> CTableLookup::ByteAt(const OpenFile& file, std::uint64_t place) {
    if (file.info == nullptr) {
        return file.mapping.Bytes()[place];
    }
    const DataCompInfo& info = *file.info;
    const auto block = static_cast<std::uint32_t>(place / EmdBlockSize);
    const std::uint32_t start = DataCompBlockStart(info, block);
    std::array<std::uint8_t, EmdBlockSize + DataCompSpareBytes> target{};
    DecodeState state;
    state.cookie = DecodeState::Cookie;
    state.target = target.data();
    state.stored = file.mapping.Data() + start;
    state.storedSize = DataCompBlockStart(info, block + 1) - start;
    state.size = block + 1 == info.blocks ? info.lastBlockSize : info.blockSize;
    if (state.storedSize == state.size) {
        return state.stored[place % EmdBlockSize];
    }
    if (!DataCompDecode(info, state, state.size)) {
        return std::nullopt;
    }
    return target[place % EmdBlockSize];
}

std::optional<int> CTableLookup::AskMate(const ShownPosition& position) {
    const Ending& ending = EndingOf(position.ending);
    const int side = position.sideToMove == White || HasOneNalimovFile(ending) ? 0 : 1;
    const OpenFile* const file = FileOf(ending.number, side);
    // Without a pawn that stands ready to take, the right to take in passing changes nothing.
    std::size_t victim = Ending::NoMan;
    ForDoubleSteps(ending, position.squares, position.sideToMove,
                   [&](std::size_t man) { victim = man == position.victim ? man : victim; });
    const std::uint64_t place =
        NalimovPlaceOf(ending, position.squares, position.sideToMove, victim);
    if (file == nullptr || place == CNalimovCalculator::NoIndex) {
        return std::nullopt;
    }
    const std::optional<std::uint8_t> byte = ByteAt(*file, place);
    if (!byte || *byte == NalimovNoValue) {
        return std::nullopt;
    }
    return CodeOfNalimovByte(*byte);
}

}  // namespace brenquil
