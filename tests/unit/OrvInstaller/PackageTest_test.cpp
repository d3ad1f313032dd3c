#include "OrvInstaller/PackageTest.h"

#include "FileText.h"
#include "OrvInstaller.h"
#include "PackageMaker.h"
#include "PackageSigner.h"
#include "TempDir.h"

using namespace Tarnwick::OrvUpdate;
using support::PackageSpec;
using support::SigningKit;

namespace {

class PackageTest : public testing::Test {
protected:
    std::string make(const PackageSpec& spec = {}) { return support::makePackage(spec, mPackage); }
    static int check(const std::string& path, const std::string& version = "1.11.0.8", int bits = 64) {
        const ErrorInfo result = OrvInstaller::checkPackage(path, version, bits);
        EXPECT_EQ(result.errorMessage(), "");
        return result.errorCode();
    }
    void change(const std::function<void(std::string&)>& edit) {
        std::string bytes = *support::readText(mPackage);
        edit(bytes);
        support::writeText(mPackage, bytes);
    }

    support::TempDir mDir;
    const std::string mPackage = mDir.path() + "/package.exe";
    const SigningKit mKit;
    const support::TrustRoots mRoots{mKit.rootPem()};
};

/// One package and the verdict on it.
struct VerdictCase {
    const char* title;
    std::function<void(PackageSpec&)> edit;
    std::string version;
    int bits;
    int code;
};
void PrintTo(const VerdictCase& one, std::ostream* out) { *out << one.title; }
class PackageVerdict : public PackageTest, public testing::WithParamInterface<VerdictCase> {};

void asMsi(PackageSpec& spec) { spec.layout = PackageSpec::Msi; }
void withItems(PackageSpec& spec, const std::vector<std::string>& names) {
    for (const std::string& name : names) spec.files.emplace_back(name, "content of " + name);
}

}  // namespace

TEST_P(PackageVerdict, IsAsTold) {
    PackageSpec spec;
    GetParam().edit(spec);
    EXPECT_EQ(check(make(spec), GetParam().version, GetParam().bits), GetParam().code);
}

INSTANTIATE_TEST_SUITE_P(
    Packages, PackageVerdict,
    testing::Values(
        VerdictCase{"SoundTree", [](auto&) {}, "1.11.0.8", 64, 0},
        VerdictCase{"SoundTreeOf32Bits", [](auto& spec) { spec.bits = 32; }, "1.11.0.8", 32, 0},
        VerdictCase{"SoundMsi", asMsi, "1.11.0.8", 64, 0},
        VerdictCase{"WordSizeOfItsPrograms", [](auto& spec) { spec.bits = 0; }, "1.11.0.8", 64, 0},
        VerdictCase{"EveryCompressorZlib", [](auto& spec) { spec.compressor = "zlib"; }, "1.11.0.8", 64, 0},
        VerdictCase{"EveryCompressorBzip2", [](auto& spec) { spec.compressor = "bzip2"; }, "1.11.0.8", 64, 0},
        VerdictCase{"SinglyCompressed", [](auto& spec) { spec.solid = false; }, "1.11.0.8", 64, 0},
        VerdictCase{"AnsiPackage", [](auto& spec) { spec.unicode = false; }, "1.11.0.8", 64, 0},
        VerdictCase{"ServerAloneLacksTheClient",
                    [](auto& spec) {
                        withItems(spec, {"win64.sysbits", "Orv Server\\s.exe"});
                    },
                    "1.11.0.8", 64, -308},
        VerdictCase{"ClientAloneLacksTheServer",
                    [](auto& spec) {
                        withItems(spec, {"win64.sysbits", "Orv Client\\c.exe"});
                    },
                    "1.11.0.8", 64, -308},
        VerdictCase{"ServerMsiAlone",
                    [](auto& spec) {
                        withItems(spec, {"win64.sysbits", "Server.msi"});
                    },
                    "1.11.0.8", 64, -308},
        VerdictCase{"ClientAndServerOfBothLayouts",
                    [](auto& spec) {
                        withItems(spec, {"win64.sysbits", "Orv Client\\c.exe", "Server.msi"});
                    },
                    "1.11.0.8", 64, 0},
        VerdictCase{"AnotherVersion", [](auto&) {}, "1.11.0.9", 64, -428},
        VerdictCase{"AnotherBuildOfTheVersion", [](auto&) {}, "1.11.0.8-b2", 64, -428},
        VerdictCase{"ShorterSpellingOfTheSameVersion", [](auto& spec) { spec.version = "2.0.0.0"; }, "2.0", 64, 0},
        VerdictCase{"AnUnreadableVersionOnOneSide", [](auto&) {}, "latest", 64, -428},
        VerdictCase{"Package32OnEntry64", [](auto& spec) { spec.bits = 32; }, "1.11.0.8", 64, -428},
        VerdictCase{"Package64OnEntry32", [](auto&) {}, "1.11.0.8", 32, -428},
        VerdictCase{"UnknownWordSizeOnEntry64",
                    [](auto& spec) {
                        withItems(spec, {"Orv Client\\c.txt", "Orv Server\\s.txt"});
                    },
                    "1.11.0.8", 64, -428},
        VerdictCase{"UnknownWordSizeOnUnknownEntry",
                    [](auto& spec) {
                        withItems(spec, {"Orv Client\\c.txt", "Orv Server\\s.txt"});
                    },
                    "1.11.0.8", 0, 0},
        VerdictCase{"NoVersionResource", [](auto& spec) { spec.versionResource = false; }, "1.11.0.8", 64, -302},
        VerdictCase{"IncompleteBeforeAnotherVersion",
                    [](auto& spec) {
                        withItems(spec, {"win64.sysbits", "Orv Server\\s.exe"});
                    },
                    "9.9", 64, -308}),
    [](const auto& one) { return one.param.title; });

