// The ini file: its reading rules and its form.

#include "../../../support/temporary_folder.h"
#include "../engine_fixture.h"
#include "interface/program/ini_file.h"

#include <filesystem>
#include <string>
#include <utility>

namespace brenquil {
namespace {

using namespace std::string_literals;

constexpr std::string_view IniName = "Brenquil3.00.ini";

class IniFile : public CEngineFixture {
protected:
    IniFile() { folder.Enter(); }

    /// Writes an ini file and loads it.
    void Load(std::string_view bytes) {
        folder.Write(IniName, bytes);
        LoadIni(engine->optionGroups);
    }

    /// The value texts of all options of the file, by name.
    [[nodiscard]] Strings Values() const {
        Strings values;
        for (const COptionGroup* group : engine->optionGroups) {
            for (const COption* option : group->iniOptions) {
                values.push_back(option->iniName + "=" + option->value);
            }
        }
        return values;
    }

    [[nodiscard]] const std::string& Threads() const { return engine->searchOptions.threads.value; }

    [[nodiscard]] const std::string& Hash() const { return engine->memoryOptions.hash.value; }

    test::CTemporaryFolder folder;
};

TEST_F(IniFile, WithoutAFileNothingChanges) {
    const Strings before = Values();
    LoadIni(engine->optionGroups);
    EXPECT_EQ(Values(), before);
    EXPECT_TRUE(sink.Take().empty());
}

TEST_F(IniFile, SettingWithARemarkIsTaken) {
    Load("Threads=4   # my setting\n");
    EXPECT_EQ(Threads(), "4");
    EXPECT_EQ(engine->searchOptions.threads.number, 4);
}

TEST_F(IniFile, LeadingHashDoesNotCommentALineOut) {
    Load("#Threads=4\n# Hash=8\n");
    EXPECT_EQ(Threads(), "4");
    EXPECT_EQ(Hash(), "8");
    EXPECT_EQ(engine->hashTable.SizeMegabytes(), 8U);
}

TEST_F(IniFile, OneEqualsSignTooManyAtAnEndOrDoubledDoesNotHarm) {
    Load("=Hash=5\n");
    EXPECT_EQ(Hash(), "5");
    Load("Hash==6\n");
    EXPECT_EQ(Hash(), "6");
    Load("Hash=7=\n");
    EXPECT_EQ(Hash(), "7");
}

TEST_F(IniFile, LinesOfOneOrThreePiecesAreIgnored) {
    const Strings before = Values();
    Load("Hash=\n=5\nHash\nHash=5=6\nBook Path=/a=b\n\n#\n=\n");
    EXPECT_EQ(Values(), before);
}

TEST_F(IniFile, BlanksAroundNameAndValueAreDropped) {
    Load("   Book Mode  =  BestMove  #x=y\n");
    EXPECT_EQ(engine->book.options.bookMode.value, "BestMove");
}

TEST_F(IniFile, NamesAreThoseOfTheFileOrOfUciAndCaseCounts) {
    Load("Chess960=true\nUCI_ShowCurrLine=true\nponder=false\nNo Such Option=1\n");
    EXPECT_TRUE(engine->outputOptions.chess960.enabled);
    EXPECT_TRUE(engine->outputOptions.showCurrLine.enabled);
    EXPECT_TRUE(engine->outputOptions.ponder.enabled);
}

TEST_F(IniFile, EitherLineEndingAndNoFinalLineFeedAreRead) {
    Load("Threads=3\r\nContempt=12\r\nPawn=90");
    EXPECT_EQ(Threads(), "3");
    EXPECT_EQ(engine->evaluationOptions.contempt.number, 12);
    EXPECT_EQ(engine->evaluationOptions.pieceValues[Pawn].number, 90);
}

TEST_F(IniFile, ZeroBytesAndALineOfAMegabyteAreSurvived) {
    Load("Threads=3\0\nCont\0empt=5\n"s + std::string(1 << 20, '=') + "\n" +
         std::string(1 << 20, 'x') + "\nPawn=90");
    EXPECT_EQ(Threads(), "3");
    EXPECT_EQ(engine->evaluationOptions.contempt.number, 0);
    EXPECT_EQ(engine->evaluationOptions.pieceValues[Pawn].number, 90);
}

TEST_F(IniFile, DirectoryOfThatNameIsNoIniFile) {
    std::filesystem::create_directory(IniName);
    const Strings before = Values();
    LoadIni(engine->optionGroups);
    EXPECT_EQ(Values(), before);
    EXPECT_TRUE(Obey("ini").empty()) << "it cannot be written either";
}

TEST_F(IniFile, FirstIniWritesTheFileAndTheSecondLeavesItAlone) {
    EXPECT_EQ(Obey("ini"), Strings{"created"});
    const std::string bytes = folder.Read(IniName);
    (void)Obey({"uci", "setoption name Contempt value 9", "console"});
    EXPECT_EQ(Obey("ini"), Strings{"already exists"});
    EXPECT_EQ(folder.Read(IniName), bytes);
}

TEST_F(IniFile, WrittenFileLoadsBackWithEveryValueUnchanged) {
    const Strings defaults = Values();
    EXPECT_EQ(Obey("ini"), Strings{"created"});
    LoadIni(engine->optionGroups);
    EXPECT_EQ(Values(), defaults);

    for (const auto& [name, value] : {std::pair{"Threads", "7"},
                                      {"Contempt", "-33"},
                                      {"Ponder", "false"},
                                      {"Book Path", "/a path/with blanks.bin"},
                                      {"Book Mode", "Tournament"},
                                      {"Chess960", "maybe"},
                                      {"Nalimov Path", "x"},
                                      {"Hash", "16"}}) {
        ASSERT_TRUE(SetOption(engine->optionGroups, name, value)) << name;
    }
    const Strings changed = Values();
    std::filesystem::remove(IniName);
    EXPECT_EQ(Obey("ini"), Strings{"created"});
    engine = std::make_unique<test::COpenEngine>(sink);
    EXPECT_EQ(Values(), defaults);
    LoadIni(engine->optionGroups);
    EXPECT_EQ(Values(), changed);
}

TEST_F(IniFile, SettingOf50CharactersAndMoreGetsNoPadding) {
    const std::string mode(44, 'm');
    ASSERT_TRUE(SetOption(engine->optionGroups, "Book Mode", mode));
    EXPECT_EQ(Obey("ini"), Strings{"created"});
    EXPECT_NE(folder.ReadText(IniName).find("\nBook Mode=" + mode +
                                            "# [Wide, Standard, Tournament, BestMove]\n"),
              std::string::npos);
}

}  // namespace
}  // namespace brenquil
