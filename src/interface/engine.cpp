#include "interface/engine.h"

#include "board/score.h"
#include "eval/evaluation.h"
#include "interface/console/move_listing.h"
#include "interface/move_notation.h"
#include "text/text.h"

namespace brenquil {

CEngine::CEngine(ILineSink& sink) : protocol(sink), master(Context(), output) {
    outputOptions.logging.onChange = [this](const std::string& value) {
        // The fallback is false here: a text that is no truth value switches the log off, although
        // the option's own field keeps what it was.
        protocol.logging = ParseBool(value, false);
    };
    syzygyOptions.path.onChange = [this](const std::string& path) { syzygyTables.SetPath(path); };
    bases.Add(book, 0);
    bases.Add(nalimov, CNalimovBasesDTM::MostMen);
    bases.Add(syzygyDtz, 0);
    bases.Add(syzygyWdl, CSyzygyBasesWDL::MostMen);
    for (COptionGroup* group : optionGroups) {
        group->RunCallbacks();
    }
}

CEngine::~CEngine() {
    master.EndSearch();
}

/// The one way to what a search works on.
CPosition& CEngine::PositionAtRest() {
    master.EndSearch();
    return master.position;
}

const CPosition& CEngine::Position() {
    return PositionAtRest();
}

std::string CEngine::Fen() {
    return CPositionText(PositionAtRest()).GetFen();
}

void CEngine::SetPosition(std::string_view fen) {
    CPositionText(PositionAtRest()).SetFen(fen);
    protocol.fileLetterCastling = HasFileLetterCastling(fen);
}

void CEngine::PlayMoveText(std::string_view word) {
    const Move move = TextToMove(word);
    if (move.IsNone() || !PositionAtRest().MakeMove(move)) {
        protocol.PrintInfoString("Illegal move: " + std::string(word));
    }
}

Move CEngine::TextToMove(std::string_view text) {
    return CPositionText::TextToMove(text, Position(), outputOptions.chess960.enabled);
}

void CEngine::TakeBack() {
    CPosition& position = PositionAtRest();
    if (position.ply > 1 && position.ply <= CPosition::UndoCapacity) {
        position.UndoMove(position.undo[static_cast<std::size_t>(position.ply - 1)].move);
    }
}

void CEngine::Flip() {
    CPositionText text(PositionAtRest());
    text.SetFen(CPositionText::FlipFen(text.GetFen()));
}

void CEngine::NewGame() {
    SetPosition("");
    hashTable.Clear();
}

void CEngine::Go(const SearchLimits& limits) {
    if (!master.Start(limits)) {
        protocol.PrintInfoString("The system gives no thread for the search");
    }
}

void CEngine::EndSearch() {
    master.EndSearch();
}

Score CEngine::Evaluate(const CPosition& position) {
    master.EndSearch();
    CEvaluation evaluation(position, evaluationOptions, hashTable.pawnHash, kpkBitbase);
    return evaluation.Evaluate(-MateScore, MateScore);
}

std::vector<std::string> CEngine::ListMoves() {
    return brenquil::ListMoves(bases, Position(), true, ListNotation(outputOptions));
}

bool CEngine::SetOption(std::string_view name, const std::string& value) {
    return brenquil::SetOption(optionGroups, name, value);
}

SearchContext CEngine::Context() noexcept {
    return {hashTable, bases, searchOptions, evaluationOptions, kpkBitbase};
}

void CEngine::Print(std::string_view message) {
    protocol.PrintInfoString(message);
}

void CEngine::PrintBare(std::string_view line) {
    protocol.PrintBare(line);
}

}  // namespace brenquil
