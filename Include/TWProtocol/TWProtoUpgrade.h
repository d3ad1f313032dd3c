// The text records of the upgrade topics.
#pragma once

#include <string>

#include "Public/Base/ObjCounter.h"
#include "TWProtocol/TWPacket.h"

namespace Tarnwick::Protocol {

/// A text document, chosen by the topic.
struct ORV_PLATFORM_API TWProtoUpgradePkt : TWPacket {
    std::string body;

    const char* typeName() const override { return "TWProtoUpgradePkt"; }
    uint64_t typeId() const override { return 0x710061aed6f261c7ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUpgrade.pb", 19};
};

/// A version in text form.
struct ORV_PLATFORM_API TWProtoUpgradeNotify : TWPacket {
    std::string body;

    const char* typeName() const override { return "TWProtoUpgradeNotify"; }
    uint64_t typeId() const override { return 0x81d547a257e20437ULL; }
    void writeFields(TWFieldWriter& writer) const override;
    bool readField(const TWField& field) override;

private:
    Public::Base::ObjCounter mCounter{"Include/TWProtocol/TWProtoUpgrade.pb", 60};
};

}  // namespace Tarnwick::Protocol
