#include "interface/engine.h"

#include "board/score.h"
#include "eval/evaluation.h"

#include <string>

namespace brenquil {

CEngine::CEngine(ILineSink& lineSink)
    : sink(lineSink),
      master(Context(), output),
      memoryOptions([this](std::int32_t megabytes) { ResizeHash(megabytes); },
                    [this] { return static_cast<std::int32_t>(hashTable.SizeMegabytes()); }),
      book([this](std::string_view message) { protocol.PrintInfoString(message); },
           [this] { master.EndSearch(); }),
      nalimov([this](std::string_view message) { protocol.PrintInfoString(message); },
              [this] { master.EndSearch(); }),
      syzygyOptions([this](const std::string& path) {
          master.EndSearch();
          syzygyTables.SetPath(path);
      }) {
    bases.Add(book, 0);
    bases.Add(nalimov, CNalimovBasesDTM::MostMen);
    bases.Add(syzygyDtz, 0);
    bases.Add(syzygyWdl, CSyzygyBasesWDL::MostMen);
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

void CEngine::ResizeHash(std::int32_t megabytes) {
    const auto size = static_cast<std::uint32_t>(megabytes);
    if (size == hashTable.SizeMegabytes()) {
        return;
    }
    master.EndSearch();
    if (!hashTable.Resize(size)) {
        protocol.PrintInfoString("Hash of " + std::to_string(megabytes) +
                                 " MB cannot be allocated, " +
                                 std::to_string(hashTable.SizeMegabytes()) + " MB stay in use");
    }
}

}  // namespace brenquil
