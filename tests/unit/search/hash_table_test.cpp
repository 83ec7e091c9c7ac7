// The transposition table: sizes, what replaces what, ages, clearing, and how full it says it is.

#include "search/hash_table.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <map>
#include <optional>
#include <random>

namespace brenquil {
namespace {

constexpr std::uint32_t OneMegabyte = 39321;  // entries
constexpr Move SomeMove = Move::Make(E2, E4);
constexpr Move OtherMove = Move::Make(G1, F3);
/// After so many the byte that parts what was stored before and after a clearing begins again.
constexpr int ClearsOfACycle = 256;

class HashTable : public testing::Test {
protected:
    HashTable() { EXPECT_TRUE(table.Resize(1)); }

    void Store(std::uint64_t key, std::int32_t depth, Move move = SomeMove) {
        table.NoteClaims(table.Store(key, 17, depth, Bound::Exact, move) ? 1 : 0);
    }

    [[nodiscard]] std::int32_t DepthAt(std::uint64_t key) const {
        const auto hit = table.Probe(key);
        return hit ? hit->depth : -1;
    }

    /// Entries claimed since the count was reset.
    [[nodiscard]] std::uint32_t Claimed() const { return table.EntryCount() - table.FreeCount(); }

    void RaiseAge(int times) {
        for (int i = 0; i < times; ++i) {
            table.BeginSearch(false);
        }
    }

