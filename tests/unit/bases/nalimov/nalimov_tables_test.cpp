// The list of signatures, the tree over piece counts, and the registration of files.

#include "../../../support/nalimov_test_folder.h"
#include "bases/nalimov/nalimov_tables.h"
#include "platform/directory.h"

#include <gtest/gtest.h>
#include <set>
#include <unistd.h>

namespace brenquil {
namespace {

using test::Bytes;
using test::CDataCompWriter;
using test::CTestFolder;
using test::TableNumber;

std::uint64_t PositionsOf(std::string_view name, int side) {
    return NalimovCalculator(TableNumber(name), side).Positions();
}

Bytes Zeros(std::uint64_t size) {
    return Bytes(static_cast<std::size_t>(size));
}

bool HasFile(const CNalimovTables& tables, std::string_view name, std::size_t side,
             std::size_t extent = 0) {
    const auto& files = tables.Table(TableNumber(name)).sides[side];
    return files != nullptr && files->extents[extent].usable;
}

std::string FileName(const CNalimovTables& tables, std::string_view name, std::size_t side) {
    return tables.Table(TableNumber(name)).sides[side]->extents[0].fileName;
}

/// Registers in a process of its own, whose standard output the death test sees.
void RegisterLoudly(const std::string& path) {
    (void)dup2(STDERR_FILENO, STDOUT_FILENO);
    test::CRecordingHost host;
    (void)std::make_unique<CNalimovTables>(host)->RegisterAll(path);
    std::exit(0);
}

TEST(NalimovSignatures, AreFourHundredAndFortyInTheirOrder) {
    EXPECT_EQ(NalimovSignatures.size(), 441U);
    EXPECT_EQ(NalimovSignatures[1].name, "kpk");
    EXPECT_EQ(NalimovSignatures[6].name, "kpkp");
    EXPECT_EQ(NalimovSignatures[36].name, "kppkp");
    EXPECT_EQ(NalimovSignatures[146].name, "knnknn");
    EXPECT_EQ(NalimovSignatures[440].name, "kqqpkq");
    std::set<std::string_view> names;
    std::array<int, 3> flags{};
    for (int table = 1; table <= NalimovTableCount; ++table) {
        const NalimovSignature& row = NalimovSignatures[static_cast<std::size_t>(table)];
        names.insert(row.name);
        const std::size_t men = row.name.size();
        EXPECT_EQ(men, table < 6 ? 3U : table < 36 ? 4U : table < 146 ? 5U : 6U) << row.name;
        flags[0] += (row.flags & NalimovSymmetric) != 0 ? 1 : 0;
        flags[1] += (row.flags & NalimovTwoByte) != 0 ? 1 : 0;
        flags[2] += (row.flags & NalimovSplit) != 0 ? 1 : 0;
        const NalimovMaterial material = NalimovMaterialOf(row.name);
        // Pawn against pawn has a file for each side, though its sides are equal.
        EXPECT_EQ((row.flags & NalimovSymmetric) != 0,
                  material.first == material.second && row.name != "kpkp")
            << row.name;
    }
    EXPECT_EQ(names.size(), 440U);
    EXPECT_EQ(flags, (std::array<int, 3>{19, 64, 153}));
}

TEST(NalimovMaterialTree, FindsWhatWasEntered) {
    CNalimovMaterialTree tree;
    EXPECT_EQ(tree.Find({1, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0);
    EXPECT_TRUE(tree.Enter({1, 0, 0, 0, 2, 0, 0, 0, 0, 1}, 7));
    EXPECT_TRUE(tree.Enter({0, 0, 0, 0, 1, 1, 0, 0, 0, 2}, -7));
    EXPECT_EQ(tree.Find({1, 0, 0, 0, 2, 0, 0, 0, 0, 1}), 7);
    EXPECT_EQ(tree.Find({0, 0, 0, 0, 1, 1, 0, 0, 0, 2}), -7);
    EXPECT_EQ(tree.Find({1, 0, 0, 0, 2, 0, 0, 0, 0, 0}), 0);
    EXPECT_EQ(tree.Find({5, 0, 0, 0, 0, 0, 0, 0, 0, 0}), 0) << "too many men";
    EXPECT_EQ(tree.Find({0, 0, 0, 0, 2, 0, 0, 0, 0, 3}), 0) << "too many men";
    EXPECT_FALSE(tree.Enter({3, 0, 0, 0, 0, 2, 0, 0, 0, 0}, 1));
}

class CNalimovRegistration : public testing::Test {
protected:
    CTestFolder folder;
    test::CRecordingHost host;
    std::unique_ptr<CNalimovTables> tables = std::make_unique<CNalimovTables>(host);
};

using NalimovRegistration = CNalimovRegistration;
using NalimovRegistrationDeathTest = CNalimovRegistration;

TEST_F(NalimovRegistration, DefaultPathTextIsDirectoryOfThatNameAndFindsNothing) {
    EXPECT_EQ(tables->RegisterAll("<empty>"), 0);
    EXPECT_EQ(tables->menLoaded, 0);
}

TEST_F(NalimovRegistration, PlainFilesOfBothSidesAreFound) {
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    folder.Write("kqk.nbb", Zeros(PositionsOf("kqk", 1)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), folder.Name() + PathSeparator() + "kqk.nbw");
    EXPECT_EQ(FileName(*tables, "kqk", 1), folder.Name() + PathSeparator() + "kqk.nbb");
    EXPECT_EQ(tables->FindTable({0, 0, 0, 0, 1, 0, 0, 0, 0, 0}), 5);
    EXPECT_EQ(tables->FindTable({0, 0, 0, 0, 0, 0, 0, 0, 0, 1}), -5);
    EXPECT_FALSE(tables->HasCompressedFiles());
}

TEST_F(NalimovRegistration, TableFoundInTwoDirectoriesStaysWithTheFirst) {
    const CTestFolder second;
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    second.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    second.Write("krk.nbw", Zeros(PositionsOf("krk", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name() + ";" + second.Name()), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), (folder / "kqk.nbw").string());
    EXPECT_EQ(FileName(*tables, "krk", 0), (second / "krk.nbw").string());
    EXPECT_EQ(tables->RegisterAll(second.Name() + "," + folder.Name()), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), (second / "kqk.nbw").string());
}

TEST_F(NalimovRegistration, DirectoryMayEndInSeparatorOfEitherKind) {
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name() + "/"), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), folder.Name() + "/kqk.nbw");
    folder.Write("x\\krk.nbw", Zeros(PositionsOf("krk", 0)));
    EXPECT_EQ(tables->RegisterAll((folder / "x\\").string()), 3);
}

