#include "solved_mates.h"

#include "tables/nalimov_bytes.h"

namespace brenquil::test {

int CSolvedMates::Plies(const CPosition& position) {
    std::array<EndingMan, EndingMostMen> men{};
    EndingSquares squares{};
    std::size_t count = 0;
    for (const Colour colour : {White, Black}) {
        for (int type = King; type >= Pawn; --type) {
            for (Bitboard left = position.PiecesOf(static_cast<PieceType>(type), colour);
                 left != 0;) {
                men[count] = {static_cast<PieceType>(type), colour};
                squares[count++] = PopLowestBit(left);
            }
        }
    }
    const EndingExit found = FindEnding(std::span(men).first(count)).value();
    if (found.ending == 0) {
        return Draw;
    }
    const Ending& ending = EndingOf(found.ending);
    const SolvedValues& values = solved_.ValuesOf(ending.name);
    const EndingSquares placed = found.Map(squares);
    const Colour mover = found.flipped ? ~position.sideToMove : position.sideToMove;
    int code = values.At(placed, mover);
    if (position.enPassant != SquareNone) {
        const Square passed = position.enPassant ^ (found.flipped ? A8 : A1);
        const Square pawn = passed + (mover == White ? -8 : 8);
        std::size_t victim = ending.pieces;
        while (placed[victim] != pawn) {
            ++victim;
        }
        bool isTaken = false;
        code = CEndingExits<DistanceToMate>(solved_.solved, values)
                   .CodeInPassing(placed, mover, victim, isTaken);
    }
    return code == 0 ? Draw : DistanceToMate::PliesOf(code);
}

std::vector<std::uint8_t> CSolvedMates::TableBytes(int table, int side) {
    const SolvedValues& values = solved_.ValuesOf(EndingOf(table).name);
    return NalimovBytes(values, solved_.solved, side, solved_.workers, solved_.progress);
}

}  // namespace brenquil::test
