// Tells the id that this server has now.
#pragma once

#include <string>

#include "OrvUpdateExport.h"

namespace Tarnwick::OrvUpdate {

class ORV_UPDATE_API IGetServerId {
public:
    virtual ~IGetServerId() = default;
    /// Empty while there is none. May be called from any thread.
    virtual std::string getServerId() = 0;
};

}  // namespace Tarnwick::OrvUpdate
