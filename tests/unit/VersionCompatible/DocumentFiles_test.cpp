// Compatibility documents in files.
#include "CompatibilityFixture.h"
#include "Devices.h"
#include "FileKinds.h"
#include "FileText.h"
#include "TempDir.h"

namespace Tarnwick::OrvUpdate {

namespace {

class DocumentFile : public testing::Test {
protected:
    std::string path() const { return mDir.path() + "/rules.json"; }
    int codeOf(const std::string& path) { return mDocument.loadFromFile(path).errorCode(); }

    support::TempDir mDir;
    VersionCompatible mDocument;
};

/// Counts what it is given to read.
class RecordingDocument : public VersionCompatible {
public:
    ErrorInfo loadFromMem(const std::string& text) override {
        mTexts.push_back(text);
        return {-77, ""};
    }
    std::vector<std::string> mTexts;
};

}  // namespace

TEST_F(DocumentFile, IsRead) {
    support::writeText(path(), documentOf(kClients, rule(kClients)));
    EXPECT_EQ(codeOf(path()), 0);
    EXPECT_EQ(fromFirst(mDocument, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST_F(DocumentFile, IsReadThroughBackslashesToo) {
    support::writeText(path(), documentOf(kClients, rule(kClients)));
    EXPECT_EQ(codeOf(mDir.path() + "\\rules.json"), 0);
}

TEST_F(DocumentFile, ThatIsMissingGivesCode1) { EXPECT_EQ(codeOf(path()), -1); }

TEST_F(DocumentFile, ThatIsEmptyGivesCode1) {
    support::writeText(path(), "");
    EXPECT_EQ(codeOf(path()), -1);
}

TEST_F(DocumentFile, ThatIsADirectoryGivesCode1) { EXPECT_EQ(codeOf(mDir.path()), -1); }

TEST_F(DocumentFile, WithoutAPathGivesCode1) { EXPECT_EQ(codeOf(""), -1); }

TEST_F(DocumentFile, ThatTellsNoLengthGivesCode1) { EXPECT_EQ(codeOf(support::kDeviceWithoutLength), -1); }

TEST_F(DocumentFile, ThatIsNoJsonGivesCode301) {
    support::writeText(path(), "no document");
    EXPECT_EQ(codeOf(path()), -301);
}

TEST_F(DocumentFile, WithoutAVersionGivesCode301) {
    support::writeText(path(), "{}");
    EXPECT_EQ(codeOf(path()), -301);
}

TEST_F(DocumentFile, LongerThanAnyJsonGivesCode301WithoutBeingRead) {
    support::makeSparse(path(), uint64_t{1} << 40);  // a hole that no memory holds
    EXPECT_EQ(codeOf(path()), -301);
}

TEST_F(DocumentFile, GoesThroughTheLoadOfTextThatAClassPutsInItsPlace) {
    support::writeText(path(), "the whole text");
    RecordingDocument document;
    EXPECT_EQ(document.loadFromFile(path()).errorCode(), -77);
    EXPECT_EQ(document.mTexts, std::vector<std::string>{"the whole text"});
}

TEST_F(DocumentFile, FailureLeavesTheDocumentAsItWas) {
    mDocument.loadFromMem(documentOf(kClients, rule(kClients)));
    EXPECT_EQ(codeOf(path()), -1);
    EXPECT_EQ(fromFirst(mDocument, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

TEST_F(DocumentFile, FactoryGivesTheDocumentOrNull) {
    EXPECT_EQ(IVersionCompatible::loadFromFile(path()), nullptr);
    support::writeText(path(), "{}");
    EXPECT_EQ(IVersionCompatible::loadFromFile(path()), nullptr);
    support::writeText(path(), documentOf(kClients, rule(kClients)));
    const auto document = IVersionCompatible::loadFromFile(path());
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(fromFirst(*document, kClients, component("1.2.0.0")), "1 1.2.0.0 1.3.0.0");
}

}  // namespace Tarnwick::OrvUpdate
