// An update cloud on loopback, to which the engine of this process is directed.
#pragma once

#include "CatalogueEntries.h"
#include "FileText.h"
#include "HttpFileServer.h"
#include "Public/Base/File.h"
#include "TempDir.h"

namespace support {

/// Stands beside a program directory of its own, whose "upgrade_domain.json" names it. Answers with no versions and no
/// notes until told otherwise.
class UpdateCloud : public HttpFileServer {
public:
    static constexpr char kVersions[] = "/version";
    static constexpr char kNotes[] = "/api/v1/orvNewVersions";

    UpdateCloud() {
        Public::Base::File::setExcutableFileFullPath(programDir());
        domainFile(R"({"domain":")" + host() + "\"}");
        versions("[]");
        notes(noteList(""));
    }
    ~UpdateCloud() override { Public::Base::File::setExcutableFileFullPath({}); }

    std::string programDir() const { return mDir.path(); }
    void domainFile(const std::string& text) const { writeText(programDir() + "/upgrade_domain.json", text); }
    void removeDomainFile() const { std::filesystem::remove(programDir() + "/upgrade_domain.json"); }

    void versions(const std::string& body, int status = 200) { serve(kVersions, body, status); }
    void notes(const std::string& body, int status = 200) { serve(kNotes, body, status); }

private:
    TempDir mDir;
};

}  // namespace support
