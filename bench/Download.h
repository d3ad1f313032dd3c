// A download, for those who measure its time and those who measure its memory.
#pragma once

#include <memory>
#include <string>

#include "OrvVersion.h"
#include "PackageServer.h"

namespace bench {

/// Receives the body of the server into a store. @return the path of the package
std::string download(const std::shared_ptr<Tarnwick::OrvUpdate::IOWorker>& worker, const std::string& store,
                     const std::string& url);

}  // namespace bench
