#include "eval/material.h"

#include "platform/bits.h"

namespace brenquil {

namespace {

void AddColour(Material& material, const CPosition& position, const PieceValues& values,
               Colour colour) noexcept {
    const auto count = [&](PieceType type) { return position.pieceCount[MakePiece(type, colour)]; };
    // Summed in 64 bits and cut to 32 at the end: options can hold any number.
    const auto value = [&](PieceType type) { return std::int64_t{values[type].Bounded()}; };

    // A further bishop on squares of the same colour counts neither for material nor for the phase:
    // deliberate.
    const Bitboard bishops = position.PiecesOf(Bishop, colour);
    const bool hasLight = (bishops & LightSquares) != 0;
    const bool hasDark = (bishops & DarkSquares) != 0;
    const int bishopColours = int{hasLight} + int{hasDark};

    material.value[colour] = static_cast<std::int32_t>(
        count(Pawn) * value(Pawn) + count(Knight) * value(Knight) + bishopColours * value(Bishop) +
        count(Rook) * value(Rook) + count(Queen) * value(Queen));
    material.phase += count(Knight) + bishopColours + 2 * count(Rook) + 4 * count(Queen);
    material.hasBishopPair[colour] = hasLight && hasDark;

    const Bitboard kings = position.PiecesOf(King, colour);
    material.kingSquare[colour] = kings != 0 ? LowestBit(kings) : Square{SquareNone};
}

}  // namespace

Material ComputeMaterial(const CPosition& position, const PieceValues& values) noexcept {
    Material material;
    AddColour(material, position, values, White);
    AddColour(material, position, values, Black);
    return material;
}

bool CannotMate(const CPosition& position, Colour colour) noexcept {
    const Bitboard men = position.colours[colour];
    const Bitboard kings = position.PiecesOf(King, colour);
    const Bitboard bishops = position.PiecesOf(Bishop, colour);
    const Bitboard knights = position.PiecesOf(Knight, colour);

    const bool bishopsOnOneColour = (bishops & LightSquares) == 0 || (bishops & DarkSquares) == 0;
    return men == kings ||                                      //
           (men == (kings | bishops) && bishopsOnOneColour) ||  //
           (men == (kings | knights) && (knights & (knights - 1)) == 0);
}

}  // namespace brenquil
