// Index calculators: from the squares of a position to its place in a table's file.
//
// Each table has one calculator for each side to move. All are the same routine with other numbers,
// worked out from the signature once. An index is a number of mixed radix:
//
//     placement of both kings and the men of the side to move       (a base table and a digit)
//     the other side's men, one digit for each group of equal men
//
// Positions in which a pawn can be taken in passing come after all others, in an area of their own
// whose last digit tells which pawn takes.
//
// The numbering is that of existing files and cannot be changed. docs/nalimov.md tells it in full,
// with the figures that speak for each of its rules.
//
// Cost: some tens of nanoseconds; no loop over squares, no allocation. Calculators are read-only
// after construction and shared by all threads. Any position is safe: one that has no place in the
// file has the index `NoIndex`.
#pragma once

#include "bases/nalimov/nalimov_enumeration.h"
#include "bases/nalimov/nalimov_signatures.h"
#include "board/types.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace brenquil {

/// The square of a man that is not there.
inline constexpr Square NalimovNoSquare = 127;

/// The men of one side: three slots each for pawns, knights, bishops, rooks and queens, filled from
/// the lowest square on, then the king.
struct NalimovPieceList {
    static constexpr std::size_t SlotsOfType = 3;
    static constexpr std::size_t KingSlot = 15;

    NalimovPieceList() noexcept { squares.fill(NalimovNoSquare); }

    [[nodiscard]] Square King() const noexcept { return squares[KingSlot]; }

    [[nodiscard]] const Square* MenOf(PieceType type) const noexcept {
        return &squares[type * SlotsOfType];
    }

    /// Moves all men by an exclusive or of their squares.
    void Flip(Square mask) noexcept {
        for (Square& square : squares) {
            square = square == NalimovNoSquare ? square : square ^ mask;
        }
    }

    std::array<Square, 16> squares;
};

/// How many men of each type a side has, pawns to queens.
using NalimovMenCounts = std::array<std::uint8_t, 5>;

/// The men of a signature.
struct NalimovMaterial {
    NalimovMenCounts first{};
    NalimovMenCounts second{};
};

/// Reads a signature's name.
[[nodiscard]] NalimovMaterial NalimovMaterialOf(std::string_view name) noexcept;

/// The index calculator of one side of one table.
class CNalimovCalculator {
public:
    static constexpr std::uint64_t NoIndex = ~std::uint64_t{0};

    /// @param side  0: the first side of the signature is to move; 1: the second
    CNalimovCalculator(const NalimovSignature& signature, int side);

    /// @param first, second  the men of the signature's sides; they must be those of the signature
    /// @param epSquare       the en passant square, `NalimovNoSquare` for none
    /// @param invert         the first side is Black
    [[nodiscard]] std::uint64_t operator()(const NalimovPieceList& first,
                                           const NalimovPieceList& second, Square epSquare,
                                           bool invert) const noexcept;

    /// 1 more than the largest index.
    [[nodiscard]] std::uint64_t Positions() const noexcept { return positions_; }

private:
    using Lists = std::array<NalimovPieceList, 2>;  // the mover's, the resting side's

    enum Owner : std::uint8_t { Mover, Resting };

    /// Equal men in the group that a base table covers.
    struct GroupMen {
        NalimovKind kind;
        PieceType type;
        Owner owner;
        std::uint8_t count;
    };

    struct Group {
        std::array<GroupMen, 3> men;
        int parts = 0;
        const NalimovBase* base = nullptr;
    };

    /// One digit after the group: equal men of the resting side, and what one of it is worth.
    struct Digit {
        PieceType type;
        int count;
        std::uint64_t weight;
    };

    struct Digits {
        std::array<Digit, 4> digits;
        int count = 0;
        std::uint64_t radix = 1;  // of all digits together
    };

    void ChooseGroup();
    void ChooseDigits();
    void ChooseEnPassantDigits();
    [[nodiscard]] std::array<PieceType, 5> DigitOrder() const noexcept;
    static void SetWeights(Digits& digits, const std::array<std::uint64_t, 4>& radices,
                           std::uint64_t lowest) noexcept;

    [[nodiscard]] std::uint64_t GroupValue(const Group& group, const Lists& lists) const noexcept;
    [[nodiscard]] std::uint64_t OrdinaryPart(const Lists& lists) const noexcept;
    [[nodiscard]] std::uint64_t EnPassantPart(const Lists& lists, Square epSquare) const noexcept;
    [[nodiscard]] std::uint64_t PieceDigits(const Digits& digits, const Lists& lists,
                                            Bitboard placed) const noexcept;

    const CNalimovEnumeration& enumeration_;
    std::array<NalimovMenCounts, 2> counts_{};  // the mover's, the resting side's
    bool hasPawns_ = false;
    bool takesEnPassant_ = false;  // both sides have pawns
    bool exchanged_ = false;       // side 1 of equal sides with pawns: read as side 0
    int side_ = 0;
    Square frame_ = 0;  // the kings and the group are enumerated on squares exclusive-or this
    Group group_;
    Group enPassantGroup_;
    Digits digits_;
    Digits enPassantDigits_;
    std::uint64_t positions_ = 0;
};

/// The calculator of a side of a table, both counted as in the list of signatures.
[[nodiscard]] const CNalimovCalculator& NalimovCalculator(int table, int side);

}  // namespace brenquil
