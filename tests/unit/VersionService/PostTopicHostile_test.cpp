// What a lying peer may push: it gets an error or a package that nobody installs, and touches nothing but the store.
#include <ostream>

#include "OrvVersion.h"
#include "PackageStore.h"
#include "PostTopicFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

struct Lie {
    const char* name;
    std::string document;
};
void PrintTo(const Lie& one, std::ostream* out) { *out << one.name; }

std::string documentWith(const std::string& key, const std::string& value) {
    std::string text = postDocument("2.0.0.0");
    const size_t at = text.find("\"" + key + "\":") + key.size() + 3;
    const size_t end = std::min(text.find(',', at), text.size() - 1);
    return text.replace(at, end - at, value);
}

class PostTopicHostile : public PostTopicFixture {
protected:
    void SetUp() override { ASSERT_FALSE(startAt(*mRequest, "1.0.0.0", store())); }
    /// Inside a directory of the test's own, so that a file beside the store is seen.
    std::string store() const { return mStore.path("deep/store"); }
    std::set<std::string> filesOutside() const {
        std::set<std::string> files;
        for (const auto& file : support::filesBelow(mStore.path())) {
            if (!file.starts_with("deep/store/")) files.insert(file);
        }
        return files;
    }
};

class PostTopicLie : public PostTopicHostile, public testing::WithParamInterface<Lie> {};

}  // namespace

TEST_P(PostTopicLie, WritesNothingOutsideTheStore) {
    auto info = chunk("abcd", 0, 4);
    info.versionInfo = GetParam().document;
    const int code = post(info);
    EXPECT_EQ(filesOutside(), std::set<std::string>());
    if (code != 0) {
        EXPECT_EQ(support::filesBelow(store()), std::set<std::string>());
    }
    EXPECT_EQ(mRequest->getVersions().size(), code == 0 ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Document, PostTopicLie,
    testing::Values(Lie{"VersionThatClimbs", documentWith("softversion", R"("../../../evil")")},
                    Lie{"VersionThatClimbsWithBackslashes", documentWith("softversion", R"("..\\..\\..\\evil")")},
                    Lie{"VersionWithARoot", documentWith("softversion", R"("/tmp/evil")")},
                    Lie{"VersionWithADrive", documentWith("softversion", R"("C:\\evil")")},
                    Lie{"RevisionThatClimbs", documentWith("softversion", R"("1.0-r../../../evil")")},
                    Lie{"VersionWithAZeroByte", documentWith("softversion", R"("1.0\u0000/../../evil")")},
                    Lie{"SystemBeyondTheWords", documentWith("systemType", "99")},
                    Lie{"SystemBelowTheWords", documentWith("systemType", "-1")},
                    Lie{"SystemInWords", documentWith("systemType", R"("../../../evil")")},
                    Lie{"WordSizeBeyondTheWords", documentWith("systemBits", "4096")},
                    Lie{"TypeBeyondTheWords", documentWith("versionType", "2147483647")},
                    Lie{"SourceBeyondTheWords", documentWith("versionSource", "-2147483648")},
                    Lie{"ServerIdThatClimbs", documentWith("serverid", R"("../../../evil")")},
                    Lie{"MembersOfOtherKinds", documentWith("softversion", R"(["../../evil"])")}),
    [](const auto& row) { return std::string(row.param.name); });

TEST_F(PostTopicHostile, TextThatIsNoVersionAnswersMinus301) {
    for (const char* version : {"", "words", "1.2.3.4.5", "../../evil", "1.0/2.0"}) {
        auto info = chunk("abcd", 0, 4);
        info.versionInfo = postDocument(version);
        EXPECT_EQ(post(info), -301) << version;
    }
    EXPECT_EQ(support::filesBelow(mStore.path()), std::set<std::string>());
}

TEST_F(PostTopicHostile, ChunkBehindTheEndOfItsPackageIsRefusedAndMakesNoFile) {
    EXPECT_EQ(post(chunk("abcd", 0xFFFFFFF0, 10)), -1);
    EXPECT_EQ(post(chunk("abcd", 11, 10)), -1);
    EXPECT_EQ(post(chunk("abcd", 1, 0)), -1);
    EXPECT_TRUE(mLog.has(2, "version write fail! errcode:-1"));
    EXPECT_EQ(support::filesBelow(mStore.path()), std::set<std::string>());
}

TEST_F(PostTopicHostile, ChunkBehindTheEndLeavesALocalPackageWhole) {
    const std::string package = mStore.putText("deep/store/" + packageOf("2.0.0.0"), "what was there");
    mRequest->addVersion(support::entry("2.0.0.0", 1));
    EXPECT_EQ(post(chunk("abcd", 0xFFFFFFF0, 10)), -1);
    EXPECT_NE(entryAt(), nullptr);
    EXPECT_EQ(support::readText(package), "what was there");
}

TEST_F(PostTopicHostile, ChunkBehindTheEndLeavesARunningTransferAsItWas) {
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    EXPECT_EQ(post(chunk("xxxx", 0xFFFFFFF0, 8)), -1);
    EXPECT_EQ(post(chunk("efgh", 4, 8)), 0);
    EXPECT_EQ(support::readText(store() + "/" + packageOf("2.0.0.0")), "abcdefgh");
}

TEST_F(PostTopicHostile, EmptyChunkAtTheEndFinishes) {
    EXPECT_EQ(post(chunk("abcd", 0, 8)), 0);
    EXPECT_EQ(post(chunk("efgh", 4, 9)), 0);
    EXPECT_EQ(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("", 8, 8)), 0);
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopicHostile, SizeThatShrinksUnderWayFinishesEarlyWithAPackageThatTheTestRefuses) {
    support::PackageSpec spec;
    spec.version = "2.0.0.0";
    support::TempDir workshop;
    const std::string whole = *support::readText(support::makePackage(spec, workshop.path() + "/p.exe"));
    const std::string half = whole.substr(0, whole.size() / 2);
    EXPECT_EQ(post(chunk(half, 0, static_cast<uint32_t>(whole.size()))), 0);
    EXPECT_EQ(post(chunk("x", 8, 9)), 0);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(entryAt()->getPackageFile()));
}

TEST_F(PostTopicHostile, SizeThatGrowsUnderWayPutsTheEndOff) {
    EXPECT_EQ(post(chunk("abcd", 0, 6)), 0);
    EXPECT_EQ(post(chunk("ef", 4, 8)), 0);
    EXPECT_EQ(entryAt(), nullptr);
    EXPECT_EQ(post(chunk("gh", 6, 8)), 0);
    EXPECT_NE(entryAt(), nullptr);
}

TEST_F(PostTopicHostile, EndOfALongerPackageUnderATransferThatBeginsInTheMiddleIsRefusedByTheTest) {
    support::TempDir workshop;
    const std::string whole = *support::readText(support::makePackage({}, workshop.path() + "/p.exe"));
    mStore.putText("deep/store/" + packageOf("2.0.0.0"), whole + "the end of a longer one");
    const auto size = static_cast<uint32_t>(whole.size());
    EXPECT_EQ(post(chunk(whole.substr(1), 1, size)), 0);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(entryAt()->getPackageFile()));
}
