// What goes wrong with a transfer from the cloud, what it leaves on disk, and what a second run inherits.
#include "HttpTransferFixture.h"

using namespace Tarnwick::OrvUpdate;
using Public::Base::File;
using support::BadScript;
using support::eventually;
using support::readText;
using support::Waiter;

namespace {

constexpr int kNoSpace = -10028;  // the system's "No space left on device"

class HttpTransferFailure : public support::HttpTransferFixture {
protected:
    /// The texts of the log so far.
    std::vector<std::string> logged() const {
        std::vector<std::string> texts;
        for (const auto& entry : mLog.entries()) {
            EXPECT_EQ(entry.level, 2);
            EXPECT_EQ(entry.file, "OrvUpdate/Src/OrvDownload");
            texts.push_back(entry.text);
        }
        return texts;
    }
    std::string removal() const { return "onHttpFinishCallback() remove fileName:" + mPath + "\r\n"; }
    using Texts = std::vector<std::string>;
};

/// A disk that takes so many bytes.
class FullFile : public File {
public:
    explicit FullFile(size_t room) : mRoom(room) {}
    size_t write(const void* data, size_t length) override {
        const size_t taken = std::min(mRoom, length);
        mRoom -= taken;
        mWritten.append(static_cast<const char*>(data), taken);
        ++mWrites;
        if (taken < length) Public::Base::ErrorInfo::setLastSystemError(ENOSPC);
        return taken;
    }
    size_t mRoom;
    std::string mWritten;
    int mWrites = 0;
};

/// Takes nothing and records no error.
class SilentFile : public File {
public:
    size_t write(const void*, size_t) override { return 0; }
};

struct BadAnswer {
    std::string name;
    BadScript script;
    int status;  // as it is logged
};

class BadAnswers : public HttpTransferFailure, public testing::WithParamInterface<BadAnswer> {};

const std::string sBody(600, 'b');

}  // namespace

TEST_P(BadAnswers, EndTheTransferAndDeleteTheFile) {
    prepareScript(GetParam().script);
    run();
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "");
    EXPECT_FALSE(content());
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(access().client());
    EXPECT_EQ(access().fileName(), mPath);
    EXPECT_EQ(logged(),
              (Texts{"download http version fail! statuscode:" + std::to_string(GetParam().status), removal()}));
    drain();
    EXPECT_EQ(mWaiter.calls(), 1);
}

INSTANTIATE_TEST_SUITE_P(HttpTransfer, BadAnswers,
                         testing::Values(BadAnswer{"NotFound", BadScript::status(404, sBody), 404},
                                         BadAnswer{"NotFoundWithoutABody", BadScript::empty(404), 404},
                                         BadAnswer{"ServerFailure", BadScript::status(500, sBody), 500},
                                         BadAnswer{"AnotherSuccess", BadScript::status(206, sBody), 206},
                                         BadAnswer{"NoContent", BadScript::empty(204), 204},
                                         BadAnswer{"EmptyBody", BadScript::empty(200), 200},
                                         BadAnswer{"NoLength", BadScript::noLength(sBody), 200},
                                         BadAnswer{"Chunks", BadScript::chunked(sBody, 100), 200},
                                         BadAnswer{"ChunksCutShort", BadScript::chunkedCutShort(sBody, 100), 0},
                                         BadAnswer{"BodyCutShort", BadScript::closeAt(sBody, 200), 0},
                                         BadAnswer{"ResetInTheBody", BadScript::resetAt(sBody, 200), 0},
                                         BadAnswer{"LengthTooLarge", BadScript::wrongLength(sBody, 10000), 0},
                                         BadAnswer{"ClosedAtOnce", BadScript::closeAtOnce(), 0},
                                         BadAnswer{"Garbage", BadScript::garbage(), 0},
                                         BadAnswer{"RedirectToItself", BadScript::redirect("/p.exe"), 0}),
                         [](const auto& each) { return each.param.name; });

TEST_F(HttpTransferFailure, NobodyListens) {
    std::string url;
    {
        const support::HttpFileServer gone;
        url = gone.url("/p.exe");
    }
    prepare(url);
    run();
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:0", removal()}));
}

TEST_F(HttpTransferFailure, TimeOutEndsTheTransfer) {
    startSilent();
    finishWith(408);
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:408", removal()}));
}

TEST_F(HttpTransferFailure, KeepsTheLastProgress) {
    prepareScript(BadScript::closeAt(text(400), 100));
    run();
    EXPECT_EQ(progress(), 0.25F);
    EXPECT_EQ(access().received(), 100U);
    EXPECT_EQ(access().total(), 400U);
}

