// Which document a node holds, and what lies on its disk.
#include "FileSizeLimit.h"
#include "NewestFixture.h"
#include "UnwritableDirectory.h"

namespace Tarnwick::OrvUpdate {

class NewestDocumentTest : public Newest {};

TEST_F(NewestDocumentTest, BeginsWithTheDefaultAndSavesItAsItStands) {
    const auto newest = make();
    EXPECT_EQ(newest->compatibleVersion(), "1.0.0.6");
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestDocumentTest, MakesTheWholeChainOfDirectoriesOfItsFile) {
    maxVersionCompatible(directory() + "\\deep\\er", mWorker);
    EXPECT_EQ(support::readText(directory() + "/deep/er/maxVersiomCompatible.dat"), kDefaultDocument);
}

TEST_F(NewestDocumentTest, FileOfAHigherVersionBeatsTheDefaultAndIsNotRewritten) {
    const std::string text = newer("1.0.0.9") + "\n \n";
    support::writeText(file(), text);
    const auto before = std::filesystem::last_write_time(file());
    EXPECT_EQ(make()->compatibleVersion(), "1.0.0.9");
    EXPECT_EQ(fileText(), text);
    EXPECT_EQ(std::filesystem::last_write_time(file()), before);
}

TEST_F(NewestDocumentTest, FileOfTheSameVersionStays) {
    support::writeText(file(), newer("1.0.0.6"));
    const auto newest = make();
    EXPECT_EQ(fileText(), newer("1.0.0.6"));
    EXPECT_TRUE(newest->checkClientToSystemVersionIsCompatible(VersionType_Client, component("7.1"), component("7.2")));
}

TEST_F(NewestDocumentTest, FileOfALowerVersionIsOverwrittenWithTheDefaultAtOnce) {
    support::writeText(file(), newer("1.0.0.5"));
    EXPECT_EQ(make()->compatibleVersion(), "1.0.0.6");
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestDocumentTest, FileThatIsBrokenIsOverwrittenWithTheDefault) {
    for (const char* text : {"no document", "{}", R"({"Version")", "\xff\xfe", "[]"}) {
        support::writeText(file(), text);
        EXPECT_EQ(make()->compatibleVersion(), "1.0.0.6") << text;
        EXPECT_EQ(fileText(), kDefaultDocument) << text;
    }
}

TEST_F(NewestDocumentTest, FileThatIsEmptyIsOverwrittenWithTheDefault) {
    support::writeText(file(), "");
    EXPECT_EQ(make()->compatibleVersion(), "1.0.0.6");
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestDocumentTest, FileWhoseVersionCannotBeReadCountsAsTheLowest) {
    support::writeText(file(), newer("newest"));
    EXPECT_EQ(make()->compatibleVersion(), "1.0.0.6");
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestDocumentTest, LocalTextOfAHigherVersionIsTakenAndSaved) {
    const auto newest = make();
    const std::string text = "\n" + newer("1.0.0.7");
    EXPECT_TRUE(newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(text)));
    EXPECT_EQ(newest->compatibleVersion(), "1.0.0.7");
    EXPECT_EQ(fileText(), text);
}

TEST_F(NewestDocumentTest, LocalTextThatIsNotNewerIsDropped) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("2.0")));
    for (const char* version : {"1.9", "2.0", "2.0.0.0", "0.1", ""}) {
        EXPECT_TRUE(newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(documentOf(kClients, "", version))))
            << version;
        EXPECT_EQ(newest->compatibleVersion(), "2.0") << version;
        EXPECT_EQ(fileText(), newer("2.0")) << version;
    }
}

TEST_F(NewestDocumentTest, LocalTextThatIsEmptyOrBrokenChangesNothingAndIsAnsweredTrue) {
    const auto newest = make();
    for (const char* text : {"", "broken", "{}"}) {
        EXPECT_TRUE(newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(text))) << text;
        EXPECT_EQ(newest->compatibleVersion(), "1.0.0.6") << text;
        EXPECT_EQ(fileText(), kDefaultDocument) << text;
    }
}

TEST_F(NewestDocumentTest, ComparesWholeVersionsNotTheirNumbersAlone) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("1.0.0.6-b1")));
    EXPECT_EQ(newest->compatibleVersion(), "1.0.0.6-b1");
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("1.0.0.6-b1-rB")));
    EXPECT_EQ(newest->compatibleVersion(), "1.0.0.6-b1-rB");
}

TEST_F(NewestDocumentTest, SurvivesARestart) {
    make()->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    EXPECT_EQ(make()->compatibleVersion(), "3.0");
}

TEST_F(NewestDocumentTest, IsHeldThoughItsDirectoryCannotBeWritten) {
    std::filesystem::create_directory(directory());
    const support::UnwritableDirectory refused(directory());
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    EXPECT_EQ(newest->compatibleVersion(), "3.0");
    SharedBuffer text("before");
    EXPECT_TRUE(newest->getVersionCompatibleBuffer(text));
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(fileText(), std::nullopt);
}

TEST_F(NewestDocumentTest, IsHeldThoughAFileStandsInThePlaceOfItsDirectory) {
    support::writeText(directory(), "a file");
    EXPECT_EQ(make()->compatibleVersion(), "1.0.0.6");
    EXPECT_EQ(support::readText(directory()), "a file");
}

TEST_F(NewestDocumentTest, IsHeldAndTheFileStaysWholeWhenTheDiskIsFull) {
    const auto newest = make();
    {
        const support::FileSizeLimit full(100);
        newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    }
    EXPECT_EQ(newest->compatibleVersion(), "3.0");
    EXPECT_EQ(fileText(), kDefaultDocument);
}

