// The last step in the host's process: the copy of the installer program with its libraries, and the agent as a whole.
#include <future>

#include "FaultTest.h"
#include "FileText.h"
#include "OrvInstaller/AgentInstaller.h"
#include "OrvInstaller/DependencyCopy.h"
#include "PackageMaker.h"
#include "PackagePlace.h"
#include "PeBuilder.h"
#include "ProgramRecorder.h"
#include "Public/Base/File.h"
#include "Public/Base/System.h"
#include "Watchdog.h"

using namespace faults;
using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using Public::Base::System;
using support::writeText;

namespace {

std::string program() { return support::buildPe({true, {"core.dll", "KERNEL32.dll"}, {}, "installer"}).bytes; }
std::string library() { return support::buildPe({true, {}, {}, "core"}).bytes; }

/// The installer program and its library, of which older copies lie in the target.
class CopyDependencies : public Attempt {
public:
    void prepare() override {
        writeText(at("bin/orvInstaller.exe"), program());
        writeText(at("bin/lib/core.dll"), library());
        writeText(at("bin/host.dll"), support::buildPe({true, {}, {}, "host"}).bytes);
        for (const auto& [name, content] : kBefore) writeText(at("target/" + name), content);
        mSource = treeOf(at("bin"));
    }
    ErrorInfo run() override {
        const bool walked = copyDependens(at("bin/orvInstaller.exe"), at("bin"), at("target"));
        return walked ? ErrorInfo() : ErrorInfo(-1, "no walk");
    }
    /// A library that cannot be read counts as the system's, and a copy that fails is not noticed.
    ErrorInfo outcome(const ErrorInfo& told) override {
        return told || treeOf(at("target")) == after() ? told : ErrorInfo(-1, "not all were copied");
    }
    void check(const ErrorInfo&) override {
        EXPECT_TRUE(equal(treeOf(at("bin")), mSource));
        expectOldOrNew(kBefore, treeOf(at("target")), after());
    }
    void checkReached() override { EXPECT_TRUE(equal(treeOf(at("target")), after())); }

private:
    static Tree after() { return {{"orvInstaller.exe", program()}, {"core.dll", library()}, {"other", "kept"}}; }
    const Tree kBefore = {{"orvInstaller.exe", "older"}, {"core.dll", "older too"}, {"other", "kept"}};
    Tree mSource;
};

/// A machine with a package that has arrived.
class Agent : public Attempt {
public:
    void prepare() override {
        writeText(at("bin/orvInstaller.exe"), program());
        writeText(at("bin/core.dll"), library());
        std::filesystem::create_directories(at("drive"));
        File::setExcutableFileFullPath(at("bin"));
        System::setSystemDirectory(at("drive/Windows/system32"));
        bringPackage();
    }
    const std::shared_ptr<OrvVersion>& version() const { return mVersion; }
    ~Agent() override {
        System::setSystemDirectory({});
        File::setExcutableFileFullPath({});
    }
    ErrorInfo run() override {
        mStarts = mPrograms.starts().size();
        AgentInstaller agent([](const auto&, auto&, auto&) { return true; }, [] { return true; }, mVersion,
                             VersionType_Client);
        const ErrorInfo result = agent.start("C:\\Orv", true, {});
        EXPECT_EQ(agent.getError().errorCode(), result.errorCode());
        return result;
    }
    /// A copy that fails is not noticed.
    ErrorInfo outcome(const ErrorInfo& told) override {
        EXPECT_EQ(mPrograms.starts().size() - mStarts, told ? 0U : 1U);
        return told || treeOf(mInstaller) == mCopies ? told : ErrorInfo(-1, "not all were copied");
    }
    void check(const ErrorInfo& result) override {
        expectOldOrNew({}, treeOf(mInstaller), mCopies);
        const int code = result.errorCode();
        const bool refused = code == -302 || code == -416;
        EXPECT_TRUE(refused || code == 0 || code == -1 || code <= -10000);
        // One that its test refuses is thrown away, any other stays.
        EXPECT_TRUE(refused || std::filesystem::exists(at("store/p.exe")));
        if (refused && !std::filesystem::exists(at("store/p.exe"))) bringPackage();
    }
    void checkReached() override {
        EXPECT_TRUE(equal(treeOf(mInstaller), mCopies));
        EXPECT_TRUE(std::filesystem::exists(at("store/p.exe")));
    }

protected:
    void bringPackage() {
        support::makePackage({}, at("store/p.exe"));
        mVersion = std::make_shared<OrvVersion>(nullptr, at("store"), std::string());
        mVersion->setVersion("1.11.0.8");
        mVersion->setSystemBits(Public::Base::SystemBits_64);
        mVersion->setLocalFileName(at("store/p.exe"));
    }

