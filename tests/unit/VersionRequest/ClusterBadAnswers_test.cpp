// Answers of nodes that lie, or that speak another language.
#include "ClusterFixture.h"

using namespace Tarnwick::OrvUpdate;

namespace {

std::string repeated(const std::string& text, size_t times) {
    std::string all;
    for (size_t count = 0; count < times; ++count) all += text;
    return all;
}

std::string versionRecord(const std::string& softversion, const std::string& systemType = "1") {
    return R"({"softversion":")" + softversion + R"(","serverid":"../../evil","description":"<b>","systemType":)" +
           systemType + R"(,"systemBits":64,"versionType":1,"versionSource":1})";
}

std::string noteOf(const std::string& softversion, const std::string& rest) {
    return R"({"softversion":")" + softversion + R"(","systemType":1,"systemBits":64,"versionType":1,)" + rest + "}";
}

struct BadDocument {
    const char* name;
    std::string text;

    friend void PrintTo(const BadDocument& document, std::ostream* out) { *out << document.name; }
};

std::vector<BadDocument> badDocuments() {
    return {
        {"Nothing", ""},
        {"NotJson", "<html>sorry</html>"},
        {"CutShort", R"([{"softversion":"5.0","serverid")"},
        {"Null", "null"},
        {"Number", "7"},
        {"Text", "\"5.0\""},
        {"EmptyObject", "{}"},
        {"EmptyList", "[]"},
        {"ListOfScalars", R"([1,"2",null,true,[],{}])"},
        {"MissingMembers", R"([{"softversion":"5.0"},{"serverid":"a"}])"},
        {"DeepLists", repeated("[", 200000)},
        {"DeepObjects", repeated(R"({"a":)", 100000) + "1" + repeated("}", 100000)},
        {"ZeroBytes", std::string(4096, '\0')},
        {"NotUtf8", "[\"\xFF\xFE\xC0\"]"},
        {"HugeNumber", "[" + repeated("9", 100000) + "]"},
        {"HugeKey", "{\"" + repeated("k", 1000000) + "\":1}"},
    };
}

class ClusterBadDocument : public ClusterFixture, public testing::WithParamInterface<BadDocument> {};
class ClusterBadAnswers : public ClusterFixture {
protected:
    void queryVersions(const std::string& document) {
        know({"a"});
        mRequest->querySystemVersion(into(mHeard));
        answer("a", document);
    }
    void queryNotes(const std::string& document) {
        know({"a"});
        mRequest->queryReleaseHistory(into(mHeard));
        answer("a", document);
    }
    bool reportedWell() const { return heard() == HeardList{{"a", 0, true}}; }
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Cluster, ClusterBadDocument, testing::ValuesIn(badDocuments()),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(ClusterBadDocument, OfVersionsAddsNothingAndLosesNothingOfTheOthers) {
    mRequest->addVersion(support::entry("1.0", 1));
    mRequest->addVersion(support::entry("2.0", 2));
    know({"a", "b"});
    mRequest->querySystemVersion(into(mHeard));
    answer("b", versionDocument({"5.0"}));
    answer("a", GetParam().text);
    EXPECT_EQ(heard(), (HeardList{{"b", 0, false}, {"a", 0, true}}));
    EXPECT_EQ(versions(), (Texts{"1.0", "2.0", "5.0"}));
}

TEST_P(ClusterBadDocument, OfNotesAddsNothingAndLosesNothingOfTheOthers) {
    know({"a", "b"});
    mRequest->queryReleaseHistory(into(mHeard));
    answer("b", noteDocument("1.0", "of b"));
    answer("a", GetParam().text);
    EXPECT_EQ(heard(), (HeardList{{"b", 0, false}, {"a", 0, true}}));
    EXPECT_EQ(notes(), Texts{"1.0 of b"});
}

// --- Bodies

TEST_F(ClusterBadAnswers, AnswerWithoutABodyCountsAsAnEmptyOne) {
    know({"a"});
    mRequest->querySystemVersion(into(mHeard));
    mLink->to("a").answer(ErrorInfo());
    EXPECT_TRUE(reportedWell());
    EXPECT_EQ(versions(), Texts());
}

TEST_F(ClusterBadAnswers, BodyOfAnotherRecordIsNotRead) {
    const auto body = notifyBody(versionDocument({"5.0"}));
    know({"a"});
    mRequest->querySystemVersion(into(mHeard));
    mLink->to("a").answer(ErrorInfo(), &body);
    EXPECT_TRUE(reportedWell());
    EXPECT_EQ(versions(), Texts());
}

TEST_F(ClusterBadAnswers, BodyOfAnotherRecordBringsNoNotes) {
    const auto body = notifyBody(noteDocument("1.0", "text"));
    know({"a"});
    mRequest->queryReleaseHistory(into(mHeard));
    mLink->to("a").answer(ErrorInfo(), &body);
    EXPECT_TRUE(reportedWell());
    EXPECT_EQ(notes(), Texts());
}

// --- Versions

TEST_F(ClusterBadAnswers, VersionTextThatIsAPathNeverBecomesOne) {
    mRequest->start(Version("1.0", 0), {}, {}, mStore.path());
    const char* const paths[] = {"../../../etc/passwd", "..\\\\..\\\\x", "/etc", "C:\\\\Windows", "5.0/../../x", "CON"};
    for (const char* path : paths) {
        mLink->forget();
        queryVersions("[" + versionRecord(path) + "]");
        for (const auto& version : mRequest->getVersions()) {
            const auto file = version->getPackageFile();
            EXPECT_EQ(version->getVersion().toString(), "") << path;
            EXPECT_TRUE(file.starts_with(mStore.path())) << file;
            EXPECT_EQ(file.find(".."), std::string::npos) << file;
        }
    }
}

TEST_F(ClusterBadAnswers, NumbersOutOfEveryRangeNameNoPlaceOutsideTheStore) {
    mRequest->start(Version("1.0", 0), {}, {}, mStore.path());
    queryVersions("[" + versionRecord("5.0", "-1") + "," + versionRecord("6.0", "99999999999999999999") + "," +
                  versionRecord("7.0", "\"../..\"") + "]");
    ASSERT_EQ(versions(), (Texts{"5.0", "6.0", "7.0"}));
    for (const auto& version : mRequest->getVersions()) {
        EXPECT_NE(version->getPackageFile().find("/Unknown x64 All/"), std::string::npos) << version->getPackageFile();
    }
}

TEST_F(ClusterBadAnswers, SameVersionTenThousandTimesIsOneEntry) {
    queryVersions("[" + repeated(versionRecord("5.0") + ",", 10000) + versionRecord("5.0") + "]");
    EXPECT_EQ(versions(), Texts{"5.0"});
}

TEST_F(ClusterBadAnswers, LongListIsTakenWhole) {
    std::string list;
    for (int number = 0; number < 10000; ++number) list += versionRecord("5." + std::to_string(number)) + ",";
    queryVersions("[" + list + versionRecord("6.0") + "]");
    EXPECT_TRUE(reportedWell());
    EXPECT_EQ(mRequest->getVersions().size(), 10001U);
    EXPECT_EQ(mRequest
                  ->queryNewestVersion(SystemType(0), SystemBits(0), ProjectType(0), VersionType(0), VersionSource(0),
                                       Version())
                  ->getVersion()
                  .toString(),
              "6.0");
}

TEST_F(ClusterBadAnswers, GoodElementsBetweenBadOnesAreTaken) {
    queryVersions("[7," + versionRecord("5.0") + ",{\"softversion\":\"6.0\"},null," + versionRecord("7.0") + "]");
    EXPECT_EQ(versions(), (Texts{"5.0", "7.0"}));
}

TEST_F(ClusterBadAnswers, HugeDescriptionIsKeptAsItIs) {
    JsonValue document = support::entry("5.0", 1)->buildVersionInfo();
    const std::string text = repeated("long ", 200000);
    document["description"] = text;
    queryVersions(document.toStyledString(Public::Base::WriteStyle_Indented).toStdString());
    ASSERT_EQ(versions(), Texts{"5.0"});
    EXPECT_EQ((*mRequest->getVersions().begin())->getDescribe(), text);
}

TEST_F(ClusterBadAnswers, NodeThatClaimsAPackageOfThisDiskTakesItsEntry) {
    mRequest->addVersion(support::entry("5.0", 1));
    queryVersions(versionDocument({"5.0"}));
    ASSERT_EQ(versions(), Texts{"5.0"});
    EXPECT_EQ((*mRequest->getVersions().begin())->getStoragePosition(), StoragePosition_Node);
}

// --- Notes

TEST_F(ClusterBadAnswers, NotesWithValuesOutOfEveryRangeAreKeptAsText) {
    queryNotes("[" + noteOf("1.0", R"("versionInfo":"a","updateTime":"-5","displayIndex":-2147483648)") + "," +
               noteOf("2.0", R"("versionInfo":"b","updateTime":"soon","displayIndex":"x")") + "," +
               noteOf("../x", R"("versionInfo":"c","updateTime":"1","displayIndex":0)") + "]");
    EXPECT_EQ(notes(), (Texts{" c", "1.0 a", "2.0 b"}));
}

TEST_F(ClusterBadAnswers, LongListOfNotesIsTakenWhole) {
    std::string list;
    for (int number = 0; number < 10000; ++number) {
        list += noteOf("5." + std::to_string(number), R"("versionInfo":"n","updateTime":"1","displayIndex":0)") + ",";
    }
    queryNotes("[" + list + noteOf("6.0", R"("versionInfo":"n","updateTime":"1","displayIndex":0)") + "]");
    EXPECT_TRUE(reportedWell());
    EXPECT_EQ(mRequest->getReleaseHistory().size(), 10001U);
}
