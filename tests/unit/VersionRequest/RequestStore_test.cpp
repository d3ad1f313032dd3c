// What the first start of a process makes of the store.
#include "RequestFrameFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::versionTexts;
using Texts = std::vector<std::string>;

namespace {

class RequestStore : public RequestFrame {};

}  // namespace

// --- The store

TEST_F(RequestStore, FirstStartListsThePackagesOnDisk) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0"}, "5.0"), (Texts{"1.0.0.0", "2.0.0.0"}));
}

TEST_F(RequestStore, EntriesOfTheStoreAreLocal) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    ASSERT_EQ(request->getVersions().size(), 1U);
    EXPECT_EQ((*request->getVersions().begin())->getStoragePosition(), StoragePosition_Local);
}

TEST_F(RequestStore, LosesTheOldestOfThree) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_FALSE(packageIsThere("1.0.0.0"));
    EXPECT_TRUE(packageIsThere("2.0.0.0"));
    EXPECT_TRUE(packageIsThere("3.0.0.0"));
}

TEST_F(RequestStore, LosesTheNextOldestWhenTheOldestRuns) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "1.0.0.0"), (Texts{"1.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("1.0.0.0"));
    EXPECT_FALSE(packageIsThere("2.0.0.0"));
}

TEST_F(RequestStore, LosesTheOldestWhenTheNewestRuns) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "3.0.0.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
}

TEST_F(RequestStore, KeepsTwoWhateverTheirNumbers) {
    EXPECT_EQ(startedOn({"0.0.0.1", "0.0.0.2"}, "9.0"), (Texts{"0.0.0.1", "0.0.0.2"}));
    EXPECT_TRUE(packageIsThere("0.0.0.1"));
}

TEST_F(RequestStore, KeepsOne) { EXPECT_EQ(startedOn({"0.0.0.1"}, "9.0"), Texts{"0.0.0.1"}); }

TEST_F(RequestStore, KeepsTheNewestTwoOfFive) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0", "4.0.0.0", "5.0.0.0"}, "9.0"), (Texts{"4.0.0.0", "5.0.0.0"}));
    EXPECT_FALSE(packageIsThere("3.0.0.0"));
}

TEST_F(RequestStore, KeepsTheRunningOneAndTheNewestOfFive) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0", "4.0.0.0", "5.0.0.0"}, "2.0.0.0"),
              (Texts{"2.0.0.0", "5.0.0.0"}));
}

TEST_F(RequestStore, RunningVersionIsKnownByItsNumbersNotItsText) {
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "1.0"), (Texts{"1.0.0.0", "3.0.0.0"}));
}

TEST_F(RequestStore, RemovesTheDirectoryOfAVersionWithAllThatItHolds) {
    mStore.putText("Online/Windows x64 All/1.0.0.0/notes/readme.txt", "text");
    startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0");
    EXPECT_FALSE(std::filesystem::exists(mStore.path("Online/Windows x64 All/1.0.0.0")));
    EXPECT_TRUE(std::filesystem::exists(mStore.path("Online/Windows x64 All")));
}

