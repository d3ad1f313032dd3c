#include "Network/Exchange.h"

namespace Public::Network {

Exchange::Exchange(std::weak_ptr<HTTPClient> client, std::shared_ptr<HTTPClientRequest> request,
                   HTTPClient::Completion completion, std::string address, std::string userAgent)
    : mMethod(request->method()),
      mAddress(std::move(address)),
      mUserAgent(std::move(userAgent)),
      mTimeout(request->timeout()),
      mGathers(request->cacheType() == HTTPCacheType_Memory && !request->recvCallback()),
      mContent(request->content()),
      mClient(std::move(client)),
      mRequest(std::move(request)),
      mReceive(mRequest->recvCallback()),
      mCompletion(std::move(completion)) {
    ++sLive;
}

bool Exchange::enter() {
    std::lock_guard lock(mMutex);
    if (mEnded) return false;
    mInside = std::this_thread::get_id();
    return true;
}

void Exchange::leave() {
    std::lock_guard lock(mMutex);
    mInside = {};
    mLeft.notify_all();
}

void Exchange::dropClosures() {
    std::shared_ptr<HTTPClientRequest> request;
    HTTPClientRequest::RecvCallback receive;
    HTTPClient::Completion completion;
    // What they hold may be the last reference to anything, so it goes after the lock is given back.
    std::lock_guard lock(mMutex);
    request.swap(mRequest);
    receive = mReceive;
    completion = mCompletion;
    mReceive = nullptr;
    mCompletion = nullptr;
}

bool Exchange::deliver(const std::shared_ptr<HTTPHeader>& header, const char* data, unsigned int length) {
    if (!enter()) return false;
    mReceive(std::weak_ptr<Socket>(), header, data, length);
    leave();
    return !mEnded;
}

void Exchange::complete(const std::shared_ptr<HTTPClientResponse>& response) {
    if (!enter()) return;
    {
        const auto client = mClient.lock();
        const auto request = mRequest;
        const auto completion = mCompletion;
        completion(client, request, response);
        dropClosures();
    }
    {
        std::lock_guard lock(mMutex);
        mEnded = true;
    }
    leave();
}

void Exchange::end() {
    {
        std::unique_lock lock(mMutex);
        mEnded = true;
        mLeft.wait(lock, [this] { return mInside == std::thread::id() || mInside == std::this_thread::get_id(); });
    }
    dropClosures();
}

}  // namespace Public::Network