TEST_F(PackageTest, AnAbsentFileIsInvalid) { EXPECT_EQ(check(mPackage), -416); }

TEST_F(PackageTest, AFileThatIsNoPackageIsUnreadable) {
    support::writeText(mPackage, "MZ but nothing else");
    EXPECT_EQ(check(mPackage), -302);
}

TEST_F(PackageTest, AnEmptyFileIsUnreadable) {
    support::writeText(mPackage, "");
    EXPECT_EQ(check(mPackage), -302);
}

TEST_F(PackageTest, ADirectoryIsUnreadable) { EXPECT_EQ(check(mDir.path()), -302); }

TEST_F(PackageTest, AnUnsignedPackageLongerByOneByteIsRefused) {
    make();
    change([](std::string& bytes) { bytes += 'x'; });
    EXPECT_EQ(check(mPackage), -302);
}

TEST_F(PackageTest, AnUnsignedPackageShorterByOneByteIsRefused) {
    make();
    change([](std::string& bytes) { bytes.pop_back(); });
    EXPECT_EQ(check(mPackage), -302);
}

TEST_F(PackageTest, ASignedPackageIsNotMeasured) {
    const std::string signedPackage = mDir.path() + "/signed.exe";
    mKit.sign(make(), signedPackage);
    EXPECT_NE(std::filesystem::file_size(signedPackage), std::filesystem::file_size(mPackage));
    EXPECT_EQ(check(signedPackage), 0);
}

TEST_F(PackageTest, APackageSignedUnderAForeignRootIsRefused) {
    const std::string signedPackage = mDir.path() + "/signed.exe";
    mKit.sign(make(), signedPackage, SigningKit::Untrusted);
    EXPECT_EQ(check(signedPackage), -302);
}

TEST_F(PackageTest, ASignedPackageThatWasChangedIsRefused) {
    const std::string signedPackage = mDir.path() + "/signed.exe";
    mKit.sign(make(), signedPackage);
    std::string bytes = *support::readText(signedPackage);
    bytes[0x4E] = static_cast<char>(bytes[0x4E] ^ 1);  // in the text that old systems would print
    support::writeText(signedPackage, bytes);
    EXPECT_EQ(check(signedPackage), -302);
}

TEST_F(PackageTest, ASignedPackageCutWhereTheArchiveEndsIsRefused) {
    const std::string signedPackage = mDir.path() + "/signed.exe";
    mKit.sign(make(), signedPackage);
    std::filesystem::resize_file(signedPackage, std::filesystem::file_size(mPackage));
    EXPECT_EQ(check(signedPackage), -302);
}

