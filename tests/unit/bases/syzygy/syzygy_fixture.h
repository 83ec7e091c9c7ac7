// A folder of made Syzygy tables and the objects that read them.
#pragma once

#include "../../../support/recording_host.h"
#include "bases/syzygy/syzygy_bases.h"
#include "bases/syzygy/syzygy_options.h"
#include "bases/syzygy/syzygy_probe.h"
#include "bases/syzygy/syzygy_tables.h"
#include "bases/syzygy/tb_probe.h"
#include "board/position_text.h"
#include "syzygy_solver.h"
#include "syzygy_writer.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <initializer_list>
#include <iterator>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace brenquil {

namespace support = testing_support;

/// Beneath each test lies a folder of its own, removed with all that is in it.
class CSyzygyFixture : public testing::Test {
protected:
    void SetUp() override {
        options.path.onChange = [this](const std::string& path) { tables.SetPath(path); };
        const auto* const test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name =
            std::string("brenquil_syzygy_") + test->test_suite_name() + "_" + test->name() + "_" +
            std::to_string(reinterpret_cast<std::uintptr_t>(this)) + "_" +
            std::to_string(
                std::filesystem::file_time_type::clock::now().time_since_epoch().count());
        folder = std::filesystem::temp_directory_path() / name;
        std::filesystem::create_directories(folder);
    }

    void TearDown() override { std::filesystem::remove_all(folder); }

    /// Writes the true tables of the endings; what an earlier test has made is copied.
    void Make(std::initializer_list<const char*> names) {
        for (const std::string name : names) {
            if (made.count(name) == 0) {
                support::WriteSolvedTables(solver, folder, name);
                made[name] = {BytesOf(name + ".rtbw"), BytesOf(name + ".rtbz")};
                continue;
            }
            support::WriteBytes(folder / (name + ".rtbw"), made[name].first);
            support::WriteBytes(folder / (name + ".rtbz"), made[name].second);
        }
    }

    [[nodiscard]] support::Bytes BytesOf(const std::string& file) const {
        std::ifstream stream(folder / file, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }

    /// Writes tables of one value for both sides: a class, and the smallest distance for the side.
    void WriteFlat(const std::string& name, int value, unsigned side) const {
        support::WriteBytes(folder / (name + ".rtbw"), support::MakeFlatWdlFile(name, value));
        support::WriteBytes(folder / (name + ".rtbz"), support::MakeFlatDtzFile(name, side));
    }

    /// Sets the path option to the folder.
    void Load() { options.SetOption("Syzygy Path", folder.string()); }

    void MakeAndLoad(std::initializer_list<const char*> names) {
        Make(names);
        Load();
    }

    /// The class of a position, en passant right of the FEN included; 99 for a failed probe.
    int Wdl(std::string_view fen) {
        TbSuccess success = TbSuccess::Found;
        const int wdl = TbProbeWdl(tables, support::PositionOfFen(fen), success);
        return success == TbSuccess::Failed ? 99 : wdl;
    }

    /// The distance likewise; 9999 for a failed probe.
    int Dtz(std::string_view fen) {
        TbSuccess success = TbSuccess::Found;
        const int dtz = TbProbeDtz(tables, support::PositionOfFen(fen), success);
        return success == TbSuccess::Failed ? 9999 : dtz;
    }

    static CPosition Position(std::string_view fen) {
        CPosition position;
        CPositionText(position).SetFen(fen);
        return position;
    }

    int ProbeClass(std::string_view fen) const { return probe.SyzygyProbeWDL(Position(fen)); }

    TbResult ProbeRoot(std::string_view fen) const { return probe.SyzygyProbeRoot(Position(fen)); }

    std::filesystem::path folder;
    /// Keeps what it has solved for the tests that follow in the same process.
    static inline support::CSyzygySolver solver;
    static inline std::map<std::string, std::pair<support::Bytes, support::Bytes>> made;
    test::CRecordingHost host;
    const std::vector<std::string>& found = host.bareLines;  ///< lines about found tables
    CSyzygyTables tables{host};
    CSyzygyOptions options;
    CSyzygyProbe probe{tables, options};
    CSyzygyBasesWDL wdlBase{tables, options};
    CSyzygyBasesDTZ dtzBase{tables, options};
};

/// What the code writes to the standard error stream.
template <class Code>
std::string ErrorsOf(Code code) {
    testing::internal::CaptureStderr();
    code();
    return testing::internal::GetCapturedStderr();
}

/// The folder of shared data, empty when there is none.
inline std::filesystem::path SharedData() {
    const char* const path = std::getenv("BRENQUIL_DATA");
    return path == nullptr ? "" : path;
}

}  // namespace brenquil