TEST_F(NalimovRegistration, EmptyPieceIsTheCurrentDirectory) {
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    const auto before = std::filesystem::current_path();
    std::filesystem::current_path(folder.Name());
    EXPECT_EQ(tables->RegisterAll("nowhere;"), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), "kqk.nbw");
    EXPECT_EQ(tables->RegisterAll("nowhere"), 0);
    EXPECT_EQ(tables->RegisterAll(""), 3);
    std::filesystem::current_path(before);
}

TEST_F(NalimovRegistration, NewPathForgetsTheOldFiles) {
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 3);
    EXPECT_EQ(tables->RegisterAll("nowhere"), 0);
    EXPECT_FALSE(HasFile(*tables, "kqk", 0));
    EXPECT_EQ(tables->FindTable({0, 0, 0, 0, 1, 0, 0, 0, 0, 0}), 5) << "the tree keeps the number";
}

TEST_F(NalimovRegistration, CompressedFileHasFourNames) {
    const Bytes file = test::Compressed(Zeros(PositionsOf("kqk", 0)));
    for (const std::string name : {"kqk.nbw.emd", "kqk_nbw.emd", "kqk_nbw_emd", "kqknbw.emd"}) {
        const CTestFolder own;
        own.Write(name, file);
        EXPECT_EQ(tables->RegisterAll(own.Name()), 3) << name;
        EXPECT_EQ(FileName(*tables, "kqk", 0), (own / name).string());
        EXPECT_TRUE(tables->HasCompressedFiles());
    }
}

TEST_F(NalimovRegistration, PlainFileGoesBeforeCompressedOnesAndThesInTheirOrder) {
    const Bytes file = test::Compressed(Zeros(PositionsOf("kqk", 0)));
    for (const std::string name : {"kqknbw.emd", "kqk_nbw_emd", "kqk_nbw.emd", "kqk.nbw.emd"}) {
        folder.Write(name, file);
        EXPECT_EQ(tables->RegisterAll(folder.Name()), 3);
        EXPECT_EQ(FileName(*tables, "kqk", 0), (folder / name).string());
    }
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 3);
    EXPECT_EQ(FileName(*tables, "kqk", 0), (folder / "kqk.nbw").string());
}

TEST_F(NalimovRegistration, ShortNameIsForTablesUpToFiveMen) {
    // Header only: a six-man table has too many blocks for a test. The name alone decides whether
    // the file is looked at, and a file that is looked at and no table ends the program.
    folder.Write("knnknnnbw.emd", Zeros(100));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 0);
    folder.Write("kqqkqnbw.emd", Zeros(100));
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1), "kqqkqnbw.emd");
}

