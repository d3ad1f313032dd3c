#include "QueueBed.h"

#include "MQ/EmbeddedBus.h"
#include "ManualClock.h"

namespace support {

using namespace Tarnwick::MQ;
using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWProtoUpgradePkt;

namespace {

class EmbeddedBed : public QueueBed {
public:
    ~EmbeddedBed() override {
        if (mBus) mBus->settle();
    }

    std::shared_ptr<Bus> busOf(const std::string&) override { return mBus; }
    void drop() override { mBus.reset(); }
    void settle() override { mBus->settle(); }
    void elapse(unsigned milliseconds) override {
        while (milliseconds > 0) {
            const unsigned step = std::min(milliseconds, 250u);
            mClock.advance(step);
            milliseconds -= step;
            settle();
        }
    }
    void jump(unsigned milliseconds) override {
        mClock.advance(milliseconds);
        settle();
    }
    void cut(const std::string& a, const std::string& b) override { mBus->cutLink(a, b); }
    void mend(const std::string& a, const std::string& b) override { mBus->restoreLink(a, b); }
    void hang(const std::string& node) override { mBus->stopNode(node); }
    void wake(const std::string& node) override { mBus->resumeNode(node); }

private:
    ManualClock mClock;
    std::shared_ptr<EmbeddedBus> mBus = std::make_shared<EmbeddedBus>();
};

}  // namespace

std::unique_ptr<QueueBed> makeEmbeddedBed() { return std::make_unique<EmbeddedBed>(); }

ResponseCallback Answers::callback() {
    return [state = mState](const std::shared_ptr<MQMessage>& message) {
        std::lock_guard lock(state->mutex);
        state->messages.push_back(message);
        state->came.notify_all();
    };
}

size_t Answers::count() const {
    std::lock_guard lock(mState->mutex);
    return mState->messages.size();
}

std::shared_ptr<MQMessage> Answers::last() const {
    std::lock_guard lock(mState->mutex);
    return mState->messages.empty() ? nullptr : mState->messages.back();
}

int Answers::code() const {
    const auto message = last();
    return message ? message->errorInfo().errorCode() : 1;
}

std::string Answers::text() const { return bodyText(last()); }

void Answers::waitFor(size_t count) const {
    std::unique_lock lock(mState->mutex);
    mState->came.wait(lock, [&] { return mState->messages.size() >= count; });
}

void Gate::open() {
    std::lock_guard lock(mMutex);
    mOpen = true;
    mChanged.notify_all();
}

void Gate::pass() {
    std::unique_lock lock(mMutex);
    ++mVisitors;
    mChanged.notify_all();
    mChanged.wait(lock, [this] { return mOpen; });
}

void Gate::waitForVisitors(size_t count) {
    std::unique_lock lock(mMutex);
    mChanged.wait(lock, [&] { return mVisitors >= count; });
}

TWProtoUpgradePkt packet(const std::string& text) {
    TWProtoUpgradePkt pkt;
    pkt.body = text;
    return pkt;
}

std::string bodyText(const std::shared_ptr<MQMessage>& message) {
    TWProtoUpgradePkt pkt;
    return message && message->parseBody(&pkt, false) ? pkt.body : "-";
}

RequestHandler answering(const std::string& text) {
    return [text](const std::shared_ptr<MQMessage>& message) {
        return message->buildResponse(ErrorInfo(0, ""), packet(text));
    };
}

std::shared_ptr<TWMQClient> QueueContract::client(const std::string& id, const std::string& server) {
    NodeOptions options;
    options.id = id;
    options.serverId = server;
    options.systemId = "system";
    auto node = TWMQClient::create(mBed->busOf(id), options);
    mBed->settle();
    return node;
}

std::shared_ptr<TWMQServer> QueueContract::plainServer(const std::string& id) {
    NodeOptions options;
    options.id = id;
    options.systemId = "system";
    auto node = TWMQServer::create(mBed->busOf(id), options);
    mBed->settle();
    return node;
}

std::shared_ptr<TWMQSystemServer> QueueContract::server(const std::string& id, bool ready,
                                                        const std::string& systemId) {
    NodeOptions options;
    options.id = id;
    options.systemId = systemId;
    options.ready = ready;
    return server(options);
}

std::shared_ptr<TWMQSystemServer> QueueContract::server(const NodeOptions& options) {
    auto node = TWMQSystemServer::create(mBed->busOf(options.id), options);
    mBed->settle();
    return node;
}

unsigned QueueContract::ask(const std::shared_ptr<MQConnection>& connection, const std::string& to,
                            const std::string& topic, const std::string& text, Answers& answers, unsigned timeoutMs) {
    const auto body = packet(text);
    return connection->pushMessageRequestTo(to, topic, &body, nullptr, Tarnwick::Protocol::TWProtoMessageLevel_Normal,
                                            answers.callback(), timeoutMs);
}

void QueueContract::serve(MQDispatcher& node, const std::string& topic, const RequestHandler& handler, void* owner) {
    node.subscribe(topic, owner, handler, {});
}

}  // namespace support
