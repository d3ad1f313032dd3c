// Stores in directories of uncommon names, and packages that are read-only or in use.
#include "UncommonPlaces.h"

#include "FileKinds.h"
#include "Public/Base/File.h"
#include "StoreScanFixture.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using support::UncommonPlace;

namespace {

class StoreElsewhere : public testing::TestWithParam<UncommonPlace> {
protected:
    std::string path(const std::string& relative) const { return mStore + "/" + relative; }
    VersionSet scan() const {
        VersionSet found;
        EXPECT_EQ(OrvVersion::parseVersionFromCache(nullptr, mStore, found, nullptr).errorCode(), 0);
        return found;
    }

    support::TempDir mDir;
    const std::string mStore = mDir.path() + GetParam().path;
};

}  // namespace

TEST_P(StoreElsewhere, ItsPackagesAreFound) {
    support::makePackage({}, mDir.path() + "/made.exe");
    for (const char* place : {"Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe", "Manual/Windows x64 All/新/包.exe"}) {
        ASSERT_TRUE(File::makeDirectory(path(place).substr(0, path(place).rfind('/'))));
        ASSERT_TRUE(File::copy(mDir.path() + "/made.exe", path(place)));
    }
    std::set<std::string> files;
    for (const auto& entry : scan()) {
        EXPECT_EQ(entry->getVersion().toString(), "1.11.0.8");
        files.insert(entry->getPackageFile());
    }
    EXPECT_EQ(files, (std::set<std::string>{path("Online/Windows x64 Client/1.11.0.8/1.11.0.8.exe"),
                                            path("Manual/Windows x64 All/新/包.exe")}));
}

TEST_P(StoreElsewhere, APackageIsWrittenIntoIt) {
    OrvVersion version(nullptr, mStore, "");
    version.setVersion("1.11.0.8");
    version.setSystemType(Public::Base::SystemType_Windows);
    version.setSystemBits(Public::Base::SystemBits_64);
    version.setVersionType(VersionType_Client);
    version.setVersionSource(VersionSource_Manual);
    ASSERT_TRUE(File::makeDirectory(path("Manual/Windows x64 Client/1.11.0.8")));
    EXPECT_EQ(version.saveVersion("content").errorCode(), 0);
    EXPECT_EQ(support::readText(path("Manual/Windows x64 Client/1.11.0.8/1.11.0.8.exe")), "content");
}

INSTANTIATE_TEST_SUITE_P(Places, StoreElsewhere, testing::ValuesIn(support::uncommonPlaces()), support::nameOfPlace);

TEST_F(StoreScan, FindsAReadOnlyPackage) {
    const support::ReadOnlyFile readOnly(mStore.put(sPlace));
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, FindsAPackageThatSomebodyReads) {
    const support::KeptFile kept(mStore.put(sPlace));
    EXPECT_TRUE(only());
}

TEST_F(StoreScan, FindsAPackageOnceItCanBeOpened) {
    const std::string path = mStore.put(sPlace);
    {
        const support::WithheldFile withheld(path);
        EXPECT_TRUE(mStore.scan().empty());
    }
    EXPECT_TRUE(only());
}
