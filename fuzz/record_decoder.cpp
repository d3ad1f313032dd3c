// The bytes that nodes send each other: frames, and each record of the protocol. What decodes is encoded to bytes that
// decode to the same.
#include <cstddef>
#include <cstdint>

#include "MQ/Frame.h"
#include "Require.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "TWProtocol/TWProtoUser.h"

using namespace Tarnwick::Protocol;
using Public::Base::SharedBuffer;
using Tarnwick::MQ::decodeFrame;
using Tarnwick::MQ::encodeFrame;

namespace {

std::string_view view(const SharedBuffer& buffer) { return {buffer.buf(), buffer.size()}; }

template <typename Record>
void readRecord(std::string_view bytes) {
    Record record;
    if (!TWPacket::parseBytes(bytes, record)) return;
    const SharedBuffer encoded = TWPacket::serializeAsBytes(record);
    Record again;
    FUZZ_REQUIRE(TWPacket::parseBytes(view(encoded), again));
    FUZZ_REQUIRE(view(TWPacket::serializeAsBytes(again)) == view(encoded));
}

void readRecords(std::string_view bytes) {
    readRecord<TWProtoUpgradePkt>(bytes);
    readRecord<TWProtoUpgradeNotify>(bytes);
    readRecord<TWProtoUpgradeInfo>(bytes);
    readRecord<TWProtoUserForceModifyInfo>(bytes);
    readRecord<TWProtoUserLdapSourceDetail>(bytes);
    readRecord<TWProtoUserInfo>(bytes);
    readRecord<TWProtoUserLoginInfo>(bytes);
    readRecord<TWProtoAuthUserInfo>(bytes);
    readRecord<TWProtoServerRecvInfo>(bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    readRecords(bytes);
    const auto frame = decodeFrame(bytes);
    if (!frame) return 0;
    const std::string encoded = encodeFrame(*frame);
    const auto again = decodeFrame(encoded);
    FUZZ_REQUIRE(again != nullptr);
    FUZZ_REQUIRE(encodeFrame(*again) == encoded);
    for (const auto& server : frame->servers) (void)server.getServerAddr();
    readRecords(view(frame->body));
    readRecords(view(frame->authen));
    return 0;
}
