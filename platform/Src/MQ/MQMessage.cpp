#include "Tarnwick/MQ/MQMessage.h"

#include "MQ/Frame.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

using Public::Base::ErrorInfo;
using Tarnwick::Protocol::TWPacket;

namespace {

bool parse(const Public::Base::SharedBuffer& bytes, TWPacket* record) {
    return record && TWPacket::parseBytes({bytes.buf(), bytes.size()}, *record);
}

}  // namespace

MQMessage::MQMessage(std::shared_ptr<const Frame> frame, std::weak_ptr<MQConnection> connection)
    : mFrame(std::move(frame)), mConnection(std::move(connection)) {}

MQMessage::~MQMessage() = default;

bool MQMessage::parseBody(TWPacket* record, bool) const { return parse(mFrame->body, record); }

bool MQMessage::parseUserAuthen(TWPacket* record, bool) const { return parse(mFrame->authen, record); }

std::shared_ptr<MQMessage> MQMessage::buildResponse(const ErrorInfo& result, const TWPacket* body) {
    auto answer = std::make_shared<Frame>();
    answer->kind = FrameKind_Answer;
    answer->messageId = mFrame->messageId;
    answer->token = mFrame->token;
    answer->sender = mFrame->addressee;
    answer->addressee = mFrame->waiter;
    answer->waiter = mFrame->waiter;
    answer->topic = mFrame->topic;
    answer->session = mFrame->session;
    answer->level = mFrame->level;
    answer->errorCode = result.errorCode();
    answer->errorText = result.errorMessage();
    answer->body = TWPacket::serializeAsBytes(body);
    return std::make_shared<MQMessage>(std::move(answer), mConnection);
}

std::shared_ptr<MQMessage> MQMessage::buildResponse(const ErrorInfo& result, const TWPacket& body) {
    return buildResponse(result, &body);
}

const std::string& MQMessage::from() const { return mFrame->sender; }

const std::string& MQMessage::to() const { return mFrame->addressee; }

const std::string& MQMessage::forwardTo() const { return mFrame->finalTarget; }

const std::string& MQMessage::topic() const { return mFrame->topic; }

std::shared_ptr<MQConnection> MQMessage::connection() { return mConnection.lock(); }

ErrorInfo MQMessage::errorInfo() const {
    if (mFrame->kind != FrameKind_Answer) return ErrorInfo(0, "");
    return ErrorInfo(mFrame->errorCode, mFrame->errorText);
}

}  // namespace Tarnwick::MQ
