// Starts that are refused, and what a second run inherits of the first.
#include "HttpFailureFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::BadScript;
using support::eventually;
using support::HttpTransferFailure;
using support::readText;

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
