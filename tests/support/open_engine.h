// An engine whose objects a test may look at.
#pragma once

#include "interface/engine.h"

namespace brenquil::test {

/// The engine, opened.
class COpenEngine final : public CEngine {
public:
    using CEngine::CEngine;

    CHashTable& hashTable = parts_.hashTable;
    CBaseList& bases = parts_.bases;
    CMasterThread& master = parts_.master;
    CBook& book = parts_.book;
    CMemoryOptions& memoryOptions = parts_.memoryOptions;
    CSearchOptions& searchOptions = parts_.searchOptions;
    CEvaluationOptions& evaluationOptions = parts_.evaluationOptions;
    COutputOptions& outputOptions = parts_.outputOptions;
    const OptionGroupList& optionGroups = parts_.optionGroups;
};

}  // namespace brenquil::test
