// A node's newest document, its directory, and a peer that serves another.
#pragma once

#include "CompatibilityFixture.h"
#include "FileText.h"
#include "HttpFileServer.h"
#include "JsonDocuments.h"
#include "LogRecorder.h"
#include "Received.h"
#include "TempDir.h"
#include "VersionCompatible/DefaultDocument.h"
#include "maxVersionCompatible.h"

namespace Tarnwick::OrvUpdate {

using Public::Base::SharedBuffer;
using Public::Network::IOWorker;
using Public::Network::NetAddr;
using Tarnwick::MQ::TWServerInfo;

/// A document of that version by which clients of 7.x go with systems of 7.x.
inline std::string newer(const std::string& version) {
    return documentOf(kClients, rule(kClients, {"7.0", "8.0"}, {"7.0", "8.0"}), version);
}

class Newest : public testing::Test {
protected:
    static constexpr char kPath[] = "/VersionCompatible";

    std::string directory() const { return mDir.path() + "/state"; }
    std::string file() const { return directory() + "/maxVersiomCompatible.dat"; }
    std::optional<std::string> fileText() const { return support::readText(file()); }
    std::shared_ptr<maxVersionCompatible> make() {
        return std::make_shared<maxVersionCompatible>(directory(), mWorker);
    }
    static bool reaches(const std::shared_ptr<maxVersionCompatible>& newest, const std::string& version) {
        return support::eventually([&] { return newest->compatibleVersion() == version; });
    }
    /// Waits for the document on the disk. It is looked for by the node's own reading, which never keeps the file from
    /// being replaced, as another's may.
    bool saves(const std::shared_ptr<maxVersionCompatible>& newest, const std::string& text) const {
        const bool saved = support::eventually([&] {
            SharedBuffer held;
            return newest->getVersionCompatibleBuffer(held) && held.toStdString() == text;
        });
        return saved && fileText() == text;
    }
    static NetAddr addressOf(const support::LoopbackServer& server) { return {"127.0.0.1", server.port()}; }
    static std::string askedFor(const support::HttpRequest& request) {
        return support::parse(request.body)["serverid"]->toString("");
    }

    support::TempDir mDir;
    std::shared_ptr<IOWorker> mWorker = IOWorker::create(2);
};

}  // namespace Tarnwick::OrvUpdate
