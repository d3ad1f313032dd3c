// Reaches the private callbacks and figures of a transfer from the cloud.
#pragma once

#include "HttpDownload.h"

namespace Tarnwick::OrvUpdate {

struct HttpDownloadAccess {
    using HTTPClient = Public::Network::HTTPClient;
    using HTTPHeader = Public::Network::HTTPHeader;
    using File = Public::Base::File;

    explicit HttpDownloadAccess(HttpDownload& transfer) : mTransfer(transfer) {}

    uint64_t received() const { return mTransfer.mReceived; }
    uint64_t total() const { return mTransfer.mTotal; }
    std::shared_ptr<HTTPClient> client() const {
        std::lock_guard lock(mTransfer.mStateMutex);
        return mTransfer.mHttpClient;
    }
    std::shared_ptr<File> file() const {
        std::lock_guard lock(mTransfer.mStateMutex);
        return mTransfer.mFile;
    }
    std::string fileName() const {
        std::lock_guard lock(mTransfer.mStateMutex);
        return mTransfer.mFileName;
    }
    void setClient(std::shared_ptr<HTTPClient> client) {
        std::lock_guard lock(mTransfer.mStateMutex);
        mTransfer.mHttpClient = std::move(client);
    }
    void setFile(std::shared_ptr<File> file) {
        std::lock_guard lock(mTransfer.mStateMutex);
        mTransfer.mFile = std::move(file);
    }
    std::shared_ptr<Public::Network::HTTPClientRequest> makeRequest(const std::string& url) {
        return mTransfer.makeRequest(url);
    }

    /// @param length of the header; nothing leaves the field out
    void receive(const std::string& piece, const std::optional<std::string>& length) {
        mTransfer.onRecvDataCallback({}, header(200, length), piece.data(), static_cast<unsigned int>(piece.size()));
    }
    void finish(const std::shared_ptr<HTTPClient>& client, int status) {
        mTransfer.onHttpFinishCallback(
            client, nullptr, std::make_shared<Public::Network::HTTPClientResponse>(header(status, {}), nullptr));
    }

private:
    static std::shared_ptr<HTTPHeader> header(int status, const std::optional<std::string>& length) {
        auto header = std::make_shared<HTTPHeader>();
        header->statuscode = status;
        if (length) header->add("Content-Length", *length);
        return header;
    }

    HttpDownload& mTransfer;
};

}  // namespace Tarnwick::OrvUpdate
