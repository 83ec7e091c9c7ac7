// Damaged files: whatever is wrong with a table, a probe returns and the program goes on. Reads
// just past the end of a file are not seen here, where files are mapped by pages; the fuzz program
// reads from memory of a file's exact size.

#include "syzygy_fixture.h"

#include <random>

namespace brenquil {
namespace {

/// Probes a scattering of positions through every path.
class SyzygyDamage : public CSyzygyFixture {
protected:
    void SetUp() override {
        CSyzygyFixture::SetUp();
        Make({"KRvK", "KQvK", "KBvK", "KNvK", "KPvK"});
    }

    void ProbeMany(const char* name, std::size_t step) {
        const support::SolvedEnding& ending = solver.Solve(name);
        for (std::size_t index = 1; index < ending.Size(); index += step) {
            if (ending.Class(index) != support::SolvedEnding::Illegal) {
                int dtz = 0;
                (void)TbProbeRoot(tables, support::PositionOf(ending, index), dtz);
            }
        }
    }

    /// Sets the same folder once more.
    void Reload() {
        options.SetOption("Syzygy Path",
                          std::string(1 + static_cast<std::size_t>(++reloads_) % 2, ';') +
                              folder.string());
    }

    support::Bytes ReadFile(const std::string& name) const {
        CFileMapping file;
        EXPECT_TRUE(file.Open((folder / name).string()));
        return {file.Bytes().begin(), file.Bytes().end()};
    }

    /// Tries a file with something done to it. Returns how often it was refused as corrupted.
    template <class Change>
    int Try(const char* ending, const char* suffix, std::size_t times, Change change) {
        const std::string name = std::string(ending) + suffix;
        const support::Bytes good = ReadFile(name);
        int refused = 0;
        for (std::size_t i = 0; i < times; ++i) {
            support::Bytes bytes = good;
            change(bytes, i);
            // A new file: the old one may still be mapped.
            std::filesystem::remove(folder / name);
            support::WriteBytes(folder / name, bytes);
            Reload();
            const std::string errors = ErrorsOf([&] { ProbeMany(ending, probeDistance); });
            refused += errors.find("Corrupted table.\n") != std::string::npos ? 1 : 0;
        }
        std::filesystem::remove(folder / name);
        support::WriteBytes(folder / name, good);
        Reload();
        return refused;
    }

    void ChangeEachByteOfTheHead();
    void ChangeBytesAtRandom();

