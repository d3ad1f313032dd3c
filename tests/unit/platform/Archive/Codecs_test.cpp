// The decompressors on streams of their own.
#include <zlib.h>

#include "Archive/Decoder.h"
#include "Archive/PrefixCode.h"
#include "PackedStreams.h"

namespace {

using Archive::BitReader;
using Archive::ByteView;
using Archive::Decoder;
using Archive::Method;

ByteView view(const std::string& text) { return {reinterpret_cast<const unsigned char*>(text.data()), text.size()}; }

struct Outcome {
    std::string bytes;
    bool begun = false, failed = false, ended = false;
};

/// Reads a stream in pieces of that size.
Outcome decode(Decoder& decoder, const std::string& stream, size_t piece = 1000, size_t limit = 50000000) {
    Outcome outcome;
    outcome.begun = decoder.begin(view(stream), limit);
    while (outcome.begun && outcome.bytes.size() < limit) {
        std::vector<unsigned char> block(piece);
        const size_t done = decoder.read(block.data(), piece);
        outcome.bytes.append(block.begin(), block.begin() + static_cast<std::ptrdiff_t>(done));
        if (done != piece) break;
    }
    outcome.failed = decoder.failed();
    outcome.ended = decoder.ended();
    return outcome;
}
Outcome decode(Method method, const std::string& stream, size_t piece = 1000) {
    return decode(*Archive::makeDecoder(method), stream, piece);
}

std::string sample(size_t size) {
    std::string text;
    uint32_t state = 1;
    while (text.size() < size) {
        state = state * 1103515245 + 12345;
        text += "word" + std::to_string(state >> 22) + (state & 0x10000 ? " " : "\n");
    }
    text.resize(size);
    return text;
}

using support::bareBlock;
using support::deflated;
using support::lzmaStream;

// Deflate.

TEST(InflateStream, DecodesWhateverThePieces) {
    const std::string text = sample(200000), stream = deflated(text);
    for (size_t piece : {1ul, 7ul, 1000ul, 65536ul, 1000000ul}) {
        const Outcome outcome = decode(Method::Deflate, stream, piece);
        EXPECT_TRUE(outcome.bytes == text) << piece;
        EXPECT_TRUE(outcome.ended) << piece;
    }
}

TEST(InflateStream, DecodesStoredBlocksWithTheComplement) {
    const std::string text = sample(200000);
    const Outcome outcome = decode(Method::Deflate, deflated(text, 0));
    EXPECT_TRUE(outcome.bytes == text);
    EXPECT_TRUE(outcome.ended);
}

TEST(InflateStream, DecodesStoredBlocksWithoutTheComplement) {
    const std::string stream = bareBlock("first ", false) + bareBlock("second ", false) + bareBlock("third", true);
    const Outcome outcome = decode(Method::Deflate, stream);
    EXPECT_EQ(outcome.bytes, "first second third");
    EXPECT_TRUE(outcome.ended);
}

TEST(InflateStream, DecodesAnEmptyStoredBlockWithoutTheComplement) {
    const Outcome outcome =
        decode(Method::DeflateBare, bareBlock("", false) + bareBlock("x", false) + bareBlock("", true));
    EXPECT_EQ(outcome.bytes, "x");
    EXPECT_TRUE(outcome.ended);
}

TEST(InflateStream, RefersBackIntoAStoredBlockWithoutTheComplement) {
    // The packed part is made as if the stored one had gone before, so that it points back into it.
    const std::string stored = sample(3000);
    z_stream stream{};
    deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_DEFAULT_STRATEGY);
    deflateSetDictionary(&stream, reinterpret_cast<const Bytef*>(stored.data()), static_cast<uInt>(stored.size()));
    std::string in = stored.substr(500, 2000), out(10000, '\0');
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, Z_FINISH);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    ASSERT_LT(out.size(), 300u);
    for (size_t piece : {1ul, 100ul, 100000ul}) {
        const Outcome outcome = decode(Method::Deflate, bareBlock(stored, false) + out, piece);
        EXPECT_TRUE(outcome.bytes == stored + in) << piece;
        EXPECT_TRUE(outcome.ended) << piece;
    }
}

