#include "tables/ending_index.h"

#include "bases/syzygy/tb_index_tables.h"
#include "platform/bits.h"

#include <algorithm>
#include <utility>

namespace brenquil {

namespace {

constexpr std::uint32_t PawnSquares = 48;
constexpr std::array<Square, 10> Triangle = {A1, B1, C1, D1, B2, C2, D2, C3, D3, D4};
constexpr Square MirrorFiles = H1;
constexpr Square MirrorRanks = A8;

}  // namespace

CEndingIndex::CEndingIndex(const Ending& ending) : ending_(ending), pieces_(ending.pieces) {
    if (ending.Pawns() == 0) {
        whiteKings_.assign(Triangle.begin(), Triangle.end());
    } else {
        for (Square square = A1; square <= H8; ++square) {
            whiteKings_.push_back(square);
        }
    }
    for (std::size_t field = 0; field < whiteKings_.size(); ++field) {
        kingFields_[whiteKings_[field]] = ToByte(field);
    }
    sliceSize_ = whiteKings_.size() << KingShift();
    ListSlices();
}

std::size_t CEndingIndex::CodeOf(const EndingSquares& squares) const noexcept {
    std::size_t code = 0;
    for (std::size_t man = pieces_; man < ending_.men; ++man) {
        code = code * PawnSquares + (squares[man] - A2);
    }
    return code;
}

/// Like men from `first` on in ascending order; there are few of them.
EndingSquares CEndingIndex::Sorted(EndingSquares squares, std::size_t first,
                                   std::size_t end) const noexcept {
    for (std::size_t man = first + 1; man < end; ++man) {
        for (std::size_t at = man;
             at > first && ending_.man[at - 1] == ending_.man[at] && squares[at - 1] > squares[at];
             --at) {
            std::swap(squares[at - 1], squares[at]);
        }
    }
    return squares;
}

EndingSquares CEndingIndex::SortedPawns(const EndingSquares& squares) const noexcept {
    return Sorted(squares, pieces_, ending_.men);
}

void CEndingIndex::ListSlices() {
    constexpr std::uint32_t NotYet = ~0U;
    std::uint32_t slices = 0;
    std::uint32_t codes = 1;
    for (std::size_t pawn = 0; pawn < ending_.Pawns(); ++pawn) {
        codes *= PawnSquares;
    }
    sliceOf_.assign(codes, NotYet);
    for (std::uint32_t code = 0; code < codes; ++code) {
        EndingSquares squares{};
        EndingSquares mirrored{};
        std::uint32_t rest = code;
        for (std::size_t man = ending_.men; man-- > pieces_; rest /= PawnSquares) {
            squares[man] = A2 + rest % PawnSquares;
            mirrored[man] = squares[man] ^ MirrorFiles;
        }
        const std::size_t plain = CodeOf(SortedPawns(squares));
        const std::size_t turned = CodeOf(SortedPawns(mirrored));
        const std::size_t lowest = std::min(plain, turned);
        if (sliceOf_[lowest] == NotYet) {  // then `lowest` is this code
            sliceOf_[lowest] = 2 * slices++;
            slices_.push_back(squares);
        }
        sliceOf_[code] = (sliceOf_[lowest] & ~1U) | (turned < plain ? 1U : 0U);
    }
}

CEndingIndex::Place CEndingIndex::PlaceOf(EndingSquares squares) const noexcept {
    std::size_t slice = 0;
    if (pieces_ == ending_.men) {
        const Square king = squares[0];
        const Square mask =
            (FileOf(king) > 3 ? MirrorFiles : 0) ^ (RankOf(king) > 3 ? MirrorRanks : 0);
        const bool reflect = OffDiagonal[king ^ mask] > 0;
        for (std::size_t man = 0; man < pieces_; ++man) {
            squares[man] ^= mask;
            squares[man] = reflect ? DiagonalFlip[squares[man]] : squares[man];
        }
    } else {
        const std::uint32_t found = sliceOf_[CodeOf(squares)];
        slice = found >> 1U;
        const Square mask = (found & 1U) != 0 ? MirrorFiles : 0;
        for (std::size_t man = 0; man < pieces_; ++man) {
            squares[man] ^= mask;
        }
    }
    std::size_t index = KingField(squares[0]);
    for (std::size_t man = 1; man < pieces_; ++man) {
        index = index << 6U | squares[man];
    }
    return {slice, index};
}

int CEndingIndex::Advance(std::size_t slice) const noexcept {
    int sum = 0;
    for (std::size_t man = pieces_; man < ending_.men; ++man) {
        const int rank = RankOf(slices_[slice][man]);
        sum += ending_.man[man].colour == White ? rank : 7 - rank;
    }
    return sum;
}

bool CEndingIndex::IsCanonical(Place place, const EndingSquares& squares) const noexcept {
    if (Sorted(squares, 2, pieces_) != squares) {
        return false;
    }
    EndingSquares image = squares;
    if (ending_.Pawns() == 0) {
        if (OffDiagonal[squares[0]] != 0) {
            return true;
        }
        for (std::size_t man = 0; man < pieces_; ++man) {
            image[man] = DiagonalFlip[squares[man]];
        }
    } else {
        for (std::size_t man = 0; man < ending_.men; ++man) {
            image[man] = squares[man] ^ MirrorFiles;
        }
        if (CodeOf(SortedPawns(image)) != CodeOf(slices_[place.slice])) {
            return true;  // the pawns are not their own mirror image
        }
    }
    const EndingSquares turned = Sorted(image, 2, pieces_);
    for (std::size_t man = 0; man < pieces_; ++man) {
        if (squares[man] != turned[man]) {
            return squares[man] < turned[man];
        }
    }
    return true;
}

}  // namespace brenquil