TEST_F(HttpTransferFailure, CancelAfterwardsTellsOfTheFileOnceMore) {
    prepareBody("nothing", 404);
    run();
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_TRUE(mLog.has(4, "HttpDownload cancel remove file " + mPath + "\n"));
    EXPECT_EQ(error(), -1);
}

TEST_F(HttpTransferFailure, StartClearsTheErrorOfTheRunBefore) {
    prepareBody("nothing", 404);
    run();
    EXPECT_EQ(error(), -1);
    mServer.hold("/p.exe");
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), 0);
    ASSERT_TRUE(mServer.waitForHeld("/p.exe"));
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait(2));
    EXPECT_EQ(error(), -1);
}

// The length.

TEST_F(HttpTransferFailure, BodyWithoutALengthIsCountedButNotWritten) {
    BadScript script;
    prepareScript(script.send("HTTP/1.1 200 OK\r\n\r\n" + text(500)).hang());
    ASSERT_EQ(start(), 0);
    EXPECT_TRUE(eventually([&] { return access().received() == 500; }));
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(progress(), 0.0F);
    EXPECT_EQ(content(), "");
    mTransfer->cancel();
}

TEST_F(HttpTransferFailure, LengthIsReadAfreshFromEveryPiece) {
    startSilent();
    access().receive("ab", "8");
    EXPECT_EQ(progress(), 0.25F);
    access().receive("cd", "4");
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(access().total(), 4U);
    access().receive("ef", {});
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(access().received(), 6U);
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(content(), "abcd");
}

TEST_F(HttpTransferFailure, LengthThatIsNoNumberCountsAsNone) {
    startSilent();
    for (const char* length : {"", "many", "-5", "0"}) access().receive("ab", length);
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(access().received(), 8U);
    EXPECT_EQ(content(), "");
}

TEST_F(HttpTransferFailure, ProgressIsDividedAsDoublesAndNarrowed) {
    startSilent();
    access().receive("a", "3");
    EXPECT_EQ(progress(), static_cast<float>(1.0 / 3.0));
    access().receive("a", "18446744073709551615");
    EXPECT_EQ(progress(), static_cast<float>(2.0 / 18446744073709551615.0));
}

TEST_F(HttpTransferFailure, BodyLongerThanItsLengthIsWrittenWholeAndCountsAsComplete) {
    startSilent();
    access().receive("0123456789", "12");
    access().receive("abcdef", "12");
    access().receive("more", "12");
    EXPECT_EQ(access().received(), 12U);
    EXPECT_EQ(progress(), 1.0F);
    finishWith(200);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "0123456789abcdefmore");
    EXPECT_EQ(error(), 0);
}

TEST_F(HttpTransferFailure, FullBodyOfAnotherStatusIsDeleted) {
    startSilent();
    access().receive("abcd", "4");
    finishWith(203);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
}

TEST_F(HttpTransferFailure, ShortBodyOfStatus200IsDeleted) {
    startSilent();
    access().receive("abc", "4");
    finishWith(200);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(content());
    EXPECT_EQ(logged(), (Texts{"download http version fail! statuscode:200", removal()}));
}

// What a second run inherits.

TEST_F(HttpTransferFailure, SecondRunCountsOnFromTheOldFiguresAndIsClamped) {
    const std::string body = text(4000);
    prepareScript(BadScript::closeAt(body, 2500));
    run();
    EXPECT_EQ(access().received(), 2500U);
    BadScript half;
    mBadServer.script("/p.exe",
                      half.send("HTTP/1.1 200 OK\r\nContent-Length: 4000\r\n\r\n" + body.substr(0, 2000)).hang());
    EXPECT_EQ(start(), 0);
    ASSERT_TRUE(eventually([&] { return content() && content()->size() == 2000; }));
    EXPECT_TRUE(eventually([&] { return progress() == 1.0F; }));
    EXPECT_EQ(access().received(), 4000U);
    EXPECT_FALSE(mTransfer->finish());
    mTransfer->cancel();
}

TEST_F(HttpTransferFailure, SecondRunBringsTheWholeFileInSpiteOfTheOldFigures) {
    const std::string body = text(4000);
    prepareScript(BadScript::closeAt(body, 2500));
    run();
    mBadServer.script("/p.exe", BadScript::status(200, body));
    run(2);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(content(), body);
    EXPECT_EQ(access().received(), 4000U);
}

