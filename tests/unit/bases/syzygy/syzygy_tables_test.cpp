#include "bases/syzygy/syzygy_tables.h"
#include "platform/directory.h"
#include "syzygy_fixture.h"

#include <fstream>

#if defined(__linux__)
#include <sys/resource.h>
#endif

namespace brenquil {
namespace {

constexpr const char* QueenWins = "8/8/8/3k4/8/8/8/KQ6 w - - 0 1";
constexpr const char* RookWins = "8/8/8/3k4/8/8/8/KR6 w - - 0 1";

class SyzygyTables : public CSyzygyFixture {
protected:
    /// How many mappings this process holds; 0 where the system does not tell.
    static std::size_t Mappings() {
        std::ifstream maps("/proc/self/maps");
        std::size_t count = 0;
        for (std::string line; std::getline(maps, line);) {
            count += line.find(".rtb") != std::string::npos ? 1 : 0;
        }
        return count;
    }
};

TEST_F(SyzygyTables, SaysHowManyItFound) {
    MakeAndLoad({"KQvK", "KRvK"});
    EXPECT_EQ(found, (std::vector<std::string>{"info string Found 2 tablebases."}));
    EXPECT_EQ(tables.SyzygyMaxMen(), 3);
    EXPECT_TRUE(tables.SyzygyLoaded());
}

TEST_F(SyzygyTables, SaysItOnStandardOutputWithAPlainHost) {
    Make({"KQvK"});
    CPlainHost plain;
    CSyzygyTables own(plain);
    testing::internal::CaptureStdout();
    own.SetPath(folder.string());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "info string Found 1 tablebases.\n");
}

TEST_F(SyzygyTables, ANewPathEndsTheSearchAndAnOldOneDoesNot) {
    Load();
    EXPECT_EQ(host.searchesEnded, 1);
    tables.SetPath(folder.string());
    EXPECT_EQ(host.searchesEnded, 1);
}

TEST_F(SyzygyTables, APathWithoutTablesFindsNoneAndAnswersNothing) {
    Load();
    EXPECT_EQ(found, (std::vector<std::string>{"info string Found 0 tablebases."}));
    EXPECT_TRUE(tables.SyzygyLoaded());
    EXPECT_EQ(tables.SyzygyMaxMen(), 0);
    EXPECT_EQ(ProbeClass(QueenWins), -1);
}

TEST_F(SyzygyTables, AFolderThatIsNotThereFindsNone) {
    options.SetOption("Syzygy Path", (folder / "nowhere").string());
    EXPECT_EQ(found, (std::vector<std::string>{"info string Found 0 tablebases."}));
}

TEST_F(SyzygyTables, AnUnsetPathSaysNothing) {
    options.SetOption("Syzygy Path", "");
    options.SetOption("Syzygy Path", "<empty>");
    EXPECT_TRUE(found.empty());
    EXPECT_FALSE(tables.SyzygyLoaded());
}

TEST_F(SyzygyTables, AnUnsetPathPutsTheTablesOutOfUse) {
    MakeAndLoad({"KQvK"});
    EXPECT_EQ(ProbeClass(QueenWins), 4);
    options.SetOption("Syzygy Path", "<empty>");
    EXPECT_EQ(ProbeClass(QueenWins), -1);
    Load();
    EXPECT_EQ(ProbeClass(QueenWins), 4);
    EXPECT_EQ(found.size(), 2U);
}

TEST_F(SyzygyTables, AValueThatIsSetAgainDoesNothing) {
    MakeAndLoad({"KQvK"});
    Load();
    EXPECT_EQ(found.size(), 1U);
}

TEST_F(SyzygyTables, EmptyPiecesOfThePathAreNoDirectories) {
    Make({"KQvK"});
    // An empty piece that counted as a directory would be the root.
    const std::string nameFromRoot = (folder.relative_path() / "KQvK").string();
    CTbPaths paths(host);
    paths.Set(";one;;two;");
    EXPECT_EQ(paths.TbOpenFile(nameFromRoot, TbWdlSuffix), "");
    options.SetOption("Syzygy Path", ";;" + folder.string() + ";");
    EXPECT_EQ(found.back(), "info string Found 1 tablebases.");
    EXPECT_EQ(ProbeClass(QueenWins), 4);
}

TEST_F(SyzygyTables, AJoinedPathHasTheSeparatorOfThePlatform) {
    Make({"KQvK"});
    CTbPaths paths(host);
    paths.Set(folder.string());
    EXPECT_EQ(paths.TbOpenFile("KQvK", TbWdlSuffix),
              folder.string() + PathSeparator() + "KQvK.rtbw");
    EXPECT_EQ(paths.TbOpenFile("KRvK", TbWdlSuffix), "");
}

TEST_F(SyzygyTables, OnlyASemicolonCutsTheListOfDirectories) {
    // On Windows the path has a colon already, and a directory's name may hold none.
    const auto odd = folder / (PathSeparator() == '/' ? "one:two, three" : "two, three");
    std::filesystem::create_directories(odd);
    support::WriteSolvedTables(solver, odd, "KQvK");
    CTbPaths paths(host);
    paths.Set("four;" + odd.string());
    EXPECT_EQ(paths.TbOpenFile("KQvK", TbWdlSuffix), odd.string() + PathSeparator() + "KQvK.rtbw");
}

TEST_F(SyzygyTables, TheFirstDirectoryWithATableWins) {
    const auto first = folder / "first";
    const auto second = folder / "second";
    std::filesystem::create_directories(first);
    std::filesystem::create_directories(second);
    support::WriteBytes(first / "KQvK.rtbw",
                        support::MakeWdlFile({"KQvK", [](const TbPosition&) { return 0; }}));
    support::WriteSolvedTables(solver, second, "KQvK");
    options.SetOption("Syzygy Path", first.string() + ";" + second.string());
    EXPECT_EQ(found.back(), "info string Found 1 tablebases.");
    EXPECT_EQ(ProbeClass(QueenWins), 2);
    options.SetOption("Syzygy Path", second.string() + ";" + first.string());
    EXPECT_EQ(ProbeClass(QueenWins), 4);
}

TEST_F(SyzygyTables, SevenMenAreNotLookedFor) {
    support::WriteBytes(folder / "KQQQQQvK.rtbw", {0x71, 0xE8, 0x23, 0x5D, 0});
    support::WriteBytes(folder / "KQQQvKQQ.rtbw", {0x71, 0xE8, 0x23, 0x5D, 0});
    support::WriteBytes(folder / "KvK.rtbw", {0x71, 0xE8, 0x23, 0x5D, 0});
    Load();
    EXPECT_EQ(found.back(), "info string Found 0 tablebases.");
}

TEST_F(SyzygyTables, TwoBareKingsAreAnsweredWithoutATable) {
    MakeAndLoad({"KQvK"});
    EXPECT_EQ(ProbeClass("8/8/8/3k4/8/8/8/K7 w - - 0 1"), 2);
}

TEST_F(SyzygyTables, WithoutDistancesTheScoresStillWork) {
    MakeAndLoad({"KQvK"});
    std::filesystem::remove(folder / "KQvK.rtbz");
    const std::string errors = ErrorsOf([&] {
        EXPECT_EQ(ProbeClass(QueenWins), 4);
        EXPECT_EQ(ProbeRoot(QueenWins), TbResultFailed);
    });
    EXPECT_EQ(errors, "");
}

TEST_F(SyzygyTables, WithoutDistancesDrawsAreStillAnsweredAtTheRoot) {
    MakeAndLoad({"KBvK", "KQvK"});
    std::filesystem::remove(folder / "KBvK.rtbz");
    std::filesystem::remove(folder / "KQvK.rtbz");
    EXPECT_EQ(ProbeRoot("8/8/8/3k4/8/8/8/KB6 w - - 0 1").Class(), 2);
    EXPECT_EQ(ProbeRoot("8/8/8/8/8/8/1q6/K2k4 w - - 0 1").Class(), 2) << "takes the queen";
}

/// As long as no other move leads to where a distance is wanted.
TEST_F(SyzygyTables, WithoutDistancesAWinByACaptureIsStillAnsweredAtTheRoot) {
    Make({"KQvK"});
    std::filesystem::remove(folder / "KQvK.rtbz");
    support::WriteBytes(folder / "KQvKR.rtbw", support::MakeFlatWdlFile("KQvKR", 0));
    Load();
    const TbResult result = ProbeRoot("8/8/8/3k4/8/8/r7/KQ6 w - - 0 1");
    EXPECT_EQ(result.Class(), 4);
    EXPECT_EQ(result.Distance(), 1);
    EXPECT_EQ(result.From(), A1);
    EXPECT_EQ(result.To(), A2);
    EXPECT_EQ(ProbeRoot("8/8/8/3k4/8/8/1r6/K1Q5 w - - 0 1"), TbResultFailed)
        << "the queen can also leave the rook alone";
}

TEST_F(SyzygyTables, WithoutDistancesAWinByAPawnMoveIsStillAnsweredAtTheRoot) {
    Make({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    for (const char* const name : {"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"}) {
        std::filesystem::remove(folder / (std::string(name) + ".rtbz"));
    }
    Load();
    const TbResult result = ProbeRoot("8/8/8/8/8/8/P1k5/K7 w - - 0 1");
    EXPECT_EQ(result.Class(), 4);
    EXPECT_EQ(result.Distance(), 1);
    EXPECT_EQ(result.From(), A2);
    EXPECT_EQ(result.To(), A4);
    EXPECT_EQ(ProbeRoot("8/8/8/8/8/8/P4k2/K7 w - - 0 1"), TbResultFailed) << "the king can move";
}

TEST_F(SyzygyTables, AWrongMagicIsReportedOnceUnderItsKey) {
    MakeAndLoad({"KQvK"});
    support::WriteBytes(folder / "KQvK.rtbw", support::Bytes(100, 1));
    const std::string errors = ErrorsOf([&] {
        EXPECT_EQ(ProbeClass(QueenWins), -1);
        EXPECT_EQ(ProbeClass(QueenWins), -1);
    });
    EXPECT_EQ(errors, "Corrupted table.\n");
    // The key of the exchanged sides is another one.
    const char* const mirrored = "8/8/8/3K4/8/8/8/kq6 w - - 0 1";
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(ProbeClass(mirrored), -1); }), "Corrupted table.\n");
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(ProbeClass(mirrored), -1); }), "");
}

