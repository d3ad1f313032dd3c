#include "Package.h"

#include <algorithm>

#include "Limits.h"
#include "ReadAhead.h"

namespace Archive {
namespace {

constexpr size_t kPagesBehind = 4u << 20;

/// One run over all items.
class Extraction {
public:
    Extraction(const Package& package, IExtractOutFile& sink) : mPackage(package), mSink(sink) {}

    bool run() {
        if (mPackage.layout.end > mPackage.file.size()) return fail(ErrorCode::ErrorCode_Format);
        const ItemSource source{mPackage.file, mPackage.body, mPackage.items,
                                mPackage.bytes().first(static_cast<size_t>(mPackage.layout.firstHeader)), mBudget};
        // The first items are decompressed while this thread is still at the checksum.
        ReadAhead ahead(mPackage.items.size(), makeReaders(source), mPackage.cancelled);
        if (mPackage.layout.hasChecksum && !checksumHolds(mPackage.file, mPackage.layout, mPackage.cancelled)) {
            return fail(ErrorCode::ErrorCode_Checksum);
        }
        for (const PackageItem& item : mPackage.items) {
            ByteView content;
            const ErrorCode error = ahead.next(content);
            if (error != ErrorCode::ErrorCode_None) return fail(error);
            for (const std::string& name : item.names) {
                if (!deliver(name, content)) return false;
            }
            releasePages(item);
        }
        return true;
    }

private:
    std::vector<std::unique_ptr<ItemReader>> makeReaders(const ItemSource& source) const {
        constexpr uint64_t kMostThreads = 4;
        std::vector<std::unique_ptr<ItemReader>> readers;
        if (source.body.solid) {
            readers.push_back(makeSolidReader(source));
            return readers;
        }
        const uint64_t memory = std::max<uint64_t>(1, kWindowsTogether / std::max(dictionaryOf(source), kMebibyte));
        const uint64_t threads =
            std::clamp<uint64_t>(std::thread::hardware_concurrency(), 1, std::min(memory, kMostThreads));
        readers.push_back(makeSeparateReader(source));
        while (readers.size() < std::min(threads, source.items.size())) readers.push_back(makeSeparateReader(source));
        return readers;
    }

    /// The largest of all items: real packages have one for all, but need not. @return 0 without LZMA
    static uint64_t dictionaryOf(const ItemSource& source) {
        uint64_t largest = 0;
        for (const PackageItem& item : source.items) {
            StoredItem stored;
            if (!readStoredItem(source.body.bytes, item.offset, stored) || !stored.packed) continue;
            const Method method = candidateMethods(stored.bytes).front();
            if (method != Method::Lzma && method != Method::LzmaFiltered) continue;
            largest = std::max<uint64_t>(largest, le32(&stored.bytes[method == Method::Lzma ? 1 : 2]));
        }
        return largest;
    }

    /// Items packed one by one lie in the order in which they are read; a stream's reader sees to its pages itself.
    void releasePages(const PackageItem& item) {
        const ByteView bytes = mPackage.body.bytes;
        if (mPackage.body.solid || item.offset > bytes.size() || item.offset - mReleased < kPagesBehind) return;
        mPackage.file.release(&bytes[mReleased], item.offset - mReleased);
        mReleased = item.offset;
    }

    bool deliver(const std::string& name, ByteView content) {
        if (mPackage.cancelled) return fail(ErrorCode::ErrorCode_Cancelled);
        if (content.size() > std::min<uint64_t>(mOutputLeft, UINT32_MAX)) return fail(ErrorCode::ErrorCode_Limit);
        mOutputLeft -= content.size();
        if (!mSink.open(name, false)) return false;
        if (!content.empty()) {
            mSink.write(reinterpret_cast<const char*>(content.data()), static_cast<unsigned>(content.size()));
        }
        mSink.close();
        return true;
    }

    /// Whatever else went wrong: a package that was closed under way is a cancelled one.
    bool fail(ErrorCode error) {
        mSink.setError(mPackage.cancelled ? ErrorCode::ErrorCode_Cancelled : error);
        return false;
    }

    const Package& mPackage;
    IExtractOutFile& mSink;
    uint64_t mOutputLeft = deliveredLimit(mPackage.file.size());
    Budget mBudget{decodedLimit(mPackage.file.size())};
    size_t mReleased = 0;  // offset in the body up to which pages were given back
};

}  // namespace

bool Package::open(const std::string& path) {
    if (file.open(path) != Public::Base::MappedFile::Result::Mapped) return false;
    PeImage image;
    image.parse(bytes());
    if (!findPackage(bytes(), image, layout)) return false;
    if (!readPackageBody(bytes(), layout, image.isWide(), body) || !listItems(body.header, items)) return false;
    version = readVersionResource(image);
    body.header = HeaderBlock();  // has told all that it can
    return true;
}

bool extractPackage(const Package& package, IExtractOutFile& sink) { return Extraction(package, sink).run(); }

}  // namespace Archive
