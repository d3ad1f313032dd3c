// The whole road: a host, started as a program, upgrades itself from a cloud, and the system's own means judge the
// package and start the installer.
#include "FileText.h"
#include "HttpFileServer.h"
#include "PackageMaker.h"
#include "PackageSigner.h"
#include "Program.h"
#include "Public/Base/JsonValue.h"
#include "TempDir.h"

using support::readText;
using support::writeText;

namespace {

enum HostStatus { Launched = 0, Refused = 4 };

class Road : public testing::Test {
protected:
    Road() {
        const std::string url = mCloud.url("");
        const size_t host = url.find("//") + 2;
        writeText(at("program/upgrade_domain.json"),
                  "{\"domain\":\"" + url.substr(host, url.find('/', host) - host) + "\"}");
        support::copyProgram(ORV_INSTALLER, at("program"));
        writeText(at("installed/OrvServer.exe"), "old server");
        writeText(at("installed/own.cfg"), "settings");
        std::filesystem::create_directories(at("machine/Windows/system32"));
    }
    std::string at(const std::string& name) const { return mDir.path() + "/" + name; }

    /// A signed package of the next version.
    std::string signedPackage(support::SigningKit::Signer signer) {
        support::PackageSpec spec;
        spec.version = "1.12.0.3";
        spec.files = {{"win64.sysbits", ""},
                      {"Orv Client\\OrvClient.exe", support::programImage(64, "client")},
                      {"Orv Server\\OrvServer.exe", support::programImage(64, "new server")}};
        support::makePackage(spec, at("unsigned.exe"));
        mKit.sign(at("unsigned.exe"), at("signed.exe"), signer);
        return readText(at("signed.exe")).value();
    }
    support::ProgramEnd upgradeTo(const std::string& package) {
        mCloud.serve("/package", package);
        mCloud.serve("/version",
                     R"({"softversion":"1.12.0.3","description":"d","url":")" + mCloud.url("/package") + "\"}");
        return support::runProgram({{mHost, "1.11.0.8", at("store"), at("installed"), at("report.json"), at("backup"),
                                     at("machine/Windows/system32"), "elevated"}});
    }
    /// Of the launched installer, which goes on when the host has ended.
    std::string waitForResult() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        Public::Base::JsonValue report;
        while (report.read(Public::Base::SharedBuffer(readText(at("report.json")).value_or(""))) ||
               !report.isMember("result")) {
            if (std::chrono::steady_clock::now() > deadline) return "no report came";
            std::this_thread::yield();
        }
        return report["result"]->toString();
    }
    void expectRefused(const support::ProgramEnd& host) {
        EXPECT_EQ(host.status, Refused) << host.output;
        EXPECT_NE(host.output.find("refused"), std::string::npos) << host.output;
        EXPECT_EQ(readText(at("installed/OrvServer.exe")), "old server");
        EXPECT_FALSE(std::filesystem::exists(at("report.json")));
        EXPECT_EQ(support::filesBelow(at("store")).count("Online/Windows x64 All/1.12.0.3/1.12.0.3.exe"), 0U);
    }

    support::TempDir mDir;
    support::HttpFileServer mCloud;
    const std::string mHost = support::copyProgram(ORV_HOST, at("program"));
    support::SigningKit mKit;
    support::TrustRoots mTrust{mKit.rootPem()};
};

TEST_F(Road, SignedPackageIsInstalledWithRaisedRights) {
    const auto host = upgradeTo(signedPackage(support::SigningKit::Publisher));
    EXPECT_EQ(host.status, Launched) << host.output << host.errors;
    EXPECT_EQ(waitForResult(), "installed");
    EXPECT_EQ(support::filesBelow(at("installed")), (std::set<std::string>{"OrvServer.exe", "own.cfg"}));
    EXPECT_EQ(readText(at("installed/OrvServer.exe")), support::programImage(64, "new server"));
    EXPECT_EQ(readText(at("installed/own.cfg")), "settings");
    EXPECT_EQ(readText(at("backup/OrvServer.exe")), "old server");
}

TEST_F(Road, PackageWithAByteChangedBehindItsSignatureIsRefused) {
    std::string package = signedPackage(support::SigningKit::Publisher);
    package[package.size() / 2] = static_cast<char>(package[package.size() / 2] ^ 1);
    expectRefused(upgradeTo(package));
}

TEST_F(Road, PackageOfAForeignSignerIsRefused) {
    expectRefused(upgradeTo(signedPackage(support::SigningKit::Untrusted)));
}

}  // namespace
