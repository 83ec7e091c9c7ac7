// Endings that the product's solver solves in memory, for the tests of everything that builds on
// it.
#pragma once

#include "tables/ending_solver.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace brenquil::test {

/// Solves endings with what they can turn into, and keeps them.
template <class Rules>
class CSolvedInMemory {
public:
    explicit CSolvedInMemory(std::size_t threads = 2) : workers(threads) {}

    /// The codes of the ending itself; its values are kept among `solved`.
    std::unique_ptr<CEndingValues<typename Rules::Code>> Solve(const std::string& name) {
        const int wanted = EndingOfName(name);
        std::unique_ptr<CEndingValues<typename Rules::Code>> codes;
        for (const int number : WithSuccessors({wanted})) {
            std::shared_ptr<SolvedValues>& place = solved[static_cast<std::size_t>(number)];
            if (number == wanted || place == nullptr) {
                codes = SolveEnding<Rules>(EndingOf(number), solved, workers, progress);
                place = CopyOf(*codes);
            }
        }
        return codes;
    }

    const SolvedValues& ValuesOf(const std::string& name) {
        const auto number = static_cast<std::size_t>(EndingOfName(name));
        if (solved[number] == nullptr) {
            (void)Solve(name);
        }
        return *solved[number];
    }

    CWorkers workers;
    CProgress progress{CProgress::Output::Silent};
    SolvedEndings solved;

private:
    static std::shared_ptr<SolvedValues> CopyOf(const CEndingValues<typename Rules::Code>& codes) {
        auto values = std::make_shared<SolvedValues>(codes.Of());
        for (const Colour colour : {White, Black}) {
            values->Allocate(colour);
            std::transform(codes.Slice(colour, 0), codes.Slice(colour, 0) + codes.Places(),
                           values->Slice(colour, 0), [](auto code) {
                               return static_cast<std::int8_t>(Rules::ValueOf(code));
                           });
        }
        return values;
    }
};

}  // namespace brenquil::test
