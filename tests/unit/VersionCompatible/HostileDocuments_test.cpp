// Documents made to hang, to crash or to take all memory.
#include "CompatibilityFixture.h"
#include "LogRecorder.h"
#include "MemoryMeter.h"
#include "VersionCompatible/RuleReader.h"

namespace Tarnwick::OrvUpdate {

namespace {

constexpr uint64_t kMiB = 1 << 20;

std::string list(size_t count, const std::function<std::string(size_t)>& name) {
    std::string text = "[";
    for (size_t i = 0; i < count; ++i) text += (i == 0 ? "\"" : ",\"") + name(i) + "\"";
    return text + "]";
}

std::string everySystem() { return R"(["Windows","Linux","Mac","Android","IOS","another"])"; }

/// So many elements, each with ranges of its own.
std::string elements(size_t count, const std::string& systems) {
    std::string text;
    for (size_t i = 0; i < count; ++i) {
        const std::string low = "1." + std::to_string(i), high = "1." + std::to_string(i + 1);
        if (i != 0) text += ',';
        text += rule(kClients, {low, high, systems}, {low, high, systems});
    }
    return text;
}

}  // namespace

TEST(HostileDocument, ProductOfAHundredThousandNamesOnBothSidesIsThatOfTheSystemsTheyName) {
    const Side side{"1.2.0.0", "1.3.0.0",
                    list(100000, [](size_t i) { return i % 2 == 0 ? std::string("Windows") : "Linux"; })};
    const VersionCompatible document = loaded(documentOf(kClients, rule(kClients, side, side)));
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0; 2 1.2.0.0 1.3.0.0");
    EXPECT_EQ(fromSecond(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0; 2 1.2.0.0 1.3.0.0");
}

TEST(HostileDocument, UnknownNamesAreLoggedUpToAThousandAnArray) {
    const support::LogRecorder log;
    const Side side{"1.2.0.0", "1.3.0.0", list(100000, [](size_t i) { return "system " + std::to_string(i); })};
    const VersionCompatible document = loaded(documentOf(kClients, rule(kClients, side, side)));
    EXPECT_EQ(log.entries().size(), RuleReader::kMostNamesLogged);
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0", SystemType_Unknown)), "0 1.2.0.0 1.3.0.0");
}

TEST(HostileDocument, RulesBeyondAHundredThousandAreLeftOutAndLogged) {
    const support::LogRecorder log;
    const size_t count = RuleReader::kMostRules / 36;
    const VersionCompatible document = loaded(documentOf(kClients, elements(count + 100, everySystem())));
    EXPECT_TRUE(log.has(2, "Too many rules!"));
    EXPECT_NE(fromFirst(document, kClients, component("1." + std::to_string(count - 1))), "");
    EXPECT_EQ(fromFirst(document, kClients, component("1." + std::to_string(count))), "");
}

TEST(HostileDocument, AHundredThousandRulesAreKept) {
    const support::LogRecorder log;
    const size_t count = RuleReader::kMostRules;
    const VersionCompatible document = loaded(documentOf(kClients, elements(count, R"(["Windows"])")));
    EXPECT_TRUE(log.entries().empty());
    const std::string last = "1." + std::to_string(count - 1);
    EXPECT_EQ(fromFirst(document, kClients, component(last)), "1 " + last + " 1." + std::to_string(count));
}

TEST(HostileDocument, OfManyRulesTakesBoundedMemory) {
    const std::string text = documentOf(kClients, elements(20000, everySystem()));
    const support::LogRecorder log;
    const support::MemoryMeter memory;
    const VersionCompatible document = loaded(text);
    EXPECT_LT(memory.peak(), 256 * kMiB);
    EXPECT_NE(fromFirst(document, kClients, component("1.0")), "");
}

TEST(HostileDocument, NestedDeeplyIsRefused) {
    const std::string depth(100000, '[');
    VersionCompatible document;
    EXPECT_EQ(document.loadFromMem(R"({"Version":"1.0","ClientCompatibles":)" + depth).errorCode(), -301);
    EXPECT_EQ(document.loadFromMem(R"({"Version":"1.0","ClientCompatibles":)" + depth + std::string(100000, ']') + "}")
                  .errorCode(),
              -301);
}

TEST(HostileDocument, LongerThanAnyJsonIsRefused) {
    VersionCompatible document;
    const std::string text = R"({"Version":"1.0"})" + std::string(64 * kMiB, ' ');
    EXPECT_EQ(document.loadFromMem(text).errorCode(), -301);
}

TEST(HostileDocument, OfAMillionEmptyElementsIsReadToItsEnd) {
    std::string text;
    for (int i = 0; i < 1000000; ++i) text += "{},";
    const VersionCompatible document = loaded(documentOf(kClients, text + rule(kClients)));
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST(HostileDocument, OfTheSameElementOverAndOverMakesOneRule) {
    std::string text = rule(kClients);
    for (int i = 0; i < 20000; ++i) text += "," + rule(kClients);
    const VersionCompatible document = loaded(documentOf(kClients, text));
    EXPECT_EQ(fromFirst(document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST(HostileDocument, VersionsOfGreatLengthAreNoVersions) {
    const std::string digits(1000000, '9');
    const VersionCompatible document = loaded(documentOf(kClients, rule(kClients, {digits, digits}), digits));
    Version version;
    EXPECT_EQ(document.getVersion(version).errorCode(), -1);
    EXPECT_EQ(fromFirst(document, kClients, component("9.9")), "");
}

TEST(HostileDocument, BytesThatAreNoTextAreRefused) {
    VersionCompatible document;
    EXPECT_EQ(document.loadFromMem("{\"Version\":\"1.0\xff\xfe\"}").errorCode(), -301);
    EXPECT_EQ(document.loadFromMem(std::string("{\"Version\":\"1.0\"}\0", 18)).errorCode(), -301);
}

}  // namespace Tarnwick::OrvUpdate