TEST_F(RequestStore, CountsPackagesOfAllSourcesTogether) {
    mStore.put(packageOf("1.0.0.0", "Manual"), "1.0.0.0");
    EXPECT_EQ(startedOn({"2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_FALSE(std::filesystem::exists(mStore.path(packageOf("1.0.0.0", "Manual"))));
}

TEST_F(RequestStore, RunningPackageStaysWhenAnOlderOneLiesInItsDirectory) {
    const std::string older = mStore.put("Online/Windows x64 All/2.0.0.0/old.exe", "1.0.0.0");
    EXPECT_EQ(startedOn({"2.0.0.0", "3.0.0.0"}, "2.0.0.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("2.0.0.0"));
    EXPECT_FALSE(std::filesystem::exists(older));
}

TEST_F(RequestStore, FilesThatAreNoPackagesAreNeitherListedNorRemoved) {
    mStore.putText(packageOf("0.5.0.0"), "no package");
    EXPECT_EQ(startedOn({"1.0.0.0", "2.0.0.0", "3.0.0.0"}, "9.0"), (Texts{"2.0.0.0", "3.0.0.0"}));
    EXPECT_TRUE(packageIsThere("0.5.0.0"));
}

TEST_F(RequestStore, SecondRequestOfTheProcessGetsTheSameEntries) {
    fillStore({"1.0.0.0", "2.0.0.0"});
    const auto first = makeRequest(makeServer("a"));
    const auto second = makeRequest(makeServer("b"));
    startAt(*first);
    startAt(*second);
    EXPECT_EQ(first->getVersions().size(), 2U);
    EXPECT_EQ(first->getVersions(), second->getVersions());
}

TEST_F(RequestStore, SecondRequestOfTheProcessDoesNotScanAStoreOfItsOwn) {
    fillStore({"1.0.0.0"});
    support::PackageStore other;
    other.put(packageOf("8.0.0.0"), "8.0.0.0");
    const auto first = makeRequest(makeServer("a"));
    const auto second = makeRequest(makeServer("b"));
    startAt(*first);
    startAt(*second, "1.0", other.path());
    EXPECT_EQ(versionTexts(second->getVersions()), Texts{"1.0.0.0"});
    EXPECT_EQ(second->getDownloadDir(), other.path());
}

TEST_F(RequestStore, IsScannedOnceAlsoWhenTheFirstStartFails) {
    const auto failing = makeRequest(std::shared_ptr<TWMQClient>());
    startAt(*failing);
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    EXPECT_TRUE(request->getVersions().empty());
}

TEST_F(RequestStore, IsNotScannedAgainAfterAStop) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    request->stop();
    fillStore({"2.0.0.0"});
    startAt(*request);
    EXPECT_EQ(versionTexts(request->getVersions()), Texts{"1.0.0.0"});
}

TEST_F(RequestStore, EntriesComeBackWithTheNextStart) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    startAt(*request);
    request->removeVersions(request->getVersions(), StoragePosition_Local);
    EXPECT_TRUE(request->getVersions().empty());
    request->stop();
    startAt(*request);
    EXPECT_EQ(versionTexts(request->getVersions()), Texts{"1.0.0.0"});
}

TEST_F(RequestStore, StartKeepsAnEquivalentEntryThatTheCatalogueHas) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer());
    const auto known = support::entry("1.0.0.0");
    request->addVersion(known);
    startAt(*request);
    ASSERT_EQ(request->getVersions().size(), 1U);
    EXPECT_EQ(*request->getVersions().begin(), known);
}

TEST_F(RequestStore, EntriesTellTheIdOfTheServerThatScanned) {
    fillStore({"1.0.0.0"});
    const auto request = makeRequest(makeServer("node-7"));
    startAt(*request);
    EXPECT_EQ((*request->getVersions().begin())->getServerid(), "node-7");
}

TEST_F(RequestStore, EntriesDoNotKeepTheRequestThatScanned) {
    fillStore({"1.0.0.0"});
    auto request = makeRequest(makeServer("node-7"));
    startAt(*request);
    const auto versions = request->getVersions();
    const std::weak_ptr<VersionRequest> watch = request;
    request.reset();
    EXPECT_TRUE(watch.expired());
    ASSERT_EQ(versions.size(), 1U);
    EXPECT_EQ((*versions.begin())->getServerid(), "");
}

TEST_F(RequestStore, RequestsThatStartAtOnceAllGetTheEntries) {
    fillStore({"1.0.0.0", "2.0.0.0"});
    std::vector<std::shared_ptr<VersionRequest>> requests;
    for (const char* id : {"a", "b", "c", "d"}) requests.push_back(makeRequest(makeServer(id)));
    std::vector<std::thread> threads;
    for (const auto& request : requests) threads.emplace_back([&, request] { startAt(*request); });
    for (auto& thread : threads) thread.join();
    for (const auto& request : requests) EXPECT_EQ(versionTexts(request->getVersions()), (Texts{"1.0.0.0", "2.0.0.0"}));
}
