#include "MQ/Frame.h"

#include <random>

#include "ProtocDecode.h"
#include "QueueBed.h"

namespace {

using namespace Tarnwick::MQ;
using Public::Base::SharedBuffer;

Frame request() {
    Frame frame;
    frame.kind = FrameKind_Request;
    frame.messageId = 4000000000u;
    frame.token = UINT64_MAX;
    frame.sender = "a";
    frame.addressee = "b";
    frame.finalTarget = "c";
    frame.waiter = "w";
    frame.topic = "topic";
    frame.session = "s";
    frame.errorCode = -202;
    frame.errorText = "text";
    frame.body = SharedBuffer(std::string("bo\0dy", 5));
    frame.authen = SharedBuffer(std::string("who"));
    frame.level = 2;
    frame.hops = 3;
    frame.systemServer = true;
    TWServerInfo server;
    server.serverId = "s1";
    server.reachable = true;
    frame.servers = {server, TWServerInfo()};
    frame.master = "m";
    return frame;
}

TEST(Frame, EveryMemberComesBack) {
    const auto frame = decodeFrame(encodeFrame(request()));
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->kind, static_cast<uint32_t>(FrameKind_Request));
    EXPECT_EQ(frame->messageId, 4000000000u);
    EXPECT_EQ(frame->token, UINT64_MAX);
    EXPECT_EQ(frame->sender + frame->addressee + frame->finalTarget + frame->waiter, "abcw");
    EXPECT_EQ(frame->topic, "topic");
    EXPECT_EQ(frame->session, "s");
    EXPECT_EQ(frame->errorCode, -202);
    EXPECT_EQ(frame->errorText, "text");
    EXPECT_EQ(frame->body.toStdString(), std::string("bo\0dy", 5));
    EXPECT_EQ(frame->authen.toStdString(), "who");
    EXPECT_EQ(frame->level, 2u);
    EXPECT_EQ(frame->hops, 3u);
    EXPECT_TRUE(frame->systemServer);
    ASSERT_EQ(frame->servers.size(), 2u);
    EXPECT_EQ(frame->servers[0].serverId, "s1");
    EXPECT_EQ(frame->master, "m");
    EXPECT_EQ(encodeFrame(*frame), encodeFrame(request()));
}

TEST(Frame, TheProtoFileDescribesTheBytes) {
    EXPECT_EQ(support::protocDecode("TWFrame.proto", "TWFrame", encodeFrame(request())),
              "kind: REQUEST\n"
              "message_id: 4000000000\n"
              "sender: \"a\"\n"
              "addressee: \"b\"\n"
              "final_target: \"c\"\n"
              "waiter: \"w\"\n"
              "topic: \"topic\"\n"
              "session: \"s\"\n"
              "error_code: -202\n"
              "error_text: \"text\"\n"
              "body: \"bo\\000dy\"\n"
              "authen: \"who\"\n"
              "token: 18446744073709551615\n"
              "level: 2\n"
              "type_id: 7719050751265114695\n"
              "hops: 3\n"
              "system_server: true\n"
              "servers {\n"
              "  server_id: \"s1\"\n"
              "  reachable: true\n"
              "}\n"
              "servers {\n"
              "}\n"
              "master: \"m\"\n");
}

TEST(Frame, FieldsOfALaterVersionAreSkipped) {
    const auto frame = decodeFrame(encodeFrame(request()) + "\xaa\x06\x03new");
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->topic, "topic");
}

struct Incomplete {
    const char* name;
    std::function<void(Frame&)> spoil;
};

class FrameRefused : public testing::TestWithParam<Incomplete> {};