TEST_F(NewestDocumentTest, BufferGivesWhatTheDiskHoldsNotWhatIsHeld) {
    const auto newest = make();
    support::writeText(file(), "changed by another");
    SharedBuffer text;
    EXPECT_TRUE(newest->getVersionCompatibleBuffer(text));
    EXPECT_EQ(text.toStdString(), "changed by another");
    std::filesystem::remove(file());
    EXPECT_TRUE(newest->getVersionCompatibleBuffer(text));
    EXPECT_TRUE(text.empty());
    EXPECT_EQ(newest->compatibleVersion(), "1.0.0.6");
}

TEST_F(NewestDocumentTest, GivesTheDocumentItHolds) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    const auto document = newest->getVersionCompatible();
    ASSERT_NE(document, nullptr);
    EXPECT_EQ(fromFirst(*document, kClients, component("7.5")), "1 7.0 8.0");
}

TEST_F(NewestDocumentTest, GivenDocumentStaysAsItIsWhenANewerOneComes) {
    const auto newest = make();
    const auto before = newest->getVersionCompatible();
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    EXPECT_EQ(fromFirst(*before, kClients, component("7.5")), "");
    EXPECT_NE(newest->getVersionCompatible(), before);
}

TEST_F(NewestDocumentTest, ClientCheckTurnsItsTwoRecordsRoundForTheQuestion) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(
        SharedBuffer(documentOf(kClients, rule(kClients, {"1.0", "2.0"}, {"3.0", "4.0"}), "3.0")));
    const auto client = component("3.5"), system = component("1.5");
    EXPECT_TRUE(newest->checkClientToSystemVersionIsCompatible(VersionType_Client, client, system));
    EXPECT_FALSE(newest->checkClientToSystemVersionIsCompatible(VersionType_Client, system, client));
}

TEST_F(NewestDocumentTest, ClientCheckPutsRulesBeforeEquality) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(
        SharedBuffer(documentOf(kClients, rule(kClients, {"1.0", "2.0"}, {"3.0", "4.0"}), "3.0")));
    EXPECT_FALSE(
        newest->checkClientToSystemVersionIsCompatible(VersionType_Client, component("1.5"), component("1.5")));
    EXPECT_TRUE(newest->checkClientToSystemVersionIsCompatible(VersionType_Client, component("9"), component("9")));
    EXPECT_FALSE(newest->checkClientToSystemVersionIsCompatible(VersionType_All, component("9"), component("9")));
}

TEST_F(NewestDocumentTest, ServerCheckKeepsTheOrderOfItsTwoRecords) {
    const auto newest = make();
    newest->loadLocalmaxVersionCompatibleFile(
        SharedBuffer(documentOf(kServers, rule(kServers, {"1.0", "2.0"}, {"3.0", "4.0"}), "3.0")));
    EXPECT_TRUE(newest->checkServerToServerVersionIsCompatible(component("3.5"), component("1.5")));
    EXPECT_FALSE(newest->checkServerToServerVersionIsCompatible(component("1.5"), component("3.5")));
}

TEST_F(NewestDocumentTest, CopiesShareOneStateAndOutliveEachOther) {
    auto first = std::make_unique<maxVersionCompatible>(directory(), mWorker);
    maxVersionCompatible copy = *first;
    maxVersionCompatible assigned(mDir.path() + "/elsewhere", mWorker);
    assigned = copy;
    first->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("3.0")));
    first.reset();
    EXPECT_EQ(copy.compatibleVersion(), "3.0");
    EXPECT_EQ(assigned.compatibleVersion(), "3.0");
    assigned.loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("4.0")));
    EXPECT_EQ(copy.compatibleVersion(), "4.0");
    EXPECT_EQ(fileText(), newer("4.0"));
}

TEST_F(NewestDocumentTest, MayBeAskedFromTheLogWhileADocumentIsRead) {
    const auto newest = make();
    std::string seen;
    Public::Base::setLogSink([&](const Public::Base::LogEntry&) {
        seen = newest->compatibleVersion();
        newest->checkServerToServerVersionIsCompatible(component("1.0"), component("1.0"));
        newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(newer("2.0")));
    });
    const Side strange{"1.0", "2.0", R"(["BeOS"])"};
    newest->loadLocalmaxVersionCompatibleFile(SharedBuffer(documentOf(kClients, rule(kClients, strange), "3.0")));
    Public::Base::setLogSink({});
    EXPECT_EQ(seen, "1.0.0.6");
    EXPECT_EQ(newest->compatibleVersion(), "3.0");
}

TEST_F(NewestDocumentTest, KeepsTheHighestOfManyThatComeAtOnce) {
    const auto newest = make();
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 10; ++i) {
                newest->loadLocalmaxVersionCompatibleFile(
                    SharedBuffer(newer("2." + std::to_string((i * 7 + t * 3) % 40))));
                newest->compatibleVersion();
                newest->getVersionCompatible();
                SharedBuffer text;
                newest->getVersionCompatibleBuffer(text);
                newest->checkClientToSystemVersionIsCompatible(VersionType_Client, component("7.0"), component("7.1"));
            }
        });
    }
    for (auto& thread : threads) thread.join();
    int highest = 0;
    for (int t = 0; t < 4; ++t) {
        for (int i = 0; i < 10; ++i) highest = std::max(highest, (i * 7 + t * 3) % 40);
    }
    EXPECT_EQ(newest->compatibleVersion(), "2." + std::to_string(highest));
    EXPECT_EQ(fileText(), newer(newest->compatibleVersion()));
}

}  // namespace Tarnwick::OrvUpdate
