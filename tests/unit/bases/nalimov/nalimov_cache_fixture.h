// A folder of tables with known contents, and a cache that reads them.
#pragma once

#include "../../../support/nalimov_test_folder.h"
#include "bases/nalimov/nalimov_cache.h"
#include "bases/nalimov/nalimov_index.h"

#include <cstddef>
#include <cstdint>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace brenquil {

using test::Bytes;
using test::CTestFolder;
using test::TableNumber;

constexpr int NoValue = CNalimovCache::NoValue;

inline Bytes Pattern(std::uint64_t size, unsigned seed) {
    std::mt19937 random(seed);
    Bytes bytes(static_cast<std::size_t>(size));
    std::uint8_t last = 0;
    for (std::uint8_t& byte : bytes) {
        last = random() % 4 == 0 ? static_cast<std::uint8_t>(random() % 127) : last;
        byte = last;
    }
    return bytes;
}

/// What a byte of a one-byte table means.
inline int Meaning(std::uint8_t byte) {
    const int value = static_cast<std::int8_t>(byte);
    return value == 0 ? 0 : value > 0 ? value + 32640 : value - 32640;
}

class CNalimovCacheTest : public testing::Test {
protected:
    static std::uint64_t Positions(std::string_view name, int side) {
        return NalimovCalculator(TableNumber(name), side).Positions();
    }

    void Register() {
        cache->Clear();
        tables->RegisterAll(folder.Name());
        cache->PrepareDecoding();
    }

    /// Writes and registers all tables of three men with a pattern each, some compressed.
    void WriteThreeMen() {
        for (int table = 1; table < NalimovFirstFourMen; ++table) {
            for (const int side : {0, 1}) {
                const auto& row = tables->Table(table);
                const Bytes bytes = Pattern(NalimovCalculator(table, side).Positions(),
                                            static_cast<unsigned>(table * 2 + side));
                const std::string name = std::string(row.name) + (side == 0 ? ".nbw" : ".nbb");
                if ((table + side) % 2 == 0) {
                    folder.Write(name, bytes);
                } else {
                    folder.Write(name + ".emd", test::Compressed(bytes));
                }
                contents.push_back(bytes);
            }
        }
        Register();
    }

    CTestFolder folder;
    test::CRecordingHost host;
    std::unique_ptr<CNalimovTables> tables = std::make_unique<CNalimovTables>(host);
    std::unique_ptr<CNalimovCache> cache = std::make_unique<CNalimovCache>(host, *tables);
    std::vector<Bytes> contents;
};

}  // namespace brenquil
