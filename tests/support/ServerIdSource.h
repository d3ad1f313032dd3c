// A provider of the server id that tests change at will.
#pragma once

#include <string>

#include "IGetServerId.h"

namespace support {

struct ServerIdSource : Tarnwick::OrvUpdate::IGetServerId {
    explicit ServerIdSource(std::string text) : id(std::move(text)) {}
    std::string getServerId() override { return id; }

    std::string id;
};

}  // namespace support
