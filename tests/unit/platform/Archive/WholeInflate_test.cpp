#include "Archive/WholeInflate.h"

#include "PackedStreams.h"

namespace {

using Archive::ByteView;

ByteView view(const std::string& text) { return {reinterpret_cast<const unsigned char*>(text.data()), text.size()}; }

struct Outcome {
    bool whole;
    std::string bytes;
};

Outcome decode(Archive::WholeInflate& inflate, const std::string& stream, size_t capacity) {
    std::string output(capacity, '\0');
    size_t written = 0;
    const bool whole = inflate.decode(view(stream), reinterpret_cast<unsigned char*>(output.data()), capacity, written);
    return {whole, whole ? output.substr(0, written) : std::string()};
}

TEST(WholeInflate, DecodesOneStreamAfterAnother) {
    Archive::WholeInflate inflate;
    for (const std::string& text : {std::string("one"), std::string(), std::string(100000, 'x')}) {
        const Outcome outcome = decode(inflate, support::deflated(text), 100000);
        EXPECT_TRUE(outcome.whole);
        EXPECT_TRUE(outcome.bytes == text);
    }
}

TEST(WholeInflate, GivesUpWhereTheOutputDoesNotFit) {
    Archive::WholeInflate inflate;
    EXPECT_FALSE(decode(inflate, support::deflated(std::string(1000, 'x')), 999).whole);
    EXPECT_TRUE(decode(inflate, support::deflated(std::string(1000, 'x')), 1000).whole);
}

TEST(WholeInflate, GivesUpOnBlocksWithoutTheComplement) {
    Archive::WholeInflate inflate;
    EXPECT_FALSE(decode(inflate, support::bareBlock("content", true), 1000).whole);
}

TEST(WholeInflate, GivesUpOnAStreamThatIsCut) {
    Archive::WholeInflate inflate;
    const std::string stream = support::deflated("some content that is not very long");
    for (size_t length = 0; length < stream.size(); ++length) {
        EXPECT_FALSE(decode(inflate, stream.substr(0, length), 1000).whole) << length;
    }
}

}  // namespace
