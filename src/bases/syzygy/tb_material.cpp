#include "bases/syzygy/tb_material.h"

#include "platform/bits.h"

#include <cstddef>

namespace brenquil {

namespace {

constexpr std::string_view CodeLetters = " PNBRQK";  // index is the code

/// [0] for the side given first, [1] for the other; by code. Kings do not count.
constexpr std::uint64_t KeyFactors[2][7] = {
    {0, 0xEC0ADE190C0F6003, 0xD2FB81862830191F, 0xAADC1A2BE446234D, 0x985DEB9FC49333F9,
     0xA3EC1ABC71E90863, 0},
    {0, 0xA24F0F571BB202E7, 0xBAEB854CD3259441, 0xD5A4C95928F2FBE3, 0xFD7866B439B94495,
     0xD6E4E47D24962951, 0},
};

constexpr TbMen BoardOfCode[7] = {nullptr,
                                  &TbPosition::pawns,
                                  &TbPosition::knights,
                                  &TbPosition::bishops,
                                  &TbPosition::rooks,
                                  &TbPosition::queens,
                                  &TbPosition::kings};

std::uint64_t SideMaterialKey(const TbPosition& position, Bitboard men, int side) noexcept {
    std::uint64_t key = 0;
    for (int code = TbPawn; code <= TbQueen; ++code) {
        for (Bitboard some = men & position.*BoardOfCode[code]; some != 0; some &= some - 1) {
            key += KeyFactors[side][code];
        }
    }
    return key;
}

std::string SideName(const TbPosition& position, Bitboard men) {
    std::string name = "K";
    for (unsigned code = TbQueen; code >= TbPawn; --code) {
        const Bitboard some = men & position.*BoardOfCode[code];
        name.append(PopCount(some), CodeLetters[code]);
    }
    return name;
}

/// Men beside the kings, in the order in which names are formed.
constexpr std::string_view Letters = "QRBNP";

/// Calls `visit` with each letter from `first` on and its place.
template <class Visit>
void ForLetters(std::size_t first, Visit visit) {
    for (std::size_t i = first; i < Letters.size(); ++i) {
        visit(i, std::string(1, Letters[i]));
    }
}

}  // namespace

TbCounts CountsOfName(std::string_view name) {
    TbCounts counts{};
    std::size_t side = 0;
    for (const char letter : name) {
        const std::size_t code = CodeLetters.find(letter);
        if (letter == 'v') {
            side = TbBlackBit;
        } else if (code != std::string_view::npos && code != 0) {
            ++counts[side + code];
        }
    }
    return counts;
}

std::uint64_t MaterialKey(const TbCounts& counts, bool mirror) noexcept {
    std::uint64_t key = 0;
    for (unsigned code = TbPawn; code <= TbQueen; ++code) {
        key += counts[code] * KeyFactors[mirror ? 1 : 0][code];
        key += counts[code + TbBlackBit] * KeyFactors[mirror ? 0 : 1][code];
    }
    return key;
}

std::uint64_t MaterialKey(const TbPosition& position, bool mirror) noexcept {
    return SideMaterialKey(position, position.white, mirror ? 1 : 0) +
           SideMaterialKey(position, position.black, mirror ? 0 : 1);
}

std::string MaterialName(const TbPosition& position, bool mirror) {
    const std::string white = SideName(position, position.white);
    const std::string black = SideName(position, position.black);
    return mirror ? black + "v" + white : white + "v" + black;
}

Bitboard SquaresOfCode(const TbPosition& position, unsigned code) noexcept {
    return position.*BoardOfCode[code & 7U] &
           ((code & TbBlackBit) != 0 ? position.black : position.white);
}

std::vector<std::string> AllTableNames() {
    std::vector<std::string> names;
    const auto add = [&](const std::string& first, const std::string& second) {
        names.push_back("K" + first + "vK" + second);
    };
    ForLetters(0, [&](std::size_t, const std::string& a) { add(a, ""); });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t, const std::string& b) { add(a, b); });
    });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t, const std::string& b) { add(a + b, ""); });
    });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t, const std::string& b) {
            ForLetters(0, [&](std::size_t, const std::string& c) { add(a + b, c); });
        });
    });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t j, const std::string& b) {
            ForLetters(j, [&](std::size_t, const std::string& c) { add(a + b + c, ""); });
        });
    });
    // Two men each: the second side never has more than the first, or the table would stand there
    // under two names.
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t j, const std::string& b) {
            ForLetters(i, [&](std::size_t k, const std::string& c) {
                ForLetters(k == i ? j : k,
                           [&](std::size_t, const std::string& d) { add(a + b, c + d); });
            });
        });
    });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t j, const std::string& b) {
            ForLetters(j, [&](std::size_t, const std::string& c) {
                ForLetters(0, [&](std::size_t, const std::string& d) { add(a + b + c, d); });
            });
        });
    });
    ForLetters(0, [&](std::size_t i, const std::string& a) {
        ForLetters(i, [&](std::size_t j, const std::string& b) {
            ForLetters(j, [&](std::size_t k, const std::string& c) {
                ForLetters(k, [&](std::size_t, const std::string& d) { add(a + b + c + d, ""); });
            });
        });
    });
    return names;
}

}  // namespace brenquil
