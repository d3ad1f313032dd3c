// Version texts: what is read is written back as the same version, and the order is total.
#include <cstddef>
#include <cstdint>
#include <string>

#include "Public/Base/Version.h"
#include "Require.h"

using Public::Base::Version;

namespace {

constexpr const char* kSafe = "0123456789.-_abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";

void requireReadsBack(const Version& version) {
    const std::string text = version.toString();
    FUZZ_REQUIRE(text.find_first_not_of(kSafe) == std::string::npos);
    const Version again(text, 0);
    FUZZ_REQUIRE(again == version);
    FUZZ_REQUIRE(again.toString() == text);
}

void requireOrdered(const Version& left, const Version& right) {
    FUZZ_REQUIRE((left < right) + (right < left) + (left == right) == 1);
    FUZZ_REQUIRE((left <= right) == !(right < left));
}

}  // namespace

// Two texts, split at the first line end; the second also becomes the revision of the first.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string input(reinterpret_cast<const char*>(data), size);
    const size_t split = input.find('\n');
    const std::string second = split == std::string::npos ? std::string() : input.substr(split + 1);
    Version left(input.substr(0, split), 0);
    const Version right(second, 0);
    requireReadsBack(left);
    requireReadsBack(right);
    requireOrdered(left, right);

    left.Revision() = second;
    left.Build() = right.OEM() - static_cast<int>(size);
    left.OEM() = right.Build();
    requireReadsBack(left);
    requireOrdered(left, right);
    return 0;
}
