#include "PackedStreams.h"

#include <lzma.h>
#include <zlib.h>

#include <filesystem>
#include <random>
#include <stdexcept>

#include "FileText.h"
#include "SyntheticPackage.h"

namespace support {
namespace {

constexpr size_t kMebibyte = 1u << 20;

std::string deflatePiece(const std::string& text, int level, int strategy, int flush) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, -15, 8, strategy);
    std::string out(text.size() + text.size() / 1000 + 1000, '\0'), in = text;
    stream.next_in = reinterpret_cast<Bytef*>(in.data());
    stream.avail_in = static_cast<uInt>(in.size());
    stream.next_out = reinterpret_cast<Bytef*>(out.data());
    stream.avail_out = static_cast<uInt>(out.size());
    deflate(&stream, flush);
    out.resize(stream.total_out);
    deflateEnd(&stream);
    return out;
}

class LzmaWriter {
public:
    LzmaWriter(uint32_t preset, bool filtered, uint32_t dictionary) {
        lzma_options_lzma options{};
        lzma_lzma_preset(&options, preset);
        options.dict_size = dictionary;
        lzma_filter filters[3];
        size_t count = 0;
        if (filtered) filters[count++] = {LZMA_FILTER_X86, nullptr};
        filters[count++] = {LZMA_FILTER_LZMA1, &options};
        filters[count] = {LZMA_VLI_UNKNOWN, nullptr};
        if (lzma_raw_encoder(&mStream, filters) != LZMA_OK) throw std::runtime_error("no LZMA encoder");
    }
    ~LzmaWriter() { lzma_end(&mStream); }
    LzmaWriter(const LzmaWriter&) = delete;
    LzmaWriter& operator=(const LzmaWriter&) = delete;

    void put(const std::string& text, lzma_action action = LZMA_RUN) {
        mStream.next_in = reinterpret_cast<const uint8_t*>(text.data());
        mStream.avail_in = text.size();
        lzma_ret result = LZMA_OK;
        while (result == LZMA_OK && (mStream.avail_in != 0 || action == LZMA_FINISH)) {
            std::string piece(1u << 16, '\0');
            mStream.next_out = reinterpret_cast<uint8_t*>(piece.data());
            mStream.avail_out = piece.size();
            result = lzma_code(&mStream, action);
            mOut.append(piece, 0, piece.size() - mStream.avail_out);
        }
    }
    const std::string& bytes() const { return mOut; }

private:
    lzma_stream mStream = LZMA_STREAM_INIT;
    std::string mOut;
};

}  // namespace

std::string deflated(const std::string& text, int level, int strategy) {
    return deflatePiece(text, level, strategy, Z_FINISH);
}

std::string bareBlock(const std::string& text, bool last) {
    return std::string(1, static_cast<char>(last)) + le16(static_cast<uint32_t>(text.size())) + text;
}

std::string bareBlocks(const std::string& text, size_t size) {
    if (text.empty()) return bareBlock(text, true);
    std::string stream;
    for (size_t at = 0; at < text.size(); at += size)
        stream += bareBlock(text.substr(at, size), at + size >= text.size());
    return stream;
}

std::string lzmaStream(const std::string& text, bool filtered, uint32_t dictionary, uint32_t declared) {
    LzmaWriter writer(6, filtered, dictionary);
    writer.put(text, LZMA_FINISH);
    return "\x5d" + le32(declared != 0 ? declared : dictionary) + writer.bytes();
}

std::string deflateBomb(size_t mebibytes, const std::string& before) {
    // A full flush ends on a byte and forgets the window, so that the piece can be repeated.
    const std::string piece = deflatePiece(std::string(kMebibyte, '\0'), 9, Z_DEFAULT_STRATEGY, Z_FULL_FLUSH);
    std::string stream = deflatePiece(before, 9, Z_DEFAULT_STRATEGY, Z_FULL_FLUSH);
    for (size_t i = 0; i < mebibytes; ++i) stream += piece;
    return stream + deflated("");
}

namespace {
std::string makeLzmaBomb(size_t mebibytes, const std::string& before) {
    constexpr uint32_t kDictionary = 8u << 20;
    LzmaWriter writer(0, false, kDictionary);
    writer.put(before);
    const std::string zeros(kMebibyte, '\0');
    for (size_t i = 0; i < mebibytes; ++i) writer.put(zeros);
    writer.put({}, LZMA_FINISH);
    return "\x5d" + le32(kDictionary) + writer.bytes();
}
}  // namespace

std::string lzmaBomb(size_t mebibytes, const std::string& before) {
    if (!before.empty()) return makeLzmaBomb(mebibytes, before);
    // Packing takes a second, and every test is a process of its own.
    namespace fs = std::filesystem;
    const fs::path cache = ORV_TEST_PACKAGES;
    const std::string cached = (cache / ("zeros-" + std::to_string(mebibytes) + ".lzma")).string();
    if (const auto stream = readText(cached)) return *stream;
    const std::string unfinished = cached + "-" + std::to_string(std::random_device()());
    const std::string made = makeLzmaBomb(mebibytes, {});
    writeText(unfinished, made);
    // Another process may have been faster, and be reading its own.
    std::error_code lost;
    fs::rename(unfinished, cached, lost);
    if (lost) fs::remove(unfinished);
    return made;
}

std::string bzip2Bomb(size_t blocks) {
    BitWriter bits;
    for (size_t i = 0; i < blocks; ++i) {
        // One byte value, 255: after four of it comes the count of further ones, which is 255 too.
        bits.put(0x31, 8).put(0, 24).put(1, 16).put(1, 16);
        bits.put(2, 3).put(1, 15).put(0, 1);
        for (int table = 0; table < 2; ++table) bits.put(2, 5).put(0, 3);
        // Digits 1 and 2 to the base two: 899999 = a sum of (digit + 1) * 2^i.
        for (uint32_t run = 899999; run != 0; run = (run - 1) / 2) bits.put((run - 1) % 2, 2);
        bits.put(2, 2);
    }
    return bits.put(0x17, 8).bytes();
}

BitWriter& BitWriter::put(uint32_t value, unsigned count) {
    for (unsigned i = count; i-- > 0;) {
        if (mFill % 8 == 0) mBytes.push_back('\0');
        if ((value >> i & 1) != 0) mBytes.back() = static_cast<char>(mBytes.back() | (0x80 >> mFill % 8));
        ++mFill;
    }
    return *this;
}

}  // namespace support