TEST_F(HttpTransferFailure, SecondRunBeginsWithAnEmptyFileAndTheOldProgress) {
    prepareScript(BadScript::closeAt(text(400), 100));
    run();
    mBadServer.script("/p.exe", BadScript::hangBeforeHeaders());
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(content(), "");
    EXPECT_EQ(progress(), 0.25F);
    EXPECT_EQ(access().received(), 100U);
}

TEST_F(HttpTransferFailure, ShortSecondBodyPassesOnTheFiguresOfTheFirst) {
    prepareScript(BadScript::closeAt(text(400), 300));
    run();
    mBadServer.script("/p.exe", BadScript::hangBeforeHeaders());
    EXPECT_EQ(start(), 0);
    access().receive(text(150), "400");
    finishWith(200);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(content(), text(150));
}

TEST_F(HttpTransferFailure, EmptySecondBodyPassesOnTheFiguresOfAWholeFirst) {
    prepareBody("no package");
    run();
    mServer.serve("/p.exe", "");
    run(2);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "");
}

TEST_F(HttpTransferFailure, BodyOfAFailedAnswerCountsForTheNextRun) {
    prepareBody(text(30), 404);
    run();
    EXPECT_EQ(access().received(), 30U);
    EXPECT_EQ(progress(), 1.0F);
    mServer.serve("/p.exe", text(20));
    run(2);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(access().received(), 20U);
    EXPECT_EQ(content(), text(20));
}

// Refused starts.

TEST_F(HttpTransferFailure, StartWithoutTheVersionGivesTheCodeAndCallsNobody) {
    prepareBody("body");
    mVersion.reset();
    const ErrorInfo result = mTransfer->start(mWaiter.callback());
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(logged(), Texts{"download http version fail! errcode:-1"});
    EXPECT_NE(mLog.entries()[0].function.find("HttpDownload::start"), std::string::npos);
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(mServer.requestCount("/p.exe"), 0U);
}

TEST_F(HttpTransferFailure, StartWithoutTheVersionForgetsTheFile) {
    prepareBody("body");
    run();
    EXPECT_EQ(access().fileName(), mPath);
    mVersion.reset();
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(access().fileName(), "");
    mTransfer->cancel();
    EXPECT_EQ(content(), "body");
    EXPECT_TRUE(mTransfer->finish());
}

TEST_F(HttpTransferFailure, FileThatCannotBeOpenedGivesTheCodeAndCallsNobody) {
    std::filesystem::create_directories(mPath);
    prepareBody("body");
    const ErrorInfo result = mTransfer->start(mWaiter.callback());
    EXPECT_EQ(result.errorCode(), -602);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(error(), -602);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(logged(), Texts{"download http version fail! errcode:-602"});
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(access().client());
    EXPECT_EQ(access().fileName(), "");
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(mServer.requestCount("/p.exe"), 0U);
}

TEST_F(HttpTransferFailure, FileThatCannotBeOpenedForWantOfItsDirectoryIsTold) {
    mStore.putText("cloud", "a file where the directory is to be");
    prepareBody("body");
    EXPECT_EQ(start(), -602);
    EXPECT_EQ(readText(mStore.path("cloud")), "a file where the directory is to be");
}

TEST_F(HttpTransferFailure, FileThatCannotBeOpenedLeavesTheParentDirectory) {
    mPath = mStore.path("new/" + std::string(300, 'n') + ".exe");
    prepareBody("body");
    EXPECT_EQ(start(), -602);
    EXPECT_TRUE(std::filesystem::is_directory(mStore.path("new")));
    EXPECT_TRUE(support::filesBelow(mStore.path()).empty());
}

TEST_F(HttpTransferFailure, StartsAgainOnceTheFileCanBeOpened) {
    std::filesystem::create_directories(mPath);
    prepareBody("body");
    EXPECT_EQ(start(), -602);
    std::filesystem::remove(mPath);
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), 0);
    EXPECT_EQ(content(), "body");
}

