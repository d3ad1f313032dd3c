// The store's test of one package file.
#include "Archive/NSISDecompile.h"
#include "FileText.h"
#include "PackageStore.h"
#include "PeBuilder.h"
#include "VersionRequest.h"

using support::PackageSpec;
using support::SigningKit;
using Tarnwick::OrvUpdate::VersionRequest;

namespace {

class PackageForm : public testing::Test {
protected:
    support::PackageStore mStore;
    support::TrustRoots mTrust{SigningKit().rootPem()};
};

}  // namespace

TEST_F(PackageForm, IsInvalidPackageIsTrueForAGoodPackage) {
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(mStore.put("p.exe")));
}

TEST_F(PackageForm, RefusesAMissingFile) { EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.path("p.exe"))); }

TEST_F(PackageForm, RefusesAnEmptyPath) { EXPECT_FALSE(VersionRequest::isInvalidPakcage("")); }

TEST_F(PackageForm, RefusesAPathWithAZeroByte) {
    const std::string path = mStore.put("p.exe");
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(path + std::string("\0x", 2)));
}

TEST_F(PackageForm, RefusesAnEmptyFile) { EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.putText("p.exe", ""))); }

TEST_F(PackageForm, RefusesADirectory) { EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.path())); }

TEST_F(PackageForm, RefusesWhatIsNoPackage) {
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.putText("text.exe", "no package")));
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.putText("program.exe", support::programImage(64, "x"))));
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.putText("head.exe", "MZ")));
}

TEST_F(PackageForm, RefusesAnUnsignedPackageWithAByteAppended) {
    const std::string path = mStore.put("p.exe");
    support::appendBytes(path, std::string(1, '\0'));
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(path));
}

TEST_F(PackageForm, RefusesATruncatedPackage) {
    const std::string path = mStore.put("p.exe");
    support::cutBytes(path, 1);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(path));
}

TEST_F(PackageForm, TakesASignedPackageAlthoughTheSignatureFollowsTheArchive) {
    const std::string path = mStore.putSigned("p.exe");
    NSISDecompile reader;
    uint64_t size = 0;
    ASSERT_TRUE(reader.open(path, ""));
    ASSERT_TRUE(reader.getSize(size));
    ASSERT_LT(size, std::filesystem::file_size(path));
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(path));
}

TEST_F(PackageForm, RefusesASignedPackageThatWasAltered) {
    const std::string path = mStore.putSigned("p.exe");
    support::flipMiddleByte(path);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(path));
}

TEST_F(PackageForm, RefusesASignedPackageCutWhereTheArchiveEnds) {
    const std::string path = mStore.put("p.exe");
    const auto archive = std::filesystem::file_size(path);
    SigningKit().sign(path, mStore.path("signed.exe"));
    std::filesystem::resize_file(mStore.path("signed.exe"), archive);
    // All that the archive itself can tell is in order.
    NSISDecompile reader;
    uint64_t size = 0;
    ASSERT_TRUE(reader.open(mStore.path("signed.exe"), "") && reader.getSize(size));
    EXPECT_EQ(archive, size);
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.path("signed.exe")));
}

TEST_F(PackageForm, RefusesAPackageOfAnUntrustedSigner) {
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.putSigned("p.exe", SigningKit::Untrusted)));
}

TEST_F(PackageForm, RefusesASignedProgramThatIsNoPackage) {
    const std::string program = mStore.putText("program.exe", support::buildPe({true, {}, {}, "x"}).bytes);
    SigningKit().sign(program, mStore.path("signed.exe"));
    EXPECT_FALSE(VersionRequest::isInvalidPakcage(mStore.path("signed.exe")));
}

TEST_F(PackageForm, LooksAtTheOuterFormAlone) {
    PackageSpec spec;
    spec.versionResource = false;
    spec.files = {{"any.txt", "not what an installation needs"}};
    EXPECT_TRUE(VersionRequest::isInvalidPakcage(mStore.put("p.exe", spec)));
}

TEST_F(PackageForm, TakesEveryKindOfPackage) {
    for (const char* compressor : {"lzma", "zlib", "bzip2"}) {
        for (const bool solid : {true, false}) {
            PackageSpec spec;
            spec.compressor = compressor;
            spec.solid = solid;
            EXPECT_TRUE(VersionRequest::isInvalidPakcage(mStore.put("p.exe", spec))) << compressor << solid;
        }
    }
}

TEST_F(PackageForm, LeavesTheFileAsItIs) {
    const std::string path = mStore.put("p.exe");
    const auto before = support::readText(path);
    VersionRequest::isInvalidPakcage(path);
    EXPECT_EQ(support::readText(path), before);
}
