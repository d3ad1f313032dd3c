// The factory of installers for host programs.
#include "AgentInstaller.h"
#include "VersionRequest.h"

namespace Tarnwick::OrvUpdate {

std::shared_ptr<IInstaller> IInstaller::createLocalInstaller(const std::shared_ptr<IVersionRequest>& request,
                                                             const std::shared_ptr<IVersion>& version,
                                                             const std::string& installDir) {
    const auto own = std::dynamic_pointer_cast<VersionRequest>(request);
    const auto installer =
        own ? std::make_shared<AgentInstaller>(own->getPackageCallback(), own->getCheckCallback(), version,
                                               own->getVersionType())
            : std::make_shared<AgentInstaller>(PackageCallback(), CheckCallback(), nullptr, VersionType_Unknown);
    if (!installer->start(installDir, true, {})) installer->exit();
    return installer;
}

}  // namespace Tarnwick::OrvUpdate
