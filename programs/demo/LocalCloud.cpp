#include "LocalCloud.h"

#include <httplib.h>

#include <algorithm>
#include <chrono>
#include <stdexcept>

#include "Public/Base/JsonValue.h"

using Public::Base::JsonValue;
using Public::Base::WriteStyle_Indented;

namespace {

UpdateCloud::Release releaseOf(const httplib::Request& request) {
    return {request.get_param_value("version"), request.get_param_value("date"), request.get_param_value("note")};
}

}  // namespace

LocalCloud::LocalCloud() : mServer(std::make_unique<httplib::Server>()) {
    serve();
    mPort = mServer->bind_to_any_port("127.0.0.1");
    if (mPort < 0) throw std::runtime_error("no port on 127.0.0.1 can be had");
    mThread = std::thread([this] { mServer->listen_after_bind(); });
    while (!mServer->is_running()) std::this_thread::yield();  // it cannot be stopped before
}

LocalCloud::~LocalCloud() {
    mServer->stop();
    mThread.join();
}

std::string LocalCloud::address() const { return "127.0.0.1:" + std::to_string(mPort); }

void LocalCloud::offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond) {
    std::lock_guard lock(mMutex);
    mOffered = release;
    mPackage = std::make_shared<const std::string>(packageBytes);
    mBytesPerSecond = bytesPerSecond;
}

void LocalCloud::publish(const Release& release) {
    std::lock_guard lock(mMutex);
    mReleases.push_back(release);
}

std::string LocalCloud::versionDocument() const {
    JsonValue document;
    document["softversion"] = mOffered.version;
    document["description"] = mOffered.note;
    document["url"] = "http://" + address() + "/packages/" + mOffered.version + ".exe";
    return document.toStyledString(WriteStyle_Indented).toStdString();
}

std::string LocalCloud::notesDocument() const {
    JsonValue document;
    JsonValue& list = document["data"]["orvVersionInfo"];
    for (auto release = mReleases.rbegin(); release != mReleases.rend(); ++release) {
        JsonValue record;
        record["softversion"] = release->version;
        record["updateTime"] = release->date;
        record["versionInfo"] = release->note;
        list.append(record);
    }
    return document.toStyledString(WriteStyle_Indented).toStdString();
}

void LocalCloud::serve() {
    mServer->Get("/version", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard lock(mMutex);
        response.set_content(versionDocument(), "application/json");
    });
    mServer->Get("/api/v1/orvNewVersions", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard lock(mMutex);
        response.set_content(notesDocument(), "application/json");
    });
    mServer->Get("/packages/.*", [this](const httplib::Request&, httplib::Response& response) {
        std::lock_guard lock(mMutex);
        // A tenth of a second at a time, where the line is to be slow.
        const auto package = mPackage;
        const size_t piece = mBytesPerSecond == 0 ? package->size() : std::max<size_t>(1, mBytesPerSecond / 10);
        const bool slow = mBytesPerSecond != 0;
        response.set_content_provider(package->size(), "application/octet-stream",
                                      [package, piece, slow](size_t offset, size_t length, httplib::DataSink& sink) {
                                          sink.write(package->data() + offset, std::min(piece, length));
                                          if (slow) std::this_thread::sleep_for(std::chrono::milliseconds(100));
                                          return true;
                                      });
    });
    // What a demonstration in another process asks of it.
    mServer->Put("/demonstration/offer", [this](const httplib::Request& request, httplib::Response&) {
        offer(releaseOf(request), request.body, std::stoull("0" + request.get_param_value("rate")));
    });
    mServer->Put("/demonstration/note",
                 [this](const httplib::Request& request, httplib::Response&) { publish(releaseOf(request)); });
}
