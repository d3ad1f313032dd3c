#include "Package.h"

#include <algorithm>

#include "ReadAhead.h"

namespace Archive {
namespace {

constexpr uint64_t kLeastOutputLimit = 1u << 30;
constexpr uint64_t kOutputRatioLimit = 2000;  // no real package comes near

/// One run over all items.
class Extraction {
public:
    Extraction(const Package& package, IExtractOutFile& sink) : mPackage(package), mSink(sink) {}

    bool run() {
        if (mPackage.layout.end > mPackage.file.size()) return fail(ErrorCode::ErrorCode_Format);
        const ItemSource source{mPackage.body, mPackage.items,
                                mPackage.bytes().first(static_cast<size_t>(mPackage.layout.firstHeader)),
                                std::min<uint64_t>(mOutputLeft, UINT32_MAX)};
        // The first items are decompressed while this thread is still at the checksum.
        ReadAhead ahead(mPackage.items.size(), makeReaders(source), mPackage.cancelled);
        if (mPackage.layout.hasChecksum && !checksumHolds(mPackage.bytes(), mPackage.layout, mPackage.cancelled)) {
            return fail(ErrorCode::ErrorCode_Checksum);
        }
        for (const PackageItem& item : mPackage.items) {
            ByteView content;
            const ErrorCode error = ahead.next(content);
            if (error != ErrorCode::ErrorCode_None) return fail(error);
            for (const std::string& name : item.names) {
                if (!deliver(name, content)) return false;
            }
        }
        return true;
    }

private:
    std::vector<std::unique_ptr<ItemReader>> makeReaders(const ItemSource& source) const {
        constexpr size_t kMostThreads = 4;
        std::vector<std::unique_ptr<ItemReader>> readers;
        if (source.body.solid) {
            readers.push_back(makeSolidReader(source));
            return readers;
        }
        const size_t threads = std::clamp<size_t>(std::thread::hardware_concurrency(), 1, kMostThreads);
        readers.push_back(makeSeparateReader(source));
        while (readers.size() < std::min(threads, source.items.size())) readers.push_back(makeSeparateReader(source));
        return readers;
    }

    bool deliver(const std::string& name, ByteView content) {
        if (mPackage.cancelled) return fail(ErrorCode::ErrorCode_Cancelled);
        if (content.size() > mOutputLeft) return fail(ErrorCode::ErrorCode_Limit);
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
    uint64_t mOutputLeft = std::max(kLeastOutputLimit, kOutputRatioLimit* mPackage.file.size());
};

}  // namespace

bool Package::open(const std::string& path) {
    if (file.open(path) != Public::Base::MappedFile::Result::Mapped) return false;
    PeImage image;
    image.parse(bytes());
    if (!findPackage(bytes(), image, layout)) return false;
    if (!readPackageBody(bytes(), layout, image.isWide(), body) || !listItems(body.header, items)) return false;
    version = readVersionResource(image);
    return true;
}

bool extractPackage(const Package& package, IExtractOutFile& sink) { return Extraction(package, sink).run(); }

}  // namespace Archive
