// A compatibility document, and two components that the six questions are put about: two lines, each a digit for the
// system and a version, then the document.
#include <cstddef>
#include <cstdint>
#include <map>

#include "Public/Base/JsonValue.h"
#include "Public/Base/Printer.h"
#include "Public/Base/StringEx.h"
#include "Require.h"
#include "VersionCompatible.h"

using namespace Tarnwick::OrvUpdate;

namespace {

using Range = IVersionCompatible::CompatibleRange;
using Ranges = std::set<Range>;
using Public::Base::SharedBuffer;

/// The order of ranges by the texts of their versions.
struct ByText {
    static Version brief(const Version& version) { return Version(version.toSimpleString(), 0); }
    bool operator()(const Range& a, const Range& b) const {
        if (a.system != b.system) return a.system < b.system;
        if (brief(a.low) != brief(b.low)) return brief(a.low) < brief(b.low);
        return brief(a.high) < brief(b.high);
    }
};
using PlainSet = std::set<Range, ByText>;
using PlainMap = std::map<Range, PlainSet, ByText>;

struct PlainRules {
    PlainMap forward, reverse;
};

SystemType systemOf(const std::string& name) {
    const char* const names[] = {"Windows", "Linux", "Mac", "Android", "IOS"};
    for (int i = 0; i < 5; ++i) {
        if (Public::Base::StringEx::iequals(name, names[i])) return static_cast<SystemType>(i + 1);
    }
    return Public::Base::SystemType_Unknown;
}

bool hasEnds(const JsonValue& range) { return range.isMember("LowVersion") && range.isMember("HigherVersion"); }

Range rangeOf(const JsonValue& name, const JsonValue& range) {
    return {systemOf(name->toString("")), 0, Version(range["LowVersion"]->toString(""), 0),
            Version(range["HigherVersion"]->toString(""), 0)};
}

/// One element after the other, one pair of systems after the other.
PlainRules readPlainly(const JsonValue& array, const char* firstRange, const char* secondSystems,
                       const char* secondRange) {
    PlainRules rules;
    for (size_t i = 0; array.isArray() && i < array.size(); ++i) {
        const JsonValue element = array[i];
        if (!element.isMember("System") || !element.isMember(firstRange) || !element.isMember(secondSystems) ||
            !element.isMember(secondRange) || !hasEnds(element[firstRange]) || !hasEnds(element[secondRange])) {
            continue;
        }
        const JsonValue firsts = element["System"], seconds = element[secondSystems];
        if (!firsts.isArray() || !seconds.isArray()) continue;
        for (size_t a = 0; a < firsts.size(); ++a) {
            for (size_t b = 0; b < seconds.size(); ++b) {
                const Range first = rangeOf(firsts[a], element[firstRange]);
                const Range second = rangeOf(seconds[b], element[secondRange]);
                rules.forward[first].insert(second);
                rules.reverse[second].insert(first);
            }
        }
    }
    return rules;
}

bool contains(const Range& range, const VersionCompatibles& item) {
    return range.system == item.system && item.version >= range.low && item.version < range.high;
}

bool joins(const PlainMap& rules, const VersionCompatibles& item, const VersionCompatibles& other, bool& spokenOf) {
    for (const auto& [key, values] : rules) {
        if (!contains(key, item)) continue;
        spokenOf = true;
        for (const Range& value : values) {
            if (contains(value, other)) return true;
        }
    }
    return false;
}

std::string told(const Range& range) {
    return std::to_string(range.system) + " " + range.low.toString() + " " + range.high.toString() + "\n";
}

template <class Set>
std::string toldAll(const Set& ranges) {
    std::string text;
    for (const Range& range : ranges) text += told(range);
    return text;
}

std::string first(const PlainMap& rules, const VersionCompatibles& item) {
    for (const auto& [key, values] : rules) {
        if (contains(key, item)) return toldAll(values);
    }
    return "as it was\n";
}

/// What a question put into the result, by the same words.
std::string answered(const ErrorInfo& error, const Ranges& result) {
    FUZZ_REQUIRE(!error);
    const bool untouched = result.size() == 1 && result.begin()->system == 77;
    return untouched ? "as it was\n" : toldAll(result);
}

const Range kMark{static_cast<SystemType>(77), 0, Version(), Version()};

VersionCompatibles plain(VersionCompatibles item) {
    item.version.Revision().clear();
    return item;
}

bool equal(Version a, Version b) {
    a.Build() = b.Build() = 0;
    return a == b;
}

void requireRole(const VersionCompatible& document, VersionType type, const PlainRules& rules,
                 const VersionCompatibles& system, const VersionCompatibles& client) {
    Ranges clients{kMark}, systems{kMark};
    FUZZ_REQUIRE(answered(document.queryClientCompatibleFromSystem(type, system, clients), clients) ==
                 first(rules.forward, system));
    FUZZ_REQUIRE(answered(document.querySystemCompatibleFromClient(type, client, systems), systems) ==
                 first(rules.reverse, client));

    const auto s = plain(system), c = plain(client);
    bool spokenOf = false, ignored = false;
    const bool joined = joins(rules.forward, s, c, spokenOf) || joins(rules.reverse, c, s, spokenOf);
    const bool same = equal(s.version, c.version);
    FUZZ_REQUIRE(document.isClientCompatibleFromSystem(type, system, client) == (joined || (!spokenOf && same)));
    FUZZ_REQUIRE(document.isSystemCompatibleFromClient(type, system, client) ==
                 (same || joins(rules.reverse, c, s, ignored)));
}

void requireServers(const VersionCompatible& document, const PlainRules& rules, const VersionCompatibles& a,
                    const VersionCompatibles& b) {
    Ranges result{kMark};
    FUZZ_REQUIRE(answered(document.queryServerCompatibleFromServer(a, result), result) == first(rules.forward, a));
    bool ignored = false;
    FUZZ_REQUIRE(document.isServerCompatibleFromServer(a, b) ==
                 (equal(plain(a).version, plain(b).version) || joins(rules.forward, plain(b), plain(a), ignored)));
}

/// Components at the ends of each range: the low one is in it, the high one is not.
void requireEnds(const VersionCompatible& document, const PlainRules& clients) {
    for (const auto& [key, values] : clients.forward) {
        Ranges result{kMark};
        const VersionCompatibles low{key.system, 0, key.low}, high{key.system, 0, key.high};
        FUZZ_REQUIRE(!contains(key, high));
        FUZZ_REQUIRE(answered(document.queryClientCompatibleFromSystem(VersionType_Client, low, result), result) ==
                     first(clients.forward, low));
        FUZZ_REQUIRE(!(key.low < key.high) || first(clients.forward, low) != "as it was\n");
        requireRole(document, VersionType_Client, clients, low, {values.begin()->system, 0, values.begin()->low});
        requireRole(document, VersionType_Client, clients, high, {values.begin()->system, 0, values.begin()->high});
    }
}

VersionCompatibles takeComponent(std::string& text) {
    const size_t end = std::min(text.find('\n'), text.size());
    const std::string line = text.substr(0, end);
    text.erase(0, std::min(end + 1, text.size()));
    if (line.empty()) return {};
    return {static_cast<SystemType>(line[0] - '0'), 0, Version(line.substr(1), 0)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    std::string text(reinterpret_cast<const char*>(data), size);
    const VersionCompatibles a = takeComponent(text), b = takeComponent(text);
    VersionCompatible document;
    JsonValue read;
    const bool isJson = !read.read(SharedBuffer(text));
    const JsonValue& json = read;
    const bool failed = document.loadFromMem(text);
    FUZZ_REQUIRE(failed == (!isJson || !json.isMember("Version")));
    FUZZ_REQUIRE((IVersionCompatible::loadFromMem(text) == nullptr) == failed);
    if (failed) read = JsonValue();

    const PlainRules clients = readPlainly(json["ClientCompatibles"], "SystemVersion", "ClientSystem", "ClientVersion");
    requireRole(document, VersionType_Client, clients, a, b);
    requireRole(document, VersionType_VideoWall,
                readPlainly(json["VideoWallCompatibles"], "SystemVersion", "VideoWallSystem", "VideoWallVersion"), a,
                b);
    requireRole(
        document, VersionType_Analytics,
        readPlainly(json["VanticServerCompatibles"], "SystemVersion", "VanticServerSystem", "VanticServerVersion"), a,
        b);
    requireServers(document, readPlainly(json["SystemCompatibles"], "Version", "otherSystem", "otherVersion"), a, b);
    FUZZ_REQUIRE(!document.isClientCompatibleFromSystem(VersionType_All, a, a));
    FUZZ_REQUIRE(document.isSystemCompatibleFromClient(VersionType_All, a, a));
    FUZZ_REQUIRE(document.isServerCompatibleFromServer(b, b));
    requireEnds(document, clients);
    return 0;
}
