// LZMA as the package compiler writes it: five property bytes, then raw LZMA1 with an end marker.
#include <lzma.h>

#include <algorithm>

#include "Decoder.h"
#include "Limits.h"

namespace Archive {
namespace {

constexpr uint32_t kDictionaryLimit = 1u << 30;  // the largest that the package compiler accepts
constexpr uint64_t kWindowLeast = 1u << 20;
// No LZMA stream unpacks to more than some 7000 times its length, so that a short one needs no large window.
constexpr uint64_t kLargestRatio = 8192;

class Lzma : public Decoder {
public:
    explicit Lzma(bool filterByte) : mFilterByte(filterByte) {}
    ~Lzma() override { lzma_end(&mStream); }
    Lzma(const Lzma&) = delete;
    Lzma& operator=(const Lzma&) = delete;

    bool begin(ByteView input, uint64_t outputLimit) override {
        mFailed = mEnded = false;
        bool filtered = false;
        if (mFilterByte) {
            if (input.empty() || input[0] > 1) return false;
            filtered = input[0] == 1;
            input = input.subspan(1);
        }
        if (input.size() < 5) return false;
        const uint32_t dictionary = le32(&input[1]);
        if (dictionary > kDictionaryLimit) return false;
        lzma_options_lzma options{};
        if (!readProperties(input[0], options)) return false;
        input = input.subspan(5);
        const uint64_t reach = std::max(std::min(outputLimit, kLargestRatio * input.size()), kWindowLeast);
        options.dict_size = static_cast<uint32_t>(std::min({uint64_t{dictionary}, reach, windowLimit(input.size())}));
        return start(options, filtered, input);
    }

    size_t read(unsigned char* output, size_t size) override {
        mStream.next_out = output;
        mStream.avail_out = size;
        while (mStream.avail_out != 0 && !mEnded && !mFailed) {
            const lzma_ret result = lzma_code(&mStream, LZMA_RUN);
            if (result == LZMA_STREAM_END)
                mEnded = true;
            else if (result != LZMA_OK)
                mFailed = true;
        }
        return size - mStream.avail_out;
    }

    const unsigned char* position() const override { return mStream.next_in; }

private:
    static bool readProperties(unsigned char byte, lzma_options_lzma& options) {
        if (byte >= 9 * 5 * 5) return false;
        options.lc = byte % 9;
        options.lp = byte / 9 % 5;
        options.pb = byte / 45u;
        return options.lc + options.lp <= 4;
    }

    bool start(lzma_options_lzma& options, bool filtered, ByteView input) {
        lzma_filter filters[3];
        size_t count = 0;
        if (filtered) filters[count++] = {LZMA_FILTER_X86, nullptr};
        filters[count++] = {LZMA_FILTER_LZMA1, &options};
        filters[count] = {LZMA_VLI_UNKNOWN, nullptr};
        if (lzma_raw_decoder(&mStream, filters) != LZMA_OK) return false;
        mStream.next_in = input.data();
        mStream.avail_in = input.size();
        return true;
    }

    lzma_stream mStream = LZMA_STREAM_INIT;
    bool mFilterByte;
};

}  // namespace

std::unique_ptr<Decoder> makeLzma(bool filterByte) { return std::make_unique<Lzma>(filterByte); }

}  // namespace Archive
