#include "search_setup.h"

#include "text/text.h"

#include <algorithm>
#include <array>

namespace brenquil {

std::string MoveName(Move move) {
    std::string text = SquareToText(move.From()) + SquareToText(move.To());
    if (move.Kind() != MoveKind::Normal) {
        text += "/" + std::to_string(static_cast<int>(move.Kind())) + "." +
                std::to_string(move.Index());
    }
    return text;
}

std::string LineText(std::span<const Move> line) {
    std::string text;
    for (const Move move : line) {
        text += text.empty() ? "" : " ";
        text += MoveName(move);
    }
    return text;
}

std::string StatsText(const SearchStatistics& statistics) {
    return "stats nodes " + std::to_string(statistics.nodes) + " hashfull " +
           std::to_string(statistics.hashfull) + " hits " + std::to_string(statistics.baseHits);
}

std::string PvText(std::int32_t depth, std::int32_t selectiveDepth, Score score, Score alpha,
                   Score beta, std::int32_t multiPv, std::span<const Move> line,
                   const SearchStatistics& statistics) {
    return "pv depth " + std::to_string(depth) + " seldepth " + std::to_string(selectiveDepth) +
           " score " + std::to_string(score) + " window " + std::to_string(alpha) + " " +
           std::to_string(beta) + " multipv " + std::to_string(multiPv) + " " +
           StatsText(statistics) + " line " + LineText(line);
}

std::string BestMoveText(Move best, Move ponder) {
    return "best " + MoveName(best) + " ponder " + MoveName(ponder);
}

void CRecordingReceiver::SetRoot(const CPosition& root) {
    record.rootKeys.push_back(root.key);
}

void CRecordingReceiver::PrintPv(const PvReport& report, const SearchStatistics& figures) {
    record.texts.push_back(PvText(report.depth, report.selectiveDepth, report.score, report.alpha,
                                  report.beta, report.multiPv, *report.line, figures));
    record.pvs.push_back({report, *report.line, figures});
    if (onPv) {
        onPv(record.pvs.back());
    }
}

void CRecordingReceiver::PrintCurrMove(Move move, std::int32_t number) {
    record.texts.push_back("currmove " + MoveName(move) + " " + std::to_string(number));
    if (onCurrMove) {
        onCurrMove(move);
    }
}

void CRecordingReceiver::PrintRefutation(Move move, const PvLine& line) {
    record.texts.push_back("refutation " + MoveName(move) + " by " + LineText(line));
}

void CRecordingReceiver::PrintStats(const SearchStatistics& figures) {
    record.texts.push_back(StatsText(figures));
    record.statistics.push_back(figures);
    if (onStats) {
        onStats();
    }
}

void CRecordingReceiver::PrintCurrentLine(const PvLine& line) {
    record.texts.push_back("currline " + LineText(line));
}

void CRecordingReceiver::PrintBestMove(Move bestMove, Move ponderMove) {
    record.texts.push_back(BestMoveText(bestMove, ponderMove));
    record.best = bestMove;
    record.ponder = ponderMove;
    record.ends.AddLossily(1);
}

void CRecordingReceiver::PrintNoBestMove() {
    record.texts.emplace_back("no best move");
    record.ends.AddLossily(1);
}

std::vector<std::string> SearchRecord::Beginning(std::string_view start) const {
    std::vector<std::string> found;
    std::copy_if(texts.begin(), texts.end(), std::back_inserter(found),
                 [start](const std::string& text) { return text.starts_with(start); });
    return found;
}

Move MoveOf(const CPosition& position, std::string_view text) {
    const Move move = CPositionText::TextToMove(text, position, false);
    EXPECT_FALSE(move.IsNone()) << text;
    return move;
}

void SetPosition(CPosition& position, std::string_view fen, std::string_view moves) {
    CPositionText(position).SetFen(fen);
    for (const std::string& word : Split(moves, ' ')) {
        EXPECT_TRUE(position.MakeMove(MoveOf(position, word))) << word;
    }
}

std::vector<Move> LegalMoves(CPosition& position) {
    MoveList list;
    CMoveGenerator(position).GenerateMoves(list, MoveKinds::All);
    std::vector<Move> legal;
    for (const Move move : list) {
        if (position.MakeMove(move)) {
            position.UndoMove(move);
            legal.push_back(move);
        }
    }
    return legal;
}

void PlayRandomly(CPosition& position, int count, std::mt19937_64& random) {
    for (int i = 0; i < count; ++i) {
        const std::vector<Move> legal = LegalMoves(position);
        if (legal.empty()) {
            return;
        }
        EXPECT_TRUE(position.MakeMove(legal[random() % legal.size()]));
    }
}

std::string RandomChess960Fen(std::mt19937_64& random) {
    std::string rank(8, ' ');
    const auto put = [&rank](char letter, std::size_t place) {
        for (char& square : rank) {
            if (square == ' ' && place-- == 0) {
                square = letter;
                return;
            }
        }
    };
    rank[2 * (random() % 4)] = 'B';
    rank[2 * (random() % 4) + 1] = 'B';
    put('Q', random() % 6);
    put('N', random() % 5);
    put('N', random() % 4);
    put('R', 0);
    put('K', 0);
    put('R', 0);
    std::string black = rank;
    std::transform(black.begin(), black.end(), black.begin(),
                   [](char letter) { return static_cast<char>(letter - 'A' + 'a'); });
    const auto right = static_cast<char>('A' + rank.rfind('R'));
    const auto left = static_cast<char>('A' + rank.find('R'));
    const std::string rights{right, left, static_cast<char>(right - 'A' + 'a'),
                             static_cast<char>(left - 'A' + 'a')};
    return black + "/pppppppp/8/8/8/8/PPPPPPPP/" + rank + " w " + rights + " - 0 1";
}

std::span<const std::string_view> VariedPositions() {
    static constexpr std::array<std::string_view, 64> Positions = {
        // Openings
        "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
        "r1bqkbnr/pppp1ppp/2n5/4p3/2B1P3/5N2/PPPP1PPP/RNBQK2R b KQkq - 3 3",
        "rnbqkb1r/pp1ppppp/5n2/2p5/2PP4/8/PP2PPPP/RNBQKBNR w KQkq - 1 3",
        "rnbqk2r/pppp1ppp/4pn2/8/1bPP4/2N5/PP2PPPP/R1BQKBNR w KQkq - 2 4",
        "rnbqkbnr/pp1p1ppp/8/2pPp3/8/8/PPP1PPPP/RNBQKBNR w KQkq e6 0 3",
        "r1bqk2r/pppp1Npp/2n2n2/2b1p3/2B1P3/8/PPPP1PPP/RNBQK2R b KQkq - 0 5",
        "rnb1kbnr/pppp1ppp/8/4p3/5PPq/8/PPPPP2P/RNBQKBNR w KQkq - 1 3",
        "r2qkb1r/pp2nppp/3p4/2pNN1B1/2BnP3/3P4/PPP2PPP/R2bK2R w KQkq - 1 10",
        // Middlegames
        "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
        "r1bq1rk1/pp2bppp/2n1pn2/2pp4/3P1B2/2PBPN2/PP1N1PPP/R2QK2R w KQ - 4 8",
        "2rq1rk1/pb1n1ppN/4p3/1pb5/3P1Pn1/P1N5/1PQ1B1PP/R1B2RK1 b - - 0 16",
        "r2q1rk1/1b1nbppp/pp1ppn2/8/2PNP3/1PN1B3/P3BPPP/R2Q1RK1 w - - 0 12",
        "3r1rk1/p1q2ppp/1pn1p3/2p5/2PPb3/P3PN2/1B2QPPP/R4RK1 w - - 2 17",
        "r4rk1/pp3ppp/2n1b3/q1pp2B1/8/P1Q2NP1/1PP1PP1P/2KR3R w - - 0 15",
        "2r2rk1/1bqnbppp/p3pn2/1p6/3NP3/1BN1BP2/PPQ3PP/2RR2K1 b - - 6 16",
        "r1b1k2r/2q1bppp/p2ppn2/1p4B1/3NPP2/2N2Q2/PPP3PP/2KR1B1R w kq - 0 12",
        "1r3rk1/3bbppp/1qp1pn2/p2pN3/P2P1P2/1P1BP3/1B1Q2PP/R4RK1 b - - 3 18",
        "r3r1k1/1pq2pp1/p1p2n1p/2PpbP2/1P6/P1NBPQ1P/5P2/3R1RK1 b - - 0 22",
        "8/1bq2pkp/p2p2p1/1p1Pp3/4P1n1/P1N3P1/1PQ2PK1/4B3 w - - 1 31",
        "r4r1k/pp1qn1bp/3p2p1/2pPp1P1/2P1Pn2/2N1BP2/PP1QB3/2KR3R w - - 3 19",
        // Tactics and checks
        "r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4",
        "6k1/pp3ppp/8/8/8/2q5/P4PPP/3R2K1 w - - 0 1",
        "r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1",
        "4r1k1/5bpp/2p5/3pr3/8/1B3pPq/PPR2P2/2R2QK1 b - - 0 1",
        "2r3k1/p4p2/3Rp2p/1p2P1pK/8/1P4P1/P3Q2P/1q6 b - - 0 1",
        "7k/p7/1R5K/6r1/6p1/6P1/8/8 w - - 0 1",
        "1r2k1r1/pbppnp1p/1bn2P2/8/Q7/B1PB1q2/P4PPP/3RR1K1 w - - 0 1",
        "rnb2rk1/ppp2qb1/6pQ/2pN1p2/8/1P3BP1/PB2PP1P/R3K2R w KQ - 0 1",
        "4k2r/1R3R2/p3p1pp/4b3/1BnNr3/8/P1P5/5K2 w - - 1 1",
        "r3kr2/1pp4p/1p1p4/7q/4P1n1/2PP2Q1/PP4P1/R1BB2K1 b q - 0 1",
        "rnbqkbnr/ppp2ppp/8/1B1pp3/4P3/8/PPPP1PPP/RNBQK1NR b KQkq - 1 3",
        "4k3/8/8/8/7b/8/3q4/4K3 w - - 0 1",
        // Pawns before promotion, under-promotion, en passant
        "8/2P1P3/8/1k6/8/1K6/3p1p2/8 w - - 0 1",
        "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
        "8/5P1k/8/5K2/8/8/8/8 w - - 0 1",
        "8/8/3k4/8/2pPp3/8/3K4/8 b - d3 0 1",
        "8/8/8/K2pP2r/8/8/8/4k3 w - d6 0 1",
        "r3k2r/1P4P1/8/8/8/8/1p4p1/R3K2R w KQkq - 0 1",
        "6k1/5ppp/8/2pP4/2P5/8/5PPP/6K1 w - c6 0 2",
        // Endings
        "8/5k2/8/4pP2/4K3/8/8/8 b - - 0 1",
        "8/8/4k3/3pP3/2pP4/2P1K3/8/8 w - - 10 40",
        "8/pp6/2p5/3k4/3P4/1P2K3/P7/8 w - - 0 30",
        "8/8/1p1r1k2/p1pPN1p1/P3KnP1/1P6/8/3R4 b - - 0 1",
        "5k2/7R/4P2p/5K2/p1r2P1p/8/8/8 b - - 0 1",
        "6k1/6p1/7p/P1N5/1r3p2/7P/1b3PP1/3bR1K1 w - - 0 1",
        "8/3k4/8/8/8/3BK3/8/5R2 w - - 96 120",
        "8/8/8/3k4/8/3K4/3R4/8 w - - 98 80",
        "8/8/8/8/8/1k6/7Q/K7 b - - 99 99",
        "8/8/2k5/8/8/2K5/2P5/8 w - - 0 1",
        "8/6k1/8/5q2/8/8/1Q4K1/8 b - - 0 1",
        "4k3/8/8/8/8/8/8/RB2K3 w - - 0 1",
        "k7/2Q5/8/8/8/8/8/K7 b - - 0 1",
        "8/8/8/8/8/5k2/5p2/5K2 w - - 0 1",
        "7k/5K2/8/6P1/8/8/8/8 w - - 0 1",
        // Chess960
        "nrbkqbrn/pppppppp/8/8/8/8/PPPPPPPP/NRBKQBRN w GBgb - 0 1",
        "bbqnnrkr/pp1ppppp/8/2p5/8/3P4/PPP1PPPP/BBQNNRKR w HFhf - 0 2",
        "rk1r4/ppp2ppp/3b4/8/8/3B4/PPP2PPP/RK1R4 w DAda - 0 1",
        "1rkr4/1p4p1/8/8/8/8/1P4P1/1RKR4 b DBdb - 0 1",
        "2rk1r2/8/8/8/8/8/8/R4KR1 w GAfc - 0 1",
        "qrkbbnrn/1ppppp1p/p7/6p1/4P3/8/PPPP1PPP/QRKBBNRN w GBgb - 0 3",
        "rkrbbnnq/pppp1ppp/8/4p3/3P4/8/PPP1PPPP/RKRBBNNQ w CAca - 0 2",
        // Set up, not played
        "QQQQkQQQ/8/8/8/8/8/8/q3K2q b - - 0 1",
        "8/PPPPPPPP/8/2k5/5K2/8/pppppppp/8 b - - 0 1",
        "3qk3/8/8/8/8/8/8/3QK2R w K - 0 1",
    };
    return Positions;
}

}  // namespace brenquil
