// Batch files: which file a name means, what is queued, and how the console hears of them.

#include "../../../support/temporary_folder.h"
#include "../engine_fixture.h"
#include "interface/program/batch_file.h"

#include <memory>
#include <string>
#include <vector>

namespace brenquil {
namespace {

using namespace std::string_literals;

class BatchFile : public CEngineFixture {
protected:
    BatchFile() { folder.Enter(); }

    /// The lines that running a file queues.
    Strings Queued(const std::string& name) {
        engine->protocol.pendingLines.lines.clear();
        RunBatch(name, engine->protocol.pendingLines);
        Strings lines;
        for (const PendingLine& line : engine->protocol.pendingLines.lines) {
            lines.push_back(line.text);
        }
        return lines;
    }

    /// Sends a line and goes on until no line waits; at most `limit` lines.
    Strings ObeyAll(const std::string& line, int limit = 1000) {
        Strings printed = Obey(line);
        for (int i = 0; i < limit && !engine->protocol.pendingLines.lines.empty(); ++i) {
            std::istringstream none;
            CStreamSource source(none);
            EXPECT_TRUE(CCommandLoop(*engine, source).Pass());
        }
        EXPECT_TRUE(engine->protocol.pendingLines.lines.empty());
        for (std::string& text : sink.Take()) {
            printed.push_back(std::move(text));
        }
        return printed;
    }

