// ctest: threads

#include "syzygy_fixture.h"

#include <array>
#include <atomic>
#include <thread>

namespace brenquil {
namespace {

class SyzygyThreads : public CSyzygyFixture {
protected:
    static constexpr std::size_t Threads = 8;

    /// Lets the threads begin at the same moment.
    template <class Work>
    static void RunTogether(Work work) {
        std::atomic<std::size_t> waiting{0};
        std::vector<std::thread> threads;
        for (std::size_t i = 0; i < Threads; ++i) {
            threads.emplace_back([&, i] {
                ++waiting;
                while (waiting < Threads) {
                    std::this_thread::yield();
                }
                work(i);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }
};

TEST_F(SyzygyThreads, EightThreadsProbeFromAColdStart) {
    Make({"KPvK", "KQvK", "KRvK", "KBvK", "KNvK"});
    constexpr std::array<const char*, 3> Names = {"KPvK", "KRvK", "KQvK"};
    for (const char* const name : Names) {
        (void)solver.Solve(name);
    }
    for (int round = 0; round < 5; ++round) {
        options.SetOption("Syzygy Path",
                          std::string(static_cast<std::size_t>(round), ';') + folder.string());
        std::array<std::atomic<int>, Threads> wrong{};
        RunTogether([&](std::size_t thread) {
            for (std::size_t i = 0; i < 3; ++i) {
                const support::SolvedEnding& ending = solver.Solve(Names[(i + thread) % 3]);
                for (std::size_t index = thread; index < ending.Size(); index += 2003) {
                    if (ending.Class(index) == support::SolvedEnding::Illegal) {
                        continue;
                    }
                    TbSuccess success = TbSuccess::Found;
                    const int wdl = TbProbeWdl(tables, support::PositionOf(ending, index), success);
                    if (success == TbSuccess::Failed || wdl != ending.Class(index)) {
                        ++wrong[thread];
                    }
                }
            }
        });
        for (const auto& count : wrong) {
            EXPECT_EQ(count, 0);
        }
    }
}

TEST_F(SyzygyThreads, EightThreadsHearOfADamagedTableOnce) {
    Make({"KQvK"});
    support::WriteBytes(folder / "KQvK.rtbw", support::Bytes(200, 7));
    Load();
    const std::string errors = ErrorsOf([&] {
        RunTogether([&](std::size_t) {
            TbSuccess success = TbSuccess::Found;
            (void)TbProbeWdl(tables, support::PositionOfFen("8/8/8/3k4/8/8/8/KQ6 w - - 0 1"),
                             success);
            EXPECT_EQ(success, TbSuccess::Failed);
        });
    });
    EXPECT_EQ(errors, "Corrupted table.\n");
}

}  // namespace
}  // namespace brenquil
