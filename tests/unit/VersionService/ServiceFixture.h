// A message service on a queue that notes what it is asked.
#pragma once

#include "RecordingNodes.h"
#include "RequestFixture.h"
#include "VersionService.h"

namespace Tarnwick::OrvUpdate {

inline constexpr int kError = 2;
inline constexpr char kQuery[] = "topic_upgrade_queryversion";

class ServiceFrame : public RequestFixture {
protected:
    std::shared_ptr<VersionService> makeService(const std::shared_ptr<Tarnwick::MQ::MQDispatcher>& node) {
        return std::make_shared<VersionService>(mWorker, node, mRequest, PackageCallback(), CheckCallback());
    }
    /// A service of a process that has no catalogue.
    std::shared_ptr<VersionService> makeBareService(const std::shared_ptr<Tarnwick::MQ::MQDispatcher>& node) {
        return std::make_shared<VersionService>(mWorker, node, std::shared_ptr<IInstaller>());
    }

    std::shared_ptr<VersionRequest> mRequest = makeRequest(std::shared_ptr<TWMQSystemServer>());
};

}  // namespace Tarnwick::OrvUpdate
