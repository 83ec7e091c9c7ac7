// All objects of the program, made in the order in which they need one another.
//
// One engine is one program: the main function makes one and never destroys it, because a search
// thread may still look at it when the process ends. Tests make their own, each with its own sink;
// nothing here is shared between two of them. The command handlers work on its members directly.
//
// Some two megabytes large, without the hash table; it belongs on the heap.
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
#include "interface/line_sink.h"
#include "interface/output_options.h"
#include "interface/protocol.h"
#include "interface/uci/uci_output.h"
#include "search/hash_table.h"
#include "search/memory_options.h"
#include "search/search_options.h"
#include "search/threads.h"
#include "text/option.h"

namespace brenquil {

/// The program's objects. `master.position` is the game position.
class CEngine final : private IHost {
public:
    /// @param lineSink  takes every output line; outlives the engine
    explicit CEngine(ILineSink& lineSink);
    CEngine(const CEngine&) = delete;
    CEngine& operator=(const CEngine&) = delete;

    /// Ends a search that is under way.
    ~CEngine() override;

    /// The static score of a position from the view of the side to move. For the reading thread.
    [[nodiscard]] Score Evaluate(const CPosition& position);

    ILineSink& sink;
    CProtocol protocol{sink};
    CHashTable hashTable;
    CBaseList bases;
    const CKpkBitbase kpkBitbase;
    CSearchOptions searchOptions;
    CEvaluationOptions evaluationOptions;
    COutputOptions outputOptions{evaluationOptions};
    CUciOutput output{protocol, outputOptions, bases};
    CMasterThread master;
    CMemoryOptions memoryOptions{*this, hashTable};

    CBook book{*this};
    CNalimovBasesDTM nalimov{*this};
    CSyzygyTables syzygyTables{*this};
    CSyzygyOptions syzygyOptions;
    CSyzygyBasesDTZ syzygyDtz{syzygyTables, syzygyOptions};
    CSyzygyBasesWDL syzygyWdl{syzygyTables, syzygyOptions};

    /// In the order of the `option` lines.
    const OptionGroupList optionGroups{&memoryOptions, &searchOptions, &evaluationOptions,
                                       &outputOptions, &book.options,  &nalimov.options,
                                       &syzygyOptions};

private:
    [[nodiscard]] SearchContext Context() noexcept;

    // What book, tables and memory ask for.
    void Print(std::string_view message) override;
    void PrintBare(std::string_view line) override;
    void EndSearch() override;
};

}  // namespace brenquil