TEST_F(SyzygyTables, AWrongMagicOfDistancesIsReportedOnce) {
    Make({"KQvK"});
    support::WriteBytes(folder / "KQvK.rtbz", support::Bytes(100, 1));
    Load();
    const std::string errors = ErrorsOf([&] {
        EXPECT_EQ(ProbeRoot(QueenWins), TbResultFailed);
        EXPECT_EQ(ProbeRoot(QueenWins), TbResultFailed);
    });
    EXPECT_EQ(errors, "Corrupted table.\n");
    EXPECT_EQ(ProbeClass(QueenWins), 4);
}

TEST_F(SyzygyTables, AnEmptyFileIsADamagedTable) {
    Make({"KQvK", "KRvK"});
    support::WriteBytes(folder / "KQvK.rtbw", {});
    support::WriteBytes(folder / "KRvK.rtbz", {});
    Load();
    EXPECT_EQ(found.back(), "info string Found 2 tablebases.");
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(ProbeClass(QueenWins), -1); }), "Corrupted table.\n");
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(ProbeRoot(RookWins), TbResultFailed); }),
              "Corrupted table.\n");
}

TEST_F(SyzygyTables, ATableThatIsGoneAtFirstUseIsReported) {
    MakeAndLoad({"KQvK"});
    std::filesystem::remove(folder / "KQvK.rtbw");
    const std::string errors = ErrorsOf([&] {
        EXPECT_EQ(ProbeClass(QueenWins), -1);
        EXPECT_EQ(ProbeClass(QueenWins), -1);
    });
    EXPECT_EQ(errors, "Could not find KQvK.rtbw\n");
}

