#include "Tarnwick/MQ/TWServerInfo.h"

#include "Public/Base/Value.h"

namespace Tarnwick::Protocol {

void TWProtoServerRecvInfo::writeFields(TWFieldWriter& writer) const {
    writer.text(1, serverId);
    writer.text(2, systemId);
    writer.text(3, version);
    writer.text(4, addresses);
    writer.number(5, reachable ? 1 : 0);
    writer.number(6, ready ? 1 : 0);
}

bool TWProtoServerRecvInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1: return field.to(serverId);
        case 2: return field.to(systemId);
        case 3: return field.to(version);
        case 4: return field.to(addresses);
        case 5: return field.to(reachable);
        case 6: return field.to(ready);
        default: return true;
    }
}

Public::Network::NetAddr TWServerInfo::getServerAddr() const {
    const std::string first = addresses.substr(0, addresses.find('\n'));
    const size_t blank = first.find(' ');
    if (blank == std::string::npos) return {};
    const unsigned long long port = Public::Base::Value(first.substr(blank + 1)).toUint64();
    if (port == 0 || port > UINT16_MAX) return {};
    return {first.substr(0, blank), static_cast<uint16_t>(port)};
}

}  // namespace Tarnwick::Protocol