    CHashTable table;
};

TEST_F(HashTable, SizesFollowTheDivisionOfTheMemory) {
    struct Size {
        std::uint32_t megabytes;
        std::uint32_t entries;
        std::size_t pawnEntries;
    };

    for (const Size& size : {Size{1, 39321, 3276}, Size{2, 78643, 6553}, Size{3, 117964, 9830},
                             Size{5, 196608, 16384}, Size{16, 629145, 52428},
                             Size{64, 2516582, 209715}, Size{0, 0, 0}, Size{1, 39321, 3276}}) {
        ASSERT_TRUE(table.Resize(size.megabytes));
        EXPECT_EQ(table.SizeMegabytes(), size.megabytes);
        EXPECT_EQ(table.EntryCount(), size.entries) << size.megabytes;
        EXPECT_EQ(table.FreeCount(), size.entries) << size.megabytes;
        EXPECT_EQ(table.pawnHash.Count(), size.pawnEntries) << size.megabytes;
    }
}

TEST_F(HashTable, BeginsWithoutMemory) {
    CHashTable empty;
    EXPECT_EQ(empty.EntryCount(), 0U);
    EXPECT_EQ(empty.SizeMegabytes(), 0U);
    empty.Store(5, 1, 1, Bound::Exact, SomeMove);
    EXPECT_FALSE(empty.Probe(5));
    EXPECT_FALSE(empty.Probe(0));
    EXPECT_EQ(empty.Hashfull(), 0U);
    empty.Clear();
    empty.Prefetch(5);
}

TEST_F(HashTable, SizeZeroFindsAndStoresNothing) {
    Store(7, 3);
    ASSERT_TRUE(table.Resize(0));
    Store(7, 3);
    EXPECT_FALSE(table.Probe(7));
    EXPECT_FALSE(table.Probe(0));
    EXPECT_EQ(table.Hashfull(), 0U);
    EXPECT_EQ(table.FreeCount(), 0U);
}

TEST_F(HashTable, CurrentSizeKeepsEverythingAndAnotherSizeEmpties) {
    RaiseAge(3);
    Store(7, 3);
    PawnEntry& pawns = table.pawnHash.Slot(99);
    pawns.key = 99;
    ASSERT_TRUE(table.Resize(1));
    EXPECT_EQ(DepthAt(7), 3);
    EXPECT_EQ(table.Age(), 3U);
    EXPECT_EQ(Claimed(), 1U);
    EXPECT_EQ(table.pawnHash.Slot(99).key, 99U);

    ASSERT_TRUE(table.Resize(2));
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(table.Age(), 0U);
    EXPECT_EQ(Claimed(), 0U);
    EXPECT_EQ(table.pawnHash.Slot(99).key, 0U);
}

TEST_F(HashTable, SizeThatCannotBeHadKeepsTheOldSizeInUse) {
    for (const std::uint32_t megabytes : {4000000000U, 100000000U, 120000U, 90000000U}) {
        EXPECT_FALSE(table.Resize(megabytes)) << megabytes;
        EXPECT_EQ(table.SizeMegabytes(), 1U);
        EXPECT_EQ(table.EntryCount(), OneMegabyte);
        EXPECT_EQ(table.pawnHash.Count(), 3276U);
        Store(megabytes, 4);
        EXPECT_EQ(DepthAt(megabytes), 4);
    }
}

TEST_F(HashTable, GivesBackWhatWasStored) {
    std::mt19937_64 random(1);
    for (int i = 0; i < 2000; ++i) {
        const std::uint64_t key = random();
        const auto score = static_cast<Score>(random() % 64001) - 32000;
        const auto depth = static_cast<std::int32_t>(random() % 256);
        const auto bound = static_cast<Bound>(random() % 3);
        const Move move{static_cast<std::uint32_t>(random())};
        table.BeginSearch(false);  // nothing is protected
        table.Store(key, score, depth, bound, move);
        const auto hit = table.Probe(key);
        ASSERT_TRUE(hit);
        EXPECT_EQ(hit->score, score);
        EXPECT_EQ(hit->depth, depth);
        EXPECT_EQ(hit->bound, bound);
        EXPECT_EQ(hit->move.word, move.Identity());  // the low half alone
    }
}

TEST_F(HashTable, MateScoresStandAsTheyAre) {
    for (const Score score : {31999, 31746, -31998, -32000, 32000}) {
        table.Store(12, score, 1, Bound::Exact, NoMove);
        EXPECT_EQ(table.Probe(12)->score, score);
    }
}

TEST_F(HashTable, KeyOfAnotherPositionInTheSameSlotDoesNotMatch) {
    Store(7, 3);
    EXPECT_FALSE(table.Probe(7 + OneMegabyte));
    EXPECT_FALSE(table.Probe(8));
    EXPECT_TRUE(table.Probe(7));
}

TEST_F(HashTable, EmptyEntryMatchesTheKeyZeroAlone) {
    ASSERT_TRUE(table.Probe(0));
    EXPECT_EQ(table.Probe(0)->depth, 0);
    EXPECT_EQ(table.Probe(0)->score, 0);
    EXPECT_TRUE(table.Probe(0)->move.IsNone());
    for (std::uint64_t key = 1; key < 3 * OneMegabyte; ++key) {
        ASSERT_FALSE(table.Probe(key)) << key;
    }
}

TEST_F(HashTable, EveryEntryIsASlotOfItsOwn) {
    const auto key = [](std::uint64_t index) { return index + index * 7 * OneMegabyte; };
    for (std::uint64_t index = 0; index < OneMegabyte; ++index) {
        ASSERT_TRUE(table.Store(
            key(index), static_cast<Score>(index % 30000), static_cast<std::int32_t>(index % 200),
            static_cast<Bound>(index % 3), Move{static_cast<std::uint32_t>(index % 65536)}));
    }
    EXPECT_EQ(table.FreeCount(), OneMegabyte);  // not noted yet
    table.NoteClaims(OneMegabyte);
    EXPECT_EQ(table.FreeCount(), 0U);
    EXPECT_EQ(table.Hashfull(), 1000U);
    for (std::uint64_t index = 0; index < OneMegabyte; ++index) {
        const auto hit = table.Probe(key(index));
        ASSERT_TRUE(hit) << index;
        ASSERT_EQ(hit->score, static_cast<Score>(index % 30000));
        ASSERT_EQ(hit->depth, static_cast<std::int32_t>(index % 200));
        ASSERT_EQ(hit->bound, static_cast<Bound>(index % 3));
        ASSERT_EQ(hit->move.word, index % 65536);
    }
}

TEST_F(HashTable, IndexIsTheRemainderOfTheWholeKey) {
    const std::uint64_t key = 0xFEDCBA9876543210;
    Store(key, 5);
    // The greater depth stays when another key of the same remainder is stored.
    Store(key % OneMegabyte, 4);
    EXPECT_EQ(DepthAt(key), 5);
    EXPECT_FALSE(table.Probe(key % OneMegabyte));
    Store(key % OneMegabyte + 1, 4);
    EXPECT_EQ(DepthAt(key % OneMegabyte + 1), 4);
}

TEST_F(HashTable, StoreOfLowerDepthAndSameAgeIsDroppedWhateverTheKey) {
    Store(7, 6, SomeMove);
    Store(7, 5, OtherMove);
    EXPECT_EQ(DepthAt(7), 6);
    Store(7 + OneMegabyte, 5, OtherMove);
    EXPECT_EQ(DepthAt(7), 6);
    EXPECT_EQ(table.Probe(7)->move.word, SomeMove.word);
    EXPECT_FALSE(table.Probe(7 + OneMegabyte));
}

TEST_F(HashTable, StoreOfEqualDepthReplaces) {
    Store(7, 6, SomeMove);
    Store(7 + OneMegabyte, 6, OtherMove);
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(table.Probe(7 + OneMegabyte)->move.word, OtherMove.word);
}

TEST_F(HashTable, StoreWithoutAMoveOverwritesAMove) {
    Store(7, 6, SomeMove);
    Store(7, 6, NoMove);
    EXPECT_TRUE(table.Probe(7)->move.IsNone());
}

TEST_F(HashTable, RaisedAgeTakesTheProtectionAway) {
    Store(7, 60);
    table.BeginSearch(false);
    EXPECT_EQ(DepthAt(7), 60);
    Store(7, 1);
    EXPECT_EQ(DepthAt(7), 1);
}

TEST_F(HashTable, SearchFromNothingBeginsWithAnEmptyTable) {
    RaiseAge(3);
    Store(7, 6);
    table.BeginSearch(true);
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(table.Age(), 0U);
    EXPECT_EQ(Claimed(), 0U);
}

TEST_F(HashTable, FromAge256OnNothingIsProtected) {
    RaiseAge(255);
    Store(7, 6);
    Store(7, 5);
    EXPECT_EQ(DepthAt(7), 6);
    RaiseAge(1);
    for (int search = 256; search < 520; ++search) {
        Store(7, 6);
        Store(7, 5);
        EXPECT_EQ(DepthAt(7), 5) << search;
        table.BeginSearch(false);
    }
    table.Clear();
    Store(7, 6);
    Store(7, 5);
    EXPECT_EQ(DepthAt(7), 6);
}

TEST_F(HashTable, NegativeDepthWrapsAndCountsAsDeeperThanAnything) {
    RaiseAge(1);
    Store(7, -2);
    EXPECT_EQ(DepthAt(7), 65534);
    Store(7, 254);
    EXPECT_EQ(DepthAt(7), 65534);
    Store(8, 200);
    Store(8, -2);  // lower as a number, so the entry that is there stays
    EXPECT_EQ(DepthAt(8), 200);
}

TEST_F(HashTable, NegativeDepthAtAge0LosesAgainstAnEmptyEntry) {
    Store(7, -1);  // the empty entry is of age 0 and of depth 0, which is more
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(Claimed(), 0U);
}

TEST_F(HashTable, FreeCountFallsOncePerSearchForAnEntryWithDepth) {
    Store(7, 1);
    Store(7, 2);
    Store(7 + OneMegabyte, 3);
    EXPECT_EQ(Claimed(), 1U);
    table.BeginSearch(false);
    Store(7, 2);
    EXPECT_EQ(Claimed(), 1U);
    Store(7, 2);
    EXPECT_EQ(Claimed(), 1U);
}

TEST_F(HashTable, DroppedStoreClaimsNothing) {
    Store(7, 9);
    Store(7, 3);
    EXPECT_EQ(Claimed(), 1U);
}

TEST_F(HashTable, ReplacingADepthZeroEntryCountsEachTime) {
    Store(7, 0);
    Store(7, 0);
    Store(7, 0);
    EXPECT_EQ(Claimed(), 3U);
    Store(7, 4);
    EXPECT_EQ(Claimed(), 4U);
    Store(7, 4);
    EXPECT_EQ(Claimed(), 4U);
}

TEST_F(HashTable, HashfullCountsThousandthsRoundedDown) {
    for (std::uint32_t i = 0; i < 39; ++i) {
        Store(i, 1);
    }
    EXPECT_EQ(table.Hashfull(), 0U);  // 0.99
    Store(39, 1);
    EXPECT_EQ(table.Hashfull(), 1U);
    for (std::uint32_t i = 40; i < 19660; ++i) {
        Store(i, 1);
    }
    EXPECT_EQ(table.Hashfull(), 499U);
    Store(19660, 1);
    EXPECT_EQ(table.Hashfull(), 500U);
    table.BeginSearch(false);
    EXPECT_EQ(table.Hashfull(), 0U);
}

TEST_F(HashTable, HashfullStaysAt1000WhenTheCountHasRunPastZero) {
    for (std::uint32_t i = 0; i < OneMegabyte + 5; ++i) {
        Store(7, 0);
    }
    EXPECT_EQ(table.FreeCount(), 0xFFFFFFFB);
    EXPECT_EQ(table.Hashfull(), 1000U);
}

TEST_F(HashTable, ClearEmptiesTheTableAndKeepsThePawns) {
    RaiseAge(4);
    Store(7, 3);
    table.pawnHash.Slot(99).key = 99;
    table.Clear();
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(table.Age(), 0U);
    EXPECT_EQ(Claimed(), 0U);
    EXPECT_EQ(table.EntryCount(), OneMegabyte);
    EXPECT_EQ(table.pawnHash.Slot(99).key, 99U);
}

TEST_F(HashTable, ClearReachesEveryEntryAndLeavesTheBounds) {
    for (std::uint32_t i = 0; i < OneMegabyte; ++i) {
        table.Store(i, 5, 5, Bound::Lower, SomeMove);
    }
    table.Clear();
    for (std::uint32_t i = 1; i < OneMegabyte; ++i) {
        ASSERT_FALSE(table.Probe(i));
    }
    ASSERT_TRUE(table.Probe(0));
    EXPECT_EQ(table.Probe(0)->depth, 0);
    EXPECT_EQ(table.Probe(0)->bound, Bound::Lower);
}

TEST_F(HashTable, WhatWasClearedStaysAwayHoweverOftenTheTableIsCleared) {
    for (int clears = 1; clears <= 2 * ClearsOfACycle + 1; ++clears) {
        Store(7, 6);
        for (int i = 0; i < clears; ++i) {
            table.Clear();
            ASSERT_FALSE(table.Probe(7)) << i + 1 << " of " << clears;
        }
    }
}

TEST_F(HashTable, ClearedEntryProtectsNothing) {
    Store(7, 60);
    table.Clear();
    Store(7 + OneMegabyte, 1, OtherMove);
    EXPECT_EQ(DepthAt(7 + OneMegabyte), 1);
    EXPECT_EQ(Claimed(), 1U);
}

TEST_F(HashTable, NegativeDepthAtAge0LosesAgainstAClearedEntry) {
    RaiseAge(1);
    Store(7, 60);
    table.Clear();
    Store(7, -1);
    EXPECT_FALSE(table.Probe(7));
    EXPECT_EQ(Claimed(), 0U);
}

TEST_F(HashTable, AnotherSizeBeginsWithEmptyEntriesAfterAnyNumberOfClears) {
    for (int clears = 0; clears < 3; ++clears) {
        for (int i = 0; i < clears; ++i) {
            table.Clear();
        }
        ASSERT_TRUE(table.Resize(2));
        ASSERT_TRUE(table.Probe(0));
        EXPECT_EQ(table.Probe(0)->depth, 0);
        EXPECT_FALSE(table.Probe(7));
        ASSERT_TRUE(table.Resize(1));
    }
}

/// The rules of the table, with entries that are emptied one by one.
class CWipedTable {
public:
    void Clear() {
        for (auto& [slot, entry] : entries_) {
            entry.key = 0;
            entry.age = 0;
            entry.hit = HashHit{0, 0, NoMove, entry.hit.bound};
        }
        age_ = 0;
    }

