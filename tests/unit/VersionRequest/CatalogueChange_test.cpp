// Changes of the catalogue.
#include "CatalogueFixture.h"
#include "Received.h"

using namespace Tarnwick::OrvUpdate;
using support::entry;
using support::EntrySpec;
using Texts = std::vector<std::string>;

namespace {

class CatalogueChange : public Catalogue {};

}  // namespace

TEST_F(CatalogueChange, AddInserts) {
    const ErrorInfo result = mRequest->addVersion(entry("1.0"));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(texts(), Texts{"1.0"});
}

TEST_F(CatalogueChange, AddOfAnEquivalentEntryKeepsTheFirstUrl) {
    EntrySpec spec;
    spec.url = "http://first";
    add(spec);
    spec.url = "http://second";
    add(spec);
    ASSERT_EQ(mRequest->getVersions().size(), 1U);
    EXPECT_EQ((*mRequest->getVersions().begin())->getUrl(), "http://first");
}

TEST_F(CatalogueChange, AddOfAnEquivalentEntryKeepsTheFirstPosition) {
    add("1.0", 1);
    add("1.0", 2);
    ASSERT_EQ(mRequest->getVersions().size(), 1U);
    EXPECT_EQ((*mRequest->getVersions().begin())->getStoragePosition(), 1);
}

TEST_F(CatalogueChange, AddOfASetInsertsEachAndKeepsWhatIsThere) {
    const auto known = add("1.0", 1);
    EXPECT_EQ(mRequest->addVersions({entry("1.0", 2), entry("2.0", 2)}).errorCode(), 0);
    EXPECT_EQ(texts(), (Texts{"1.0", "2.0"}));
    EXPECT_EQ(*mRequest->getVersions().begin(), known);
}

TEST_F(CatalogueChange, NothingIsNoEntry) {
    EXPECT_EQ(mRequest->addVersion(nullptr).errorCode(), 0);
    EXPECT_EQ(mRequest->addVersions({nullptr}).errorCode(), 0);
    EXPECT_EQ(mRequest->updateVersions({nullptr}, StoragePosition_Cloud).errorCode(), 0);
    EXPECT_EQ(mRequest->removeVersions({nullptr}, StoragePosition_Cloud).errorCode(), 0);
    EXPECT_TRUE(mRequest->getVersions().empty());
}

TEST_F(CatalogueChange, UpdateTakesTheSecondUrl) {
    EntrySpec spec;
    spec.url = "http://first";
    add(spec);
    spec.url = "http://second";
    EXPECT_EQ(mRequest->updateVersions({entry(spec)}, StoragePosition_Cloud).errorCode(), 0);
    ASSERT_EQ(mRequest->getVersions().size(), 1U);
    EXPECT_EQ((*mRequest->getVersions().begin())->getUrl(), "http://second");
}

TEST_F(CatalogueChange, UpdateReplacesAnEquivalentEntryOfAnotherPosition) {
    add("1.0", 1);
    const auto fresh = entry("1.0", 2);
    mRequest->updateVersions({fresh}, StoragePosition_Cloud);
    ASSERT_EQ(mRequest->getVersions().size(), 1U);
    EXPECT_EQ(*mRequest->getVersions().begin(), fresh);
}

TEST_F(CatalogueChange, UpdateRemovesThePositionsOldEntries) {
    add("1.0", 2);
    add("2.0", 2);
    mRequest->updateVersions({entry("3.0", 2)}, StoragePosition_Cloud);
    EXPECT_EQ(texts(), Texts{"3.0"});
}

TEST_F(CatalogueChange, UpdateWithNothingRemovesThePositionOnly) {
    add("1.0", 1);
    add("2.0", 2);
    add("3.0", 3);
    EXPECT_EQ(mRequest->updateVersions({}, StoragePosition_Cloud).errorCode(), 0);
    EXPECT_EQ(texts(), (Texts{"1.0", "3.0"}));
}

TEST_F(CatalogueChange, UpdateLeavesOtherPositionsAlone) {
    add("1.0", 1);
    add("3.0", 3);
    mRequest->updateVersions({entry("2.0", 2)}, StoragePosition_Cloud);
    EXPECT_EQ(texts(), (Texts{"1.0", "2.0", "3.0"}));
}

