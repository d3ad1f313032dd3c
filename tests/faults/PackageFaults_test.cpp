// What reads packages: the outer test, the whole test, the local transfer, and the scan of the store.
#include "FaultTest.h"
#include "FileText.h"
#include "LocalDownload.h"
#include "OrvInstaller.h"
#include "OrvVersionAccess.h"
#include "PackageStore.h"
#include "Public/Base/File.h"
#include "Public/Base/JsonValue.h"
#include "VersionRequest.h"

using namespace faults;
using namespace Tarnwick::OrvUpdate;
using Public::Base::File;

namespace {

constexpr char kVersion[] = "1.11.0.8";

/// Signed by somebody whom nobody trusts, with a head that claims the signature as the archive's own: sound for whoever
/// does not look at the signature.
std::string badlySigned() {
    static const std::string bytes = [] {
        const support::PackageStore workshop;
        const std::string path = workshop.putSigned("bad.exe", support::SigningKit::Untrusted);
        support::claimAllBytes(path);
        return *support::readText(path);
    }();
    return bytes;
}

/// Reading changes nothing, whatever fails.
class ReadingAttempt : public Attempt {
public:
    void prepare() override {
        support::makePackage({}, package());
        mBefore = treeOf(root());
    }
    void check(const ErrorInfo&) override { EXPECT_TRUE(equal(treeOf(root()), mBefore)); }
    void checkReached() override { EXPECT_TRUE(equal(treeOf(root()), mBefore)); }

protected:
    std::string package() const { return at("package.exe"); }
    Tree mBefore;
};

class OuterTest : public ReadingAttempt {
public:
    ErrorInfo run() override {
        return VersionRequest::isInvalidPakcage(package()) ? ErrorInfo() : ErrorInfo(-1, "unfit");
    }
};

class WholeTest : public ReadingAttempt {
public:
    ErrorInfo run() override { return OrvInstaller::checkPackage(package(), kVersion, 64); }
    void check(const ErrorInfo& result) override {
        ReadingAttempt::check(result);
        EXPECT_TRUE(!result || result.errorCode() == -416 || result.errorCode() == -302);
    }
};

class SignedTest : public WholeTest {
public:
    void prepare() override {
        support::SigningKit().sign(support::makePackage({}, at("unsigned.exe")), package());
        mBefore = treeOf(root());
    }

private:
    support::TrustRoots mTrust{support::SigningKit().rootPem()};
};

/// Refused with every fault and without: what fails must not let it through.
class BadTest : public ReadingAttempt {
public:
    void prepare() override {
        support::writeText(package(), badlySigned());
        mBefore = treeOf(root());
    }
    ErrorInfo run() override {
        const bool sound = VersionRequest::isInvalidPakcage(package());
        const ErrorInfo whole = OrvInstaller::checkPackage(package(), kVersion, 64);
        return sound || !whole ? ErrorInfo(-1, "let through") : ErrorInfo();
    }

private:
    support::TrustRoots mTrust{support::SigningKit().rootPem()};
};

class Local : public ReadingAttempt {
public:
    ErrorInfo run() override {
        int calls = 0;
        LocalDownload transfer(package());
        const ErrorInfo started = transfer.start([&] { ++calls; });
        EXPECT_EQ(calls, 1);
        EXPECT_EQ(transfer.finish(), !started);
        EXPECT_EQ(transfer.getError().errorCode(), started.errorCode());
        return started;
    }
    void check(const ErrorInfo& result) override {
        ReadingAttempt::check(result);
        EXPECT_TRUE(result.errorCode() == 0 || result.errorCode() == -416);
    }
};

/// The scan never fails: what cannot be read is passed over, and nothing else gets in.
class Scan : public ReadingAttempt {
public:
    void prepare() override {
        for (const char* version : {"1.0.0.0", "2.0.0.0"}) {
            support::PackageSpec spec;
            spec.version = version;
            support::makePackage(spec, packageOf(version));
        }
        support::makePackage({}, packageOf("3.0.0.0"));
        support::cutBytes(packageOf("3.0.0.0"), 1);
        support::writeText(packageOf("4.0.0.0"), badlySigned());
        mBefore = treeOf(root());
    }
    ErrorInfo run() override {
        mFound.clear();
        VersionSet versions;
        EXPECT_EQ(OrvVersion::parseVersionFromCache(nullptr, root(), versions, nullptr).errorCode(), 0);
        for (const auto& version : versions) {
            mFound.insert(version->getVersion().toString());
            EXPECT_EQ(std::filesystem::path(version->getPackageFile()), packageOf(version->getVersion().toString()));
        }
        return mFound.size() == kSound.size() ? ErrorInfo() : ErrorInfo(-1, "not all were found");
    }
    void check(const ErrorInfo& result) override {
        ReadingAttempt::check(result);
        EXPECT_TRUE(std::includes(kSound.begin(), kSound.end(), mFound.begin(), mFound.end()));
    }
    void checkReached() override { EXPECT_EQ(mFound, kSound); }

private:
    std::string packageOf(const std::string& version) const {
        return at("Online/Windows x64 All/" + version + "/" + version + ".exe");
    }
    const std::set<std::string> kSound = {"1.0.0.0", "2.0.0.0"};
    std::set<std::string> mFound;
    support::TrustRoots mTrust{support::SigningKit().rootPem()};
};

/// A package that the host hands over, saved at its place in the store.
class SaveVersion : public Attempt {
public:
    void prepare() override {
        mVersion = std::make_shared<OrvVersion>(nullptr, at("store"), std::string());
        mVersion->setVersion(kVersion);
        mVersion->setSystemType(Public::Base::SystemType_Windows);
        mVersion->setSystemBits(Public::Base::SystemBits_64);
        mVersion->setVersionType(VersionType_All);
        mVersion->setVersionSource(VersionSource_Manual);
        support::writeText(mVersion->getPackageFile(), "old");
        mBefore = treeOf(root());
    }
    ErrorInfo run() override { return mVersion->saveVersion(kContent); }
    void check(const ErrorInfo& result) override {
        if (!result) return;
        EXPECT_TRUE(equal(treeOf(root()), mBefore));
        EXPECT_LE(result.errorCode(), -10000);
    }
    void checkReached() override {
        EXPECT_EQ(support::readText(mVersion->getPackageFile()), kContent);
        EXPECT_EQ(treeOf(root()).size(), 1U);
    }

private:
    const std::string kContent = std::string(100000, 'p');
    std::shared_ptr<OrvVersion> mVersion;
    Tree mBefore;
};

/// The document of a set of versions, saved, loaded and read again.
class Documents : public Attempt {
public:
    void prepare() override {
        for (const char* number : {"1.0.0.0", "2.0.0.0"}) {
            const auto version = std::make_shared<OrvVersion>(nullptr, root(), std::string("server"));
            version->setVersion(number);
            mVersions.insert(version);
        }
        support::writeText(at("versions.json"), "[]");
    }
    ErrorInfo run() override {
        std::string text;
        OrvVersion::buildVersion(mVersions, text);
        if (!File::save(at("versions.json"), Public::Base::SharedBuffer(text))) return ErrorInfo::getLastError();
        mRead.clear();
        Public::Base::JsonValue document(0);
        if (const ErrorInfo error = document.read(File::load(at("versions.json")))) return error;
        for (size_t i = 0; i < document.size(); ++i) mRead.insert(document[i]["softversion"]->toString(""));
        return {};
    }
    void check(const ErrorInfo&) override {
        std::string text;
        OrvVersion::buildVersion(mVersions, text);
        expectOldOrNew({{"versions.json", "[]"}}, treeOf(root()), {{"versions.json", text}});
    }
    void checkReached() override { EXPECT_EQ(mRead, (std::set<std::string>{"1.0.0.0", "2.0.0.0"})); }

private:
    VersionSet mVersions;
    std::set<std::string> mRead;
};

class PackageReading : public FaultTest {};
class StoreWriting : public FaultTest {};

}  // namespace

