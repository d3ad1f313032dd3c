// A chunk as it came over the queue.
#pragma once

#include <string_view>

#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::OrvUpdate {

/// The chunk record of a message, whose bytes stay in the message: they are good as long as that is.
struct ReceivedChunk : Tarnwick::Protocol::TWProtoUpgradeInfo {
    std::string_view bytes;

    bool readField(const Tarnwick::Protocol::TWField& field) override {
        constexpr uint32_t kData = 3;
        return field.number == kData ? field.to(bytes) : TWProtoUpgradeInfo::readField(field);
    }
};

}  // namespace Tarnwick::OrvUpdate
