#include "syzygy_writer.h"

#include "bases/syzygy/tb_index_tables.h"
#include "board/position_text.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <map>
#include <numeric>
#include <queue>
#include <set>

namespace brenquil::testing_support {

namespace {

void Append16(Bytes& bytes, std::uint64_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
}

void Append32(Bytes& bytes, std::uint64_t value) {
    Append16(bytes, value);
    Append16(bytes, value >> 16U);
}

void Append(Bytes& bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

void AlignTo(Bytes& bytes, std::size_t alignment) {
    while (bytes.size() % alignment != 0) {
        bytes.push_back(0);
    }
}

/// A value, or two symbols in a row.
struct Symbol {
    std::size_t left = 0;
    std::size_t right = 0;
    std::uint8_t value = 0;
    std::size_t length = 1;  ///< values
};

/// A sequence of values in which frequent pairs have become symbols.
struct Grammar {
    std::vector<Symbol> symbols;
    std::vector<std::size_t> sequence;
};

Grammar PairUp(const std::vector<std::uint8_t>& values, unsigned pairings) {
    Grammar grammar;
    std::map<std::uint8_t, std::size_t> numbers;
    for (const std::uint8_t value : values) {
        numbers.try_emplace(value, 0);
    }
    for (auto& [value, number] : numbers) {
        number = grammar.symbols.size();
        grammar.symbols.push_back({0, 0, value, 1});
    }
    grammar.sequence.reserve(values.size());
    for (const std::uint8_t value : values) {
        grammar.sequence.push_back(numbers[value]);
    }
    for (unsigned round = 0; round < pairings && grammar.sequence.size() > 1; ++round) {
        const std::size_t count = grammar.symbols.size();
        std::vector<std::size_t> frequency(count * count);
        for (std::size_t i = 0; i + 1 < grammar.sequence.size(); ++i) {
            ++frequency[grammar.sequence[i] * count + grammar.sequence[i + 1]];
        }
        std::size_t best = 0;
        for (std::size_t pair = 0; pair < frequency.size(); ++pair) {
            const std::size_t length =
                grammar.symbols[pair / count].length + grammar.symbols[pair % count].length;
            if (length <= 256 && frequency[pair] > frequency[best]) {
                best = pair;
            }
        }
        const Symbol joined{best / count, best % count, 0,
                            grammar.symbols[best / count].length +
                                grammar.symbols[best % count].length};
        if (joined.length > 256) {
            break;
        }
        std::vector<std::size_t> shorter;
        shorter.reserve(grammar.sequence.size());
        for (std::size_t i = 0; i < grammar.sequence.size(); ++i) {
            if (i + 1 < grammar.sequence.size() && grammar.sequence[i] == joined.left &&
                grammar.sequence[i + 1] == joined.right) {
                shorter.push_back(count);
                ++i;
            } else {
                shorter.push_back(grammar.sequence[i]);
            }
        }
        grammar.symbols.push_back(joined);
        grammar.sequence = std::move(shorter);
    }
    return grammar;
}

/// Lengths of Huffman codes; 0 for symbols that do not occur.
std::vector<unsigned> CodeLengths(const Grammar& grammar) {
    std::vector<std::size_t> frequency(grammar.symbols.size());
    for (const std::size_t symbol : grammar.sequence) {
        ++frequency[symbol];
    }
    using Node = std::pair<std::size_t, std::vector<std::size_t>>;  // weight, symbols
    std::priority_queue<Node, std::vector<Node>, std::greater<>> nodes;
    std::vector<unsigned> lengths(grammar.symbols.size());
    for (std::size_t symbol = 0; symbol < frequency.size(); ++symbol) {
        if (frequency[symbol] != 0) {
            nodes.emplace(frequency[symbol], std::vector{symbol});
        }
    }
    if (nodes.size() == 1) {
        lengths[nodes.top().second.front()] = 1;
        return lengths;
    }
    while (nodes.size() > 1) {
        Node first = nodes.top();
        nodes.pop();
        Node second = nodes.top();
        nodes.pop();
        first.first += second.first;
        first.second.insert(first.second.end(), second.second.begin(), second.second.end());
        for (const std::size_t symbol : first.second) {
            ++lengths[symbol];
        }
        nodes.push(std::move(first));
    }
    return lengths;
}

/// The canonical code: symbols in the order of falling length, longer codes with lower numbers.
struct Code {
    std::vector<std::size_t> order;   ///< symbols by their number in the file
    std::vector<std::size_t> number;  ///< number in the file by symbol
    std::vector<std::uint32_t> code;  ///< by symbol
    std::vector<unsigned> length;     ///< by symbol
    unsigned minLength = 0;
    unsigned maxLength = 0;
    std::vector<std::size_t> offset;  ///< by length from `minLength`: first number
};

Code MakeCode(const Grammar& grammar) {
    Code code;
    code.length = CodeLengths(grammar);
    const std::size_t count = grammar.symbols.size();
    code.order.resize(count);
    std::iota(code.order.begin(), code.order.end(), 0);
    std::stable_sort(code.order.begin(), code.order.end(),
                     [&](std::size_t a, std::size_t b) { return code.length[a] > code.length[b]; });
    code.number.resize(count);
    code.code.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        code.number[code.order[i]] = i;
    }
    code.maxLength = code.length[code.order.front()];
    code.minLength = code.maxLength;
    std::uint32_t next = 0;
    unsigned length = code.maxLength;
    for (const std::size_t symbol : code.order) {
        if (code.length[symbol] == 0) {
            break;
        }
        next >>= length - code.length[symbol];
        length = code.length[symbol];
        code.minLength = length;
        code.code[symbol] = next++;
    }
    for (unsigned l = code.minLength; l <= code.maxLength; ++l) {
        std::size_t first = 0;
        while (first < count && code.length[code.order[first]] > l) {
            ++first;
        }
        code.offset.push_back(first);
    }
    return code;
}

/// Blocks of code, filled from the highest bit of each byte on.
struct Blocks {
    Bytes data;
    std::vector<std::size_t> sizes;  ///< values
};

Blocks CutIntoBlocks(const Grammar& grammar, const Code& code, unsigned blockSize) {
    const std::size_t bytes = std::size_t{1} << blockSize;
    Blocks blocks;
    std::size_t bit = bytes * 8;
    for (const std::size_t symbol : grammar.sequence) {
        const Symbol& what = grammar.symbols[symbol];
        if (blocks.sizes.empty() || bit + code.length[symbol] > bytes * 8 ||
            blocks.sizes.back() + what.length > 65536) {
            blocks.data.resize(blocks.data.size() + bytes);
            blocks.sizes.push_back(0);
            bit = 0;
        }
        blocks.sizes.back() += what.length;
        for (unsigned i = code.length[symbol]; i-- > 0; ++bit) {
            if ((code.code[symbol] >> i & 1U) != 0) {
                blocks.data[blocks.data.size() - bytes + bit / 8] |=
                    static_cast<std::uint8_t>(0x80U >> bit % 8);
            }
        }
    }
    return blocks;
}

Bytes MakeIndex(const Blocks& blocks, std::size_t count, unsigned indexBits) {
    Bytes index;
    const std::size_t distance = std::size_t{1} << indexBits;
    std::size_t block = 0;
    std::size_t before = 0;
    for (std::size_t start = 0; start < count; start += distance) {
        const std::size_t middle = start + distance / 2;
        while (block + 1 < blocks.sizes.size() && before + blocks.sizes[block] <= middle) {
            before += blocks.sizes[block++];
        }
        Append32(index, block);
        Append16(index, middle - before);
    }
    return index;
}

/// The men in an order that the format allows: leading pawns, the others' pawns, then kings; or,
/// without pawns, three men that occur once, or the kings.
std::array<std::uint8_t, TbMaxTableMen> DefaultCodes(const TbShape& shape) {
    std::vector<std::uint8_t> order;
    const auto add = [&](unsigned code) {
        order.insert(order.end(), shape.counts[code], static_cast<std::uint8_t>(code));
    };
    const unsigned white = TbPawn;
    const unsigned black = TbPawn + TbBlackBit;
    const bool blackLeads = shape.counts[black] != 0 &&
                            (shape.counts[white] == 0 || shape.counts[black] < shape.counts[white]);
    add(blackLeads ? black : white);
    add(blackLeads ? white : black);
    add(TbKing);
    add(TbKing + TbBlackBit);
    for (const bool single : {true, false}) {
        for (unsigned code = TbKnight; code <= TbQueen + TbBlackBit; ++code) {
            if ((code & 7U) >= TbKnight && (code & 7U) <= TbQueen &&
                (shape.counts[code] == 1) == single) {
                add(code);
            }
        }
    }
    std::array<std::uint8_t, TbMaxTableMen> codes{};
    std::copy(order.begin(), order.end(), codes.begin());
    return codes;
}

TbPosition PositionOfSquares(const TbShape& shape, const TbLayout& layout, const TbSquares& squares,
                             bool whiteToMove) {
    TbPosition position;
    position.turn = whiteToMove;
    Bitboard* const boards[] = {nullptr,           &position.pawns, &position.knights,
                                &position.bishops, &position.rooks, &position.queens,
                                &position.kings};
    for (std::size_t i = 0; i < shape.men; ++i) {
        const unsigned code = layout.pieceCodes[i];
        *boards[code & 7U] |= BitOf(squares[i]);
        ((code & TbBlackBit) != 0 ? position.black : position.white) |= BitOf(squares[i]);
    }
    return position;
}

/// Where the first man is looked for: mirrored on the board, every set of squares is one of these.
Bitboard FirstSquares(const TbShape& shape) {
    constexpr Bitboard Triangle = BitOf(A1) | BitOf(B1) | BitOf(C1) | BitOf(D1) | BitOf(B2) |
                                  BitOf(C2) | BitOf(D2) | BitOf(C3) | BitOf(D3) | BitOf(D4);
    return shape.hasPawns ? ~Bitboard{0} : Triangle;
}

/// Calls `visit` for each set of squares of a file group, like men in ascending order only.
template <class Visit>
void ForPlacements(const TbShape& shape, const TbLayout& layout, unsigned file, std::size_t man,
                   Bitboard occupied, TbSquares& squares, const Visit& visit) {
    if (shape.hasPawns && man == shape.pawnCount[0]) {
        TbSquares front = squares;
        if (LeadPawnToFront(shape.pawnCount[0], front) != file) {
            return;
        }
    }
    if (man == shape.men) {
        visit(squares);
        return;
    }
    const bool isPawn = (layout.pieceCodes[man] & 7U) == TbPawn;
    const bool isLike = man > 0 && layout.pieceCodes[man] == layout.pieceCodes[man - 1];
    const Bitboard allowed = ~occupied & (isPawn ? ~(Rank1 | Rank8) : ~Bitboard{0}) &
                             (man == 0 ? FirstSquares(shape) : ~Bitboard{0});
    for (Square square = isLike ? squares[man - 1] + 1 : A1; square <= H8; ++square) {
        if ((allowed & BitOf(square)) != 0) {
            squares[man] = square;
            ForPlacements(shape, layout, file, man + 1, occupied | BitOf(square), squares, visit);
        }
    }
}

/// The values of one side of one file group, by index. What no placement reaches repeats its
/// neighbour, which compresses best.
std::vector<std::uint8_t> Values(const TbShape& shape, const TbLayout& layout, unsigned file,
                                 bool whiteToMove,
                                 const std::function<int(const TbPosition&)>& value) {
    constexpr std::uint8_t Unset = 0xFF;
    std::vector<std::uint8_t> values(layout.size, Unset);
    TbSquares squares{};
    ForPlacements(shape, layout, file, 0, 0, squares, [&](const TbSquares& placed) {
        TbSquares encoded = placed;
        if (shape.hasPawns) {
            (void)LeadPawnToFront(shape.pawnCount[0], encoded);
        }
        const std::uint64_t index = shape.hasPawns ? EncodePawn(shape, layout, encoded)
                                                   : EncodePiece(shape, layout, encoded);
        if (index < values.size() && values[index] == Unset) {
            values[index] = static_cast<std::uint8_t>(
                value(PositionOfSquares(shape, layout, placed, whiteToMove)));
        }
    });
    std::uint8_t last = 0;
    for (std::uint8_t& entry : values) {
        entry = last = entry == Unset ? last : entry;
    }
    return values;
}

/// Spreads the parts of all streams over the end of a file.
void AppendStreams(Bytes& file, const std::vector<StreamParts>& streams) {
    for (const StreamParts& stream : streams) {
        Append(file, stream.indexTable);
    }
    for (const StreamParts& stream : streams) {
        Append(file, stream.sizeTable);
    }
    for (const StreamParts& stream : streams) {
        if (!stream.data.empty()) {
            AlignTo(file, 64);
            Append(file, stream.data);
        }
    }
}

Bytes FileStart(std::uint32_t magic, const TbShape& shape, bool split, bool hasFiles) {
    Bytes file;
    Append32(file, magic);
    file.push_back(static_cast<std::uint8_t>(shape.men << 4 | (split ? 1 : 0) |
                                             (shape.hasPawns && hasFiles ? 2 : 0)));
    return file;
}

/// The order bytes and men of one file group, the same for both sides, and its layout.
TbLayout AppendGroupHeader(Bytes& file, const TbShape& shape, unsigned group, unsigned order,
                           unsigned secondOrder, bool bothSides) {
    TbLayout layout;
    layout.pieceCodes = DefaultCodes(shape);
    const bool hasSecond = shape.hasPawns && shape.pawnCount[1] != 0;
    const auto twice = [=](unsigned low) {
        return static_cast<std::uint8_t>(bothSides ? low << 4U | low : low);
    };
    file.push_back(twice(order));
    if (hasSecond) {
        file.push_back(twice(secondOrder));
    }
    for (std::size_t i = 0; i < shape.men; ++i) {
        file.push_back(twice(layout.pieceCodes[i]));
    }
    (void)LayOutGroups(shape, group, order, hasSecond ? secondOrder : TbNoSecondOrder, layout);
    return layout;
}

Bitboard Squares(const TbPosition& position, EndingMan man) {
    const Bitboard boards[] = {position.pawns, position.knights, position.bishops,
                               position.rooks, position.queens,  position.kings};
    return boards[man.type] & (man.colour == White ? position.white : position.black);
}

std::size_t IndexOf(const SolvedEnding& ending, const TbPosition& position) {
    std::array<Square, 4> squares{};
    Bitboard left = position.Occupied();
    for (std::size_t i = 0; i < ending.men.size(); ++i) {
        squares[i] = std::countr_zero(Squares(position, ending.men[i]) & left);
        left &= ~BitOf(squares[i]);
    }
    return ending.IndexOf(squares, position.turn ? White : Black);
}

}  // namespace

StreamParts MakeStream(const std::vector<std::uint8_t>& values, const StreamShape& shape,
                       std::uint8_t flags, bool wdl) {
    StreamParts parts;
    const bool allEqual = std::all_of(values.begin(), values.end(),
                                      [&](std::uint8_t value) { return value == values[0]; });
    if (allEqual && shape.singleValue && (wdl || values[0] == 0)) {
        parts.header = {static_cast<std::uint8_t>(flags | 0x80U),
                        wdl ? values[0] : std::uint8_t{0}};
        return parts;
    }
    const Grammar grammar = PairUp(values, shape.pairings);
    const Code code = MakeCode(grammar);
    const Blocks blocks = CutIntoBlocks(grammar, code, shape.blockSize);

    Bytes& header = parts.header;
    header = {flags, static_cast<std::uint8_t>(shape.blockSize),
              static_cast<std::uint8_t>(shape.indexBits),
              static_cast<std::uint8_t>(shape.emptyBlocks)};
    Append32(header, blocks.sizes.size());
    header.push_back(static_cast<std::uint8_t>(code.maxLength));
    header.push_back(static_cast<std::uint8_t>(code.minLength));
    for (const std::size_t offset : code.offset) {
        Append16(header, offset);
    }
    Append16(header, grammar.symbols.size());
    for (const std::size_t symbol : code.order) {
        const Symbol& what = grammar.symbols[symbol];
        const bool isValue = what.length == 1;
        const std::size_t left = isValue ? what.value : code.number[what.left];
        const std::size_t right = isValue ? 0xFFF : code.number[what.right];
        Append16(header, left | right << 12U);
        header.push_back(static_cast<std::uint8_t>(right >> 4U));
    }
    if (grammar.symbols.size() % 2 != 0) {
        header.push_back(0);
    }
    parts.indexTable = MakeIndex(blocks, values.size(), shape.indexBits);
    for (const std::size_t size : blocks.sizes) {
        Append16(parts.sizeTable, size - 1);
    }
    for (unsigned i = 0; i < shape.emptyBlocks; ++i) {
        Append16(parts.sizeTable, 0xFFFF);
    }
    parts.data = blocks.data;
    return parts;
}

Bytes MakeWdlFile(const WdlTable& table) {
    const TbShape shape = ShapeOfName(table.name);
    Bytes file = FileStart(0x5D23E871, shape, table.split, table.hasFiles);
    std::vector<TbLayout> layouts;
    for (unsigned group = 0; group < (shape.hasPawns ? 4U : 1U); ++group) {
        layouts.push_back(
            AppendGroupHeader(file, shape, group, table.order, table.secondOrder, true));
    }
    AlignTo(file, 2);
    std::vector<StreamParts> streams;
    for (unsigned group = 0; group < (shape.hasPawns && table.hasFiles ? 4U : 1U); ++group) {
        for (const bool whiteToMove : {true, false}) {
            if (whiteToMove || table.split) {
                const auto stored = [&](const TbPosition& position) {
                    return table.value(position) + 2;
                };
                streams.push_back(
                    MakeStream(Values(shape, layouts[group], group, whiteToMove, stored),
                               table.stream, 0, true));
                Append(file, streams.back().header);
            }
        }
    }
    AppendStreams(file, streams);
    return file;
}

Bytes MakeDtzFile(const DtzTable& table) {
    constexpr std::array<std::size_t, 5> ListOfClass = {1, 3, 0, 2, 0};
    const TbShape shape = ShapeOfName(table.name);
    Bytes file = FileStart(0xA50C66D7, shape, false, table.hasFiles);
    std::vector<TbLayout> layouts;
    for (unsigned group = 0; group < (shape.hasPawns ? 4U : 1U); ++group) {
        layouts.push_back(
            AppendGroupHeader(file, shape, group, table.order, table.secondOrder, false));
    }
    AlignTo(file, 2);
    std::vector<StreamParts> streams;
    Bytes maps;
    const auto flags =
        static_cast<std::uint8_t>(table.side | (table.hasMap ? 2U : 0U) |
                                  (table.winPlies ? 4U : 0U) | (table.lossPlies ? 8U : 0U));
    for (unsigned group = 0; group < (shape.hasPawns && table.hasFiles ? 4U : 1U); ++group) {
        std::array<std::set<int>, 4> lists;
        auto stored = table.value;
        if (table.hasMap) {
            (void)Values(shape, layouts[group], group, table.side == 0,
                         [&](const TbPosition& position) {
                             const int wdl = table.wdl(position);
                             if (wdl != 0) {
                                 lists[ListOfClass[static_cast<std::size_t>(wdl + 2)]].insert(
                                     table.value(position));
                             }
                             return 0;
                         });
            stored = [&](const TbPosition& position) {
                const int wdl = table.wdl(position);
                const auto& list = lists[ListOfClass[static_cast<std::size_t>(wdl + 2)]];
                return wdl == 0 ? 0
                                : static_cast<int>(std::distance(list.begin(),
                                                                 list.find(table.value(position))));
            };
        }
        streams.push_back(MakeStream(Values(shape, layouts[group], group, table.side == 0, stored),
                                     table.stream, flags, false));
        Append(file, streams.back().header);
        for (std::size_t i = 0; table.hasMap && i < lists.size(); ++i) {
            maps.push_back(static_cast<std::uint8_t>(lists[i].size()));
            for (const int value : lists[i]) {
                maps.push_back(static_cast<std::uint8_t>(value));
            }
        }
    }
    Append(file, maps);
    AlignTo(file, 2);
    AppendStreams(file, streams);
    return file;
}

Bytes MakeFlatWdlFile(const std::string& name, int value) {
    const TbShape shape = ShapeOfName(name);
    Bytes file = FileStart(0x5D23E871, shape, true, true);
    const unsigned groups = shape.hasPawns ? 4 : 1;
    for (unsigned group = 0; group < groups; ++group) {
        (void)AppendGroupHeader(file, shape, group, 0, 1, true);
    }
    AlignTo(file, 2);
    for (unsigned stream = 0; stream < 2 * groups; ++stream) {
        Append(file, {0x80, static_cast<std::uint8_t>(value + 2)});
    }
    return file;
}

Bytes MakeFlatDtzFile(const std::string& name, unsigned side) {
    const TbShape shape = ShapeOfName(name);
    Bytes file = FileStart(0xA50C66D7, shape, false, true);
    const unsigned groups = shape.hasPawns ? 4 : 1;
    for (unsigned group = 0; group < groups; ++group) {
        (void)AppendGroupHeader(file, shape, group, 0, 1, false);
    }
    AlignTo(file, 2);
    for (unsigned stream = 0; stream < groups; ++stream) {
        Append(file, {static_cast<std::uint8_t>(0x8C | side), 0});
    }
    return file;
}

std::function<int(const TbPosition&)> SolvedClasses(CSyzygySolver& solver,
                                                    const std::string& name) {
    const SolvedEnding& ending = solver.Solve(name);
    return [&ending](const TbPosition& position) {
        const int wdl = ending.Class(IndexOf(ending, position));
        return wdl == SolvedEnding::Illegal ? 0 : wdl;
    };
}

std::function<int(const TbPosition&)> SolvedDistances(CSyzygySolver& solver,
                                                      const std::string& name) {
    const SolvedEnding& ending = solver.Solve(name);
    return [&ending](const TbPosition& position) {
        return std::max(0, ending.Distance(IndexOf(ending, position)) - 1);
    };
}

void WriteBytes(const std::filesystem::path& path, const Bytes& bytes) {
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
}

void WriteSolvedTables(CSyzygySolver& solver, const std::filesystem::path& folder,
                       const std::string& name) {
    const auto classes = SolvedClasses(solver, name);
    WdlTable wdl{name, classes};
    wdl.split = !ShapeOfName(name).symmetric;
    WriteBytes(folder / (name + ".rtbw"), MakeWdlFile(wdl));
    DtzTable dtz{name, classes, SolvedDistances(solver, name)};
    WriteBytes(folder / (name + ".rtbz"), MakeDtzFile(dtz));
}

TbPosition PositionOf(const SolvedEnding& ending, std::size_t index) {
    TbPosition position;
    position.turn = SolvedEnding::ToMove(index) == White;
    Bitboard* const boards[] = {&position.pawns, &position.knights, &position.bishops,
                                &position.rooks, &position.queens,  &position.kings};
    const auto squares = ending.SquaresOf(index);
    for (std::size_t i = 0; i < ending.men.size(); ++i) {
        const Bitboard bit = BitOf(squares[i]);
        (ending.men[i].colour == White ? position.white : position.black) |= bit;
        *boards[ending.men[i].type] |= bit;
    }
    return position;
}

TbPosition RandomPosition(const std::string& name, std::mt19937_64& random) {
    const TbCounts counts = CountsOfName(name);
    TbPosition position;
    Bitboard* const boards[] = {nullptr,           &position.pawns, &position.knights,
                                &position.bishops, &position.rooks, &position.queens,
                                &position.kings};
    for (unsigned code = TbPawn; code < TbCodes; ++code) {
        for (unsigned i = 0; i < counts[code]; ++i) {
            Bitboard bit = 0;
            do {
                bit = BitOf(static_cast<Square>(random() % 64));
            } while ((bit & position.Occupied()) != 0);
            *boards[code & 7U] |= bit;
            ((code & TbBlackBit) != 0 ? position.black : position.white) |= bit;
        }
    }
    position.turn = random() % 2 == 0;
    return position;
}

TbPosition PositionOfFen(std::string_view fen) {
    CPosition board;
    CPositionText(board).SetFen(fen);
    TbPosition position;
    position.white = board.colours[White];
    position.black = board.colours[Black];
    Bitboard* const boards[] = {&position.pawns, &position.knights, &position.bishops,
                                &position.rooks, &position.queens,  &position.kings};
    for (const PieceType type : {Pawn, Knight, Bishop, Rook, Queen, King}) {
        *boards[type] = board.PiecesOf(type, White) | board.PiecesOf(type, Black);
    }
    position.turn = board.sideToMove == White;
    position.rule50 = static_cast<std::uint8_t>(board.halfmoveClock);
    position.ep = board.enPassant == SquareNone ? std::uint8_t{0} : board.enPassant;
    return position;
}

}  // namespace brenquil::testing_support
