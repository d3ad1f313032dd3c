// An application whose program is to be copied with its libraries.
#pragma once

#include "FileText.h"
#include "OrvInstaller/DependencyCopy.h"
#include "PeBuilder.h"
#include "TempDir.h"

namespace Tarnwick::OrvUpdate {

/// An application directory, and an empty directory that the copy goes to.
class DependencyCopy : public testing::Test {
protected:
    DependencyCopy() { std::filesystem::create_directories(mTarget); }

    std::string source(const std::string& name) const { return mSource + "/" + name; }
    std::string target(const std::string& name) const { return mTarget + "/" + name; }

    /// Puts a module into the application directory whose content tells its place.
    void module(const std::string& name, const std::vector<std::string>& imports = {}) {
        support::writeText(source(name), image(name, imports));
    }
    static std::string image(const std::string& name, const std::vector<std::string>& imports = {}) {
        return support::buildPe({true, imports, {}, name}).bytes;
    }

    bool copy(const std::string& program = "app.exe") { return copyDependens(source(program), mSource, mTarget); }
    /// std::set<std::string> of what is to be copied for app.exe, in order.
    std::vector<std::string> listed() const {
        std::string program = source("app.exe");
        std::replace(program.begin(), program.end(), '/', '\\');
        std::list<Module> modules;
        EXPECT_TRUE(findDependencies(program, mSource, modules));
        std::vector<std::string> names;
        for (const Module& one : modules) names.push_back(one.name);
        return names;
    }
    std::set<std::string> copied() const { return support::filesBelow(mTarget); }

    support::TempDir mDir;
    const std::string mRoot = mDir.path();
    const std::string mSource = mRoot + "/app";
    const std::string mTarget = mRoot + "/installer";
};

}  // namespace Tarnwick::OrvUpdate
