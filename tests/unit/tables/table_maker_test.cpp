// What making tables needs.
// ctest: threads

#include "tables/nalimov_family.h"
#include "tables/syzygy_family.h"
#include "tables/table_maker.h"

#include <gtest/gtest.h>

namespace brenquil {
namespace {

TEST(TableMaker, FiveMenFitIntoFourGibibytes) {
    CWorkers workers(8);
    CProgress progress(CProgress::Output::Silent);
    const TableSetting setting = {"", workers, progress};
    const CNalimovFamily nalimov(setting);
    const CSyzygyFamily syzygy(setting);
    constexpr std::uint64_t Gibibyte = std::uint64_t{1} << 30U;
    std::vector<std::string> larger;
    for (int number = 1; number <= EndingCount; ++number) {
        const Ending& ending = EndingOf(number);
        EXPECT_LE(BytesToMake(nalimov, ending), 4 * Gibibyte) << ending.name;
        EXPECT_LE(BytesToMake(syzygy, ending), 6 * Gibibyte) << ending.name;
        if (BytesToMake(syzygy, ending) > 4 * Gibibyte) {
            larger.push_back(ending.name);
        }
    }
    // A piece and a pawn against a pawn turn into eight endings with a pawn.
    EXPECT_EQ(larger, (std::vector<std::string>{"knpkp", "kbpkp", "krpkp", "kqpkp"}));
}

}  // namespace
}  // namespace brenquil
