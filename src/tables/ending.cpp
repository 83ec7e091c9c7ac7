#include "tables/ending.h"

#include "bases/nalimov/nalimov_index.h"
#include "bases/nalimov/nalimov_signatures.h"
#include "platform/bits.h"

#include <algorithm>
#include <map>
#include <memory>

namespace brenquil {

namespace {

constexpr std::string_view Letters = "PNBRQK";
constexpr std::string_view SmallLetters = "pnbrqk";
constexpr std::array<PieceType, 4> PromotionTypes = {Queen, Rook, Bishop, Knight};
constexpr std::array<PieceType, 1> PawnAlone = {Pawn};

/// How many men of each kind there are, three bits each: the order of the men plays no part.
std::uint32_t KeyOf(std::span<const EndingMan> men, bool flipped) noexcept {
    std::uint32_t key = 0;
    for (const EndingMan man : men) {
        if (man.type != King) {
            const unsigned side = (man.colour == White) != flipped ? 0 : 1;
            key += 1U << (3 * (man.type + 5 * side));
        }
    }
    return key;
}

class CEndingList {
public:
    CEndingList() : endings_(EndingCount + 1) {
        for (int number = 1; number <= EndingCount; ++number) {
            Describe(number);
        }
        for (Ending& ending : endings_) {
            if (ending.number != 0) {
                FindExits(ending);
            }
        }
    }

    [[nodiscard]] const Ending& At(int number) const { return endings_[number]; }

    [[nodiscard]] std::optional<EndingExit> Find(std::span<const EndingMan> men) const {
        for (const Colour colour : {White, Black}) {
            if (std::count(men.begin(), men.end(), EndingMan{King, colour}) != 1) {
                return std::nullopt;
            }
        }
        if (men.size() > EndingMostMen) {
            return std::nullopt;
        }
        EndingExit exit;
        if (men.size() == 2) {
            return exit;
        }
        auto found = byKey_.find(KeyOf(men, false));
        if (found == byKey_.end()) {
            exit.flipped = true;
            found = byKey_.find(KeyOf(men, true));
        }
        exit.ending = found->second;
        const Ending& ending = At(exit.ending);
        std::array<bool, EndingMostMen> used{};
        for (std::size_t man = 0; man < ending.men; ++man) {
            EndingMan wanted = ending.man[man];
            wanted.colour = exit.flipped ? ~wanted.colour : wanted.colour;
            std::size_t from = 0;
            while (used[from] || men[from] != wanted) {
                ++from;
            }
            used[from] = true;
            exit.from[man] = ToByte(from);
        }
        return exit;
    }

private:
    void Describe(int number) {
        Ending& ending = endings_[number];
        const std::string_view name = NalimovSignatures[number].name;
        ending.number = number;
        ending.name = name;
        ending.men = name.size();
        const std::size_t secondKing = name.find('k', 1);
        for (std::size_t at = 0; at < name.size(); ++at) {
            if (at == secondKing) {
                ending.syzygyName += 'v';
            }
            ending.syzygyName += Letters[PieceTypeOf(name[at]).value()];
        }
        const NalimovMaterial material = NalimovMaterialOf(name);
        ending.isSymmetric = material.first == material.second;
        ending.man[0] = {King, White};
        ending.man[1] = {King, Black};
        std::size_t place = 2;
        const auto list = [&](std::span<const PieceType> types) {
            for (const Colour colour : {White, Black}) {
                const NalimovMenCounts& counts = colour == White ? material.first : material.second;
                for (const PieceType type : types) {
                    for (int man = 0; man < counts[type]; ++man) {
                        ending.man[place++] = {type, colour};
                    }
                }
            }
        };
        list(PromotionTypes);
        ending.pieces = place;
        list(PawnAlone);
        byKey_[KeyOf(std::span(ending.man).first(ending.men), false)] = number;
    }

