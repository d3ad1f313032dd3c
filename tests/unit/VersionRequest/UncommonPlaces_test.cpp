// The store that a process starts on, in directories of uncommon names, and with packages that are in use.
#include "UncommonPlaces.h"

#include "FileKinds.h"
#include "Public/Base/File.h"
#include "RequestFrameFixture.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using support::versionTexts;
using Texts = std::vector<std::string>;

namespace {

class RequestElsewhere : public RequestFrame, public testing::WithParamInterface<support::UncommonPlace> {};
class HeldStore : public RequestFrame {};

}  // namespace

TEST_P(RequestElsewhere, ListsTheStoreAndPrunesIt) {
    const std::string store = mStore.path() + GetParam().path;
    for (const std::string version : {"1.0.0.0", "2.0.0.0", "3.0.0.0"}) {
        const std::string place = store + "/" + packageOf(version);
        ASSERT_TRUE(File::makeDirectory(place.substr(0, place.rfind('/'))));
        ASSERT_TRUE(File::copy(mStore.put("made/" + version + ".exe", version), place));
    }
    const auto request = makeRequest(makeServer());
    EXPECT_EQ(request->start(Version("9.0", 0), {}, {}, store).errorCode(), 0);
    EXPECT_EQ(versionTexts(request->getVersions()), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(File::isAbsent(store + "/" + packageOf("1.0.0.0")));
    EXPECT_FALSE(File::isAbsent(store + "/" + packageOf("2.0.0.0")));
}

INSTANTIATE_TEST_SUITE_P(Places, RequestElsewhere, testing::ValuesIn(support::uncommonPlaces()), support::nameOfPlace);

TEST_F(HeldStore, LosesAReadOnlyPackageToo) {
    fillStore({"1.0.0.0", "2.0.0.0", "3.0.0.0"});
    support::makeReadOnly(mStore.path(packageOf("1.0.0.0")));
    EXPECT_EQ(startedOn({}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_FALSE(packageIsThere("1.0.0.0"));
}

TEST_F(HeldStore, StartsAlsoWhereAnOldPackageCannotBeRemoved) {
    fillStore({"1.0.0.0", "2.0.0.0", "3.0.0.0"});
    const support::KeptFile kept(mStore.path(packageOf("1.0.0.0")));
    EXPECT_EQ(startedOn({}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("1.0.0.0"));
    EXPECT_TRUE(packageIsThere("3.0.0.0"));
}
