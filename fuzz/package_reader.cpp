// A package from its first byte to its last item.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <list>

#include "Archive/NSISDecompile.h"
#include "Public/Base/System.h"
#include "Require.h"

namespace {
std::string_view sInput;
}

// Takes the place of the mapped file of the library: the input in a block of exactly its size, so that the sanitizer
// sees a read beyond it, which in the last page of a mapping it would not.
namespace Public::Base {

MappedFile::~MappedFile() { close(); }

MappedFile::Result MappedFile::open(const std::string&) {
    close();
    if (sInput.empty()) return Result::CannotMap;
    auto* block = new unsigned char[sInput.size()];
    std::memcpy(block, sInput.data(), sInput.size());
    mData = block;
    mSize = sInput.size();
    return Result::Mapped;
}

void MappedFile::release(const unsigned char*, size_t) const {}

void MappedFile::close() {
    delete[] mData;
    mData = nullptr;
    mSize = 0;
}

}  // namespace Public::Base

namespace {

/// Holds the reader to its order of calls, and reads every byte that it is given.
class CheckingSink : public IExtractOutFile {
public:
    explicit CheckingSink(std::list<std::string> names) : mNames(std::move(names)) {}

    bool open(const std::string& name, bool) override {
        FUZZ_REQUIRE(!mOpen && !mFailed);
        FUZZ_REQUIRE(!mNames.empty() && mNames.front() == name);
        mNames.pop_front();
        mOpen = true;
        mWritten = false;
        return true;
    }
    bool write(const char* data, unsigned int size) override {
        FUZZ_REQUIRE(mOpen && !mWritten && size != 0);
        mWritten = true;
        for (unsigned int i = 0; i < size; ++i) mSum += static_cast<unsigned char>(data[i]);
        return mSum % 7 != 0;
    }
    bool close() override {
        FUZZ_REQUIRE(mOpen);
        mOpen = false;
        return true;
    }
    void setError(ErrorCode code) override {
        FUZZ_REQUIRE(code != ErrorCode_None && !mFailed);
        mFailed = true;
    }

    bool tookAll() const { return mNames.empty() && !mOpen; }
    bool failed() const { return mFailed; }

private:
    std::list<std::string> mNames;
    bool mOpen = false, mWritten = false, mFailed = false;
    unsigned mSum = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    sInput = {reinterpret_cast<const char*>(data), size};
    NSISDecompile package;
    if (!package.open("package.exe", "")) return 0;
    std::string text;
    uint64_t length = 0;
    package.getName(text);
    package.getComment(text);
    package.getVersion(text);
    FUZZ_REQUIRE(package.getSize(length));
    std::list<std::string> items;
    FUZZ_REQUIRE(package.getItems(items));

    const auto sink = std::make_shared<CheckingSink>(items);
    const bool extracted = package.extract(sink);
    FUZZ_REQUIRE(extracted != sink->failed());
    FUZZ_REQUIRE(!extracted || sink->tookAll());
    package.close();
    FUZZ_REQUIRE(!package.getItems(items));
    return 0;
}
