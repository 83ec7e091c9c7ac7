// A folder of table files that a test makes and that is removed with it, and positions for probing.
#pragma once

#include "bases/nalimov/nalimov_bases_dtm.h"
#include "board/position.h"
#include "data_comp_writer.h"
#include "nalimov_positions.h"
#include "recording_host.h"
#include "solved_mates.h"

#include <filesystem>
#include <span>
#include <string>

namespace brenquil::test {

/// A new empty folder in the system's place for temporary files.
class CTestFolder {
public:
    CTestFolder();
    CTestFolder(const CTestFolder&) = delete;
    CTestFolder& operator=(const CTestFolder&) = delete;
    ~CTestFolder();

    [[nodiscard]] std::string Name() const { return path_.string(); }

    [[nodiscard]] std::filesystem::path operator/(const std::string& name) const {
        return path_ / name;
    }

    void Write(const std::string& name, std::span<const std::uint8_t> bytes) const;

    /// A file that has a size and almost no contents.
    void WriteSparse(const std::string& name, std::uint64_t size) const;

    /// Changes some bytes of a file.
    void Poke(const std::string& name, std::uint64_t offset, const Bytes& bytes) const;

private:
    std::filesystem::path path_;
};

/// The base with its defaults in force, and what it asks of its host.
struct NalimovEngine {
    NalimovEngine() { options.RunCallbacks(); }

    CRecordingHost host;
    CNalimovBasesDTM bases{host};
    CNalimovOptions& options = bases.options;
};

/// A whole table, compressed by the writer for tests, which is quick in every build.
[[nodiscard]] Bytes Compressed(std::span<const std::uint8_t> bytes);

/// Sets up a position of a table, with the colours exchanged if `invert`.
void SetUp(CPosition& position, const TablePosition& men, int side, bool invert);

/// The score that a distance in plies, or a draw, should have: two plies a move.
[[nodiscard]] Score ScoreOfPlies(int plies);

}  // namespace brenquil::test
