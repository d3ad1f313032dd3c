#include "PeerDocuments.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;
using Tarnwick::Protocol::TWProtoUpgradePkt;

namespace {

constexpr char kPos[] = "pos";
constexpr char kFinish[] = "finish";

TWProtoUpgradePkt packetOf(const JsonValue& document) {
    TWProtoUpgradePkt packet;
    packet.body = document.toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    return packet;
}

}  // namespace

TWProtoUpgradePkt versionPacket(const IVersion& version) { return packetOf(version.buildVersionInfo()); }

TWProtoUpgradePkt progressPacket(float pos, bool finish) {
    JsonValue document;
    document[kPos] = static_cast<double>(pos);
    document[kFinish] = finish;
    return packetOf(document);
}

ErrorInfo readProgress(const Tarnwick::MQ::MQMessage& answer, PeerProgress& progress) {
    TWProtoUpgradePkt packet;
    JsonValue heard;
    if (!answer.parseBody(&packet, false) || heard.read(SharedBuffer(std::move(packet.body)))) {
        return {Public::Base::ErrorCode_BadDocument, ""};
    }
    const JsonValue& document = heard;
    if (document.isMember(kFinish)) progress.finish = document[kFinish]->toBool();
    if (document.isMember(kPos)) progress.pos = document[kPos]->toFloat();
    return {};
}

}  // namespace Tarnwick::OrvUpdate
