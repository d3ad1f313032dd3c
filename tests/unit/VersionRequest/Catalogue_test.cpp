// Queries and changes of the catalogue and of the release notes.
#include "CatalogueEntries.h"
#include "OrvVersion/ReleaseHistory.h"
#include "Received.h"
#include "RequestAccess.h"

using namespace Tarnwick::OrvUpdate;
using support::entry;
using support::EntrySpec;
using support::versionTexts;
using Texts = std::vector<std::string>;

namespace {

/// The five values of a filter, as numbers.
struct Query {
    int system = 0;
    int bits = 0;
    int project = 0;
    int type = 0;
    int source = 0;
};

class Catalogue : public testing::Test {
protected:
    VersionSet query(const Query& query) {
        return mRequest->queryVersions(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                       static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
                                       static_cast<VersionSource>(query.source));
    }
    std::shared_ptr<IVersion> find(const Query& query, const std::string& version) {
        return mRequest->queryVersion(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                      static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
                                      static_cast<VersionSource>(query.source), Version(version, 0));
    }
    std::shared_ptr<IVersion> newest(const Query& query, const std::string& than) {
        return mRequest->queryNewestVersion(static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
                                            static_cast<ProjectType>(query.project),
                                            static_cast<VersionType>(query.type),
                                            static_cast<VersionSource>(query.source), Version(than, 0));
    }
    static VersionSet filtered(const VersionSet& versions, const Query& query) {
        return VersionRequest::_queryVersions(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source));
    }
    static std::shared_ptr<IVersion> found(const VersionSet& versions, const Query& query, const std::string& version) {
        return VersionRequest::_queryVersion(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source), Version(version, 0));
    }
    static std::shared_ptr<IVersion> newestOf(const VersionSet& versions, const Query& query, const std::string& than) {
        return VersionRequest::_queryNewestVersion(
            versions, static_cast<SystemType>(query.system), static_cast<SystemBits>(query.bits),
            static_cast<ProjectType>(query.project), static_cast<VersionType>(query.type),
            static_cast<VersionSource>(query.source), Version(than, 0));
    }
    std::shared_ptr<IVersion> add(const EntrySpec& spec) {
        const auto version = entry(spec);
        mRequest->addVersion(version);
        return version;
    }
    std::shared_ptr<IVersion> add(const char* version, int position = 2) {
        EntrySpec spec;
        spec.version = version;
        spec.position = position;
        return add(spec);
    }
    Texts texts() { return versionTexts(mRequest->getVersions()); }

    const std::shared_ptr<VersionRequest> mRequest =
        std::make_shared<VersionRequest>(nullptr, std::shared_ptr<TWMQClient>(), VersionType_Client);
};

class CatalogueChange : public Catalogue {};
class CatalogueNewest : public Catalogue {};
class CatalogueLookup : public Catalogue {};

/// One entry against one filter.
struct FilterCase {
    const char* name;
    EntrySpec entry;
    Query query;
    bool passes;
};
void PrintTo(const FilterCase& one, std::ostream* out) { *out << one.name; }

EntrySpec with(int system, int bits, int project, int type, int source) {
    EntrySpec spec;
    spec.system = system;
    spec.bits = bits;
    spec.project = project;
    spec.type = type;
    spec.source = source;
    return spec;
}

class CatalogueFilter : public Catalogue, public testing::WithParamInterface<FilterCase> {};

}  // namespace

// --- The filter

TEST_P(CatalogueFilter, OfQueryVersions) {
    add(GetParam().entry);
    EXPECT_EQ(query(GetParam().query).size(), GetParam().passes ? 1U : 0U);
}

