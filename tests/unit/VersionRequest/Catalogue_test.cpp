// Queries of the catalogue.
#include "CatalogueFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::entry;
using support::EntrySpec;

namespace {

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
