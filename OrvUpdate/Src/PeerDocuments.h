// What a node says of a version to the peer that works on it, and what the peer says of its progress.
#pragma once

#include <optional>

#include "IVersion.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "Tarnwick/MQ/MQMessage.h"

namespace Tarnwick::OrvUpdate {

/// The version document, as a body.
Tarnwick::Protocol::TWProtoUpgradePkt versionPacket(const IVersion& version);

/// What a progress document holds; a member that it lacks is empty.
struct PeerProgress {
    std::optional<float> pos;  // fraction done, as the peer wrote it
    std::optional<bool> finish;
};

/// The progress document, as a body.
Tarnwick::Protocol::TWProtoUpgradePkt progressPacket(float pos, bool finish);
/// Reads the body of a peer's answer. @return -301 without a body, with one of another record, or with no JSON in it
ErrorInfo readProgress(const Tarnwick::MQ::MQMessage& answer, PeerProgress& progress);

}  // namespace Tarnwick::OrvUpdate
