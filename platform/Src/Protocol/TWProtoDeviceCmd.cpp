#include "TWProtocol/TWProtoDeviceCmd.h"

namespace Tarnwick::Protocol {

void TWProtoUpgradeInfo::writeFields(TWFieldWriter& writer) const {
    constexpr size_t kAllButTexts = 64;
    writer.reserve(kAllButTexts + transferId.size() + data.size() + versionInfo.size());
    writer.text(1, transferId);
    writer.number(2, fileSize);
    writer.text(3, data);
    writer.number(4, position);
    writer.text(5, versionInfo);
}

bool TWProtoUpgradeInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(transferId);
        case 2:
            return field.to(fileSize);
        case 3:
            return field.to(data);
        case 4:
            return field.to(position);
        case 5:
            return field.to(versionInfo);
        default:
            return true;
    }
}

}  // namespace Tarnwick::Protocol
