#include "interface/uci/uci_output.h"

#include "board/score.h"
#include "interface/console/move_listing.h"
#include "interface/move_notation.h"
#include "interface/uci/uci_text.h"
#include "interface/uci/win_draw_loss.h"
#include "text/text.h"

#include <cassert>

namespace brenquil {

namespace {

/// " time t nodes n nps r": the fields that both kinds of `info` line share.
std::string ProgressText(const SearchStatistics& statistics) {
    // Signed, although the clock is not: beyond 24 days the time turns negative.
    const std::int32_t time = statistics.ticks;
    return " time " + std::to_string(time) + " nodes " + std::to_string(statistics.nodes) +
           " nps " + std::to_string(NodesPerSecond(statistics.nodes, statistics.ticks));
}

std::string TableText(const SearchStatistics& statistics) {
    return " hashfull " + std::to_string(statistics.hashfull) + " tbhits " +
           std::to_string(statistics.baseHits);
}

}  // namespace

CUciOutput::CUciOutput(CProtocol& protocol, const COutputOptions& options,
                       const CStrictOptions& strictOptions, const CBaseList& bases)
    : protocol_(protocol), options_(options), strictOptions_(strictOptions), bases_(bases) {}

void CUciOutput::PrintPv(const PvReport& report, const SearchStatistics& statistics) {
    assert(report.line != nullptr && report.multiPv >= 0);
    std::string text = "info depth " + std::to_string(report.depth) + " seldepth " +
                       std::to_string(report.selectiveDepth) + ProgressText(statistics) +
                       ScoreText(report.score) + ChancesText(report.score) +
                       BoundText(report.score, report.alpha, report.beta) + TableText(statistics);
    if (report.multiPv > 0) {
        text += " multipv " + std::to_string(report.multiPv);
    }
    protocol_.PrintLine(text + " pv " + PvText(*report.line));
}

void CUciOutput::PrintCurrMove(Move move, int number) {
    protocol_.PrintLine("info currmove " + MoveText(move) + " currmovenumber " +
                        std::to_string(number));
}

void CUciOutput::PrintRefutation(Move move, const PvLine& line) {
    if (options_.showRefutations.enabled) {
        protocol_.PrintLine("info refutation " + MoveText(move) + " " + PvText(line));
    }
}

void CUciOutput::PrintStats(const SearchStatistics& statistics) {
    const std::int32_t load = CpuLoad(statistics.ticks, statistics.clock);
    protocol_.PrintLine("info" + ProgressText(statistics) + " cpuload " + std::to_string(load) +
                        TableText(statistics));
}

void CUciOutput::PrintCurrentLine(const PvLine& line) {
    if (options_.showCurrLine.enabled && line.count > 0) {
        protocol_.PrintLine("info currline " + PvText(line));
    }
}

void CUciOutput::PrintBestMove(Move best, Move ponder) {
    if (best.IsNone()) {
        return;
    }
    const std::string database = options_.showDatabaseMoves.enabled ? DatabaseText(best) : "";

    std::string text = "bestmove " + MoveText(best);
    // In Chess960 with castling by name the ponder move is named even with the option Ponder off,
    // which is deliberate.
    if (!ponder.IsNone() && (options_.ponder.enabled || CastlesByName(protocol_, options_))) {
        text += " ponder " + MoveText(ponder);
    }
    protocol_.PrintLine(text);
    if (!database.empty()) {
        protocol_.PrintInfoString("Database moves: " + database);
    }
}

void CUciOutput::PrintNoBestMove() {
    if (protocol_.dialect.SaysThatThereIsNoMove()) {
        // " score mate 0" is written by hand: no score of the search means a mate that has
        // happened.
        const Score score = root_.inCheck ? -MateScore : DrawScore;
        protocol_.PrintLine("info depth 0" +
                            (root_.inCheck ? std::string(" score mate 0") : ScoreText(score)) +
                            ChancesText(score));
        protocol_.PrintLine("bestmove (none)");
    } else {
        protocol_.PrintInfoString("No best move!");
    }
}

std::string CUciOutput::ChancesText(Score score) const {
    if (!strictOptions_.showWdl.enabled) {
        return {};
    }
    const WinDrawLoss chances = ChancesOf(score);
    return " wdl " + std::to_string(chances.win) + " " + std::to_string(chances.draw) + " " +
           std::to_string(chances.loss);
}

std::string CUciOutput::PvText(const PvLine& line) const {
    std::string text;
    for (const Move move : line) {
        text += text.empty() ? "" : " ";
        text += MoveText(move);
    }
    return text;
}

std::string CUciOutput::MoveText(Move move) const {
    return CPositionText::MoveToText(move, root_, LineNotation(protocol_, options_));
}

/// The listing of the replies to the best move that the bases know, in one line.
std::string CUciOutput::DatabaseText(Move best) {
    if (!root_.MakeMove(best)) {
        return {};
    }
    const std::string text = Join(ListMoves(bases_, root_, false, ListNotation(options_)), " ");
    root_.UndoMove(best);
    return text;
}

}  // namespace brenquil
