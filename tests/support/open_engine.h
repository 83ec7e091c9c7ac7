// An engine whose objects a test may look at.
#pragma once

#include "interface/engine.h"

namespace brenquil::test {

/// The engine, opened.
class COpenEngine final : public CEngine {
public:
    using CEngine::bases;
    using CEngine::book;
    using CEngine::CEngine;
    using CEngine::evaluationOptions;
    using CEngine::hashTable;
    using CEngine::master;
    using CEngine::memoryOptions;
    using CEngine::nalimov;
    using CEngine::optionGroups;
    using CEngine::outputOptions;
    using CEngine::searchOptions;
    using CEngine::syzygyTables;
};

}  // namespace brenquil::test
