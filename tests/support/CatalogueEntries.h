// Entries of a catalogue, and their documents, as tests need them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "OrvVersion.h"

namespace support {

/// What one entry is to hold. The default is a cloud entry for any role of a 64-bit program.
struct EntrySpec {
    std::string version = "1.0.0.0";
    int position = 2;
    int source = 1;
    int bits = 64;
    int system = 1;
    int type = 1;
    int project = 0;
    std::string url = {};
};

/// An entry of a product line, which the engine's own class does not know.
class ProjectVersion : public Tarnwick::OrvUpdate::OrvVersion {
public:
    explicit ProjectVersion(int project) : OrvVersion(nullptr), mProject(project) {}
    Public::Base::ProjectType getProjectType() const override {
        return static_cast<Public::Base::ProjectType>(mProject);
    }

private:
    int mProject;
};

inline std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> entry(const EntrySpec& spec) {
    using namespace Tarnwick::OrvUpdate;
    const auto version = std::make_shared<ProjectVersion>(spec.project);
    JsonValue document;
    document["softversion"] = spec.version;
    document["description"] = "";
    document["url"] = spec.url;
    version->parseVersionFromHttp(document);
    version->setStoragePosition(static_cast<StoragePosition>(spec.position));
    version->setVersionSource(static_cast<VersionSource>(spec.source));
    version->setSystemBits(static_cast<SystemBits>(spec.bits));
    version->setSystemType(static_cast<SystemType>(spec.system));
    version->setVersionType(static_cast<VersionType>(spec.type));
    return version;
}

/// A cloud entry of that version.
inline std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> entry(const char* version, int position = 2) {
    EntrySpec spec;
    spec.version = version;
    spec.position = position;
    return entry(spec);
}

/// The versions of a set as texts, in the set's order.
inline std::vector<std::string> versionTexts(const Tarnwick::OrvUpdate::VersionSet& versions) {
    std::vector<std::string> texts;
    for (const auto& version : versions) texts.push_back(version->getVersion().toString());
    return texts;
}

/// One record of the update cloud's answer.
inline std::string cloudRecord(const std::string& version, const std::string& url) {
    return R"({"softversion":")" + version + R"(","description":"about )" + version + R"(","url":")" + url + "\"}";
}

/// One record of the cloud's release notes.
inline std::string noteRecord(const std::string& version, const std::string& text = "note") {
    return R"({"softversion":")" + version + R"(","updateTime":"2026-01-02 03:04:05","versionInfo":")" + text + "\"}";
}

/// The cloud's answer with those notes, already joined by commas.
inline std::string noteList(const std::string& records) { return R"({"data":{"orvVersionInfo":[)" + records + "]}}"; }

}  // namespace support
