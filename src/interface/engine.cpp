#include "interface/engine.h"

#include "board/score.h"
#include "eval/evaluation.h"
#include "text/text.h"

#include <string>

namespace brenquil {

CEngine::CEngine(ILineSink& lineSink) : sink(lineSink), master(Context(), output) {
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

Score CEngine::Evaluate(const CPosition& position) {
    CEvaluation evaluation(position, evaluationOptions, hashTable.pawnHash, kpkBitbase);
    return evaluation.Evaluate(-MateScore, MateScore);
}

SearchContext CEngine::Context() noexcept {
    return {hashTable, bases, searchOptions, evaluationOptions, kpkBitbase};
}

void CEngine::Print(std::string_view message) {
    protocol.PrintInfoString(message);
}

void CEngine::PrintBare(std::string_view line) {
    sink.Write(std::string(line) + "\n");
}

void CEngine::EndSearch() {
    master.EndSearch();
}

}  // namespace brenquil
