// A role that is unpacked over an older installation, for the tests of what fails on the way.
#pragma once

#include "FaultTest.h"
#include "FileText.h"
#include "OrvBackup.h"
#include "OrvInstaller.h"
#include "PackageMaker.h"
#include "Received.h"

namespace faults {

/// A role of three files, one of which is new, over an older installation. A failed run is undone by the backup.
class Unpack : public Attempt {
public:
    void prepare() override {
        support::PackageSpec spec;
        for (const auto& [name, content] : kAfter) {
            std::string item = "Orv Client\\" + name;
            std::replace(item.begin(), item.end(), '/', '\\');
            spec.files.emplace_back(item, content);
        }
        spec.files.emplace_back("Orv Server\\server.exe", "not of this role");
        support::makePackage(spec, at("package.exe"));
        for (const auto& [name, content] : kBefore) support::writeText(at("app/" + name), content);
    }

    ErrorInfo run() override {
        auto backup = std::make_shared<Tarnwick::OrvUpdate::OrvBackup>(at("saved"));
        const auto installer = std::make_shared<Tarnwick::OrvUpdate::OrvInstaller>(
            backup, at("package.exe"), Tarnwick::OrvUpdate::VersionType_Client);
        if (const ErrorInfo refused = installer->start(at("app"), true, {})) return refused;
        EXPECT_TRUE(support::eventually([&] { return installer->finish(); }));
        installer->stop();
        if (const ErrorInfo error = installer->getError()) return error;
        float progress = 0;
        installer->getProgress(progress);
        EXPECT_EQ(progress, 1.0F);  // what stops short must say why
        return {};
    }

    void settle(const ErrorInfo& result) override {
        if (!result) return;
        Tarnwick::OrvUpdate::OrvBackup(at("saved"))
            .restore(at("app"), [](const std::string& name, const ErrorInfo& restored) {
                EXPECT_EQ(restored.errorCode(), 0) << name;
            });
    }

    void check(const ErrorInfo& result) override {
        EXPECT_TRUE(result.errorCode() == 0 || result.errorCode() == -1 || result.errorCode() == -602 ||
                    result.errorCode() == -603 || result.errorCode() <= -10000);
        if (!result) return;
        Tree now = treeOf(at("app"));
        now.erase(kAdded);  // what was not there before stays as it is
        EXPECT_TRUE(equal(now, kBefore));
    }

    void checkReached() override { EXPECT_TRUE(equal(treeOf(at("app")), kAfter)); }

private:
    const std::string kAdded = "lang/zh.dll";
    const Tree kBefore = {{"client.exe", "old client"}, {"lang/en.dll", std::string(2000, 'e')}};
    const Tree kAfter = {{"client.exe", std::string(4000, 'c')}, {"lang/en.dll", "new"}, {"lang/zh.dll", "added"}};
};

class Unpacking : public FaultTest {};

}  // namespace faults
