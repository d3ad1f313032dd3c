// Release notes: the cloud's list and the nodes' document, the same bytes to both readers.
#include <cstddef>
#include <cstdint>

#include "OrvVersion/ReleaseHistory.h"
#include "Require.h"

using namespace Tarnwick::OrvUpdate;

namespace {

void requireToldAsHeard(const ReleaseHistorySet& histories) {
    std::string told;
    ReleaseHistory::buildReleaseHistory(histories, told);
    ReleaseHistorySet heard;
    ReleaseHistory::parseReleaseHistory(told, heard, Version());
    FUZZ_REQUIRE(heard.size() == histories.size());
    std::string repeated;
    ReleaseHistory::buildReleaseHistory(heard, repeated);
    FUZZ_REQUIRE(repeated == told);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string document(reinterpret_cast<const char*>(data), size);
    ReleaseHistorySet ofCloud;
    const bool cloudFailed(ReleaseHistory::parseReleaseHistoryFromHttp(document, "", ofCloud, Version("1.0", 0)));
    FUZZ_REQUIRE(!cloudFailed || ofCloud.empty());
    requireToldAsHeard(ofCloud);

    ReleaseHistorySet ofNode;
    const bool nodeFailed(ReleaseHistory::parseReleaseHistory(document, ofNode, Version()));
    FUZZ_REQUIRE(!nodeFailed || ofNode.empty());
    requireToldAsHeard(ofNode);
    return 0;
}
