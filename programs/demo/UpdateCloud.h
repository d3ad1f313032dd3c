// An update cloud on loopback.
#pragma once

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace httplib {
class Server;
}

/// Announces one version and its notes, and serves the package: what a real cloud does, from memory. Serves on threads
/// of its own until it is destroyed.
class UpdateCloud {
public:
    struct Release {
        std::string version;
        std::string date;  ///< "yyyy-MM-dd HH:mm:ss", in China's time
        std::string note;
    };

    UpdateCloud();
    ~UpdateCloud();

    /// Host and port.
    std::string address() const;
    /// From now on this version is on offer, with that package. @param bytesPerSecond 0 is as fast as it goes
    void offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond);
    /// Adds a release note to the list, newest last.
    void publish(const Release& release);
    /// Requests served so far, one line each.
    std::vector<std::string> requests() const;

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
    std::vector<std::string> mRequests;
};
