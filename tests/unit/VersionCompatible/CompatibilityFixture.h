// Compatibility documents, and what is found in them, as text.
#pragma once

#include "VersionCompatible.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SystemType_Linux;
using Public::Base::SystemType_Mac;
using Public::Base::SystemType_Unknown;
using Public::Base::SystemType_Windows;
using CompatibleRange = IVersionCompatible::CompatibleRange;
using RangeSet = std::set<CompatibleRange>;

/// One of the four arrays of a document.
struct ArrayCase {
    const char* name;
    const char* array;
    const char* firstSystems;
    const char* firstRange;
    const char* secondSystems;
    const char* secondRange;
    VersionType type;  // of the questions that its rules answer; Server for the rules between servers
};

inline const ArrayCase kClients{"Clients",      "ClientCompatibles", "System",          "SystemVersion",
                                "ClientSystem", "ClientVersion",     VersionType_Client};
inline const ArrayCase kServers{"Servers",     "SystemCompatibles", "System",          "Version",
                                "otherSystem", "otherVersion",      VersionType_Server};
inline const ArrayCase kVideoWalls{"VideoWalls",         "VideoWallCompatibles", "System",
                                   "SystemVersion",      "VideoWallSystem",      "VideoWallVersion",
                                   VersionType_VideoWall};
inline const ArrayCase kVanticServers{"VanticServers",      "VanticServerCompatibles", "System",
                                      "SystemVersion",      "VanticServerSystem",      "VanticServerVersion",
                                      VersionType_Analytics};

/// One side of a rule, as a document says it.
struct Side {
    std::string low = "1.2.0.0";
    std::string high = "1.3.0.0";
    std::string systems = R"(["Windows"])";
};

inline std::string rule(const ArrayCase& keys, const Side& first = {}, const Side& second = {}) {
    const auto range = [](const Side& side) {
        return R"({"LowVersion":")" + side.low + R"(","HigherVersion":")" + side.high + "\"}";
    };
    std::ostringstream text;
    text << "{\"" << keys.firstSystems << "\":" << first.systems << ",\"" << keys.firstRange << "\":" << range(first)
         << ",\"" << keys.secondSystems << "\":" << second.systems << ",\"" << keys.secondRange
         << "\":" << range(second) << "}";
    return text.str();
}

/// A document with one array. @param elements with commas between them
inline std::string documentOf(const ArrayCase& keys, const std::string& elements, const std::string& version = "1.0") {
    return R"({"Version":")" + version + "\",\"" + keys.array + "\":[" + elements + "]}";
}

inline VersionCompatibles component(const std::string& version, SystemType system = SystemType_Windows) {
    return {system, 0, Version(version, 0)};
}

inline VersionCompatible loaded(const std::string& text) {
    VersionCompatible document;
    EXPECT_FALSE(document.loadFromMem(text)) << text;
    return document;
}

/// "1 1.2.0.0 1.3.0.0; ..." in the order of the set.
inline std::string told(const RangeSet& ranges) {
    std::string text;
    for (const CompatibleRange& range : ranges) {
        if (!text.empty()) text += "; ";
        text += std::to_string(range.system) + " " + range.low.toString() + " " + range.high.toString();
    }
    return text;
}

/// What goes with a component on the first side of that array's rules.
inline std::string fromFirst(const IVersionCompatible& document, const ArrayCase& keys,
                             const VersionCompatibles& item) {
    RangeSet result;
    EXPECT_FALSE(keys.type == VersionType_Server ? document.queryServerCompatibleFromServer(item, result)
                                                 : document.queryClientCompatibleFromSystem(keys.type, item, result));
    return told(result);
}

/// What goes with a component on the second side.
inline std::string fromSecond(const IVersionCompatible& document, const ArrayCase& keys,
                              const VersionCompatibles& item) {
    RangeSet result;
    EXPECT_FALSE(document.querySystemCompatibleFromClient(keys.type, item, result));
    return told(result);
}

/// For cases with a name.
inline const auto nameOf = [](const auto& info) { return std::string(info.param.name); };

/// For cases that are a number.
inline const auto numberOf = [](const testing::TestParamInfo<int>& info) {
    return info.param < 0 ? std::string("Negative") : std::to_string(info.param);
};

}  // namespace Tarnwick::OrvUpdate
