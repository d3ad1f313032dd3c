// Raw deflate, where the stored blocks of the compiler's second generation lack the complement of their length.
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "Decoder.h"

namespace Archive {
namespace {

constexpr size_t kWindow = 32768;
constexpr size_t kHandovers = 16, kInputPerHandover = 1024;
constexpr int kRaw = -15;
constexpr int kUnusedBits = 7, kInLastBlock = 64, kBehindBlock = 128;  // what zlib tells in data_type

class Inflate : public Decoder {
public:
    explicit Inflate(bool bareStoredBlocks) : mForceBare(bareStoredBlocks) {}
    ~Inflate() override {
        if (mMade) inflateEnd(&mStream);
    }
    Inflate(const Inflate&) = delete;
    Inflate& operator=(const Inflate&) = delete;

    bool begin(ByteView input, uint64_t) override {
        mEnded = false;
        mFailed = (mMade ? inflateReset(&mStream) : inflateInit2(&mStream, kRaw)) != Z_OK || input.size() > UINT32_MAX;
        if (mFailed) return false;
        mMade = true;
        // zlib does not write to its input, but says so only when built that way.
        mStream.next_in = const_cast<Bytef*>(input.data());
        mStream.avail_in = static_cast<uInt>(input.size());
        mStored = mForceBare ? Stored::Bare : Stored::Unknown;
        mStoredLeft = 0;
        mInStored = false;
        mHoldsWindow = false;
        mHandoversLeft = kHandovers + input.size() / kInputPerHandover;
        mAtBlock = true;
        mUnused = 0;
        return true;
    }

    size_t read(unsigned char* output, size_t size) override {
        size_t done = 0;
        while (done < size && !mEnded && !mFailed) {
            if (mAtBlock) enterBlock();
            if (mFailed) break;
            done += mInStored ? copyStored(output + done, size - done) : inflateSome(output + done, size - done);
        }
        return done;
    }

    const unsigned char* position() const override { return mStream.next_in; }

private:
    enum class Stored { Unknown, Complemented, Bare };

    /// Looks at the three bits of the next block's head, and takes a bare stored block out of zlib's hands.
    void enterBlock() {
        mAtBlock = false;
        if (mStored == Stored::Complemented) return;
        const unsigned char* length = mStream.next_in;
        unsigned bits = mUnused != 0 ? length[-1] >> (8 - mUnused) : 0u;
        if (mUnused < 3) {
            if (mStream.avail_in == 0) return;  // zlib will say so
            bits |= static_cast<unsigned>(*length++) << mUnused;
        }
        if ((bits >> 1 & 3) != 0) {
            if (mHoldsWindow) giveWindowBack();
            return;
        }
        const auto left = static_cast<size_t>(mStream.next_in + mStream.avail_in - length);
        if (mStored == Stored::Unknown) {
            const bool complemented = left >= 4 && (le16(length) ^ le16(length + 2)) == 0xFFFF;
            mStored = complemented ? Stored::Complemented : Stored::Bare;
            if (complemented) return;
        }
        if (left < 2) {
            mFailed = true;
            return;
        }
        mInStored = true;
        mLastStored = (bits & 1) != 0;
        mStoredLeft = le16(length);
        mStream.avail_in = static_cast<uInt>(left - 2);
        mStream.next_in = const_cast<Bytef*>(length + 2);
        mUnused = 0;
        if (!mHoldsWindow) takeWindow();
    }

    void takeWindow() {
        mHoldsWindow = true;
        mHistory.resize(kWindow);
        uInt kept = 0;
        inflateGetDictionary(&mStream, mHistory.data(), &kept);
        mHistory.resize(kept);
    }

    /// Lets zlib go on behind bare stored blocks, with the window as if it had read them itself. A real stream has
    /// thousands of bytes between two such places; one that has not would take its time with copies of the window.
    void giveWindowBack() {
        mHoldsWindow = false;
        const size_t kept = std::min(mHistory.size(), kWindow);
        const unsigned char* window = mHistory.data() + mHistory.size() - kept;
        mFailed = mHandoversLeft == 0 || inflateReset(&mStream) != Z_OK ||
                  (kept != 0 && inflateSetDictionary(&mStream, window, static_cast<uInt>(kept)) != Z_OK);
        if (!mFailed) --mHandoversLeft;
    }

    size_t copyStored(unsigned char* output, size_t size) {
        const size_t piece = std::min(size, mStoredLeft);
        if (piece > mStream.avail_in) {
            mFailed = true;
            return 0;
        }
        if (piece != 0) std::memcpy(output, mStream.next_in, piece);
        if (mHistory.size() > 4 * kWindow)
            mHistory.erase(mHistory.begin(), mHistory.end() - static_cast<std::ptrdiff_t>(kWindow));
        mHistory.insert(mHistory.end(), mStream.next_in, mStream.next_in + piece);
        mStream.next_in += piece;
        mStream.avail_in -= static_cast<uInt>(piece);
        mStoredLeft -= piece;
        if (mStoredLeft == 0) {
            mInStored = false;
            mEnded = mLastStored;
            mAtBlock = true;
        }
        return piece;
    }

    size_t inflateSome(unsigned char* output, size_t size) {
        const auto room = static_cast<uInt>(std::min<size_t>(size, 1u << 30));
        mStream.next_out = output;
        mStream.avail_out = room;
        const int result = inflate(&mStream, mStored == Stored::Complemented ? Z_NO_FLUSH : Z_BLOCK);
        if (result == Z_STREAM_END) {
            mEnded = true;
        } else if (result != Z_OK) {
            mFailed = true;
        } else if ((mStream.data_type & kBehindBlock) != 0 && (mStream.data_type & kInLastBlock) == 0) {
            mAtBlock = true;
            mUnused = mStream.data_type & kUnusedBits;
        }
        return room - mStream.avail_out;
    }

    z_stream mStream{};
    bool mMade = false;
    const bool mForceBare;
    Stored mStored = Stored::Unknown;
    bool mAtBlock = false;
    int mUnused = 0;  // bits of the last byte taken that belong to the next block
    bool mInStored = false;
    bool mLastStored = false;
    size_t mStoredLeft = 0;
    bool mHoldsWindow = false;  // the window is here and not with zlib
    size_t mHandoversLeft = 0;  // of the window to zlib
    std::vector<unsigned char> mHistory;
};

}  // namespace

std::unique_ptr<Decoder> makeInflate(bool bareStoredBlocks) { return std::make_unique<Inflate>(bareStoredBlocks); }

}  // namespace Archive