TEST_P(PackageReading, OuterTestTakesNothingThatItCannotRead) {
    exhaust([] { return std::make_unique<OuterTest>(); });
}
TEST_P(PackageReading, WholeTestTakesNothingThatItCannotRead) {
    exhaust([] { return std::make_unique<WholeTest>(); });
}
TEST_P(PackageReading, WholeTestOfASignedPackageTakesNothingThatItCannotRead) {
    exhaust([] { return std::make_unique<SignedTest>(); });
}
TEST_P(PackageReading, NoTestLetsABadSignatureThroughThatItCannotRead) {
    exhaust([] { return std::make_unique<BadTest>(); });
}
TEST_P(PackageReading, LocalTransferCallsBackOnceWithItsError) {
    exhaust([] { return std::make_unique<Local>(); });
}
TEST_P(PackageReading, ScanPassesOverWhatItCannotReadAndTakesNothingUnfit) {
    exhaust([] { return std::make_unique<Scan>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, PackageReading, testing::ValuesIn(kMapping), titleOf);

TEST_P(StoreWriting, SavedPackageIsTheOldOneOrTheNewOne) {
    exhaust([] { return std::make_unique<SaveVersion>(); });
}
TEST_P(StoreWriting, SavedDocumentIsTheOldOneOrTheNewOne) {
    exhaust([] { return std::make_unique<Documents>(); });
}
INSTANTIATE_TEST_SUITE_P(Faults, StoreWriting, testing::ValuesIn(kWriting), titleOf);