TEST_F(SyzygyTables, AFolderThatIsReplacedKeepsWhatWasRead) {
    MakeAndLoad({"KQvK", "KRvK"});
    EXPECT_EQ(ProbeClass(QueenWins), 4);
    std::filesystem::rename(folder, folder.string() + "_old");
    std::filesystem::create_directories(folder);
    EXPECT_EQ(ProbeClass(QueenWins), 4);
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(ProbeClass(RookWins), -1); }), "Could not find KRvK.rtbw\n");
    std::filesystem::remove_all(folder.string() + "_old");
}

TEST_F(SyzygyTables, APathSetAgainAndAgainKeepsNoOldMappings) {
    Make({"KQvK", "KRvK"});
    for (int round = 0; round < 50; ++round) {
        options.SetOption("Syzygy Path", folder.string() + std::string(1, PathSeparator()) + ";" +
                                             std::to_string(round));
        ASSERT_EQ(ProbeClass(QueenWins), 4);
        ASSERT_NE(ProbeRoot(QueenWins), TbResultFailed);
        ASSERT_NE(ProbeRoot(RookWins), TbResultFailed);
        ASSERT_LE(Mappings(), 4U);
    }
}

TEST_F(SyzygyTables, ANewPathForgetsWhichDistancesWereMissing) {
    Make({"KQvK"});
    const auto other = folder / "other";
    std::filesystem::create_directories(other);
    std::filesystem::copy(folder / "KQvK.rtbw", other / "KQvK.rtbw");
    options.SetOption("Syzygy Path", other.string());
    EXPECT_EQ(ProbeRoot(QueenWins), TbResultFailed);
    Load();
    EXPECT_NE(ProbeRoot(QueenWins), TbResultFailed);
}