TEST_P(CatalogueFilter, OfTheQueryOnAGivenSet) {
    EXPECT_EQ(filtered({entry(GetParam().entry)}, GetParam().query).size(), GetParam().passes ? 1U : 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Table, CatalogueFilter,
    testing::Values(FilterCase{"AnySystem", with(2, 64, 0, 1, 1), {0, 64, 0, 0, 0}, true},
                    FilterCase{"SameSystem", with(2, 64, 0, 1, 1), {2, 0, 0, 0, 0}, true},
                    FilterCase{"OtherSystem", with(2, 64, 0, 1, 1), {1, 0, 0, 0, 0}, false},
                    FilterCase{"AnyBits", with(1, 32, 0, 1, 1), {1, 0, 0, 0, 0}, true},
                    FilterCase{"SameBits", with(1, 32, 0, 1, 1), {0, 32, 0, 0, 0}, true},
                    FilterCase{"OtherBits", with(1, 32, 0, 1, 1), {0, 64, 0, 0, 0}, false},
                    FilterCase{"AnyProject", with(1, 64, 3, 1, 1), {1, 0, 0, 0, 0}, true},
                    FilterCase{"SameProject", with(1, 64, 3, 1, 1), {0, 0, 3, 0, 0}, true},
                    FilterCase{"OtherProject", with(1, 64, 3, 1, 1), {0, 0, 4, 0, 0}, false},
                    FilterCase{"ProjectOfAnEntryWithoutOne", with(1, 64, 0, 1, 1), {0, 0, 4, 0, 0}, false},
                    FilterCase{"AnyType", with(1, 64, 0, 3, 1), {1, 0, 0, 0, 0}, true},
                    FilterCase{"TypeAllGivesEveryRole", with(1, 64, 0, 3, 1), {0, 0, 0, 1, 0}, true},
                    FilterCase{"SameType", with(1, 64, 0, 3, 1), {0, 0, 0, 3, 0}, true},
                    FilterCase{"EntryOfTypeAllServesARole", with(1, 64, 0, 1, 1), {0, 0, 0, 3, 0}, true},
                    FilterCase{"OtherType", with(1, 64, 0, 2, 1), {0, 0, 0, 3, 0}, false},
                    FilterCase{"UnknownTypeServesNoRole", with(1, 64, 0, 0, 1), {0, 0, 0, 3, 0}, false},
                    FilterCase{"AnySource", with(1, 64, 0, 1, 2), {1, 0, 0, 0, 0}, true},
                    FilterCase{"SameSource", with(1, 64, 0, 1, 2), {1, 0, 0, 0, 2}, true},
                    FilterCase{"OtherSource", with(1, 64, 0, 1, 2), {1, 0, 0, 0, 1}, false},
                    FilterCase{"SourceAloneDoesNotFilter", with(1, 64, 0, 1, 2), {0, 0, 0, 0, 1}, true},
                    FilterCase{"SourceFiltersBesideTypeAll", with(1, 64, 0, 1, 1), {0, 0, 0, 1, 2}, false},
                    FilterCase{"AllFiveAgree", with(2, 32, 5, 4, 2), {2, 32, 5, 4, 2}, true},
                    FilterCase{"OneOfFiveDiffers", with(2, 32, 5, 4, 2), {2, 32, 5, 4, 1}, false},
                    FilterCase{"AllZero", with(2, 32, 5, 4, 2), {}, true}),
    [](const auto& one) { return one.param.name; });

TEST_F(Catalogue, QueryOfNothingGivesAll) {
    add(with(1, 64, 0, 2, 1));
    add(with(2, 32, 0, 3, 2));
    EXPECT_EQ(query({}), mRequest->getVersions());
    EXPECT_EQ(query({}).size(), 2U);
}

TEST_F(Catalogue, QueryBySourceAloneGivesAll) {
    add(with(1, 64, 0, 1, 1));
    add(with(1, 64, 0, 1, 2));
    EXPECT_EQ(query({0, 0, 0, 0, 1}).size(), 2U);
    EXPECT_EQ(query({0, 0, 0, 0, 2}).size(), 2U);
    EXPECT_EQ(query({1, 0, 0, 0, 1}).size(), 1U);
}

TEST_F(Catalogue, QueryByRoleGivesThatRoleAndAll) {
    add(with(1, 64, 0, 1, 1));
    add(with(1, 64, 0, 2, 1));
    const auto server = add(with(1, 64, 0, 3, 1));
    const auto passed = query({0, 0, 0, 3, 0});
    EXPECT_EQ(passed.size(), 2U);
    EXPECT_TRUE(passed.contains(server));
}

TEST_F(Catalogue, QueryGivesTheVeryEntries) {
    const auto version = add(with(1, 64, 0, 2, 1));
    const auto passed = query({1, 64, 0, 2, 1});
    ASSERT_EQ(passed.size(), 1U);
    EXPECT_EQ(*passed.begin(), version);
}

TEST_F(Catalogue, QueryOfAnEmptyCatalogueIsEmpty) {
    EXPECT_TRUE(query({}).empty());
    EXPECT_TRUE(query({1, 64, 0, 1, 1}).empty());
}

TEST_F(Catalogue, GetVersionsIsACopy) {
    add("1.0");
    const auto copy = mRequest->getVersions();
    mRequest->removeVersions();
    EXPECT_EQ(copy.size(), 1U);
    EXPECT_TRUE(mRequest->getVersions().empty());
}

TEST_F(Catalogue, QueriesOnAGivenSetDoNotLookAtTheCatalogue) {
    add("1.0");
    EXPECT_TRUE(filtered({}, {}).empty());
    EXPECT_EQ(found({}, {}, "1.0"), nullptr);
    EXPECT_EQ(newestOf({}, {}, "0.1"), nullptr);
}

TEST_F(Catalogue, QueriesOnAGivenSetPassOverANullPointer) {
    const VersionSet set{nullptr, entry("1.0")};
    EXPECT_EQ(filtered(set, {1, 0, 0, 0, 0}).size(), 1U);
    EXPECT_TRUE(found(set, {}, "1.0"));
    EXPECT_TRUE(newestOf(set, {}, "0.1"));
}

// --- One entry

TEST_F(CatalogueLookup, FindsTheVersion) {
    add("1.0");
    const auto second = add("1.1");
    EXPECT_EQ(find({}, "1.1"), second);
}

TEST_F(CatalogueLookup, OfAnotherVersionIsNull) {
    add("1.0");
    EXPECT_EQ(find({}, "1.1"), nullptr);
}

TEST_F(CatalogueLookup, OfAnEmptyCatalogueIsNull) {
    EXPECT_EQ(find({}, "1.0"), nullptr);
    EXPECT_EQ(mRequest->queryVersion(entry("1.0")), nullptr);
}

TEST_F(CatalogueLookup, ComparesVersionsByValue) {
    const auto version = add("1.0");
    EXPECT_EQ(find({}, "1.0.0.0"), version);
}

TEST_F(CatalogueLookup, TellsEditionsApart) {
    add("1.0");
    EXPECT_EQ(find({}, "1.0-oem2"), nullptr);
}

TEST_F(CatalogueLookup, FiltersBySourceAlsoWhenAllElseIsZero) {
    add(with(1, 64, 0, 1, 2));
    EXPECT_EQ(find({0, 0, 0, 0, 1}, "1.0.0.0"), nullptr);
    EXPECT_TRUE(find({0, 0, 0, 0, 2}, "1.0.0.0"));
}

TEST_F(CatalogueLookup, AppliesTheWholeFilter) {
    add(with(2, 32, 5, 4, 2));
    EXPECT_TRUE(find({2, 32, 5, 4, 2}, "1.0.0.0"));
    EXPECT_EQ(find({1, 32, 5, 4, 2}, "1.0.0.0"), nullptr);
    EXPECT_EQ(find({2, 64, 5, 4, 2}, "1.0.0.0"), nullptr);
    EXPECT_EQ(find({2, 32, 6, 4, 2}, "1.0.0.0"), nullptr);
    EXPECT_EQ(find({2, 32, 5, 3, 2}, "1.0.0.0"), nullptr);
    EXPECT_EQ(find({2, 32, 5, 4, 1}, "1.0.0.0"), nullptr);
}

TEST_F(CatalogueLookup, GivesTheFirstInTheOrderOfTheSet) {
    const auto wide = add(with(1, 64, 0, 1, 1));
    const auto narrow = add(with(1, 32, 0, 1, 1));
    EXPECT_EQ(find({}, "1.0.0.0"), narrow);
    EXPECT_EQ(find({0, 64, 0, 0, 0}, "1.0.0.0"), wide);
}

TEST_F(CatalogueLookup, OnAGivenSetFindsToo) {
    const auto version = entry("1.1");
    EXPECT_EQ(found({entry("1.0"), version}, {1, 64, 0, 1, 1}, "1.1"), version);
    EXPECT_EQ(found({entry("1.0")}, {}, "1.1"), nullptr);
}

TEST_F(CatalogueLookup, ByKeyFindsTheEntry) {
    const auto version = add("1.1");
    EXPECT_EQ(mRequest->queryVersion(entry("1.1")), version);
}

TEST_F(CatalogueLookup, ByKeyDoesNotLookAtThePosition) {
    const auto version = add("1.1", 1);
    EXPECT_EQ(mRequest->queryVersion(entry("1.1", 3)), version);
}

TEST_F(CatalogueLookup, ByKeyOfARoleFindsAnEntryOfTypeAll) {
    EntrySpec key;
    key.type = VersionType_Client;
    const auto version = add(EntrySpec{});
    EXPECT_EQ(mRequest->queryVersion(entry(key)), version);
}

TEST_F(CatalogueLookup, ByKeyOfARoleDoesNotFindAnotherRole) {
    add(with(1, 64, 0, 3, 1));
    EXPECT_EQ(mRequest->queryVersion(entry(with(1, 64, 0, 2, 1))), nullptr);
}

TEST_F(CatalogueLookup, ByKeyWithoutASourceFindsAnySource) {
    const auto version = add(with(1, 64, 0, 1, 2));
    EXPECT_EQ(mRequest->queryVersion(entry(with(1, 64, 0, 1, 0))), version);
}

TEST_F(CatalogueLookup, ByKeyWithASourceFindsThatSourceOnly) {
    add(with(1, 64, 0, 1, 2));
    EXPECT_EQ(mRequest->queryVersion(entry(with(1, 64, 0, 1, 1))), nullptr);
}

TEST_F(CatalogueLookup, ByKeyOfAnotherPlatformFindsNothing) {
    add(with(1, 64, 0, 1, 1));
    EXPECT_EQ(mRequest->queryVersion(entry(with(1, 32, 0, 1, 1))), nullptr);
    EXPECT_EQ(mRequest->queryVersion(entry(with(2, 64, 0, 1, 1))), nullptr);
}

TEST_F(CatalogueLookup, ByNoKeyFindsNothing) {
    add("1.0");
    EXPECT_EQ(mRequest->queryVersion(nullptr), nullptr);
}

// --- The newest

TEST_F(CatalogueNewest, OfAnEmptyCatalogueIsNull) { EXPECT_EQ(newest({}, "1.0"), nullptr); }

TEST_F(CatalogueNewest, IsTheGreatestVersion) {
    add("1.0");
    const auto best = add("1.10");
    add("1.9");
    EXPECT_EQ(newest({}, "0.5"), best);
}

TEST_F(CatalogueNewest, IsStrictlyNewerThanTheBound) {
    add("1.0");
    const auto best = add("1.1");
    EXPECT_EQ(newest({}, "1.0"), best);
    EXPECT_EQ(newest({}, "1.1"), nullptr);
    EXPECT_EQ(newest({}, "1.2"), nullptr);
}

TEST_F(CatalogueNewest, ThanTheEmptyVersionIsTheGreatest) {
    const auto best = add("1.1");
    EXPECT_EQ(newest({}, ""), best);
}

TEST_F(CatalogueNewest, IsNeverAnEntryWithoutAVersion) {
    add("");
    EXPECT_EQ(newest({}, ""), nullptr);
}

TEST_F(CatalogueNewest, OfEqualVersionsHasTheSmallestSource) {
    add(with(1, 64, 0, 1, 2));
    const auto online = add(with(1, 64, 0, 1, 1));
    EXPECT_EQ(newest({}, "0.5"), online);
}

TEST_F(CatalogueNewest, OfEqualVersionsHasTheSmallestType) {
    add(with(1, 64, 0, 3, 1));
    const auto client = add(with(1, 64, 0, 2, 2));
    EXPECT_EQ(newest({}, "0.5"), client);
}

TEST_F(CatalogueNewest, OfEqualVersionsHasTheSmallestSystem) {
    add(with(2, 64, 0, 1, 1));
    const auto windows = add(with(1, 64, 0, 3, 2));
    EXPECT_EQ(newest({}, "0.5"), windows);
}

TEST_F(CatalogueNewest, OfEqualVersionsHasTheSmallestBits) {
    add(with(1, 64, 0, 1, 1));
    const auto narrow = add(with(2, 32, 0, 3, 2));
    EXPECT_EQ(newest({}, "0.5"), narrow);
}

TEST_F(CatalogueNewest, ObeysTheFilter) {
    EntrySpec other;
    other.version = "3.0";
    other.type = VersionType_Server;
    add(other);
    const auto all = add("2.0");
    EXPECT_EQ(newest({0, 0, 0, VersionType_Client, 0}, "1.0"), all);
}

TEST_F(CatalogueNewest, CountsAnEditionAsNewerThanNone) {
    add("2.0");
    const auto edition = add("2.0-oem3");
    EXPECT_EQ(newest({}, "1.0"), edition);
}

TEST_F(CatalogueNewest, OnAGivenSetDoesNotFilter) {
    const auto best = entry("2.0");
    EXPECT_EQ(newestOf({entry("1.0"), best}, {2, 32, 5, 4, 2}, "0.5"), best);
}

TEST_F(CatalogueNewest, AsksTheQueryThatADerivedClassMayReplace) {
    struct Replaced : VersionRequest {
        using VersionRequest::VersionRequest;
        VersionSet queryVersions(SystemType, SystemBits, ProjectType, VersionType, VersionSource) override {
            return {entry("7.0")};
        }
    };
    const auto request = std::make_shared<Replaced>(nullptr, std::shared_ptr<TWMQClient>(), VersionType_Client);
    const auto best = request->queryNewestVersion(Public::Base::SystemType_Unknown, Public::Base::SystemBits_Unknown,
                                                  Public::Base::ProjectType_Unknown, VersionType_Unknown,
                                                  VersionSource_Unknown, Version("1.0", 0));
    ASSERT_TRUE(best);
    EXPECT_EQ(best->getVersion().toString(), "7.0");
}

// --- Changes

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

// --- Release notes

namespace {

class CatalogueNotes : public Catalogue {
protected:
    static ReleaseHistorySet notes(const std::string& records) {
        ReleaseHistorySet set;
        EXPECT_FALSE(ReleaseHistory::parseReleaseHistoryFromHttp(support::noteList(records), "", set, Version()));
        return set;
    }
    Texts noteTexts() {
        Texts texts;
        for (const auto& note : mRequest->getReleaseHistory()) {
            texts.push_back(note->getVersion().toString() + " " + note->getVersionInfo());
        }
        return texts;
    }
};

}  // namespace

TEST_F(CatalogueNotes, AreInsertedInOrder) {
    const ErrorInfo result =
        mRequest->addReleaseHistory(notes(support::noteRecord("2.0", "b") + "," + support::noteRecord("1.0", "a")));
    EXPECT_EQ(result.errorCode(), 0);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(noteTexts(), (Texts{"1.0 a", "2.0 b"}));
}

TEST_F(CatalogueNotes, StayWhenAnEquivalentOneComes) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0", "first")));
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0", "second") + "," + support::noteRecord("2.0", "new")));
    EXPECT_EQ(noteTexts(), (Texts{"1.0 first", "2.0 new"}));
}

