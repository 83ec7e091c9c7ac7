// The log file: what it holds, and when there is none.
// ctest: threads

#include "../../../support/temporary_folder.h"
#include "../engine_fixture.h"
#include "interface/program/ini_file.h"
#include "interface/program/log_file.h"

#include <filesystem>
#include <sstream>
#include <string>
#include <thread>

namespace brenquil {
namespace {

constexpr std::string_view LogName = "Brenquil3.00.log";

class LogFile : public CEngineFixture {
protected:
    LogFile() { folder.Enter(); }

    test::CTemporaryFolder folder;
};

TEST_F(LogFile, GrowsByALineAtATime) {
    AppendToLog("> one");
    AppendToLog("");
    AppendToLog("< three");
    EXPECT_EQ(folder.ReadText(LogName), "> one\n\n< three\n");
    folder.Write(LogName, "old\n");
    AppendToLog("new");
    EXPECT_EQ(folder.ReadText(LogName), "old\nnew\n");
}

TEST_F(LogFile, ThatCannotBeWrittenIsLostInSilence) {
    std::filesystem::create_directory(LogName);
    AppendToLog("lost");
    EXPECT_TRUE(std::filesystem::is_directory(LogName));
}

TEST_F(LogFile, IniFileSwitchesItOn) {
    engine->protocol.logSink = AppendToLog;
    folder.Write("Brenquil3.00.ini", "Logging=true\n");
    LoadIni(engine->optionGroups);
    (void)Obey("fen");
    EXPECT_EQ(folder.ReadText(LogName), "> fen\n< " + std::string(StartFen) + "\n");
}

TEST_F(LogFile, LinesOfSeveralThreadsDoNotMingle) {
    constexpr int Lines = 200;
    const auto write = [](char letter) {
        for (int i = 0; i < Lines; ++i) {
            AppendToLog(std::string(3000, letter));
        }
    };
    std::thread other(write, 'b');
    write('a');
    other.join();
    std::istringstream log(folder.ReadText(LogName));
    int count = 0;
    for (std::string line; std::getline(log, line); ++count) {
        ASSERT_TRUE(line == std::string(3000, 'a') || line == std::string(3000, 'b'));
    }
    EXPECT_EQ(count, 2 * Lines);
}

}  // namespace
}  // namespace brenquil
