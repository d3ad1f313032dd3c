// What programs built against an older library rely on: places in virtual tables and numbers of enumerators.
#include <numeric>

#include "IBackup.h"
#include "IDownload.h"
#include "IInstaller.h"
#include "IVersion.h"
#include "OrvVersion/ReleaseHistory.h"
#include "VirtualSlot.h"

using namespace Tarnwick::OrvUpdate;
using namespace Public::Base;
using support::virtualSlot;

namespace {

using Slots = std::vector<size_t>;

/// The places from 2 on, behind the destructor.
Slots inOrder(size_t count) {
    Slots slots(count);
    std::iota(slots.begin(), slots.end(), size_t{2});
    return slots;
}

}  // namespace

TEST(InterfaceOrder, OfVersions) {
    using ByRequest = std::shared_ptr<IDownload> (IVersion::*)(const std::shared_ptr<IVersionRequest>&);
    using ByConnection = std::shared_ptr<IDownload> (IVersion::*)(const std::shared_ptr<IGetConnection>&);
    const Slots slots{
        virtualSlot(&IVersion::operator<),
        virtualSlot(&IVersion::getSystemType),
        virtualSlot(&IVersion::getSystemBits),
        virtualSlot(&IVersion::getProjectType),
        virtualSlot(&IVersion::getVersionType),
        virtualSlot(&IVersion::getVersionSource),
        virtualSlot(&IVersion::getStoragePosition),
        virtualSlot(&IVersion::getDescribe),
        virtualSlot(&IVersion::getVersion),
        virtualSlot(&IVersion::getChangeLog),
        virtualSlot(&IVersion::getFileSize),
        virtualSlot(&IVersion::getPackageFile),
        virtualSlot(static_cast<ByRequest>(&IVersion::getDownload)),
        virtualSlot(static_cast<ByConnection>(&IVersion::getDownload)),
        virtualSlot(&IVersion::buildVersionInfo),
        virtualSlot(&IVersion::setSystemType),
        virtualSlot(&IVersion::setVersionType),
        virtualSlot(&IVersion::setVersionSource),
        virtualSlot(&IVersion::setSystemBits),
        virtualSlot(&IVersion::setStoragePosition),
        virtualSlot(&IVersion::setProjectType),
        virtualSlot(&IVersion::setDescribe),
        virtualSlot(&IVersion::setVersion),
        virtualSlot(&IVersion::setChangeLog),
        virtualSlot(&IVersion::setFileSize),
        virtualSlot(&IVersion::setLocalFileName),
        virtualSlot(&IVersion::saveVersion),
        virtualSlot(&IVersion::getServerid),
        virtualSlot(&IVersion::getUrl),
    };
    EXPECT_EQ(slots, inOrder(29));
}

TEST(InterfaceOrder, OfReleaseNotes) {
    const Slots slots{
        virtualSlot(&IReleaseHistory::operator<),       virtualSlot(&IReleaseHistory::getSystemType),
        virtualSlot(&IReleaseHistory::getSystemBits),   virtualSlot(&IReleaseHistory::getProjectType),
        virtualSlot(&IReleaseHistory::getVersionType),  virtualSlot(&IReleaseHistory::getVersion),
        virtualSlot(&IReleaseHistory::getUpdateTime),   virtualSlot(&IReleaseHistory::getVersionInfo),
        virtualSlot(&IReleaseHistory::getDisplayIndex), virtualSlot(&ReleaseHistory::buildReleaseHistoryInfo),
        virtualSlot(&ReleaseHistory::setSystemType),    virtualSlot(&ReleaseHistory::setSystemBits),
        virtualSlot(&ReleaseHistory::setProjectType),   virtualSlot(&ReleaseHistory::setVersionType),
        virtualSlot(&ReleaseHistory::setDisplayIndex),
    };
    EXPECT_EQ(slots, inOrder(15));
}

TEST(InterfaceOrder, OfTransfers) {
    using WithKey = ErrorInfo (IDownload::*)(const Function<void()>&, void*);
    using WithoutKey = ErrorInfo (IDownload::*)(const Function<void()>&);
    const Slots slots{
        virtualSlot(static_cast<WithKey>(&IDownload::start)),
        virtualSlot(static_cast<WithoutKey>(&IDownload::start)),
        virtualSlot(&IDownload::stop),
        virtualSlot(&IDownload::cancel),
        virtualSlot(&IDownload::getProgress),
        virtualSlot(&IDownload::getFileName),
        virtualSlot(&IDownload::getError),
        virtualSlot(&IDownload::finish),
    };
    EXPECT_EQ(slots, inOrder(8));
}

TEST(InterfaceOrder, OfInstallers) {
    const Slots slots{
        virtualSlot(&IInstaller::start),       virtualSlot(&IInstaller::stop),   virtualSlot(&IInstaller::cancel),
        virtualSlot(&IInstaller::getProgress), virtualSlot(&IInstaller::finish), virtualSlot(&IInstaller::getError),
    };
    EXPECT_EQ(slots, inOrder(6));
}

TEST(InterfaceOrder, OfBackups) {
    using Walk = ErrorInfo (IBackup::*)(const std::string&, const IBackup::FileCallback&);
    using ByName = ErrorInfo (IBackup::*)(const std::string&, const std::string&);
    const Slots slots{
        virtualSlot(static_cast<Walk>(&IBackup::backup)),
        virtualSlot(static_cast<ByName>(&IBackup::backup)),
        virtualSlot(static_cast<Walk>(&IBackup::restore)),
        virtualSlot(static_cast<ByName>(&IBackup::restore)),
        virtualSlot(&IBackup::clear),
    };
    EXPECT_EQ(slots, inOrder(5));
}

TEST(Enumerations, HaveTheirNumbers) {
    EXPECT_EQ((std::vector<int>{SystemType_Unknown, SystemType_Windows, SystemType_Linux, SystemType_Mac,
                                SystemType_Android, SystemType_IOS}),
              (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ((std::vector<int>{SystemBits_Unknown, SystemBits_32, SystemBits_64}), (std::vector<int>{0, 32, 64}));
    EXPECT_EQ((std::vector<int>{VersionType_Unknown, VersionType_All, VersionType_Client, VersionType_Server,
                                VersionType_VideoWall, VersionType_Analytics}),
              (std::vector<int>{0, 1, 2, 3, 4, 5}));
    EXPECT_EQ((std::vector<int>{VersionSource_Unknown, VersionSource_Online, VersionSource_Manual}),
              (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(
        (std::vector<int>{StoragePosition_None, StoragePosition_Local, StoragePosition_Cloud, StoragePosition_Node}),
        (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(static_cast<int>(ProjectType_Unknown), 0);
}
