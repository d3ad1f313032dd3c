// How a push fails: each row of what can go wrong, with its code, its log line and its one call back.
#include <filesystem>
#include <ostream>

#include "NoMoreThreads.h"
#include "PostDownload.h"
#include "PostDownloadFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::PackageSpec;

namespace {

struct Refusal {
    const char* name;
    std::function<void(const support::PackageStore&, const std::string&)> prepare;
    int code;
};
void PrintTo(const Refusal& one, std::ostream* out) { *out << one.name; }

void putEdited(const std::string& path, const std::function<void(PackageSpec&)>& edit) {
    PackageSpec spec;
    edit(spec);
    support::makePackage(spec, path);
}

class PostDownloadRefusal : public PostDownloadFixture, public testing::WithParamInterface<Refusal> {};

using Store = support::PackageStore;
const std::vector<Refusal> sRefusals{
    {"AbsentFile", [](const Store&, const std::string&) {}, -416},
    {"EmptyFile", [](const Store& store, const std::string&) { store.putText("p.exe", ""); }, -416},
    {"FileOf4GiB",
     [](const Store& store, const std::string& path) {
         store.put("p.exe");
         std::filesystem::resize_file(path, 0x100000000ULL);
     },
     -416},
    {"NoPackage", [](const Store& store, const std::string&) { store.putText("p.exe", "no package"); }, -302},
    {"UnsignedPackageThatIsNotWhole",
     [](const Store& store, const std::string& path) {
         store.put("p.exe");
         support::appendBytes(path, "x");
     },
     -302},
    {"PackageWithoutAVersion",
     [](const Store&, const std::string& path) { putEdited(path, [](auto& spec) { spec.versionResource = false; }); },
     -302},
    {"PackageOfAnotherEdition", [](const Store& store, const std::string&) { store.put("p.exe", "2.0.0.0-oem7"); },
     -308},
    {"PackageWithoutAServer",
     [](const Store&, const std::string& path) {
         putEdited(path, [](auto& spec) { spec.files = {{"Orv Client\\a.exe", support::programImage(64, "a")}}; });
     },
     -308},
    {"PackageWithoutAClient",
     [](const Store&, const std::string& path) {
         putEdited(path, [](auto& spec) { spec.files = {{"Orv Server\\a.exe", support::programImage(64, "a")}}; });
     },
     -308},
    {"ContentThatDoesNotDecode",
     [](const Store&, const std::string& path) {
         putEdited(path, [](auto& spec) { spec.crc = "off"; });
         std::string bytes = support::readText(path).value();
         for (size_t i = bytes.size() - 24; i < bytes.size(); ++i) bytes[i] = static_cast<char>(~bytes[i]);
         support::writeText(path, bytes);
     },
     -606},
};

class PostDownloadFailures : public PostDownloadFixture {
protected:
    static constexpr char kRefused[] = "send version fail! errcode:";
    static std::string refused(int code) { return kRefused + std::to_string(code); }
};

struct BadAnswer {
    const char* name;
    int code;
};
void PrintTo(const BadAnswer& one, std::ostream* out) { *out << one.name; }

class PostDownloadBadAnswer : public PostDownloadFixture, public testing::WithParamInterface<BadAnswer> {};

}  // namespace

TEST_P(PostDownloadRefusal, SendsNothingAndCallsBack) {
    GetParam().prepare(mStore, mPackage);
    beginAndSettle();
    expectFailed(GetParam().code, "send version fail! errcode:" + std::to_string(GetParam().code));
    EXPECT_EQ(mLink->sent.count(), 0U);
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_NE(mWaiter.thread(), std::this_thread::get_id());
}