TEST_F(SyzygyTables, TheDistanceCacheHoldsTheLastSixtyFour) {
    // 66 materials whose tables are all of one value.
    std::vector<std::string> names;
    for (const std::string& name : AllTableNames()) {
        const TbShape shape = ShapeOfName(name);
        if (!shape.hasPawns && shape.men >= 5 && shape.encodingType == 0 && names.size() < 66) {
            names.push_back(name);
        }
    }
    ASSERT_EQ(names.size(), 66U);
    std::vector<TbPosition> positions;
    for (const std::string& name : names) {
        const TbCounts counts = CountsOfName(name);
        TbPosition position;
        Bitboard* const boards[] = {nullptr,           &position.pawns, &position.knights,
                                    &position.bishops, &position.rooks, &position.queens,
                                    &position.kings};
        Square next = A1;
        for (unsigned code = TbPawn; code < TbCodes; ++code) {
            for (unsigned i = 0; i < counts[code]; ++i) {
                *boards[code & 7U] |= BitOf(next);
                ((code & TbBlackBit) != 0 ? position.black : position.white) |= BitOf(next);
                ++next;
            }
        }
        support::WriteBytes(folder / (name + ".rtbw"), support::MakeFlatWdlFile(name, 2));
        support::WriteBytes(folder / (name + ".rtbz"), support::MakeFlatDtzFile(name, 0));
        positions.push_back(position);
    }
    Load();
    std::vector<const DtzEntry*> entries;
    for (std::size_t i = 0; i < 64; ++i) {
        entries.push_back(tables.TbFindDtz(positions[i]));
        ASSERT_NE(entries.back(), nullptr) << names[i];
    }
    for (const std::string& name : names) {
        std::filesystem::remove(folder / (name + ".rtbz"));
    }
    EXPECT_EQ(tables.TbFindDtz(positions[0]), entries[0]) << "moves to the front";
    EXPECT_EQ(tables.TbFindDtz(positions[64]), nullptr) << "takes the place of the second";
    EXPECT_EQ(tables.TbFindDtz(positions[2]), entries[2]);
    EXPECT_EQ(tables.TbFindDtz(positions[0]), entries[0]);
    EXPECT_EQ(tables.TbFindDtz(positions[1]), nullptr) << "has fallen out";
    EXPECT_EQ(tables.TbFindDtz(positions[2]), entries[2]) << "was used later than the third";
    EXPECT_EQ(tables.TbFindDtz(positions[3]), nullptr) << "fell out when the second came back";
}

TEST_F(SyzygyTables, AllTablesOfSixMenFitTheHash) {
    for (const std::string& name : AllTableNames()) {
        support::WriteBytes(folder / (name + ".rtbw"), {});
    }
    Load();
    EXPECT_EQ(found.back(), "info string Found 510 tablebases.");
    EXPECT_EQ(tables.SyzygyMaxMen(), 6);
}

TEST(SyzygyHash, AFullBucketTakesNoMore) {
    CTbHash hash;
    TbEntry entry;
    for (std::uint64_t key = 1; key <= HSHMAX; ++key) {
        EXPECT_TRUE(hash.Add(key, entry));
    }
    EXPECT_NE(hash.Find(HSHMAX), nullptr);
    EXPECT_EQ(hash.Find(HSHMAX + 1), nullptr);
    EXPECT_FALSE(hash.Add(HSHMAX + 1, entry));
}

TEST_F(SyzygyTables, AFullBucketEndsTheProgram) {
    Load();
    const auto add = [this](std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            tables.AddTable("KQvK");
        }
    };
    EXPECT_EXIT(add(HSHMAX + 1), testing::ExitedWithCode(1), "HSHMAX too low!\n");
}

TEST_F(SyzygyTables, TooManyTablesEndTheProgram) {
    Load();
    const auto add = [&](const char* last, std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            tables.AddTable(
                std::string(1, 'K').append(i % 17, 'Q').append(i / 17, 'R').append(last));
        }
    };
    EXPECT_EXIT(add("PvK", TBMAX_PAWN + 1), testing::ExitedWithCode(1),
                "TBMAX_PAWN limit too low!\n");
    EXPECT_EXIT(add("BvK", TBMAX_PIECE + 1), testing::ExitedWithCode(1),
                "TBMAX_PIECE limit too low!\n");
}

#if defined(__linux__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(SyzygyTables, AFileThatTheSystemCannotMapEndsTheProgram) {
    Make({"KQvK"});
    const auto path = folder / "KQvK.rtbw";
    std::filesystem::resize_file(path, std::uintmax_t{1} << 32U);
    Load();
    const auto probeInLittleSpace = [&] {
        rlimit limit = {};
        limit.rlim_cur = limit.rlim_max = rlim_t{1} << 31U;
        if (setrlimit(RLIMIT_AS, &limit) == 0) {
            (void)ProbeClass(QueenWins);
        }
    };
    EXPECT_EXIT(probeInLittleSpace(), testing::ExitedWithCode(1),
                "MapViewOfFile\\(\\) failed, name = KQvK\\.rtbw, error = [1-9][0-9]*\\.\n");
}
#endif

}  // namespace
}  // namespace brenquil
