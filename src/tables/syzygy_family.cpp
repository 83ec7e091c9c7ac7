#include "tables/syzygy_family.h"

#include "bases/syzygy/tb_files.h"
#include "bases/syzygy/tb_probe.h"
#include "platform/file_mapping.h"
#include "tables/ending_node.h"
#include "tables/ending_solver.h"
#include "tables/syzygy_bytes.h"
#include "tables/table_error.h"
#include "tables/table_file.h"

#include <algorithm>
#include <atomic>
#include <cstddef>

namespace brenquil {

namespace {

enum class FileState { Absent, Damaged, Sound };

std::string FileName(const Ending& ending, std::string_view suffix) {
    return ending.syzygyName + std::string(suffix);
}

/// Looks at one file: its own sum, or else what the reader checks.
template <class Parse>
FileState LookAt(const std::string& path, const Parse& parse) {
    CFileMapping mapping;
    if (!mapping.Open(path)) {
        if (!LengthOfFile(path)) {
            return FileState::Absent;
        }
        return FileState::Damaged;
    }
    const SyzygySum sum = CheckSyzygySum(mapping.Bytes());
    const bool isSound = sum != SyzygySum::Wrong && parse(mapping.Bytes());
    return isSound ? FileState::Sound : FileState::Damaged;
}

}  // namespace

TbPosition TbPositionOf(const Ending& ending, const EndingSquares& squares,
                        Colour sideToMove) noexcept {
    TbPosition position;
    position.turn = sideToMove == White;
    const TbMen boards[] = {&TbPosition::pawns, &TbPosition::knights, &TbPosition::bishops,
                            &TbPosition::rooks, &TbPosition::queens,  &TbPosition::kings};
    for (std::size_t man = 0; man < ending.men; ++man) {
        const Bitboard bit = BitOf(squares[man]);
        position.*boards[ending.man[man].type] |= bit;
        (ending.man[man].colour == White ? position.white : position.black) |= bit;
    }
    return position;
}

std::vector<std::string> CSyzygyFamily::FilesOf(const Ending& ending) const {
    return {FileName(ending, TbWdlSuffix), FileName(ending, TbDtzSuffix)};
}

TableState CSyzygyFamily::Look(const Ending& ending, std::string& culprit) const {
    const TbShape shape = ShapeOfName(ending.syzygyName);
    const std::string wdlName = FileName(ending, TbWdlSuffix);
    const std::string dtzName = FileName(ending, TbDtzSuffix);
    const FileState wdl = LookAt(PathOf(setting_.folder, wdlName), [&](TbBytes bytes) {
        TbEntry entry;
        entry.shape = shape;
        entry.data = bytes;
        return ReadWdlTable(entry);
    });
    const FileState dtz = LookAt(PathOf(setting_.folder, dtzName), [&](TbBytes bytes) {
        DtzEntry entry;
        entry.shape = shape;
        entry.data = bytes;
        return ReadDtzTable(entry);
    });
    if (wdl == FileState::Damaged || dtz == FileState::Damaged) {
        culprit = wdl == FileState::Damaged ? wdlName : dtzName;
        return TableState::Damaged;
    }
    return wdl == FileState::Sound && dtz == FileState::Sound ? TableState::Sound
                                                              : TableState::Absent;
}

std::shared_ptr<SolvedValues> CSyzygyFamily::Make(const Ending& ending, const SolvedEndings& solved,
                                                  std::uint64_t& bytes) {
    auto codes =
        SolveEnding<DistanceToZeroing>(ending, solved, setting_.workers, setting_.progress);
    {
        const CSyzygyDemands demands(*codes, solved, setting_.workers, setting_.progress);
        const SyzygyFiles files =
            MakeSyzygyFiles(*codes, demands, setting_.workers, setting_.progress);
        // The second one first: a run that ends in between makes both again.
        WriteTableFile(PathOf(setting_.folder, FileName(ending, TbDtzSuffix)), files.dtz);
        WriteTableFile(PathOf(setting_.folder, FileName(ending, TbWdlSuffix)), files.wdl);
        bytes = files.wdl.size() + files.dtz.size();
    }
    return KeepValues<DistanceToZeroing>(std::move(codes), setting_.workers);
}

void CSyzygyFamily::Read(Colour sideToMove, SolvedValues& values) {
    const Ending& ending = values.Of();
    tables_.SyzygyInit(setting_.folder);
    values.Allocate(sideToMove);
    const CEndingIndex& index = values.Index();
    constexpr std::size_t ReadingChunk = std::size_t{1} << 13U;
    const std::size_t chunks = (index.SliceSize() + ReadingChunk - 1) / ReadingChunk;
    const std::size_t count = chunks * index.Slices();
    setting_.progress.BeginPhase("reading " + ending.syzygyName, values.Places());
    std::atomic<std::size_t> done{0};
    setting_.workers.ForEach(count, [&](std::size_t item, std::size_t thread) {
        const std::size_t slice = item / chunks;
        const std::size_t first = item % chunks * ReadingChunk;
        const std::size_t end = std::min(index.SliceSize(), first + ReadingChunk);
        std::int8_t* const to = values.Slice(sideToMove, slice);
        for (std::size_t at = first; at < end; ++at) {
            const EndingSquares squares = index.SquaresOf({slice, at});
            if (!CEndingNode(ending, squares, sideToMove).IsLegal()) {
                continue;
            }
            TbSuccess success = TbSuccess::Failed;
            to[at] = static_cast<std::int8_t>(
                TbProbeWdl(tables_, TbPositionOf(ending, squares, sideToMove), success));
            if (success == TbSuccess::Failed) {
                throw CTableError("the table " + ending.syzygyName +
                                  " has no value for a position");
            }
        }
        const std::size_t finished = done.fetch_add(1, std::memory_order_relaxed) + 1;
        if (thread == 0) {
            setting_.progress.Report(Share(finished, count));
        }
    });
}

std::uint64_t CSyzygyFamily::MakingBytes(const Ending& ending) const {
    // After the solving: one byte a place for the demands; a side's values, and their sequence in
    // two bytes each, with 64 MiB for counting pairs on each thread.
    constexpr std::uint64_t Counting = std::uint64_t{96} << 20U;
    const std::uint64_t side = KeptBytesOfSide(ending);
    const std::uint64_t solving = SolvingBytes<DistanceToZeroing>(ending, setting_.workers.Count());
    const std::uint64_t sequences = ending.men < EndingMostMen ? side : 2 * side;
    return std::max(solving, 4 * side + 2 * side + sequences + Counting);
}

}  // namespace brenquil
