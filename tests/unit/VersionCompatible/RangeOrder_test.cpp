// The order of ranges, the layout of the records, and the places of virtual operations.
#include <numeric>

#include "CompatibilityFixture.h"
#include "VirtualSlot.h"
#include "maxVersionCompatible.h"

namespace Tarnwick::OrvUpdate {

using support::virtualSlot;

namespace {

CompatibleRange range(int system, const std::string& low, const std::string& high) {
    return {static_cast<SystemType>(system), 0, Version(low, 0), Version(high, 0)};
}

bool sameKey(const CompatibleRange& a, const CompatibleRange& b) { return !(a < b) && !(b < a); }

using Slots = std::vector<size_t>;

Slots from(size_t first, size_t count) {
    Slots slots(count);
    std::iota(slots.begin(), slots.end(), first);
    return slots;
}

}  // namespace

TEST(RangeOrder, IsBySystemThenLowThenHigh) {
    const std::vector<CompatibleRange> ascending{range(0, "9", "9"), range(1, "1.0", "5.0"), range(1, "1.0", "6.0"),
                                                 range(1, "2.0", "1.0"), range(2, "0.1", "0.2")};
    for (size_t i = 0; i < ascending.size(); ++i) {
        for (size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(ascending[i] < ascending[j], i < j) << i << " " << j;
        }
    }
}

TEST(RangeOrder, LooksAtTheDottedNumbersAlone) {
    EXPECT_TRUE(sameKey(range(1, "1.2", "1.3"), range(1, "1.2.0.0", "1.3.0.0")));
    EXPECT_TRUE(sameKey(range(1, "1.2-oem5", "1.3-b9"), range(1, "1.2", "1.3-rX")));
    EXPECT_TRUE(sameKey(range(1, "", "1.3"), range(1, "0", "1.3")));
    EXPECT_FALSE(sameKey(range(1, "1.2.0.1", "1.3"), range(1, "1.2", "1.3")));
}

TEST(RangeOrder, NeverLooksAtTheSecondField) {
    CompatibleRange marked = range(1, "1.2", "1.3");
    marked.reserved = 77;
    EXPECT_TRUE(sameKey(marked, range(1, "1.2", "1.3")));
}

TEST(RangeOrder, IsThatOfTheShortTextsOfTheVersions) {
    const std::vector<std::string> texts{
        "",        "0",    "1",          "1.2",          "1.2.0.0",    "1.2-oem3",
        "1.2-b4",  "1.10", "1.2-rABC",   "1.2.0.1",      "2147483647", "1.2-oem3-b4-rZ",
        "1.2.3.4", "2",    "1.2.3.4-b1", "1.2.3.4-oem9", "0.0.0.1"};
    for (const auto& a : texts) {
        for (const auto& b : texts) {
            const Version shortA(Version(a, 0).toSimpleString(), 0), shortB(Version(b, 0).toSimpleString(), 0);
            EXPECT_EQ(range(1, a, "9") < range(1, b, "9"), shortA < shortB) << a << " " << b;
            EXPECT_EQ(range(1, "1", a) < range(1, "1", b), shortA < shortB) << a << " " << b;
        }
    }
}

TEST(RangeOrder, LeavesTheSecondFieldAt0) {
    RangeSet result;
    loaded(documentOf(kClients, rule(kClients)))
        .queryClientCompatibleFromSystem(VersionType_Client, component("1.2.0.0"), result);
    ASSERT_EQ(result.size(), 1u);
    EXPECT_EQ(result.begin()->reserved, 0);
}

TEST(RangeOrder, ComponentsCarryTheirSecondFieldAlongAndNeverCompareIt) {
    VersionCompatibles system = component("1.2.0.0"), client = component("1.2.5.0");
    system.reserved = 1;
    client.reserved = 2;
    const VersionCompatible document = loaded(documentOf(kClients, rule(kClients)));
    EXPECT_TRUE(document.isClientCompatibleFromSystem(VersionType_Client, system, client));
}

TEST(CompatibilityInterfaces, StandInTheOrderOfTheirTable) {
    const Slots slots{virtualSlot(&IVersionCompatible::getVersion),
                      virtualSlot(&IVersionCompatible::queryClientCompatibleFromSystem),
                      virtualSlot(&IVersionCompatible::querySystemCompatibleFromClient),
                      virtualSlot(&IVersionCompatible::queryServerCompatibleFromServer),
                      virtualSlot(&IVersionCompatible::isClientCompatibleFromSystem),
                      virtualSlot(&IVersionCompatible::isSystemCompatibleFromClient),
                      virtualSlot(&IVersionCompatible::isServerCompatibleFromServer)};
    EXPECT_EQ(slots, from(2, 7));
}

TEST(CompatibilityInterfaces, LoadsOfADocumentStandBehindItsInterface) {
    EXPECT_EQ(virtualSlot(&VersionCompatible::loadFromFile), 9u);
    EXPECT_EQ(virtualSlot(&VersionCompatible::loadFromMem), 10u);
}

TEST(CompatibilityInterfaces, OperationsOfTheNewestDocumentStandInTheOrderOfTheirTable) {
    const Slots slots{virtualSlot(&maxVersionCompatible::loadLocalmaxVersionCompatibleFile),
                      virtualSlot(&maxVersionCompatible::checkClientToSystemVersionIsCompatible),
                      virtualSlot(&maxVersionCompatible::checkServerToServerVersionIsCompatible),
                      virtualSlot(&maxVersionCompatible::inputSystemServerListInfo),
                      virtualSlot(&maxVersionCompatible::inputSystemServerInfo),
                      virtualSlot(&maxVersionCompatible::compatibleVersion),
                      virtualSlot(&maxVersionCompatible::getVersionCompatibleBuffer),
                      virtualSlot(&maxVersionCompatible::getVersionCompatible)};
    EXPECT_EQ(slots, from(0, 8));
}

}  // namespace Tarnwick::OrvUpdate
