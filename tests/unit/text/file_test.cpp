// The owners of file streams: opening, reading by lines, writing.

#include "../../support/strings.h"
#include "../../support/temporary_folder.h"
#include "text/file.h"

#include <gtest/gtest.h>
#include <string>
#include <string_view>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace brenquil {
namespace {

using namespace std::string_literals;

class File : public testing::Test {
protected:
    /// The lines that come back from a file of these bytes.
    Strings LinesOf(std::string_view bytes) {
        CReadFile file;
        EXPECT_TRUE(file.Open(folder.Write("lines", bytes)));
        Strings lines;
        for (std::string line; file.ReadLine(line);) {
            lines.push_back(line);
        }
        return lines;
    }

    const test::CTemporaryFolder folder;
};

TEST_F(File, IsClosedAtFirstAndAfterAFailure) {
    CReadFile file;
    std::string line = "untouched";
    EXPECT_FALSE(file.IsOpen());
    EXPECT_FALSE(file.ReadLine(line));
    EXPECT_TRUE(file.Open(folder.Write("a", "1\n")));
    EXPECT_FALSE(file.Open(folder.At("missing")));
    EXPECT_EQ(file.file, nullptr);
    EXPECT_FALSE(file.ReadLine(line));
    EXPECT_EQ(line, "untouched");
}

TEST_F(File, OpenClosesTheStreamBefore) {
    CReadFile file;
    std::string line;
    ASSERT_TRUE(file.Open(folder.Write("a", "1\n2\n")));
    ASSERT_TRUE(file.ReadLine(line));
    ASSERT_TRUE(file.Open(folder.Write("b", "3\n")));
    ASSERT_TRUE(file.ReadLine(line));
    EXPECT_EQ(line, "3");
    file.Close();
    file.Close();
    EXPECT_FALSE(file.IsOpen());
}

TEST_F(File, ModesAreThoseOfTheLibrary) {
    EXPECT_STREQ(CReadFile().Mode(), "rb");
    EXPECT_STREQ(CWriteFile().Mode(), "w");
}

TEST_F(File, ReadLineGivesLinesWithoutTheirEnds) {
    EXPECT_EQ(LinesOf("one\ntwo\n"), (Strings{"one", "two"}));
    EXPECT_EQ(LinesOf("one\n\n two \n"), (Strings{"one", "", " two "}));
    EXPECT_TRUE(LinesOf("").empty());
}

TEST_F(File, ReadLineGivesALastLineWithoutALineFeed) {
    EXPECT_EQ(LinesOf("one\ntwo"), (Strings{"one", "two"}));
}

TEST_F(File, CarriageReturnsOfEitherLineEndingDisappear) {
    EXPECT_EQ(LinesOf("one\r\ntwo\r\n\r\nthree"), (Strings{"one", "two", "", "three"}));
    EXPECT_EQ(LinesOf("o\rn\r\re\n"), Strings{"one"});
}

TEST_F(File, LineOfMoreThan511CharactersComesAsSeveral) {
    EXPECT_EQ(LinesOf(std::string(510, 'a') + "\nb\n"), (Strings{std::string(510, 'a'), "b"}));
    // The line feed of a line of exactly 511 makes a piece of its own, an empty line.
    EXPECT_EQ(LinesOf(std::string(511, 'a') + "\nb\n"), (Strings{std::string(511, 'a'), "", "b"}));
    EXPECT_EQ(LinesOf(std::string(1300, 'a') + "\n"),
              (Strings{std::string(511, 'a'), std::string(511, 'a'), std::string(278, 'a')}));
}

TEST_F(File, LineOfAMegabyteIsReadToItsEnd) {
    constexpr std::size_t Megabyte = 1 << 20;
    const Strings lines = LinesOf(std::string(Megabyte, 'x') + "\nlast");
    std::size_t total = 0;
    for (const std::string& line : lines) {
        total += line.size();
    }
    EXPECT_EQ(total, Megabyte + 4);
    EXPECT_EQ(lines.back(), "last");
}

TEST_F(File, ZeroByteEndsWhatIsReadAtOnce) {
    EXPECT_EQ(LinesOf("one\0lost\ntwo\n\0\n"s), (Strings{"one", "two", ""}));
}

TEST_F(File, DirectoryIsNoFile) {
    CReadFile file;
    EXPECT_FALSE(file.Open(folder.At("")));
    EXPECT_FALSE(FileExists(folder.At("")));
    CWriteFile output;
    EXPECT_FALSE(output.Open(folder.At("")));
}

#if !defined(_WIN32)

TEST_F(File, PipeIsNoFileAndKeepsNobodyWaiting) {
    const std::string pipe = folder.At("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_FALSE(FileExists(pipe));
    CWriteFile output;
    EXPECT_FALSE(output.Open(pipe));
    CAppendFile log;
    EXPECT_FALSE(log.Open(pipe));
    EXPECT_FALSE(log.Write("lost"));
}

#endif

TEST_F(File, AppendingMakesAndKeepsTheFile) {
    for (const std::string& text : {"one\n"s, std::string(100000, 'x') + '\n'}) {
        CAppendFile log;
        ASSERT_TRUE(log.Open(folder.At("log")));
        EXPECT_TRUE(log.Write(text));
    }
    EXPECT_EQ(folder.ReadText("log"), "one\n" + std::string(100000, 'x') + "\n");
}

TEST_F(File, NameWithAZeroByteIsNoFile) {
    const std::string name = folder.Write("file", "content");
    EXPECT_TRUE(FileExists(name));
    EXPECT_FALSE(FileExists(name + "\0more"s));
}

TEST_F(File, NameMayHoldBlanksAndAnyLetters) {
    EXPECT_TRUE(FileExists(folder.Write("a name with blanks.cmd", "")));
    EXPECT_TRUE(FileExists(folder.Write("Er\xc3\xb6"
                                        "ffnungen",
                                        "")));
    EXPECT_FALSE(FileExists(folder.At("missing")));
    EXPECT_FALSE(FileExists(""));
}

TEST_F(File, WritingReplacesWhatWasThere) {
    const std::string name = folder.Write("file", "a long old text");
    {
        CWriteFile file;
        ASSERT_TRUE(file.Open(name));
        EXPECT_GE(std::fputs("new", file.file), 0);
    }
    EXPECT_EQ(folder.Read("file"), "new");
}

TEST_F(File, WritingWhereNothingCanBeWrittenFails) {
    CWriteFile file;
    EXPECT_FALSE(file.Open(folder.At("missing folder/file")));
    EXPECT_FALSE(file.IsOpen());
}

}  // namespace
}  // namespace brenquil