TEST(InflateStream, EntersAStoredBlockBehindAPackedOneAtAnyBit) {
    // Fixed blocks of different lengths end at every bit of a byte.
    for (int letters = 0; letters < 16; ++letters) {
        const std::string text(static_cast<size_t>(letters), '\x90');  // nine bits each
        z_stream stream{};
        deflateInit2(&stream, 9, Z_DEFLATED, -15, 8, Z_FIXED);
        std::string in = text, out(200, '\0');
        stream.next_in = reinterpret_cast<Bytef*>(in.data());
        stream.avail_in = static_cast<uInt>(in.size());
        stream.next_out = reinterpret_cast<Bytef*>(out.data());
        stream.avail_out = static_cast<uInt>(out.size());
        deflate(&stream, Z_FULL_FLUSH);  // ends with an empty stored block: 00 00 FF FF
        out.resize(stream.total_out);
        deflateEnd(&stream);
        ASSERT_TRUE(out.ends_with(std::string("\0\0\xff\xff", 4)));
        // The bare form of that block, of another length.
        const std::string bare = out.substr(0, out.size() - 4) + std::string("\3\0abc", 5) + bareBlock("end", true);
        const Outcome outcome = decode(Method::Deflate, bare, 3);
        EXPECT_EQ(outcome.bytes, text + "abcend") << letters;
        EXPECT_TRUE(outcome.ended) << letters;
    }
}

TEST(InflateStream, KeepsAWindowOf32KilobytesOverManyStoredBlocks) {
    const std::string text = sample(130000);
    std::string stream;
    for (size_t at = 0; at < text.size(); at += 10000) stream += bareBlock(text.substr(at, 10000), false);
    stream += bareBlock("", true);
    const Outcome outcome = decode(Method::DeflateBare, stream, 4096);
    EXPECT_TRUE(outcome.bytes == text);
}

TEST(InflateStream, FailsOnAStoredBlockThatIsCut) {
    EXPECT_TRUE(decode(Method::DeflateBare, bareBlock("abcdef", true).substr(0, 6)).failed);
    EXPECT_TRUE(decode(Method::DeflateBare, std::string(1, '\0')).failed);
    EXPECT_TRUE(decode(Method::DeflateBare, std::string("\0\5", 2)).failed);
}

TEST(InflateStream, FailsOnAnEmptyStream) {
    const Outcome outcome = decode(Method::Deflate, "");
    EXPECT_TRUE(outcome.failed);
    EXPECT_FALSE(outcome.ended);
}

TEST(InflateStream, FailsWhenCutAnywhere) {
    const std::string stream = deflated(sample(3000));
    for (size_t length = 0; length < stream.size(); ++length) {
        const Outcome outcome = decode(Method::Deflate, stream.substr(0, length));
        EXPECT_TRUE(outcome.failed && !outcome.ended) << length;
    }
}

TEST(InflateStream, DecodesOneStreamAfterAnother) {
    auto decoder = Archive::makeDecoder(Method::Deflate);
    EXPECT_EQ(decode(*decoder, deflated("one")).bytes, "one");
    EXPECT_TRUE(decode(*decoder, "\xff\xff\xff").failed);
    EXPECT_EQ(decode(*decoder, bareBlock("two", true)).bytes, "two");
    EXPECT_EQ(decode(*decoder, deflated(sample(9000))).bytes, sample(9000));
}

// LZMA.

TEST(LzmaStream, DecodesWhateverThePieces) {
    const std::string text = sample(200000), stream = lzmaStream(text);
    for (size_t piece : {1ul, 1000ul, 1000000ul}) {
        const Outcome outcome = decode(Method::Lzma, stream, piece);
        EXPECT_TRUE(outcome.bytes == text) << piece;
        EXPECT_TRUE(outcome.ended) << piece;
    }
}

TEST(LzmaStream, TakesAByteInFrontThatTellsOfNoFilter) {
    EXPECT_EQ(decode(Method::LzmaFiltered, std::string(1, '\0') + lzmaStream("plain")).bytes, "plain");
}

TEST(LzmaStream, UndoesTheFilterOfMachineCode) {
    std::string code;
    for (int i = 0; i < 500; ++i) code += std::string("\xe8\x10\x20\0\0\x90\x55\x8b\xec", 9);
    const std::string stream = lzmaStream(code, true);
    EXPECT_TRUE(decode(Method::LzmaFiltered, "\1" + stream).bytes == code);
    EXPECT_FALSE(decode(Method::LzmaFiltered, std::string(1, '\0') + stream).bytes == code);
}

TEST(LzmaStream, RefusesAnotherFilter) { EXPECT_FALSE(decode(Method::LzmaFiltered, "\2" + lzmaStream("x")).begun); }

TEST(LzmaStream, RefusesALyingDictionary) {
    std::string stream = lzmaStream(sample(1000));
    stream[3] = '\0';
    stream[4] = '\x7f';  // two gigabytes
    EXPECT_FALSE(decode(Method::Lzma, stream).begun);
}

