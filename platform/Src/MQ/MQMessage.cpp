#include "Tarnwick/MQ/MQMessage.h"

#include "MQ/Frame.h"
#include "Tarnwick/MQ/MQConnection.h"

namespace Tarnwick::MQ {

using Protocol::TWPacket;
using Public::Base::ErrorInfo;

MQMessage::MQMessage(std::shared_ptr<const Frame> frame, std::weak_ptr<MQConnection> connection)
    : mFrame(std::move(frame)), mConnection(std::move(connection)) {}

MQMessage::~MQMessage() = default;

bool MQMessage::parseBody(TWPacket* record, bool) const {
    return record != nullptr && mFrame->hasBody && TWPacket::parseBytes(mFrame->body, *record);
}

bool MQMessage::parseUserAuthen(TWPacket* record, bool) const {
    return record != nullptr && !mFrame->authen.empty() && TWPacket::parseBytes(mFrame->authen, *record);
}

std::shared_ptr<MQMessage> MQMessage::buildResponse(const ErrorInfo& result, const TWPacket* body) {
    auto response = std::make_shared<Frame>();
    response->kind = Frame::Response;
    response->messageId = mFrame->messageId;
    response->sender = mFrame->addressee;
    response->addressee = mFrame->waiter;
    response->waiter = mFrame->waiter;
    response->topic = mFrame->topic;
    response->session = mFrame->session;
    response->errorCode = static_cast<int32_t>(result.errorCode());
    response->errorText = result.errorMessage();
    response->hasBody = body != nullptr;
    response->body = TWPacket::serializeAsBytes(body).toStdString();
    return std::make_shared<MQMessage>(std::move(response), mConnection);
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
    return mFrame->kind == Frame::Response ? ErrorInfo(mFrame->errorCode, mFrame->errorText) : ErrorInfo();
}

}  // namespace Tarnwick::MQ