TEST_F(CatalogueChange, UpdateInsertsEntriesWhateverTheirOwnPosition) {
    mRequest->updateVersions({entry("2.0", 3)}, StoragePosition_Cloud);
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CatalogueChange, UpdateMayTakeTheCataloguesOwnEntries) {
    add("1.0", 2);
    add("2.0", 2);
    const auto own = mRequest->getVersions();
    mRequest->updateVersions(own, StoragePosition_Cloud);
    EXPECT_EQ(mRequest->getVersions(), own);
}

TEST_F(CatalogueChange, RemoveOfASetErasesEquivalentEntriesOfThePosition) {
    add("1.0", 3);
    add("2.0", 3);
    EXPECT_EQ(mRequest->removeVersions({entry("1.0", 2)}, StoragePosition_Node).errorCode(), 0);
    EXPECT_EQ(texts(), Texts{"2.0"});
}

TEST_F(CatalogueChange, RemoveOfASetLeavesAnEquivalentEntryOfAnotherPosition) {
    add("1.0", 1);
    mRequest->removeVersions({entry("1.0", 3)}, StoragePosition_Node);
    EXPECT_EQ(texts(), Texts{"1.0"});
}

TEST_F(CatalogueChange, RemoveOfASetOverlooksUnknownEntries) {
    add("1.0", 3);
    EXPECT_EQ(mRequest->removeVersions({entry("9.0", 3)}, StoragePosition_Node).errorCode(), 0);
    EXPECT_EQ(texts(), Texts{"1.0"});
}

TEST_F(CatalogueChange, RemoveKeepsWhatLiesOnThisDisk) {
    add("1.0", 1);
    add("2.0", 2);
    add("3.0", 3);
    add("4.0", 0);
    EXPECT_EQ(mRequest->removeVersions().errorCode(), 0);
    EXPECT_EQ(texts(), Texts{"1.0"});
}

TEST_F(CatalogueChange, RemoveOnACatalogueOfLocalEntriesChangesNothing) {
    add("1.0", 1);
    add("2.0", 1);
    const auto before = mRequest->getVersions();
    mRequest->removeVersions();
    EXPECT_EQ(mRequest->getVersions(), before);
}

namespace {

/// An entry whose end looks into the catalogue, as the end of a transfer may.
class EntryWithAnEnd : public support::ProjectVersion {
public:
    EntryWithAnEnd(VersionRequest& request, std::atomic<int>& ends)
        : ProjectVersion(0), mRequest(request), mEnds(ends) {
        setVersion("1.0");
        setStoragePosition(StoragePosition_Cloud);
    }
    ~EntryWithAnEnd() override {
        mRequest.getVersions();
        ++mEnds;
    }

private:
    VersionRequest& mRequest;
    std::atomic<int>& mEnds;
};

}  // namespace

TEST_F(CatalogueChange, RemovedEntriesEndWithoutTheCataloguesLock) {
    std::atomic<int> ends{0};
    const auto addOne = [&] { mRequest->addVersion(std::make_shared<EntryWithAnEnd>(*mRequest, ends)); };
    addOne();
    mRequest->removeVersions();
    EXPECT_EQ(ends, 1);
    addOne();
    mRequest->updateVersions({}, StoragePosition_Cloud);
    EXPECT_EQ(ends, 2);
    addOne();
    const auto equivalent = std::make_shared<support::ProjectVersion>(0);
    equivalent->setVersion("1.0");
    mRequest->removeVersions({equivalent}, StoragePosition_Cloud);
    EXPECT_EQ(ends, 3);
    addOne();
    mRequest->updateVersions({equivalent}, StoragePosition_Node);
    EXPECT_EQ(ends, 4);
}

TEST_F(CatalogueChange, ManyThreadsMayReadAndWrite) {
    std::vector<std::thread> threads;
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number] {
            for (int round = 0; round < 50; ++round) {
                const auto position = static_cast<StoragePosition>(1 + number % 3);
                mRequest->updateVersions({entry(("1." + std::to_string(round)).c_str(), position)}, position);
                mRequest->addVersion(entry("2.0", position));
                query({1, 64, 0, 1, 1});
                newest({}, "1.0");
                if (round % 10 == 0) mRequest->removeVersions();
            }
        });
    }
    for (auto& thread : threads) thread.join();
    mRequest->updateVersions({entry("3.0")}, StoragePosition_Cloud);
    EXPECT_EQ(newest({}, "1.0")->getVersion().toString(), "3.0");
}
