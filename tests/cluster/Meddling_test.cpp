// Runs in which something is done that must not be: each is found, and tells how to have it again.
#include <gtest/gtest.h>

#include "FileText.h"
#include "PackageStore.h"
#include "Packages.h"
#include "Run.h"
#include "TempDir.h"
#include "VersionRequest.h"

namespace {

using namespace cluster;

constexpr uint64_t kSeed = 4;

std::string violationsOf(const std::function<void(Cluster&)>& meddle) {
    const auto report = run(kSeed, Pace::Steps, meddle);
    std::string all;
    for (const auto& violation : report.violations) all += violation + "\n";
    if (!all.empty()) {
        EXPECT_NE(report.text().find("again: ./dev soak 1 " + std::to_string(kSeed)), std::string::npos);
    }
    return all;
}

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(MeddledRun, IsFineWhenNothingIsDone) { EXPECT_EQ(violationsOf({}), ""); }

TEST(MeddledRun, ShowsAPackageWithAnotherByte) {
    const auto found = violationsOf([](Cluster& cluster) {
        const auto store = cluster.machine().storeOf("server0");
        putPackage(packages().front(), store);
        support::flipMiddleByte(store + "/" + placeOf(packages().front().version));
    });
    EXPECT_TRUE(contains(found, "passes for a sound package, but is another")) << found;
}

TEST(MeddledRun, ShowsAFileOutsideOfTheStores) {
    const auto found =
        violationsOf([](Cluster& cluster) { support::writeText(cluster.machine().root() + "/drive/stray", "x"); });
    EXPECT_TRUE(contains(found, "drive/stray was written outside of the stores")) << found;
}

TEST(MeddledRun, ShowsAFileBesideTheProgram) {
    const auto found =
        violationsOf([](Cluster& cluster) { support::writeText(cluster.machine().programDir() + "/stray", "x"); });
    EXPECT_TRUE(contains(found, "stray was written outside of the stores")) << found;
}

TEST(MeddledRun, ShowsAFileLeftOpen) {
    const support::TempDir dir;
    support::writeText(dir.path() + "/a", "x");
    std::ifstream file;
    const auto found = violationsOf([&](Cluster&) { file.open(dir.path() + "/a"); });
    EXPECT_TRUE(contains(found, "1 files are left open")) << found;
}

TEST(MeddledRun, ShowsAnEngineThatIsKept) {
    std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest> kept;
    const auto found = violationsOf([&kept](Cluster& cluster) { kept = cluster.nodes().front()->request(); });
    EXPECT_TRUE(contains(found, "server0's VersionRequest is still there after its node has ended")) << found;
}

TEST(MeddledRun, ShowsACallbackThatIsKept) {
    std::shared_ptr<Activity> kept;
    const auto found = violationsOf([&kept](Cluster& cluster) {
        kept = cluster.book().open("server0", "something", [](const Activity&) { return std::string(); });
    });
    EXPECT_TRUE(contains(found, "its callback is still kept after everything has ended")) << found;
}

TEST(MeddledRun, ShowsACallbackThatCameTwice) {
    const auto found = violationsOf([](Cluster& cluster) {
        const auto activity = cluster.book().open("server0", "something", [](const Activity& asked) {
            return asked.calls("done") > 1 ? std::string("twice") : std::string();
        });
        activity->called("done");
        activity->called("done");
    });
    EXPECT_TRUE(contains(found, "server0 something: twice")) << found;
}
