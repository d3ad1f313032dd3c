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
using Tarnwick::MQ::Frame;

namespace {

template <typename Record>
void readRecord(std::string_view bytes) {
    Record record;
    if (!TWPacket::parseBytes(bytes, record)) return;
    const std::string encoded = TWPacket::serializeAsBytes(record).toStdString();
    Record again;
    FUZZ_REQUIRE(TWPacket::parseBytes(encoded, again));
    FUZZ_REQUIRE(TWPacket::serializeAsBytes(again).toStdString() == encoded);
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
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    readRecords(bytes);
    Frame frame;
    if (!Frame::decode(bytes, frame)) return 0;
    const std::string encoded = frame.encode();
    Frame again;
    FUZZ_REQUIRE(Frame::decode(encoded, again));
    FUZZ_REQUIRE(again.encode() == encoded);
    readRecords(frame.body);
    readRecords(frame.authen);
    return 0;
}