TEST(LzmaStream, TakesTheLargestDictionaryWithoutItsMemory) {
    std::string stream = lzmaStream(sample(1000));
    stream[3] = '\0';
    stream[4] = '\x40';  // one gigabyte, of which so short a stream can use little
    EXPECT_EQ(decode(Method::Lzma, stream).bytes, sample(1000));
}

TEST(LzmaStream, RefusesPropertiesThatAreNone) {
    std::string stream = lzmaStream("x");
    stream[0] = '\xff';
    EXPECT_FALSE(decode(Method::Lzma, stream).begun);
}

TEST(LzmaStream, FailsWhenCutAnywhere) {
    const std::string stream = lzmaStream(sample(2000));
    for (size_t length = 0; length < stream.size(); ++length) {
        const Outcome outcome = decode(Method::Lzma, stream.substr(0, length));
        EXPECT_FALSE(outcome.ended) << length;
    }
}

TEST(LzmaStream, DecodesOneStreamAfterAnother) {
    auto decoder = Archive::makeDecoder(Method::Lzma);
    EXPECT_EQ(decode(*decoder, lzmaStream("one")).bytes, "one");
    EXPECT_FALSE(decode(*decoder, lzmaStream(sample(500)).substr(0, 50)).ended);
    EXPECT_EQ(decode(*decoder, lzmaStream(sample(9000), false, 1u << 22)).bytes, sample(9000));
}

// Bzip2: streams written bit by bit.

using support::BitWriter;

/// A block of the one byte 'a', repeated: symbols RUNA (0), RUNB (10) and end (11), all lengths as told.
struct BlockShape {
    uint32_t mark = 0x31, origin = 0, rows = 1u << (15 - 6), columns = 1u << (15 - 1);
    uint32_t tables = 2, selectors = 1;
    uint32_t firstLength = 2;                // all three symbols have this code length: 00, 01, 10
    std::vector<uint32_t> symbols = {0, 2};  // one 'a', end
    uint32_t endMark = 0x17;
};

std::string block(const BlockShape& shape) {
    BitWriter bits;
    bits.put(shape.mark, 8).put(shape.origin, 24).put(shape.rows, 16);
    if (shape.rows != 0) bits.put(shape.columns, 16);
    bits.put(shape.tables, 3).put(shape.selectors, 15);
    for (uint32_t i = 0; i < shape.selectors; ++i) bits.put(0, 1);
    for (uint32_t i = 0; i < shape.tables; ++i) bits.put(shape.firstLength, 5).put(0, 3);
    for (uint32_t symbol : shape.symbols) bits.put(symbol, shape.firstLength);
    bits.put(shape.endMark, 8);
    return bits.bytes();
}

TEST(Bzip2Stream, DecodesAWrittenBlock) {
    const Outcome outcome = decode(Method::Bzip2, block({}));
    EXPECT_EQ(outcome.bytes, "a");
    EXPECT_TRUE(outcome.ended);
    EXPECT_FALSE(outcome.failed);
}

TEST(Bzip2Stream, DecodesRunsOfTheRecentByte) {
    // Run lengths are written to the base two with digits one and two: 1 + 2*2 = 5 cells, of which the fifth counts on.
    const Outcome outcome = decode(Method::Bzip2, block({.symbols = {0, 1, 2}}), 7);
    EXPECT_EQ(outcome.bytes, std::string(4 + 'a', 'a'));
    EXPECT_TRUE(outcome.ended);
}

struct BadBlock {
    std::string name;
    BlockShape shape;
};
void PrintTo(const BadBlock& bad, std::ostream* out) { *out << bad.name; }
class Bzip2BadBlock : public testing::TestWithParam<BadBlock> {};

TEST_P(Bzip2BadBlock, FailsWithoutHarm) {
    const Outcome outcome = decode(Method::Bzip2, block(GetParam().shape));
    EXPECT_TRUE(outcome.failed);
    EXPECT_FALSE(outcome.ended);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, Bzip2BadBlock,
    testing::Values(BadBlock{"AnotherMark", {.mark = 0x32}}, BadBlock{"OriginBehindTheBlock", {.origin = 1}},
                    BadBlock{"HugeOrigin", {.origin = 0xFFFFFF}}, BadBlock{"NoSymbols", {.rows = 0}},
                    BadBlock{"NoSymbolsInARow", {.columns = 0}}, BadBlock{"OneTable", {.tables = 1}},
                    BadBlock{"SevenTables", {.tables = 7}}, BadBlock{"NoTable", {.tables = 0}},
                    BadBlock{"NoSelectors", {.selectors = 0}}, BadBlock{"CodeLengthOfZero", {.firstLength = 0}},
                    BadBlock{"CodeLengthOf21", {.firstLength = 21}}, BadBlock{"EmptyBlock", {.symbols = {2}}},
                    BadBlock{"NoCode", {.symbols = {0, 3}}},
                    BadBlock{"RunWithoutEnd", {.symbols = std::vector<uint32_t>(49, 1)}},
                    BadBlock{"MoreGroupsThanSelectors", {.symbols = std::vector<uint32_t>(60, 0)}},
                    BadBlock{"AnotherEnd", {.endMark = 0x99}}),
    [](const auto& test) { return test.param.name; });

