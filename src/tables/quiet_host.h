// The program around the reader of Syzygy tables, for a program that has nothing to say about them.
#pragma once

#include "bases/host.h"

namespace brenquil {

class CQuietHost final : public IHost {
public:
    void Print(std::string_view /*message*/) override {}

    void PrintBare(std::string_view /*line*/) override {}

    void EndSearch() override {}
};

}  // namespace brenquil
