// The verbs of the engine: what ends the search under way, and what leaves it running.
// ctest: threads

#include "engine_fixture.h"

#include <functional>
#include <utility>
#include <vector>

namespace brenquil {
namespace {

using Verb = std::pair<const char*, std::function<void(CEngine&)>>;

class Engine : public CEngineFixture {
protected:
    void SearchEndlessly() {
        SearchLimits limits;
        limits.infinite = true;
        engine->Go(limits);
    }

    /// What the engine has printed when the verb has returned.
    Strings PrintedBy(const Verb& verb) {
        SearchEndlessly();
        (void)sink.Take();
        verb.second(*engine);
        return sink.Take();
    }
};

TEST_F(Engine, VerbsThatTouchWhatASearchReadsEndIt) {
    const std::vector<Verb> verbs = {
        {"Position", [](CEngine& e) { (void)e.Position(); }},
        {"Fen", [](CEngine& e) { (void)e.Fen(); }},
        {"SetPosition", [](CEngine& e) { e.SetPosition("8/8/8/4k3/8/8/2BN4/4K3 w - - 0 1"); }},
        {"PlayMoveText", [](CEngine& e) { e.PlayMoveText("e1e2"); }},
        {"TextToMove", [](CEngine& e) { (void)e.TextToMove("e2e3"); }},
        {"TakeBack", [](CEngine& e) { e.TakeBack(); }},
        {"Flip", [](CEngine& e) { e.Flip(); }},
        {"NewGame", [](CEngine& e) { e.NewGame(); }},
        {"Go", [](CEngine& e) { e.Go({}); }},
        {"EndSearch", [](CEngine& e) { e.EndSearch(); }},
        {"Evaluate", [](CEngine& e) { (void)e.Evaluate(CPosition()); }},
        {"ListMoves", [](CEngine& e) { (void)e.ListMoves(); }},
        {"Hash", [](CEngine& e) { e.SetOption("Hash", "1"); }},
        {"Book Path", [](CEngine& e) { e.SetOption("Book Path", "nowhere"); }},
        {"NalimovPath", [](CEngine& e) { e.SetOption("NalimovPath", "nowhere"); }},
        {"NalimovCache", [](CEngine& e) { e.SetOption("NalimovCache", "1"); }},
        {"Syzygy Path", [](CEngine& e) { e.SetOption("Syzygy Path", "nowhere"); }},
    };
    for (const Verb& verb : verbs) {
        EXPECT_TRUE(HasEnd(PrintedBy(verb))) << verb.first;
        engine->EndSearch();
        (void)sink.Take();
    }
}

TEST_F(Engine, OtherVerbsLeaveTheSearchRunning) {
    const std::vector<Verb> verbs = {
        {"PonderHit", [](CEngine& e) { e.PonderHit(); }},
        {"Threads", [](CEngine& e) { e.SetOption("Threads", "2"); }},
        {"Options", [](CEngine& e) { (void)e.Options(); }},
        {"the same Hash", [](CEngine& e) { e.SetOption("Hash", "064"); }},
        {"Quit", [](CEngine& e) { e.Quit(); }},
    };
    for (const Verb& verb : verbs) {
        EXPECT_FALSE(HasEnd(PrintedBy(verb))) << verb.first;
        EXPECT_TRUE(StopSearch()) << verb.first;
    }
    EXPECT_FALSE(engine->protocol.running);
}

}  // namespace
}  // namespace brenquil
