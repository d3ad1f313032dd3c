// Every topic passes a request on to the node that it is meant for, before it looks at anything else.
#include "ServiceFixture.h"

using namespace Tarnwick::OrvUpdate;
using support::Received;

namespace {

/// "server" serves with a catalogue; "far" notes what reaches it and answers with a code of its own.
class TopicRouting : public ServiceFrame, public testing::WithParamInterface<std::string> {
protected:
    static constexpr int kFarCode = -4711;

    TopicRouting() {
        mService->start();
        mFar->subscribe(topic(), this,
                        [arrived = mArrived](const std::shared_ptr<MQMessage>& message) {
                            arrived.add(message->forwardTo());
                            return message->buildResponse(ErrorInfo(kFarCode, ""), nullptr);
                        },
                        {});
    }
    ~TopicRouting() override { mFar->unsubcribe(this); }

    static std::string topic() { return "topic_upgrade_" + GetParam(); }
    int codeFrom(const std::string& target) {
        return mAsker.ask(target, topic()).value_or(QueueAnswer{1, "", {}, ""}).code;
    }

    std::shared_ptr<TWMQSystemServer> mServer = makeServer();
    std::shared_ptr<TWMQSystemServer> mFar = makeServer("far");
    std::shared_ptr<TWMQClient> mClient = makeClient();
    std::shared_ptr<VersionService> mService = makeService(mServer);
    const Received<std::string> mArrived;
    Asker mAsker{mClient->connection()};
};

}  // namespace

TEST_P(TopicRouting, FarNodeAnswersOnce) {
    EXPECT_EQ(codeFrom("far"), kFarCode);
    EXPECT_EQ(mArrived.values(), std::vector<std::string>{"far"});
    EXPECT_EQ(mAsker.answers().count(), 1U);
}

TEST_P(TopicRouting, TargetThatNobodyKnowsIsRefusedWhateverTheBody) { EXPECT_EQ(codeFrom("nobody"), -203); }

TEST_P(TopicRouting, ServiceWithoutACatalogueRoutesAsWell) {
    mService = makeBareService(mServer);
    mService->start();
    EXPECT_EQ(codeFrom("far"), kFarCode);
    EXPECT_EQ(codeFrom("nobody"), -203);
}

INSTANTIATE_TEST_SUITE_P(Table, TopicRouting,
                         testing::Values("requestversion", "requestreleasehistory", "queryversion",
                                         "queryreleasehistory", "downloadversion", "postversion", "startinstall",
                                         "getinstallpos", "startdownload", "getdownloadpos", "notifyupdate"),
                         [](const auto& one) { return one.param; });