    test::CTemporaryFolder folder;
};

TEST_F(BatchFile, NameThatHoldsTheExtensionIsTheFile) {
    folder.Write("test.cmd", "");
    folder.Write("TEST.CMD.old", "");
    EXPECT_EQ(ResolveBatchName("test.cmd"), "test.cmd");
    EXPECT_EQ(ResolveBatchName("TEST.CMD.old"), "TEST.CMD.old");
    EXPECT_EQ(ResolveBatchName("missing.cmd"), "");
}

TEST_F(BatchFile, OtherNamesGetTheExtension) {
    folder.Write("test.cmd", "");
    folder.Write("notes.txt", "");
    EXPECT_EQ(ResolveBatchName("test"), "test.cmd");
    EXPECT_EQ(ResolveBatchName("notes.txt"), "");
    folder.Write("notes.txt.cmd", "");
    EXPECT_EQ(ResolveBatchName("notes.txt"), "notes.txt.cmd");
}

TEST_F(BatchFile, MissingFileNameFallsBackToTheLongerOne) {
    folder.Write("a.cmd.cmd", "");
    EXPECT_EQ(ResolveBatchName("a.cmd"), "a.cmd.cmd");
    folder.Write("a.cmd", "");
    EXPECT_EQ(ResolveBatchName("a.cmd"), "a.cmd");
}

TEST_F(BatchFile, DirectoryIsNoBatchFile) {
    std::filesystem::create_directory("folder.cmd");
    EXPECT_EQ(ResolveBatchName("folder.cmd"), "");
    EXPECT_EQ(ResolveBatchName("folder"), "");
    EXPECT_TRUE(Queued("folder").empty());
}

TEST_F(BatchFile, LinesWithoutCommentsAndBlanksAreQueued) {
    folder.Write("a.cmd", "new\n\n# note\ne2e4 # opening\n");
    EXPECT_EQ(Queued("a"), (Strings{"new", "e2e4"}));
}

TEST_F(BatchFile, HashAtTheStartMakesTheWholeLineAComment) {
    folder.Write("a.cmd", "#new\n  # e2e4\n e2e4#e7e5\n##\n   \nfen #\n");
    // Only the very first character counts: after a blank the hash leaves an empty command.
    EXPECT_EQ(Queued("a"), (Strings{"e2e4", "fen"}));
}

TEST_F(BatchFile, CarriageReturnsOfEitherLineEndingDisappear) {
    folder.Write("a.cmd", "new\r\ne2e4\r\n\r\nfen");
    EXPECT_EQ(Queued("a"), (Strings{"new", "e2e4", "fen"}));
}

TEST_F(BatchFile, ZeroBytesAndALineOfAMegabyteAreSurvived) {
    folder.Write("a.cmd", "new\0x\n"s + std::string(1 << 20, 'y') + "\ne2e4");
    const Strings lines = Queued("a");
    ASSERT_GT(lines.size(), 2000U);
    EXPECT_EQ(lines.front(), "new");
    EXPECT_EQ(lines.back(), "e2e4");
}

TEST_F(BatchFile, BatchTakesTheNameWithAndWithoutTheExtension) {
    folder.Write("test.cmd", "fen\n");
    const Strings expected = {"fen", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"};
    EXPECT_EQ(ObeyAll("batch test"), expected);
    EXPECT_EQ(ObeyAll("batch test.cmd"), expected);
    EXPECT_EQ(ObeyAll("BATCH   test  "), expected);
}

TEST_F(BatchFile, BatchOfATextFileOrOfNoFilePrintsNothing) {
    folder.Write("notes.txt", "fen\n");
    EXPECT_TRUE(ObeyAll("batch notes.txt").empty());
    EXPECT_TRUE(ObeyAll("batch missing").empty());
    EXPECT_TRUE(ObeyAll("batch").empty());
}

TEST_F(BatchFile, NameOfABatchMayHoldBlanks) {
    folder.Write("my file.cmd", "fen\n");
    EXPECT_EQ(ObeyAll("batch my file").size(), 2U);
}

TEST_F(BatchFile, StemOfABatchFileActsAsACommand) {
    folder.Write("mine.cmd", "e2e4\n");
    EXPECT_EQ(ObeyAll("mine"), Strings{"e2e4"});
    EXPECT_EQ(ObeyAll("mine.cmd"), Strings{"e2e4"}) << "there is no such move any more";
}

TEST_F(BatchFile, StemFollowedByMoreWordsRunsNothing) {
    folder.Write("help.cmd", "e2e4\n");
    EXPECT_TRUE(ObeyAll("help me").empty());
    EXPECT_TRUE(ObeyAll(" help").empty()) << "the whole line is the name";
    EXPECT_EQ(Fen(), std::string(StartFen));
}

TEST_F(BatchFile, FileShadowsACommandAndAMoveOutranksAFile) {
    folder.Write("help.cmd", "fen\n");
    folder.Write("e2e4.cmd", "help\n");
    EXPECT_EQ(ObeyAll("help").front(), "fen");
    EXPECT_TRUE(ObeyAll("e2e4").empty());
    EXPECT_EQ(Fen(), "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2");
}

TEST_F(BatchFile, FileOfTheWordConsoleRunsAfterTheModeHasChanged) {
    folder.Write("console.cmd", "fen\n");
    engine->protocol.mode = CommandMode::Uci;
    EXPECT_EQ(ObeyAll("console"), (Strings{"fen", std::string(StartFen)}));
}

TEST_F(BatchFile, FileOfTheWordUciDoesNotRunAsTheModeIsUciThen) {
    folder.Write("uci.cmd", "isready\n");
    const Strings lines = ObeyAll("uci");
    EXPECT_EQ(lines.back(), "uciok");
}

TEST_F(BatchFile, BatchFilesAreUnknownInUciMode) {
    folder.Write("mine.cmd", "isready\n");
    EnterUciMode();
    EXPECT_TRUE(ObeyAll("mine").empty());
    EXPECT_TRUE(ObeyAll("batch mine").empty());
}

TEST_F(BatchFile, BatchLineMayBeUciAndTheRestIsObeyedThere) {
    folder.Write("mine.cmd", "uci\nisready\nconsole\nfen\n");
    const Strings lines = ObeyAll("mine");
    ASSERT_GT(lines.size(), 7U);
    EXPECT_EQ(Strings(lines.end() - 6, lines.end()),
              (Strings{"uciok", "info string isready", "readyok", "info string console", "fen",
                       std::string(StartFen)}));
}

TEST_F(BatchFile, NamedByABatchFileQueuesBehindWhatWaits) {
    folder.Write("a.cmd", "batch b\ne2e4\nfen\n");
    folder.Write("b.cmd", "undo\nboard\n");
    const Strings lines = ObeyAll("a");
    ASSERT_EQ(lines.size(), 16U);
    EXPECT_EQ(
        Strings(lines.begin(), lines.begin() + 6),
        (Strings{"batch b", "e2e4", "fen",
                 "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq - 0 2", "undo", "board"}));
}

TEST_F(BatchFile, FilesThatNameEachOtherInACircleEnd) {
    folder.Write("a.cmd", "batch b\nfen\n");
    folder.Write("b.cmd", "a\nbatch c\n");
    folder.Write("c.cmd", "batch a.cmd\nb\nc\n");
    EXPECT_EQ(ObeyAll("a"), (Strings{"batch b", "fen", std::string(StartFen), "a", "batch c",
                                     "batch a.cmd", "b", "c"}));
    EXPECT_EQ(ObeyAll("fen"), Strings{std::string(StartFen)});
}

TEST_F(BatchFile, FullQueueTakesNoFileThatABatchFileNames) {
    folder.Write("inner.cmd", "fen\n");
    CProtocol& protocol = engine->protocol;
    protocol.pendingLines.lines.resize(MostLinesBeforeNestedBatch - 1);
    protocol.pendingLines.origin =
        std::make_shared<const std::vector<std::string>>(Strings{"outer.cmd"});
    RunBatch("inner", protocol.pendingLines);
    EXPECT_EQ(protocol.pendingLines.lines.size(), MostLinesBeforeNestedBatch);
    RunBatch("inner", protocol.pendingLines);
    EXPECT_EQ(protocol.pendingLines.lines.size(), MostLinesBeforeNestedBatch);

    protocol.pendingLines.origin = nullptr;
    RunBatch("inner", protocol.pendingLines);
    EXPECT_EQ(protocol.pendingLines.lines.size(), MostLinesBeforeNestedBatch + 1);
    protocol.pendingLines.lines.clear();
}

TEST_F(BatchFile, SameFileRunsAsOftenAsItIsNamedFromOutside) {
    folder.Write("a.cmd", "batch b\nbatch b\n");
    folder.Write("b.cmd", "print x\n");
    EXPECT_EQ(ObeyAll("a"), (Strings{"batch b", "batch b", "print x", "print x"}));
    EXPECT_EQ(ObeyAll("a").size(), 4U);
}

TEST_F(BatchFile, QuitDropsTheRestOfTheQueue) {
    folder.Write("a.cmd", "e2e4\nquit\nboard\n");
    std::istringstream input("a\nfen\n");
    CStreamSource source(input);
    CCommandLoop(*engine, source).Run();
    EXPECT_EQ(sink.Take(), (Strings{"e2e4", "quit"}));
}

}  // namespace
}  // namespace brenquil