TEST_F(HttpTransferFailure, RequestRefusedLeavesFileAndClientSet) {
    prepare("ftp://127.0.0.1/p.exe");
    const ErrorInfo result = mTransfer->start(mWaiter.callback());
    EXPECT_EQ(result.errorCode(), -1);
    EXPECT_EQ(result.errorMessage(), "");
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(logged(), Texts{"download http version fail! errcode:-1"});
    EXPECT_TRUE(access().file());
    EXPECT_TRUE(access().client());
    EXPECT_EQ(access().fileName(), mPath);
    EXPECT_EQ(content(), "");
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(HttpTransferFailure, StartAfterARefusedRequestGivesSuccessAndDoesNothing) {
    prepare("ftp://127.0.0.1/p.exe");
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(logged().size(), 1U);
    drain();
    EXPECT_EQ(mWaiter.calls(), 0);
}

TEST_F(HttpTransferFailure, OnlyCancelClearsTheWayAfterARefusedRequest) {
    prepare("ftp://127.0.0.1/p.exe");
    start();
    mTransfer->stop();
    EXPECT_EQ(start(), 0);
    EXPECT_EQ(mTransfer->cancel().errorCode(), 0);
    EXPECT_FALSE(content());
    EXPECT_EQ(error(), -1);
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(content(), "");
}

TEST_F(HttpTransferFailure, RequestWithoutAWorkerIsRefused) {
    prepareBody("body");
    mTransfer = std::make_shared<HttpDownload>(nullptr, mVersion);
    EXPECT_EQ(start(), -1);
    EXPECT_EQ(content(), "");
}

TEST_F(HttpTransferFailure, StartFetchesNothingWhileAClientIsStillHeld) {
    prepareBody("body");
    access().setClient(std::make_shared<Public::Network::HTTPClient>(mWorker, "earlier"));
    EXPECT_EQ(start(), 0);
    EXPECT_FALSE(access().file());
    EXPECT_FALSE(content());
    mTransfer->stop();
    run();
    EXPECT_EQ(content(), "body");
}

// Faults of the disk.

TEST_F(HttpTransferFailure, WriteFaultIsRecordedButDoesNotUndoFinish) {
    std::filesystem::create_directories(mStore.path("cloud"));
    std::filesystem::create_symlink("/dev/full", mPath);
    prepareBody(text(4000));
    run();
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(progress(), 1.0F);
    EXPECT_EQ(error(), kNoSpace);
    EXPECT_EQ(mTransfer->getError().errorMessage(), "No space left on device");
    for (const auto& textOfLog : logged())
        EXPECT_EQ(textOfLog, "download http version fail! errstr:No space left on device");
    EXPECT_FALSE(logged().empty());
    EXPECT_TRUE(std::filesystem::is_symlink(mPath));
}

TEST_F(HttpTransferFailure, CancelAfterAWriteFaultRemovesTheNameOnly) {
    std::filesystem::create_directories(mStore.path("cloud"));
    std::filesystem::create_symlink("/dev/full", mPath);
    prepareBody(text(4000));
    run();
    mTransfer->cancel();
    EXPECT_FALSE(std::filesystem::is_symlink(mPath));
    EXPECT_TRUE(std::filesystem::exists("/dev/full"));
    EXPECT_EQ(error(), kNoSpace);
}

TEST_F(HttpTransferFailure, PiecesAfterAWriteFaultAreStillWrittenAndCounted) {
    startSilent();
    const auto disk = std::make_shared<FullFile>(3);
    access().setFile(disk);
    access().receive("abcd", "8");
    EXPECT_EQ(error(), kNoSpace);
    EXPECT_EQ(disk->mWritten, "abc");
    EXPECT_EQ(mWaiter.calls(), 0);
    disk->mRoom = 100;
    access().receive("efgh", "8");
    EXPECT_EQ(disk->mWritten, "abcefgh");
    EXPECT_EQ(access().received(), 8U);
    EXPECT_EQ(error(), kNoSpace);
    finishWith(200);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(error(), kNoSpace);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_EQ(logged(), Texts{"download http version fail! errstr:No space left on device"});
    EXPECT_TRUE(content());
}

TEST_F(HttpTransferFailure, EveryFailedPieceIsLogged) {
    startSilent();
    access().setFile(std::make_shared<FullFile>(0));
    for (int piece = 0; piece < 3; ++piece) access().receive("ab", "6");
    EXPECT_EQ(logged(), Texts(3, "download http version fail! errstr:No space left on device"));
}

TEST_F(HttpTransferFailure, ShortWriteThatRecordedNoErrorIsPassedOver) {
    startSilent();
    access().setFile(std::make_shared<SilentFile>());
    int lastError = -99;
    // A thread of its own, on which nothing has failed yet.
    std::thread([&] {
        lastError = ErrorInfo::getLastError().errorCode();
        access().receive("ab", "2");
    }).join();
    EXPECT_EQ(lastError, 0);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(logged().empty());
    EXPECT_EQ(access().received(), 2U);
}

TEST_F(HttpTransferFailure, BadEndReplacesTheErrorOfAWriteFault) {
    startSilent();
    access().setFile(std::make_shared<FullFile>(0));
    access().receive("ab", "4");
    EXPECT_EQ(error(), kNoSpace);
    finishWith(200);
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(mTransfer->finish());
}

// The version, gone or changed meanwhile.

TEST_F(HttpTransferFailure, FileStaysWhenTheVersionIsGoneAtABadEnd) {
    startHalf(text(400));
    ASSERT_TRUE(eventually([&] { return content()->size() == 200; }));
    mVersion.reset();
    finishWith(0);
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_EQ(content(), text(200));
    EXPECT_EQ(error(), -1);
    EXPECT_FALSE(mTransfer->finish());
    EXPECT_EQ(logged(), Texts{"download http version fail! statuscode:0"});
    mServer.release("/p.exe");
}

TEST_F(HttpTransferFailure, PackageArrivesAlsoWhenTheVersionIsGone) {
    startHalf(text(400));
    mVersion.reset();
    mServer.release("/p.exe");
    EXPECT_TRUE(mWaiter.wait());
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), text(400));
}

