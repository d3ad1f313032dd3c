#include "CompatibilityPage.h"

#include <httplib.h>

#include <stdexcept>
#include <utility>

CompatibilityPage::CompatibilityPage(std::string document)
    : mDocument(std::move(document)), mServer(std::make_unique<httplib::Server>()) {
    mServer->Get("/VersionCompatible", [this](const httplib::Request&, httplib::Response& response) {
        ++mServed;
        response.set_content(mDocument, "application/json");
    });
    mPort = mServer->bind_to_any_port("127.0.0.1");
    if (mPort < 0) throw std::runtime_error("no port on 127.0.0.1 can be had");
    mThread = std::thread([this] { mServer->listen_after_bind(); });
    while (!mServer->is_running()) std::this_thread::yield();  // it cannot be stopped before
}

CompatibilityPage::~CompatibilityPage() {
    mServer->stop();
    mThread.join();
}
