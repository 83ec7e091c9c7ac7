// The output routines, the banner, and what the program says about itself.

#include "../../support/strings.h"
#include "collecting_sink.h"
#include "interface/program/banner.h"
#include "interface/program/program_info.h"
#include "interface/protocol.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>

namespace brenquil {
namespace {

TEST(Protocol, BeginsInConsoleModeWithoutLogAndQueue) {
    CCollectingSink sink;
    const CProtocol protocol(sink);
    EXPECT_FALSE(protocol.logging);
    EXPECT_FALSE(protocol.IsUci());
    EXPECT_FALSE(protocol.fileLetterCastling);
    EXPECT_TRUE(protocol.pendingLines.lines.empty());
}

TEST(Protocol, MessagesAreBareInConsoleModeAndInfoStringsInUciMode) {
    CCollectingSink sink;
    CProtocol protocol(sink);
    protocol.PrintInfoString("Illegal move: e2e5");
    protocol.mode = CommandMode::Uci;
    protocol.PrintInfoString("Illegal move: e2e5");
    EXPECT_EQ(sink.Take(), (Strings{"Illegal move: e2e5", "info string Illegal move: e2e5"}));
}

TEST(Protocol, OutputIsMirroredToTheLogOnlyWhileLogging) {
    CCollectingSink sink;
    CProtocol protocol(sink);
    Strings log;
    protocol.logSink = [&log](std::string_view line) { log.emplace_back(line); };
    protocol.PrintLine("silent");
    protocol.logging = true;
    protocol.PrintLine("info depth 1");
    protocol.LogLine("> go");
    protocol.logging = false;
    protocol.LogLine("> stop");
    EXPECT_EQ(log, (Strings{"< info depth 1", "> go"}));
}

TEST(Protocol, LoggingWithoutALogSinkIsHarmless) {
    CCollectingSink sink;
    CProtocol protocol(sink);
    protocol.logging = true;
    protocol.PrintLine("text");
    EXPECT_EQ(sink.Take(), Strings{"text"});
}

TEST(FileSink, BringsEachLineOutAtOnce) {
    std::FILE* file = std::tmpfile();
    ASSERT_NE(file, nullptr);
    CFileSink sink(file);
    CProtocol protocol(sink);
    protocol.PrintLine("uciok");
    protocol.PrintLine("");
    std::rewind(file);
    char buffer[16] = {};
    EXPECT_EQ(std::fread(buffer, 1, sizeof buffer, file), 7U);
    EXPECT_STREQ(buffer, "uciok\n\n");
    std::fclose(file);
}

TEST(Banner, IsFourLines) {
    CCollectingSink sink;
    CProtocol protocol(sink);
    PrintBanner(protocol);
    EXPECT_EQ(sink.Take(), (Strings{"", "Brenquil 3.00 x64 (" + BuildDate() + ")",
                                    "created by J.Ostervelde", ""}));
}

TEST(BuildDate, HasSingleBlanks) {
    EXPECT_EQ(FormatBuildDate("Dec 28 2018"), "Dec 28 2018");
    EXPECT_EQ(FormatBuildDate("Dec  8 2018"), "Dec 8 2018");
}

}  // namespace
}  // namespace brenquil
