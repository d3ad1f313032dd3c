// Where the operations of a request stand in its virtual table, which programs built against an older library rely on.
#include <numeric>

#include "IVersionRequest.h"
#include "VirtualSlot.h"

using namespace Tarnwick::OrvUpdate;
using support::virtualSlot;

TEST(InterfaceOrder, OfRequests) {
    using All = ErrorInfo (IVersionRequest::*)(const RequestFinished&);
    using Named = ErrorInfo (IVersionRequest::*)(const std::map<std::string, TWServerInfo>&, const RequestFinished&);
    using ByKey = std::shared_ptr<IVersion> (IVersionRequest::*)(const std::shared_ptr<IVersion>&);
    using ByFields = std::shared_ptr<IVersion> (IVersionRequest::*)(SystemType, SystemBits, ProjectType, VersionType,
                                                                    VersionSource, const Version&);
    const std::vector<size_t> slots{
        virtualSlot(&IVersionRequest::getVersionType),
        virtualSlot(&IVersionRequest::start),
        virtualSlot(&IVersionRequest::stop),
        virtualSlot(&IVersionRequest::setRequestVersion),
        virtualSlot(&IVersionRequest::setOtherNodes),
        virtualSlot(&IVersionRequest::getOtherNodes),
        virtualSlot(&IVersionRequest::requestVersion),
        virtualSlot(static_cast<Named>(&IVersionRequest::querySystemVersion)),
        virtualSlot(static_cast<All>(&IVersionRequest::querySystemVersion)),
        virtualSlot(&IVersionRequest::install),
        virtualSlot(&IVersionRequest::installCancel),
        virtualSlot(&IVersionRequest::getVersions),
        virtualSlot(&IVersionRequest::queryVersions),
        virtualSlot(static_cast<ByKey>(&IVersionRequest::queryVersion)),
        virtualSlot(static_cast<ByFields>(&IVersionRequest::queryVersion)),
        virtualSlot(&IVersionRequest::queryNewestVersion),
        virtualSlot(&IVersionRequest::uploadVersion),
        virtualSlot(&IVersionRequest::getCurVersion),
        virtualSlot(&IVersionRequest::requestReleaseHistory),
        virtualSlot(&IVersionRequest::queryReleaseHistory),
        virtualSlot(&IVersionRequest::getReleaseHistory),
        virtualSlot(&IVersionRequest::requestReleaseHistoryFromHttp),
        virtualSlot(&IVersionRequest::requestVersionFromHttp),
        virtualSlot(&IVersionRequest::registerNewestVersionNotify),
        virtualSlot(&IVersionRequest::registerVersionRequestNotify),
    };
    std::vector<size_t> expected(slots.size());
    std::iota(expected.begin(), expected.end(), size_t{2});
    EXPECT_EQ(slots, expected);
}
