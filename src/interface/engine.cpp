#include "interface/engine.h"

#include "board/position_text.h"
#include "board/score.h"
#include "eval/evaluation.h"
#include "interface/console/move_listing.h"
#include "interface/move_notation.h"
#include "text/text.h"

#include <cstddef>

namespace brenquil {

CEngine::CEngine(ILineSink& sink, CDialect dialect) : protocol(sink, dialect) {}

CEngine::~CEngine() {
    EndSearch();
}

/// The one way to what a search works on.
CPosition& CEngine::PositionAtRest() {
    EndSearch();
    return parts_.master.position;
}

const CPosition& CEngine::Position() {
    return PositionAtRest();
}

std::string CEngine::Fen() {
    std::string fen = CPositionText(PositionAtRest()).GetFen();
    if (forgottenPlies_ > 0) {
        const std::size_t number = fen.rfind(' ') + 1;
        fen = fen.substr(0, number) +
              std::to_string(ToInteger(fen.substr(number)) + forgottenPlies_ / 2);
    }
    return fen;
}

void CEngine::SetPosition(std::string_view fen) {
    CPositionText(PositionAtRest()).SetFen(fen);
    forgottenPlies_ = 0;
    MakeRoomForMoves();
    protocol.fileLetterCastling = HasFileLetterCastling(fen);
}

void CEngine::PlayMoveText(std::string_view word) {
    const Move move = TextToMove(word);
    if (move.IsNone() || !PositionAtRest().MakeMove(move)) {
        protocol.PrintInfoString("Illegal move: " + std::string(word));
    }
    MakeRoomForMoves();
}

Move CEngine::TextToMove(std::string_view text) {
    const bool chess960 = parts_.outputOptions.chess960.enabled;
    const Move move = CPositionText::TextToMove(text, Position(), chess960);
    return move.IsNone() && protocol.dialect.ReadsEitherCastling()
             ? CPositionText::TextToMove(text, Position(), !chess960)
             : move;
}

Move CEngine::TextToLegalMove(std::string_view text) {
    const Move move = TextToMove(text);
    CPosition& position = PositionAtRest();
    if (move.IsNone() || !position.MakeMove(move)) {
        return NoMove;
    }
    position.UndoMove(move);
    return move;
}

/// Leaves the undo stack room for the deepest search.
void CEngine::MakeRoomForMoves() {
    constexpr int MostPlies = CPosition::UndoCapacity - 2 - CSearch::MaxPly;
    CPosition& position = parts_.master.position;
    if (protocol.dialect.ForgetsOldMoves() && position.ply > MostPlies) {
        forgottenPlies_ += position.ForgetHistory();
    }
}

void CEngine::TakeBack() {
    CPosition& position = PositionAtRest();
    if (position.ply > 1 && position.ply <= CPosition::UndoCapacity) {
        position.UndoMove(position.undo[position.ply - 1].move);
    }
}

void CEngine::Flip() {
    CPositionText text(PositionAtRest());
    text.SetFen(CPositionText::FlipFen(text.GetFen()));
}

void CEngine::NewGame() {
    SetPosition("");
    parts_.hashTable.Clear();
}

void CEngine::Go(const SearchLimits& limits) {
    if (!parts_.master.Start(limits)) {
        protocol.PrintInfoString("The system gives no thread for the search");
    }
}

Score CEngine::Evaluate(const CPosition& position) {
    EndSearch();
    CEvaluation evaluation(position, parts_.evaluationOptions, parts_.hashTable.pawnHash,
                           parts_.kpkBitbase);
    return evaluation.Evaluate(-MateScore, MateScore);
}

std::vector<std::string> CEngine::ListMoves() {
    return brenquil::ListMoves(parts_.bases, Position(), true, ListNotation(parts_.outputOptions));
}

bool CEngine::SetOption(std::string_view name, const std::string& value) {
    return brenquil::SetOption(parts_.optionGroups, name, value);
}

}  // namespace brenquil
