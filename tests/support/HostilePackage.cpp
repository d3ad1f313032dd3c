#include "HostilePackage.h"

#include <ctime>
#include <list>

#include "MemoryMeter.h"
#include "PackageFixture.h"

namespace support {
namespace {

constexpr double kSecondsLimit = 20;
constexpr uint64_t kMemoryLimit = 256u << 20;

/// Keeps nothing, but looks at every byte, and at the order of the calls.
class DrainingSink : public IExtractOutFile {
public:
    explicit DrainingSink(const std::list<std::string>& names) : mNext(names.begin()), mEnd(names.end()) {}

    bool open(const std::string& name, bool) override {
        EXPECT_FALSE(mOpen || error != ErrorCode_None);
        const bool expected = mNext != mEnd && *mNext == name;
        EXPECT_TRUE(expected) << name;
        if (mNext != mEnd) ++mNext;
        mOpen = true;
        mWritten = false;
        ++items;
        return expected;
    }
    bool write(const char* data, unsigned int size) override {
        EXPECT_TRUE(mOpen && !mWritten && size != 0);
        mWritten = true;
        for (unsigned int i = 0; i < size; i += 512) mSum += static_cast<unsigned char>(data[i]);
        mSum += static_cast<unsigned char>(data[size - 1]);
        bytes += size;
        return mSum % 2 == 0;
    }
    bool close() override {
        EXPECT_TRUE(mOpen);
        mOpen = false;
        return true;
    }
    void setError(ErrorCode code) override {
        EXPECT_TRUE(code != ErrorCode_None && error == ErrorCode_None);
        error = code;
    }
    bool tookAll() const { return mNext == mEnd && !mOpen; }

    ErrorCode error = ErrorCode_None;
    uint64_t bytes = 0;
    size_t items = 0;

private:
    std::list<std::string>::const_iterator mNext, mEnd;
    bool mOpen = false, mWritten = false;
    unsigned mSum = 0;
};

void readAll(const std::string& path, PackageReading& reading) {
    NSISDecompile package;
    if (!package.open(path, "")) return;
    std::string text;
    package.getName(text);
    package.getComment(text);
    package.getVersion(text);
    uint64_t size = 0;
    std::list<std::string> names;
    EXPECT_TRUE(package.getSize(size) && package.getItems(names));
    const auto sink = std::make_shared<DrainingSink>(names);
    const bool whole = package.extract(sink);
    EXPECT_EQ(whole, sink->error == IExtractOutFile::ErrorCode_None);
    EXPECT_TRUE(!whole || sink->tookAll());
    reading.outcome = whole ? PackageReading::Whole : PackageReading::Failed;
    reading.error = sink->error;
    reading.bytes = sink->bytes;
    reading.items = sink->items;
}

}  // namespace

PackageReading readHostile(const std::string& path) {
    PackageReading reading;
    const MemoryMeter meter;
    // Of the processor, so that what else the machine does has no say.
    const std::clock_t begin = std::clock();
    readAll(path, reading);
    reading.seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    reading.memory = meter.peak();
    EXPECT_LT(reading.seconds, kSecondsLimit);
    EXPECT_LE(reading.memory, kMemoryLimit);
    return reading;
}

PackageReading readHostile(const std::string& path, const std::string& bytes) {
    writeFile(path, bytes);
    return readHostile(path);
}

}  // namespace support
