// A whole engine whose lines go into a list, for the tests of the commands.
#pragma once

#include "../../support/open_engine.h"
#include "../../support/strings.h"
#include "board/position_text.h"
#include "collecting_sink.h"
#include "interface/command_loop.h"
#include "interface/line_source.h"
#include "varying_figures.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <memory>
#include <sstream>
#include <string>
#include <utility>

namespace brenquil {

/// The start position as the commands print it.
inline constexpr const char* StartText = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

/// Has lines obeyed by the command loop and returns what was printed.
class CEngineFixture : public testing::Test {
protected:
    /// Sends the lines and returns what the reading thread printed on them.
    Strings Obey(std::initializer_list<std::string> lines) {
        std::stringstream input;
        for (const std::string& line : lines) {
            input << line << '\n';
        }
        CStreamSource source(input);
        CCommandLoop loop(*engine, source);
        for (const std::string& line : lines) {
            EXPECT_TRUE(loop.Pass()) << line;
        }
        return sink.Take();
    }

    Strings Obey(const std::string& line) { return Obey({line}); }

    /// As Obey, in UCI mode, and waits for the end of a search that the last line has started.
    Strings Search(std::initializer_list<std::string> lines) {
        engine->protocol.mode = CommandMode::Uci;
        Strings printed = Obey(lines);
        engine->master.WaitForSearch();
        for (std::string& line : sink.Take()) {
            printed.push_back(std::move(line));
        }
        return printed;
    }

    void EnterUciMode() { (void)Obey("uci"); }

    /// Whether one of the lines is the last one of a search.
    [[nodiscard]] static bool HasEnd(const Strings& lines) {
        return std::any_of(lines.begin(), lines.end(), [](const std::string& line) {
            return line.starts_with("bestmove ") || line.ends_with("No best move!");
        });
    }

    /// Ends the search under way; false if there was none, or if it had ended by itself.
    [[nodiscard]] bool StopSearch() {
        engine->master.EndSearch();
        return HasEnd(sink.Take());
    }

    /// The FEN of the game position.
    [[nodiscard]] std::string Fen() const {
        return CPositionText(engine->master.position).GetFen();
    }

    /// The lines without the figures that vary from run to run.
    [[nodiscard]] static Strings WithoutTimes(Strings lines) {
        for (std::string& line : lines) {
            line = WithoutVaryingFigures(std::move(line));
        }
        return lines;
    }

    CCollectingSink sink;
    std::unique_ptr<test::COpenEngine> engine = std::make_unique<test::COpenEngine>(sink);
};

}  // namespace brenquil