TEST_P(FrameRefused, WhenItLacksWhatItsKindNeeds) {
    auto frame = request();
    GetParam().spoil(frame);
    EXPECT_FALSE(decodeFrame(encodeFrame(frame)));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, FrameRefused,
    testing::Values(Incomplete{"NoKind", [](Frame& frame) { frame.kind = 0; }},
                    Incomplete{"KindOfALaterVersion", [](Frame& frame) { frame.kind = 6; }},
                    Incomplete{"RequestWithoutId", [](Frame& frame) { frame.messageId = 0; }},
                    Incomplete{"RequestWithoutTopic", [](Frame& frame) { frame.topic.clear(); }},
                    Incomplete{"RequestThatNobodyWaitsFor", [](Frame& frame) { frame.waiter.clear(); }},
                    Incomplete{"AnswerWithoutId",
                               [](Frame& frame) {
                                   frame.kind = FrameKind_Answer;
                                   frame.messageId = 0;
                               }},
                    Incomplete{"AnswerThatNobodyWaitsFor",
                               [](Frame& frame) {
                                   frame.kind = FrameKind_Answer;
                                   frame.waiter.clear();
                               }},
                    Incomplete{"AnnouncementOfTwo", [](Frame& frame) { frame.kind = FrameKind_Announce; }},
                    Incomplete{"AnnouncementOfNobody",
                               [](Frame& frame) {
                                   frame.kind = FrameKind_Announce;
                                   frame.servers = {TWServerInfo()};
                               }}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(Frame, DamagedBytesNeverDoMoreThanFail) {
    const auto good = encodeFrame(request());
    std::mt19937 random(5);
    size_t refused = 0;
    for (int round = 0; round < 20000; ++round) {
        auto bytes = good;
        for (int i = 0; i < 2; ++i) bytes[random() % bytes.size()] = static_cast<char>(random());
        bytes.resize(random() % 4 ? bytes.size() : random() % bytes.size());
        refused += !decodeFrame(bytes);
    }
    EXPECT_GT(refused, 1000u);
    EXPECT_LT(refused, 20000u);
    EXPECT_FALSE(decodeFrame(""));
}

TEST(Frame, OfAStrangerDoesNotDisturbANode) {
    const auto bed = support::makeEmbeddedBed();
    const auto bus = bed->busOf("a");
    NodeOptions options;
    options.id = "a";
    options.systemId = "system";
    const auto a = TWMQSystemServer::create(bus, options);
    std::atomic<int> served{0};
    a->subscribe("topic", nullptr,
                 [&served](const std::shared_ptr<MQMessage>&) {
                     ++served;
                     return std::shared_ptr<MQMessage>();
                 },
                 {});
    ASSERT_TRUE(bus->join("stranger", {}));

    bus->send("stranger", "a", "no frame at all");
    auto frame = request();
    frame.sender = frame.waiter = "another";
    bus->send("stranger", "a", encodeFrame(frame));  // speaks in another's name
    frame.kind = FrameKind_List;
    bus->send("stranger", "a", encodeFrame(frame));  // no list is for a server
    frame.kind = FrameKind_Announce;
    frame.servers.resize(1);
    frame.servers[0].serverId = "a";
    bus->send("stranger", "a", encodeFrame(frame));  // claims to be a
    bed->settle();
    EXPECT_EQ(served, 0);
    EXPECT_EQ(a->discover()->getSystemServerList("system").size(), 1u);
    EXPECT_EQ(a->masterServerId(), "a");

    frame = request();
    frame.sender = frame.waiter = "stranger";
    bus->send("stranger", "a", encodeFrame(frame));
    bed->settle();
    EXPECT_EQ(served, 1) << "what it says in its own name is served";
    bus->leave("stranger");
}

TEST(Frame, OfAStrangerIsNoAnswerWithoutTheToken) {
    const auto bed = support::makeEmbeddedBed();
    const auto bus = bed->busOf("a");
    NodeOptions options;
    options.id = "a";
    const auto a = TWMQSystemServer::create(bus, options);
    std::string heard;
    ASSERT_TRUE(bus->join("b", {[&heard](const std::string&, const std::string& bytes) {
                                    const auto frame = decodeFrame(bytes);
                                    if (frame && frame->kind == FrameKind_Request) heard = bytes;
                                },
                                {}}));
    support::Answers answers;
    const auto id = a->connectionTo("b", "")->pushMessageRequest(
        "topic", nullptr, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal, answers.callback(), 60000);
    bed->settle();
    const auto seen = decodeFrame(heard);
    ASSERT_TRUE(seen);
    EXPECT_EQ(seen->messageId, id);
    Frame answer;
    answer.kind = FrameKind_Answer;
    answer.messageId = id;
    answer.waiter = "a";
    answer.token = seen->token + 1;
    bus->send("b", "a", encodeFrame(answer));
    bed->settle();
    EXPECT_EQ(answers.count(), 0u);
    answer.token = seen->token;
    bus->send("b", "a", encodeFrame(answer));
    bed->settle();
    EXPECT_EQ(answers.count(), 1u);
    bus->leave("b");
}

TEST(Frame, OfAnotherNodeDoesNotTakeAServersId) {
    const auto bed = support::makeEmbeddedBed();
    const auto bus = bed->busOf("a");
    NodeOptions options;
    options.systemId = "system";
    options.id = "a";
    const auto a = TWMQSystemServer::create(bus, options);
    options.id = "b";
    options.version = "right";
    const auto b = TWMQSystemServer::create(bus, options);
    bed->settle();
    ASSERT_TRUE(bus->join("impostor", {}));
    Frame frame;
    frame.kind = FrameKind_Announce;
    frame.systemServer = true;
    frame.servers.resize(1);
    frame.servers[0].serverId = "b";
    frame.servers[0].systemId = "system";
    frame.servers[0].version = "wrong";
    bus->send("impostor", "a", encodeFrame(frame));
    for (int i = 0; i < 100; ++i) {
        frame.servers[0].serverId = "made-up-" + std::to_string(i);
        bus->send("impostor", "a", encodeFrame(frame));
    }
    bed->settle();
    TWServerInfo info;
    EXPECT_EQ(a->getServerInfo("b", info).errorCode(), 0);
    EXPECT_EQ(info.version, "right");
    EXPECT_EQ(a->discover()->getSystemServerList("system").size(), 3u) << "one node is one server";
    bus->leave("impostor");
}

TEST(Frame, IsToldFromPresenceByItsBeginning) {
    auto frame = request();
    for (const uint32_t kind : {FrameKind_Announce, FrameKind_Hello, FrameKind_List}) {
        frame.kind = kind;
        EXPECT_TRUE(beginsAsPresence(encodeFrame(frame))) << kind;
        EXPECT_FALSE(beginsAsPresence(encodeFrame(frame).substr(1))) << kind;
    }
    for (const uint32_t kind : {FrameKind_Request, FrameKind_Answer}) {
        frame.kind = kind;
        EXPECT_FALSE(beginsAsPresence(encodeFrame(frame))) << kind;
    }
    EXPECT_FALSE(beginsAsPresence(""));
    EXPECT_FALSE(beginsAsPresence("text"));
}

}  // namespace