    void RaiseAge() { ++age_; }

    bool Store(std::uint64_t key, Score score, int depth, Bound bound, Move move) {
        Entry& entry = entries_[key % OneMegabyte];
        if (entry.age == age_ && entry.hit.depth > depth) {
            return false;
        }
        const bool isClaimed = entry.hit.depth == 0 || entry.age < age_;
        entry = {key, age_ % 256, HashHit{depth & 0xFFFF, score, move, bound}};
        return isClaimed;
    }

    [[nodiscard]] std::optional<HashHit> Probe(std::uint64_t key) {
        const Entry& entry = entries_[key % OneMegabyte];
        return entry.key == key ? std::optional(entry.hit) : std::nullopt;
    }

private:
    struct Entry {
        std::uint64_t key = 0;
        std::uint32_t age = 0;
        HashHit hit{0, 0, NoMove, Bound::Exact};
    };

    std::map<std::uint64_t, Entry> entries_;
    std::uint32_t age_ = 0;
};

/// Few keys, so that they meet often: six slots, three keys for each, the key 0 among them.
TEST_F(HashTable, AnyStoresSearchesAndClearsGiveWhatAWipedTableGives) {
    std::mt19937_64 random(20);
    CWipedTable wiped;
    for (int step = 0; step < 300000; ++step) {
        const std::uint64_t key = random() % 6 + random() % 3 * OneMegabyte;
        switch (random() % 24) {
        case 0:
            table.Clear();
            wiped.Clear();
            break;
        case 1:
            table.BeginSearch(false);
            wiped.RaiseAge();
            break;
        default: {
            const auto score = static_cast<Score>(random() % 2001) - 1000;
            const int depth = static_cast<int>(random() % 12) - 1;
            const auto bound = static_cast<Bound>(random() % 3);
            const Move move = random() % 4 == 0 ? NoMove : SomeMove;
            ASSERT_EQ(table.Store(key, score, depth, bound, move),
                      wiped.Store(key, score, depth, bound, move))
                << "step " << step;
        }
        }
        const auto found = table.Probe(key);
        const auto expected = wiped.Probe(key);
        ASSERT_EQ(found.has_value(), expected.has_value()) << "step " << step;
        if (found) {
            ASSERT_EQ(found->depth, expected->depth) << "step " << step;
            ASSERT_EQ(found->score, expected->score) << "step " << step;
            ASSERT_EQ(found->move.word, expected->move.word) << "step " << step;
            ASSERT_EQ(found->bound, expected->bound) << "step " << step;
        }
    }
}

}  // namespace
}  // namespace brenquil