    std::shared_ptr<OrvVersion> mVersion;

private:
    const std::string mInstaller = at("drive/ProgramData/Tarnwick Orv/Client/installer");
    const Tree mCopies = {{"orvInstaller.exe", program()}, {"core.dll", library()}};
    const support::ProgramRecorder mPrograms;
    size_t mStarts = 0;
};

class DependencyCopying : public FaultTest {};
class AgentStart : public FaultTest {};

/// An installation that is cancelled at some operation of its agent, while the next one begins to fetch the package to
/// the same place.
class Overtaken : public Agent {
public:
    /// @return the operation at which it happened; empty when there are not so many
    std::string run(size_t number) {
        prepare();
        AgentInstaller agent({}, {}, mVersion, VersionType_Client);
        const Armed armed(root(), number, [&] {
            agent.cancel();
            mNext = std::async(std::launch::async, [this] { fetchAnew(); });
            // Where the agent is throwing its package away, the next one waits for that.
            mNext.wait_for(std::chrono::milliseconds(100));
        });
        const support::Watchdog watchdog(kPatience, [&] { support::endAsHung(armed.where()); });
        mResult = agent.start("C:\\Orv", true, {});
        if (mNext.valid()) mNext.get();
        mOpening = armed.wasOpening();
        return armed.where();
    }
    ErrorInfo result() const { return mResult; }
    bool wasOpening() const { return mOpening; }
    bool hasNext() const { return support::readText(at("store/p.exe")) == kNext; }
    /// True while the entry knows the next installation's transfer.
    bool keepsTransfer() const { return mVersion->getPackageFile() == at("store/p.exe"); }

private:
    void fetchAnew() const {
        File file;
        ASSERT_TRUE(openPackageAnew(file, at("store/p.exe")));
        ASSERT_TRUE(file.puts(kNext));
    }
    const std::string kNext = "the first bytes of the next one";
    std::future<void> mNext;
    ErrorInfo mResult;
    bool mOpening = false;
};

}  // namespace

TEST_P(DependencyCopying, LeavesEachFileWhole) {
    exhaust([] { return std::make_unique<CopyDependencies>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, DependencyCopying, testing::ValuesIn(kWriting), titleOf);

TEST_P(AgentStart, LaunchesOrTellsWhyNot) {
    exhaust([] { return std::make_unique<Agent>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, AgentStart, testing::ValuesIn(kWriting), titleOf);

TEST(OvertakenAgent, NeverDiscardsWhatTheNextInstallationFetches) {
    const support::LogRecorder log;
    bool begun = false;  // the agent has the package in its hands
    size_t number = 1;
    for (;; ++number) {
        Overtaken agent;
        const std::string where = agent.run(number);
        if (where.empty()) break;
        SCOPED_TRACE("operation " + std::to_string(number) + ": " + where);
        EXPECT_TRUE(agent.hasNext() || !begun);
        EXPECT_EQ(agent.keepsTransfer(), agent.hasNext());
        begun = begun || agent.wasOpening();
        if (HasFailure()) return;
    }
    EXPECT_TRUE(begun);
    EXPECT_GT(number, 10U);
}

TEST(OvertakenAgent, DiscardsItsOwnPackageWhenNoOtherCame) {
    const support::LogRecorder log;
    Agent machine;
    machine.prepare();
    AgentInstaller agent({}, {}, machine.version(), VersionType_Client);
    const Armed armed(machine.root(), 5, [&] { agent.cancel(); });
    EXPECT_EQ(agent.start("C:\\Orv", true, {}).errorCode(), 0);
    EXPECT_TRUE(armed.struck());
    EXPECT_FALSE(std::filesystem::exists(machine.at("store/p.exe")));
}