TEST_F(PackageTest, ABadSignatureIsRefusedAlsoWhereTheLengthIsAsDeclared) {
    // The package declares the length that it will have when it is signed.
    const auto signedAsDeclared = [this](SigningKit::Signer signer) {
        PackageSpec spec;
        spec.crc = "off";
        const std::string signedPackage = mDir.path() + "/signed.exe";
        mKit.sign(make(spec), signedPackage, signer);
        const auto signature = std::filesystem::file_size(signedPackage) - std::filesystem::file_size(mPackage);
        change([&](std::string& bytes) {
            const size_t length = bytes.find("NullsoftInst") + 16;  // of the data, behind the length of the header
            for (uint64_t i = 0, sum = signature; i < 4; ++i) {
                sum += static_cast<unsigned char>(bytes[length + i]);
                bytes[length + i] = static_cast<char>(sum & 0xFF);
                sum >>= 8;
            }
        });
        EXPECT_EQ(check(mPackage), -302);  // too short now
        mKit.sign(mPackage, signedPackage, signer);
        NSISDecompile package;
        uint64_t declared = 0;
        EXPECT_TRUE(package.open(signedPackage, "") && package.getSize(declared));
        EXPECT_EQ(declared, std::filesystem::file_size(signedPackage));
        return signedPackage;
    };
    EXPECT_EQ(check(signedAsDeclared(SigningKit::Publisher)), 0);
    EXPECT_EQ(check(signedAsDeclared(SigningKit::Untrusted)), -302);
}

TEST_F(PackageTest, ContentWhoseChecksumDoesNotHoldIsAnErrorOfTheReader) {
    make();
    change([](std::string& bytes) {
        for (size_t i = bytes.size() - 24; i < bytes.size() - 4; ++i) bytes[i] = static_cast<char>(~bytes[i]);
    });
    EXPECT_EQ(check(mPackage), -606);
}

TEST_F(PackageTest, ContentThatDoesNotDecodeIsAnErrorOfTheReader) {
    PackageSpec spec;
    spec.crc = "off";
    make(spec);
    change([](std::string& bytes) {
        for (size_t i = bytes.size() - 24; i < bytes.size(); ++i) bytes[i] = static_cast<char>(~bytes[i]);
    });
    EXPECT_EQ(check(mPackage), -606);
}

TEST_F(PackageTest, AnEmptyPathIsInvalid) { EXPECT_EQ(check(""), -416); }

TEST_F(PackageTest, NoVersionAtAllIsAnotherVersion) { EXPECT_EQ(check(make(), ""), -428); }

TEST_F(PackageTest, WritesNothing) {
    make();
    check(mPackage);
    EXPECT_EQ(support::filesBelow(mDir.path()), std::set<std::string>{"package.exe"});
}

TEST_F(PackageTest, TellsWhatItFound) {
    PackageSpec spec;
    spec.bits = 32;
    PackageFindings findings;
    EXPECT_FALSE(examinePackage(make(spec), {}, findings));
    EXPECT_EQ(findings.version, "1.11.0.8");
    EXPECT_EQ(findings.systemBits, 32U);
}

TEST_F(PackageTest, TheVersionIsJudgedBeforeSizeAndContent) {
    make();
    change([](std::string& bytes) { bytes += 'x'; });
    PackageFindings findings;
    std::string seen;
    const ErrorInfo result = examinePackage(
        mPackage,
        [&](const std::string& version) {
            seen = version;
            return ErrorInfo(-308, "");
        },
        findings);
    EXPECT_EQ(result.errorCode(), -308);
    EXPECT_EQ(seen, "1.11.0.8");
}

TEST_F(PackageTest, AnAcceptedVersionGoesOnToTheSize) {
    make();
    change([](std::string& bytes) { bytes += 'x'; });
    PackageFindings findings;
    EXPECT_EQ(examinePackage(
                  mPackage, [](const std::string&) { return ErrorInfo(); }, findings)
                  .errorCode(),
              -302);
}

TEST_F(PackageTest, ManyTestsOfOneFileRunBesideEachOther) {
    make();
    std::vector<std::thread> threads;
    std::atomic<int> sound{0};
    for (int i = 0; i < 4; ++i) threads.emplace_back([&] { sound += check(mPackage) == 0 ? 1 : 0; });
    for (auto& thread : threads) thread.join();
    EXPECT_EQ(sound.load(), 4);
}

TEST(PackageContent, AnErrorOfTheReaderComesBeforeMissingComponents) {
    NsisParse content;
    content.setError(IExtractOutFile::ErrorCode_Data);
    EXPECT_EQ(judgeContent(content).errorCode(), -606);
}

TEST(PackageContent, AnErrorOfTheReaderCountsForAWholePackageToo) {
    NsisParse content;
    content.open("Client.msi", false);
    content.open("Server.msi", false);
    EXPECT_EQ(judgeContent(content).errorCode(), 0);
    content.setError(IExtractOutFile::ErrorCode_Checksum);
    EXPECT_EQ(judgeContent(content).errorCode(), -606);
}

TEST(PackageContent, AnEmptyPackageIsIncomplete) { EXPECT_EQ(judgeContent(NsisParse()).errorCode(), -308); }