    /// How far apart the probed positions lie.
    std::size_t probeDistance = 15013;

private:
    int reloads_ = 0;
};

/// The same with many more probes of each file.
class SyzygyDamageProof : public SyzygyDamage {
protected:
    SyzygyDamageProof() { probeDistance = 997; }
};

constexpr std::pair<const char*, const char*> Files[] = {
    {"KRvK", ".rtbw"}, {"KRvK", ".rtbz"}, {"KPvK", ".rtbw"}, {"KPvK", ".rtbz"}};

void SyzygyDamage::ChangeEachByteOfTheHead() {
    for (const auto& [ending, suffix] : Files) {
        for (const unsigned mask : {0xFFU, 0x01U, 0x80U}) {
            const int refused =
                Try(ending, suffix, 160, [&](support::Bytes& bytes, std::size_t place) {
                    bytes[place] ^= static_cast<std::uint8_t>(mask);
                });
            EXPECT_GE(refused, 4) << "the magic at least";
        }
    }
}

void SyzygyDamage::ChangeBytesAtRandom() {
    std::mt19937_64 random(4711);
    for (const auto& [ending, suffix] : Files) {
        (void)Try(ending, suffix, 150, [&](support::Bytes& bytes, std::size_t i) {
            for (std::size_t k = 0; k <= i % 4; ++k) {
                bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
            }
        });
    }
}

TEST_F(SyzygyDamage, AFileCutAnywhereInItsHeadIsRefused) {
    for (const auto& [ending, suffix] : Files) {
        const int refused = Try(ending, suffix, 100, [](support::Bytes& bytes, std::size_t length) {
            bytes.resize(length);
        });
        EXPECT_EQ(refused, 100) << ending << suffix;
    }
}

TEST_F(SyzygyDamage, AFileCutAnywhereIsRefused) {
    for (const auto& [ending, suffix] : Files) {
        const std::size_t size = ReadFile(std::string(ending) + suffix).size();
        const std::size_t step = size / 60 + 1;
        int wanted = 0;
        const int refused = Try(ending, suffix, 60, [&](support::Bytes& bytes, std::size_t i) {
            if (i * step < size) {
                bytes.resize(i * step);
                ++wanted;
            }
        });
        EXPECT_EQ(refused, wanted) << ending << suffix;
    }
}

TEST_F(SyzygyDamage, AFileWithAnyByteOfItsHeadChangedIsSafe) {
    ChangeEachByteOfTheHead();
}

TEST_F(SyzygyDamageProof, AFileWithAnyByteOfItsHeadChangedIsSafe) {
    ChangeEachByteOfTheHead();
}

TEST_F(SyzygyDamage, AFileWithBytesChangedAtRandomIsSafe) {
    ChangeBytesAtRandom();
}

TEST_F(SyzygyDamageProof, AFileWithBytesChangedAtRandomIsSafe) {
    ChangeBytesAtRandom();
}

TEST_F(SyzygyDamage, TheDataCutOffIsRefusedAndThePaddingIsNotMissed) {
    const support::Bytes good = ReadFile("KRvK.rtbw");
    ASSERT_EQ(good.size() % 64, 0U);
    // A generator may end its file in the middle of the alignment, or add a checksum.
    const int refused = Try("KRvK", ".rtbw", 3, [](support::Bytes& bytes, std::size_t i) {
        bytes.resize(bytes.size() + (i == 0 ? 0U : i == 1 ? 16U : 1U));
    });
    EXPECT_EQ(refused, 0);
    const int cut =
        Try("KRvK", ".rtbw", 1, [](support::Bytes& bytes, std::size_t) { bytes.pop_back(); });
    EXPECT_EQ(cut, 1);
}

TEST_F(SyzygyDamage, AListOfDistancesThatIsTooShortFailsTheProbe) {
    support::DtzTable table{"KRvK", support::SolvedClasses(solver, "KRvK"),
                            support::SolvedDistances(solver, "KRvK")};
    table.hasMap = true;
    support::Bytes bytes = support::MakeDtzFile(table);
    support::WriteBytes(folder / "KRvK.rtbz", bytes);
    Reload();
    EXPECT_GT(Dtz("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 20);
    // The list of wins begins after the stream's header; find it by its first entries.
    const std::uint8_t start[] = {0, 2, 4};
    const auto list = std::search(bytes.begin(), bytes.end(), std::begin(start), std::end(start));
    ASSERT_NE(list, bytes.end());
    ASSERT_GT(*(list - 1), 10);
    // The entries stay, as an empty list of another class: nothing after them moves.
    support::Bytes shorter = bytes;
    const auto at = list - bytes.begin();
    shorter[static_cast<std::size_t>(at) + 1] =
        static_cast<std::uint8_t>(bytes[static_cast<std::size_t>(at) - 1] - 2);
    shorter[static_cast<std::size_t>(at) - 1] = 1;
    std::filesystem::remove(folder / "KRvK.rtbz");
    support::WriteBytes(folder / "KRvK.rtbz", shorter);
    Reload();
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(Dtz("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 9999); }), "");
}

/// The class once indexed the tables of the distances, whatever byte was stored.
TEST_F(SyzygyDamage, AClassThatIsNoneFailsTheProbe) {
    support::WriteBytes(folder / "KRvK.rtbw", support::MakeFlatWdlFile("KRvK", 149));
    Reload();
    EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 99);
    EXPECT_EQ(Dtz("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 9999);
    support::WriteBytes(folder / "KRvK.rtbw", support::MakeFlatWdlFile("KRvK", 2));
    Reload();
    EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 2);
}

/// Without the check the search for the answer would go on for ever.
TEST_F(SyzygyDamage, ASymmetricPawnTableOfTheOtherSideIsRefused) {
    support::WriteBytes(folder / "KPvKP.rtbw", support::MakeFlatWdlFile("KPvKP", 2));
    support::WriteBytes(folder / "KPvKP.rtbz", support::MakeFlatDtzFile("KPvKP", 1));
    Reload();
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(Dtz("8/8/8/3k4/p7/8/P7/K7 w - - 0 1"), 9999); }),
              "Corrupted table.\n");
    support::WriteBytes(folder / "KPvKP.rtbz", support::MakeFlatDtzFile("KPvKP", 0));
    Reload();
    Reload();
    EXPECT_EQ(Dtz("8/8/8/3k4/p7/8/P7/K7 w - - 0 1"), 1);
}

TEST_F(SyzygyDamage, ATableOfOtherMenIsRefused) {
    std::filesystem::copy_file(folder / "KQvK.rtbw", folder / "KRvK.rtbw",
                               std::filesystem::copy_options::overwrite_existing);
    Reload();
    EXPECT_EQ(ErrorsOf([&] { EXPECT_EQ(Wdl("8/8/8/3k4/8/8/8/KR6 w - - 0 1"), 99); }),
              "Corrupted table.\n");
}

}  // namespace
}  // namespace brenquil
