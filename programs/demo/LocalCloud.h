// An update cloud on loopback, in this process.
#pragma once

#include <memory>
#include <mutex>
#include <thread>

#include "UpdateCloud.h"

namespace httplib {
class Server;
}

/// Serves on threads of its own until it is destroyed; also a demonstration in another process, see DistantCloud.
class LocalCloud : public UpdateCloud {
public:
    LocalCloud();
    ~LocalCloud() override;
    LocalCloud(const LocalCloud&) = delete;
    LocalCloud& operator=(const LocalCloud&) = delete;

    std::string address() const override;
    void offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond) override;
    void publish(const Release& release) override;

private:
    void serve();
    std::string versionDocument() const;
    std::string notesDocument() const;

    std::unique_ptr<httplib::Server> mServer;
    int mPort = 0;
    std::thread mThread;
    mutable std::mutex mMutex;  // guards all below
    Release mOffered;
    std::shared_ptr<const std::string> mPackage;
    size_t mBytesPerSecond = 0;
    std::vector<Release> mReleases;
};
