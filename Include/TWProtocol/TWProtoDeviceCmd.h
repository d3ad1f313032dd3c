// The chunk record of the file transfer topics.
#pragma once

#include <cstdint>
#include <string>

#include "Public/Base/ObjCounter.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// One chunk of a package. Offsets are 32 bits wide, so that no package of 4 GiB or more can be carried.
struct ORV_PLATFORM_API TWProtoUpgradeInfo : TWPacket {
    std::string transferId;   ///< text form of a Guid, the same in all chunks of one transfer
    uint32_t fileSize = 0;    ///< bytes of the package; 0 in a pull response: no bytes to give yet
    std::string data;         ///< the chunk, up to 1048576 bytes
    uint32_t position = 0;    ///< offset of data from the package's start, bytes
    std::string versionInfo;  ///< the version document

    const char* typeName() const override { return "TWProtoUpgradeInfo"; }
    uint64_t typeId() const override { return 0xd331fc77fd18abf8ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoDeviceCmd.pb", 366};
};

}  // namespace Tarnwick::Protocol