TEST_F(NalimovRegistration, SymmetricSignatureUsesTheFileOfSideZeroOnly) {
    folder.Write("kqkq.nbb", Zeros(PositionsOf("kqkq", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 0);
    folder.Write("kqkq.nbw", Zeros(PositionsOf("kqkq", 0)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 4);
    EXPECT_TRUE(HasFile(*tables, "kqkq", 0));
    EXPECT_FALSE(HasFile(*tables, "kqkq", 1));
    EXPECT_EQ(tables->FindTable({0, 0, 0, 0, 1, 0, 0, 0, 0, 1}), 20);
}

TEST_F(NalimovRegistration, OneFileOfTheSecondSideGivesTableWithoutTheFirst) {
    folder.Write("kqk.nbb", Zeros(PositionsOf("kqk", 1)));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 3);
    EXPECT_FALSE(HasFile(*tables, "kqk", 0));
    EXPECT_TRUE(HasFile(*tables, "kqk", 1));
}

TEST_F(NalimovRegistration, HighestTableNumberDecidesTheNumberOfMen) {
    folder.WriteSparse("kqqqkq.nbw", PositionsOf("kqqqkq", 0));
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 6);
    EXPECT_FALSE(HasFile(*tables, "kqqkq", 0));
    const CTestFolder five;
    five.WriteSparse("kppkp.nbw", PositionsOf("kppkp", 0));
    EXPECT_EQ(tables->RegisterAll(five.Name()), 5);
}

TEST_F(NalimovRegistration, SplitTableWithMissingExtentCounts) {
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 0);  // sizes are known from the first folder on
    ASSERT_GE(tables->Table(TableNumber("knnknp")).Extents(0), 3);
    folder.WriteSparse("knnknp.0.nbw", std::uint64_t{1} << 31);
    folder.WriteSparse("knnknp.1.nbw", std::uint64_t{1} << 31);
    folder.WriteSparse("knnknp.3.nbw", std::uint64_t{1} << 31);
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 6);
    EXPECT_TRUE(HasFile(*tables, "knnknp", 0, 0));
    EXPECT_TRUE(HasFile(*tables, "knnknp", 0, 1));
    EXPECT_FALSE(HasFile(*tables, "knnknp", 0, 2));
    EXPECT_FALSE(HasFile(*tables, "knnknp", 0, 3)) << "nothing is looked for after the first gap";
}

TEST_F(NalimovRegistration, ExtentsBeyondTheNinthHaveLetters) {
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 0);  // sizes are known from the first folder on
    const int extents = tables->Table(TableNumber("krbknp")).Extents(1);
    ASSERT_GT(extents, 11);
    const std::string digits = "0123456789ab";
    for (const char digit : digits) {
        folder.WriteSparse(std::string("krbknp.") + digit + ".nbb", 1000);
    }
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 6);
    EXPECT_TRUE(HasFile(*tables, "krbknp", 1, 11));
}

TEST_F(NalimovRegistration, DirectoryWithTheNameOfTableIsNoTable) {
    std::filesystem::create_directory(folder / "kqk.nbw");
    EXPECT_EQ(tables->RegisterAll(folder.Name()), 0);
}

TEST_F(NalimovRegistrationDeathTest, PlainFileOfTheWrongSizeIsCorrupted) {
    folder.Write("kqk.nbw", Zeros(PositionsOf("kqk", 0) - 1));
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* .*kqk.nbw corrupted \n$");
}

TEST_F(NalimovRegistrationDeathTest, CompressedFileThatIsNoneCannotBeRead) {
    folder.Write("kqk.nbw.emd", Bytes(100, 'x'));
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* Unable to read .*kqk.nbw.emd - read error\n$");
}

TEST_F(NalimovRegistrationDeathTest, CompressedFileWithBrokenHeaderIsReportedByItsClass) {
    Bytes file = test::Compressed(Zeros(PositionsOf("kqk", 0)));
    file[90] ^= 1U;
    folder.Write("kqk.nbw.emd", file);
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* Unable to read .*kqk.nbw.emd - file broken\n$");
    file.resize(85);
    folder.Write("kqk.nbw.emd", file);
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* Unable to read .*kqk.nbw.emd - out of memory\n$");
}

TEST_F(NalimovRegistrationDeathTest, OtherBlockSizeIsNotSupported) {
    CDataCompWriter writer;
    writer.blockBits = 12;
    writer.distances[23] = 800;
    writer.AddUncoded(Bytes(100));
    folder.Write("kqk.nbw.emd", writer.Finish());
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* .*kqk.nbw.emd: Unsupported block size 4096\n$");
}

TEST_F(NalimovRegistrationDeathTest, CompressedFileOfTheWrongSizeIsCorrupted) {
    folder.Write("kqk.nbw.emd", test::Compressed(Zeros(PositionsOf("kqk", 0) + 1)));
    EXPECT_EXIT(RegisterLoudly(folder.Name()), testing::ExitedWithCode(1),
                "^\\*\\*\\* .*kqk.nbw.emd corrupted \n$");
}

TEST_F(NalimovRegistrationDeathTest, DirectoryNameThatIsTooLongEndsTheProgram) {
    EXPECT_EQ(tables->RegisterAll(std::string(1023, 'x')), 0);
    EXPECT_EXIT(RegisterLoudly(std::string(1024, 'x')), testing::ExitedWithCode(1), "^$");
}

}  // namespace
}  // namespace brenquil
