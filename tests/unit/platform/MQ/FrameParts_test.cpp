// Frames whose body travels apart.
#include "MQ/EmbeddedBus.h"
#include "MQ/Frame.h"
#include "Received.h"

namespace {

using namespace Tarnwick::MQ;
using Public::Base::SharedBuffer;
using support::Received;

Frame answerWith(const std::string& body) {
    Frame frame;
    frame.kind = FrameKind_Answer;
    frame.messageId = 7;
    frame.waiter = "waiter";
    frame.master = "the last text before the body";
    frame.body = SharedBuffer(body);
    return frame;
}

std::string joined(const FrameParts& parts) { return parts.head + parts.tail.toStdString(); }

const std::string sLarge(100000, 'x');

}  // namespace

TEST(FrameParts, TogetherAreTheFrame) {
    for (const size_t size : {size_t{0}, size_t{1}, size_t{4095}, size_t{4096}, sLarge.size()}) {
        const auto frame = answerWith(sLarge.substr(0, size));
        const auto parts = encodeParts(frame);
        EXPECT_EQ(joined(parts), encodeFrame(frame)) << size;
        EXPECT_EQ(parts.size(), encodeFrame(frame).size()) << size;
    }
}

TEST(FrameParts, SmallBodyStaysInTheHead) {
    EXPECT_TRUE(encodeParts(answerWith(sLarge.substr(0, 4095))).tail.empty());
    EXPECT_EQ(encodeParts(answerWith(sLarge.substr(0, 4096))).tail.size(), 4096U);
}

TEST(FrameParts, LargeBodyIsCopiedOnNeitherWay) {
    const auto frame = answerWith(sLarge);
    const auto parts = encodeParts(frame);
    EXPECT_EQ(parts.tail.buf(), frame.body.buf());
    const auto decoded = decodeParts(parts.head, parts.tail);
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->body.buf(), frame.body.buf());
    EXPECT_EQ(decoded->messageId, 7U);
    EXPECT_EQ(decoded->master, frame.master);
}

TEST(FrameParts, AreReadWhereverTheFrameIsDivided) {
    const auto frame = answerWith(std::string("\x5a\x02\x5a\x02xx", 6));
    const std::string bytes = encodeFrame(frame);
    for (size_t at = 0; at <= bytes.size(); ++at) {
        const auto decoded = decodeParts(bytes.substr(0, at), SharedBuffer(bytes.substr(at)));
        ASSERT_TRUE(decoded) << at;
        EXPECT_EQ(encodeFrame(*decoded), bytes) << at;
    }
}

TEST(FrameParts, HeadThatOnlyLooksLikeTheLeadOfABodyIsReadAsItStands) {
    Frame frame = answerWith("");
    frame.master = "text\x5a\x03";  // ends as the lead of a body of three bytes does
    const std::string bytes = encodeFrame(frame);
    const auto decoded = decodeParts(bytes, SharedBuffer(std::string("\xaa\x06\x00", 3)));  // an unknown empty field
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->master, frame.master);
    EXPECT_TRUE(decoded->body.empty());
}

TEST(FrameParts, TailAfterAnUnfinishedHeadIsRefused) {
    const auto parts = encodeParts(answerWith(sLarge));
    EXPECT_FALSE(decodeParts(parts.head, SharedBuffer(sLarge.substr(1))));
    EXPECT_FALSE(decodeParts(parts.head, {}));
    EXPECT_FALSE(decodeParts("", parts.tail));
}

TEST(FrameParts, ArriveInPartsWhereTheyAreTaken) {
    const auto bus = std::make_shared<EmbeddedBus>();
    const SharedBuffer tail(std::string("tail"));
    const Received<std::string> heads;
    const Received<const char*> tails;
    const Received<std::string> wholes;
    Bus::Endpoint endpoint;
    endpoint.onFrame = [&](const std::string&, const std::string& frame) { wholes.add(frame); };
    endpoint.onParts = [&](const std::string&, const std::string& head, const SharedBuffer& end) {
        heads.add(head);
        tails.add(end.buf());
    };
    ASSERT_TRUE(bus->join("a", {}));
    ASSERT_TRUE(bus->join("b", endpoint));
    EXPECT_TRUE(bus->sendParts("a", "b", "head", tail));
    EXPECT_TRUE(bus->send("a", "b", "whole"));
    bus->settle();
    EXPECT_EQ(heads.values(), std::vector<std::string>{"head"});
    EXPECT_EQ(tails.values(), std::vector<const char*>{tail.buf()});
    EXPECT_EQ(wholes.values(), std::vector<std::string>{"whole"});
}

TEST(FrameParts, ArriveAsOneWhereTheyAreNot) {
    const auto bus = std::make_shared<EmbeddedBus>();
    const Received<std::string> frames;
    Bus::Endpoint endpoint;
    endpoint.onFrame = [&](const std::string&, const std::string& frame) { frames.add(frame); };
    ASSERT_TRUE(bus->join("a", {}));
    ASSERT_TRUE(bus->join("b", endpoint));
    EXPECT_TRUE(bus->sendParts("a", "b", "head ", SharedBuffer(std::string("tail"))));
    bus->settle();
    EXPECT_EQ(frames.values(), std::vector<std::string>{"head tail"});
}

TEST(FrameParts, CountTogetherAgainstTheLargestFrame) {
    const auto bus = std::make_shared<EmbeddedBus>();
    ASSERT_TRUE(bus->join("a", {}));
    ASSERT_TRUE(bus->join("b", {}));
    const SharedBuffer tail(std::string(bus->maxFrame() - 4, 'x'));
    EXPECT_TRUE(bus->sendParts("a", "b", "head", tail));
    EXPECT_FALSE(bus->sendParts("a", "b", "head+", tail));
}

TEST(FrameParts, AreJoinedByABusThatKnowsWholeFramesOnly) {
    struct WholeBus : Bus {
        bool join(const std::string&, const Endpoint&) override { return true; }
        void leave(const std::string&) override {}
        bool send(const std::string&, const std::string&, const std::string& frame) override {
            sent = frame;
            return true;
        }
        bool linked(const std::string&, const std::string&) override { return true; }
        std::vector<std::string> peers(const std::string&) override { return {}; }
        size_t maxFrame() const override { return 100; }
        bool post(std::function<void()>) override { return true; }

        std::string sent;
    } bus;
    EXPECT_TRUE(bus.sendParts("a", "b", "head ", SharedBuffer(std::string("tail"))));
    EXPECT_EQ(bus.sent, "head tail");
}