TEST_F(HttpTransferFailure, BadEndDeletesTheFileThatTheVersionNamesByThen) {
    startSilent();
    const std::string other = mStore.putText("other.exe", "in the way");
    mVersion->setLocalFileName(other);
    finishWith(500);
    EXPECT_FALSE(readText(other));
    EXPECT_EQ(content(), "");
    EXPECT_TRUE(mLog.has(2, "onHttpFinishCallback() remove fileName:" + other + "\r\n"));
}

TEST_F(HttpTransferFailure, CancelDeletesTheFileThatWasWrittenWhateverTheVersionNames) {
    startSilent();
    const std::string other = mStore.putText("other.exe", "in the way");
    mVersion->setLocalFileName(other);
    mTransfer->cancel();
    EXPECT_TRUE(readText(other));
    EXPECT_FALSE(content());
}

// Callbacks of an exchange that is not, or no longer, the transfer's.

TEST_F(HttpTransferFailure, PieceWithoutARunningTransferIsNotCounted) {
    prepareBody("body");
    access().receive("ab", "4");
    EXPECT_EQ(access().received(), 0U);
    EXPECT_EQ(access().total(), 0U);
    EXPECT_EQ(progress(), 0.0F);
}

TEST_F(HttpTransferFailure, EndOfAnExchangeThatWasStoppedIsPassedOver) {
    startSilent();
    const auto client = access().client();
    mTransfer->stop();
    access().finish(client, 500);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_TRUE(content());
    EXPECT_TRUE(access().file());
    EXPECT_TRUE(logged().empty());
}

TEST_F(HttpTransferFailure, EndOfAnEarlierExchangeDoesNotTouchTheNextOne) {
    startSilent();
    const auto earlier = access().client();
    mTransfer->cancel();
    EXPECT_EQ(start(), 0);
    access().receive("ab", "4");
    access().finish(earlier, 500);
    access().finish(nullptr, 500);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(content(), "ab");
    EXPECT_EQ(error(), 0);
    access().receive("cd", "4");
    finishWith(200);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_TRUE(mTransfer->finish());
    EXPECT_EQ(content(), "abcd");
}

TEST_F(HttpTransferFailure, EndThatCancelOvertakesCallsNobody) {
    startSilent();
    // The log stands between the end of the exchange and the end of the run.
    std::atomic<int> cancelled{-99};
    Public::Base::setLogSink([&](const Public::Base::LogEntry& entry) {
        if (entry.text.starts_with("download http version fail!")) cancelled = mTransfer->cancel().errorCode();
    });
    finishWith(500);
    Public::Base::setLogSink({});
    EXPECT_EQ(cancelled, 0);
    EXPECT_EQ(mWaiter.calls(), 0);
    EXPECT_EQ(error(), 0);
    EXPECT_FALSE(content());
}

TEST_F(HttpTransferFailure, StartDuringTheEndJoinsItAndIsCalled) {
    startSilent();
    const Waiter late;
    std::atomic<int> started{-99};
    Public::Base::setLogSink([&](const Public::Base::LogEntry& entry) {
        if (entry.text.starts_with("download http version fail!")) {
            started = mTransfer->start(late.callback(), this).errorCode();
        }
    });
    finishWith(500);
    Public::Base::setLogSink({});
    EXPECT_EQ(started, 0);
    EXPECT_EQ(late.calls(), 1);
    EXPECT_EQ(mWaiter.calls(), 1);
    EXPECT_FALSE(content());
    EXPECT_LE(mBadServer.requestCount("/p.exe"), 1U);
}