INSTANTIATE_TEST_SUITE_P(Package, PostDownloadRefusal, testing::ValuesIn(sRefusals),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_P(PostDownloadBadAnswer, EndsThePushWithWhatTheAnswerTells) {
    begin(0x180000);
    mLink->answer(0);
    mLink->answer(1, GetParam().code);
    expectFailed(GetParam().code, "post version fail! errcode:" + std::to_string(GetParam().code));
    EXPECT_EQ(mLink->sent.count(), 2U);
}

INSTANTIATE_TEST_SUITE_P(Answer, PostDownloadBadAnswer,
                         testing::Values(BadAnswer{"GeneralFailure", -1}, BadAnswer{"TimeOut", -202},
                                         BadAnswer{"DeadLink", -203}, BadAnswer{"NoSuchNode", -204},
                                         BadAnswer{"BadDocument", -301}, BadAnswer{"NoSuchPackage", -416},
                                         BadAnswer{"PeerUnreachable", -425}, BadAnswer{"SystemFailure", -10028}),
                         [](const auto& row) { return std::string(row.param.name); });

TEST_F(PostDownloadFailures, FirstChunkRefusedEndsThePush) {
    begin(0x180000);
    mLink->answer(0, -203);
    expectFailed(-203, "post version fail! errcode:-203");
    EXPECT_EQ(progress(), 0.0F);
}

TEST_F(PostDownloadFailures, WithoutAProviderNothingIsLookedAt) {
    mProvider = nullptr;
    mStore.put("p.exe");
    beginAndSettle();
    expectFailed(-1, refused(-1));
}

TEST_F(PostDownloadFailures, WithoutARequestNothingIsLookedAt) {
    mPush = std::make_shared<PostDownload>(nullptr, mPackage, mProvider, VersionSource_Online, "peer");
    EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    expectFailed(-1, refused(-1));
}

TEST_F(PostDownloadFailures, WithoutAConnectionItFailsAfterTheExamination) {
    mProvider->direct = nullptr;
    mStore.put("p.exe");
    beginAndSettle();
    expectFailed(-200, "connection empty!");
    EXPECT_NE(mWaiter.thread(), std::this_thread::get_id());
}

TEST_F(PostDownloadFailures, BadPackageIsToldBeforeTheMissingConnection) {
    mProvider->direct = nullptr;
    beginAndSettle();
    expectFailed(-416, refused(-416));
}

TEST_F(PostDownloadFailures, ConnectionMayGoInTheMiddle) {
    begin(0x180000);
    mLink->chunk(0);
    mProvider->direct = nullptr;
    mLink->answer(0);
    expectFailed(-200, "connection empty!");
    EXPECT_GT(progress(), 0.0F);
}

TEST_F(PostDownloadFailures, ChunkThatCannotBeSentEndsThePush) {
    mLink->refuses = true;
    mStore.put("p.exe");
    beginAndSettle();
    expectFailed(-1, "post version fail! msgid = 0");
}

TEST_F(PostDownloadFailures, ChunkThatCannotBeSentIsNotTriedThroughTheMaster) {
    const auto master = std::make_shared<support::ChunkLink>();
    mProvider->master = master;
    mLink->refuses = true;
    mStore.put("p.exe");
    beginAndSettle();
    EXPECT_EQ(master->sent.count(), 0U);
    EXPECT_EQ(error(), -1);
}

TEST_F(PostDownloadFailures, ForwardedChunkThatCannotBeSentEndsThePush) {
    mProvider->direct = nullptr;
    mProvider->master = mLink;
    mLink->refuses = true;
    mStore.put("p.exe");
    beginAndSettle();
    expectFailed(-1, "post version fail! msgid = 0");
}

TEST_F(PostDownloadFailures, ReachesTheCallbackOfStartOnly) {
    beginAndSettle();
    const support::Waiter second;
    EXPECT_EQ(mPush->start(second.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(second.calls(), 0);
}

TEST_F(PostDownloadFailures, SignedPackageThatWasTamperedWithIsRefused) {
    mStore.putSigned("p.exe");
    support::flipMiddleByte(mPackage);
    beginAndSettle();
    expectFailed(-302, refused(-302));
}

TEST_F(PostDownloadFailures, WithoutAThreadItCallsBackBeforeStartReturnsTheSystemsFailure) {
    mStore.put("p.exe");
    mPush = makePush();
    {
        const support::NoMoreThreads full;
        EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), -10011);
        EXPECT_EQ(mWaiter.calls(), 1);
        EXPECT_EQ(mWaiter.thread(), std::this_thread::get_id());
    }
    EXPECT_EQ(error(), -10011);
    EXPECT_TRUE(mLog.has(2, refused(-10011)));
    EXPECT_EQ(mPush->start(mWaiter.callback()).errorCode(), 0);
    Public::Base::settleDetached();
    EXPECT_EQ(mLink->sent.count(), 0U);
}