TEST(Bzip2Stream, FailsOnAnEmptyStream) { EXPECT_FALSE(decode(Method::Bzip2, "").begun); }

TEST(Bzip2Stream, FailsWhenCutAnywhere) {
    const std::string stream = block({.symbols = {0, 1, 0, 1, 2}});
    for (size_t length = 1; length < stream.size(); ++length) {
        EXPECT_TRUE(decode(Method::Bzip2, stream.substr(0, length)).failed) << length;
    }
}

TEST(Bzip2Stream, DecodesOneStreamAfterAnother) {
    auto decoder = Archive::makeDecoder(Method::Bzip2);
    EXPECT_EQ(decode(*decoder, block({})).bytes, "a");
    EXPECT_TRUE(decode(*decoder, block({.origin = 1})).failed);
    EXPECT_EQ(decode(*decoder, block({})).bytes, "a");
}

TEST(Bits, BehindTheEndAreZeroAndRemembered) {
    const std::string byte = "\xff";
    BitReader bits(view(byte));
    EXPECT_EQ(bits.take(8), 0xFFu);
    EXPECT_FALSE(bits.overrun());
    EXPECT_EQ(bits.take(5), 0u);
    EXPECT_TRUE(bits.overrun());
}

TEST(Bits, MayBePeekedAtBehindTheEnd) {
    const std::string bytes = "\xab\xcd";
    BitReader bits(view(bytes));
    EXPECT_EQ(bits.peek(20), 0xABCD0u);
    bits.drop(16);
    EXPECT_FALSE(bits.overrun());
}

TEST(PrefixCodes, OfAllLengthsAreTold) {
    // One code of each length 1 to 19, two of 20.
    unsigned char lengths[21];
    for (unsigned i = 0; i < 21; ++i) lengths[i] = static_cast<unsigned char>(std::min(i + 1, 20u));
    Archive::PrefixCode code;
    code.build(lengths, 21);
    BitWriter writer;
    for (unsigned i = 0; i < 20; ++i) writer.put(0xFFFFF, i).put(0, 1);
    writer.put(0xFFFFF, 20);
    BitReader bits(view(writer.bytes()));
    for (uint32_t i = 0; i < 21; ++i) EXPECT_EQ(code.take(bits), i);
    EXPECT_FALSE(bits.overrun());
}

TEST(PrefixCodes, ThatAreNoneAreToldApart) {
    const unsigned char lengths[] = {2, 2};
    Archive::PrefixCode code;
    code.build(lengths, 2);
    const std::string ones(4, '\xff');
    BitReader bits(view(ones));
    EXPECT_EQ(code.take(bits), 258u);
}

TEST(PrefixCodes, ThatOverfillDoNoHarm) {
    std::vector<unsigned char> lengths(258, 1);
    Archive::PrefixCode code;
    code.build(lengths.data(), 258);
    const std::string zeros(100, '\0');
    BitReader bits(view(zeros));
    for (int i = 0; i < 50; ++i) EXPECT_LE(code.take(bits), 258u);
}

// What a stream could be.

TEST(CandidateMethods, BeginWithTheLikeliest) {
    using Methods = std::vector<Method>;
    EXPECT_EQ(Archive::candidateMethods(view(std::string("\x5d\0\0\x80\0\0", 6))),
              (Methods{Method::Lzma, Method::Deflate, Method::DeflateBare}));
    EXPECT_EQ(Archive::candidateMethods(view(std::string("\1\x5d\0\0\x80\0\0", 7))),
              (Methods{Method::LzmaFiltered, Method::Deflate, Method::DeflateBare}));
    EXPECT_EQ(Archive::candidateMethods(view("\x31\x05")),
              (Methods{Method::Bzip2, Method::Deflate, Method::DeflateBare}));
    EXPECT_EQ(Archive::candidateMethods(view("\x31\x0e")), (Methods{Method::Deflate, Method::DeflateBare}));
    EXPECT_EQ(Archive::candidateMethods({}), (Methods{Method::Deflate, Method::DeflateBare}));
}

}  // namespace