TEST_F(CatalogueNotes, AreCleared) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    EXPECT_EQ(mRequest->removeReleaseHistory().errorCode(), 0);
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
}

TEST_F(CatalogueNotes, AreReadAsACopy) {
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    const auto copy = mRequest->getReleaseHistory();
    mRequest->removeReleaseHistory();
    EXPECT_EQ(copy.size(), 1U);
}

TEST_F(CatalogueNotes, AreIndependentOfTheVersions) {
    add("1.0", 2);
    mRequest->addReleaseHistory(notes(support::noteRecord("1.0")));
    mRequest->removeVersions();
    EXPECT_EQ(mRequest->getReleaseHistory().size(), 1U);
    add("1.0", 2);
    mRequest->removeReleaseHistory();
    EXPECT_EQ(mRequest->getVersions().size(), 1U);
}

TEST_F(CatalogueNotes, NothingIsNoNote) {
    EXPECT_EQ(mRequest->addReleaseHistory({nullptr}).errorCode(), 0);
    EXPECT_TRUE(mRequest->getReleaseHistory().empty());
}

TEST_F(CatalogueNotes, MayBeReadWhileTheyChange) {
    const auto set = notes(support::noteRecord("1.0") + "," + support::noteRecord("2.0"));
    std::thread writer([&] {
        for (int round = 0; round < 100; ++round) {
            mRequest->addReleaseHistory(set);
            mRequest->removeReleaseHistory();
        }
    });
    for (int round = 0; round < 100; ++round) EXPECT_LE(mRequest->getReleaseHistory().size(), 2U);
    writer.join();
}