    void FindExits(Ending& ending) const {
        ending.exits.resize((EndingMostMen + 1) * (EndingMostMen + 1) * 5);
        for (std::size_t captured = 2; captured <= EndingMostMen; ++captured) {
            if (captured >= ending.men && captured != Ending::NoMan) {
                continue;
            }
            if (captured != Ending::NoMan) {
                Enter(ending, captured, Ending::NoMan, Pawn);
            }
            for (std::size_t pawn = ending.pieces; pawn < ending.men; ++pawn) {
                for (const PieceType type : PromotionTypes) {
                    if (pawn != captured) {
                        Enter(ending, captured, pawn, type);
                    }
                }
            }
        }
        std::vector<int>& successors = ending.successors;
        std::sort(successors.begin(), successors.end());
        successors.erase(std::unique(successors.begin(), successors.end()), successors.end());
    }

    void Enter(Ending& ending, std::size_t captured, std::size_t promoted, PieceType type) const {
        std::vector<EndingMan> men;
        std::vector<std::size_t> places;
        for (std::size_t man = 0; man < ending.men; ++man) {
            if (man != captured) {
                men.push_back(
                    {man == promoted ? type : ending.man[man].type, ending.man[man].colour});
                places.push_back(man);
            }
        }
        EndingExit exit = Find(men).value();
        for (std::uint8_t& from : exit.from) {
            from = ToByte(places[from]);
        }
        ending.exits[(captured * (EndingMostMen + 1) + promoted) * 5 + type] = exit;
        if (exit.ending != 0) {
            ending.successors.push_back(exit.ending);
        }
    }

    std::vector<Ending> endings_;
    std::map<std::uint32_t, int> byKey_;
};

const CEndingList& List() {
    static const CEndingList& endings = *std::make_unique<CEndingList>().release();
    return endings;
}

}  // namespace

std::optional<PieceType> PieceTypeOf(char letter) noexcept {
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen, King}) {
        if (letter == Letters[type] || letter == SmallLetters[type]) {
            return type;
        }
    }
    return std::nullopt;
}

const Ending& EndingOf(int number) {
    return List().At(number);
}

std::optional<EndingExit> FindEnding(std::span<const EndingMan> men) {
    return List().Find(men);
}

int EndingOfName(std::string_view name) {
    std::vector<EndingMan> men;
    bool isBlack = false;
    for (const char letter : name) {
        if ((letter == 'v' || letter == 'V') && men.size() > 1) {
            continue;
        }
        const std::optional<PieceType> type = PieceTypeOf(letter);
        if (!type || (men.empty() && type != King)) {
            return 0;
        }
        isBlack = isBlack || (type == King && !men.empty());
        men.push_back({*type, isBlack ? Black : White});
    }
    const std::optional<EndingExit> found = FindEnding(men);
    return found ? found->ending : 0;
}

std::string FenOfEnding(const Ending& ending, const EndingSquares& squares, Colour sideToMove) {
    std::string fen;
    for (int rank = 7; rank >= 0; --rank) {
        int empty = 0;
        const auto close = [&] {
            fen += empty != 0 ? std::to_string(empty) : std::string();
            empty = 0;
        };
        for (int file = 0; file < 8; ++file) {
            const auto* const end = squares.begin() + ending.men;
            const auto* const found = std::find(squares.begin(), end, MakeSquare(file, rank));
            if (found == end) {
                ++empty;
                continue;
            }
            close();
            const EndingMan man = ending.man[found - squares.begin()];
            fen += (man.colour == White ? Letters : SmallLetters)[man.type];
        }
        close();
        fen += rank != 0 ? "/" : "";
    }
    return fen + (sideToMove == White ? " w - - 0 1" : " b - - 0 1");
}

std::vector<int> WithSuccessors(const std::vector<int>& wanted) {
    std::vector<bool> needed(EndingCount + 1);
    std::vector<int> open = wanted;
    while (!open.empty()) {
        const int number = open.back();
        open.pop_back();
        if (!needed[number]) {
            needed[number] = true;
            const std::vector<int>& more = EndingOf(number).successors;
            open.insert(open.end(), more.begin(), more.end());
        }
    }
    std::vector<int> all;
    for (int number = 1; number <= EndingCount; ++number) {
        if (needed[number]) {
            all.push_back(number);
        }
    }
    // A promotion leads to fewer pawns, a capture to fewer men.
    std::stable_sort(all.begin(), all.end(), [](int a, int b) {
        const Ending& first = EndingOf(a);
        const Ending& second = EndingOf(b);
        return first.men != second.men ? first.men < second.men : first.Pawns() < second.Pawns();
    });
    return all;
}

}  // namespace brenquil
