// Every object that a session works with, and how they refer to one another.
//
// Only the engine's verbs touch them (interface/engine.h). While they are being made they take one
// another's addresses and no more, so their order means nothing; the one exception is marked. The
// last step of the constructor brings what the options steer into line with their defaults.
#pragma once

#include "bases/base.h"
#include "bases/host.h"
#include "bases/nalimov/nalimov_bases_dtm.h"
#include "bases/syzygy/syzygy_bases.h"
#include "bases/syzygy/syzygy_options.h"
#include "bases/syzygy/syzygy_tables.h"
#include "book/book.h"
#include "eval/evaluation_options.h"
#include "eval/kpk_bitbase.h"
#include "interface/output_options.h"
#include "interface/protocol.h"
#include "interface/uci/strict_options.h"
#include "interface/uci/uci_output.h"
#include "search/hash_table.h"
#include "search/memory_options.h"
#include "search/search_options.h"
#include "search/threads.h"
#include "text/option.h"

namespace brenquil {

/// The objects. `master.position` is the game position.
struct CEngineParts final : private IHost {
    explicit CEngineParts(CProtocol& session);

    CProtocol& protocol;
    CHashTable hashTable;
    CBaseList bases;
    const CKpkBitbase kpkBitbase;
    CSearchOptions searchOptions;
    CEvaluationOptions evaluationOptions;
    COutputOptions outputOptions{
        evaluationOptions};  ///< lists one of those, so it comes after them
    CStrictOptions strictOptions;
    CUciOutput output{protocol, outputOptions, strictOptions, bases};
    CMasterThread master{
        SearchContext{hashTable, bases, searchOptions, evaluationOptions, kpkBitbase}, output,
        protocol.dialect.Manners()};
    CMemoryOptions memoryOptions{*this, hashTable};
    CBook book{*this};
    CNalimovBasesDTM nalimov{*this};
    CSyzygyTables syzygyTables{*this};
    CSyzygyOptions syzygyOptions;
    CSyzygyBasesDTZ syzygyDtz{syzygyTables, syzygyOptions};
    CSyzygyBasesWDL syzygyWdl{syzygyTables, syzygyOptions};
    /// In the order of the `option` lines.
    OptionGroupList optionGroups{&memoryOptions, &searchOptions, &evaluationOptions,
                                 &outputOptions, &book.options,  &nalimov.options,
                                 &syzygyOptions};

private:
    // What book, tables and memory have to say.
    void Print(std::string_view message) override { protocol.PrintInfoString(message); }

    void PrintBare(std::string_view line) override { protocol.PrintBare(line); }

    void EndSearch() override { master.EndSearch(); }
};

}  // namespace brenquil
