#include "Tarnwick/MQ/TWServerInfo.h"

#include <charconv>

namespace Tarnwick::Protocol {

void TWProtoServerRecvInfo::writeFields(TWFieldWriter& writer) const {
    writer.text(1, serverId);
    writer.text(2, systemId);
    writer.text(3, version);
    writer.text(4, addresses);
    writer.number(5, reachable);
    writer.number(6, ready);
}

bool TWProtoServerRecvInfo::readField(const TWField& field) {
    switch (field.number) {
        case 1:
            return field.to(serverId);
        case 2:
            return field.to(systemId);
        case 3:
            return field.to(version);
        case 4:
            return field.to(addresses);
        case 5:
            return field.to(reachable);
        case 6:
            return field.to(ready);
        default:
            return true;
    }
}

Public::Network::NetAddr TWServerInfo::getServerAddr() const {
    const auto line = addresses.substr(0, addresses.find('\n'));
    const auto blank = line.rfind(' ');
    if (blank == std::string::npos) return {};
    uint16_t port = 0;
    const char* end = line.data() + line.size();
    const auto read = std::from_chars(line.data() + blank + 1, end, port);
    if (read.ec != std::errc() || read.ptr != end) return {};
    return {line.substr(0, blank), port};
}

}  // namespace Tarnwick::Protocol
