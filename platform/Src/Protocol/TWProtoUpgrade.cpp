#include "TWProtocol/TWProtoUpgrade.h"

namespace Tarnwick::Protocol {

void TWProtoUpgradePkt::writeFields(TWFieldWriter& writer) const { writer.text(1, body); }

bool TWProtoUpgradePkt::readField(const TWField& field) { return field.number != 1 || field.to(body); }

void TWProtoUpgradeNotify::writeFields(TWFieldWriter& writer) const { writer.text(1, body); }

bool TWProtoUpgradeNotify::readField(const TWField& field) { return field.number != 1 || field.to(body); }

}  // namespace Tarnwick::Protocol
