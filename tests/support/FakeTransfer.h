// A transfer that moves nothing, and a version that has it.
#pragma once

#include <atomic>

#include "CatalogueEntries.h"
#include "IDownload.h"
#include "IGetConnection.h"

namespace support {

/// Says what a test wants and counts its starts.
class FakeTransfer : public Tarnwick::OrvUpdate::IDownload {
public:
    using ErrorInfo = Tarnwick::OrvUpdate::ErrorInfo;
    using Callback = Tarnwick::OrvUpdate::Function<void()>;

    ErrorInfo start(const Callback&, void*) override {
        ++keyedStarts;
        return startResult;
    }
    ErrorInfo start(const Callback& callback) override {
        ++starts;
        withCallback = static_cast<bool>(callback);
        return startResult;
    }
    ErrorInfo stop() override { return {}; }
    ErrorInfo cancel() override { return {}; }
    ErrorInfo getProgress(float& progress) override {
        progress = pos;
        return progressResult;
    }
    ErrorInfo getFileName(std::string&) override { return {}; }
    ErrorInfo getError() override { return error; }
    bool finish() override { return finished; }

    // Set before the transfer is used.
    ErrorInfo startResult;
    ErrorInfo progressResult;
    ErrorInfo error;
    float pos = 0;
    bool finished = false;
    std::atomic<int> starts{0};
    std::atomic<int> keyedStarts{0};
    std::atomic<bool> withCallback{false};
};

/// An entry whose transfer a test gives; it notes over what it was to move.
class VersionWithTransfer : public Tarnwick::OrvUpdate::OrvVersion {
public:
    using OrvVersion::getDownload;
    using OrvVersion::OrvVersion;
    std::shared_ptr<Tarnwick::OrvUpdate::IDownload> getDownload(
        const std::shared_ptr<Tarnwick::OrvUpdate::IGetConnection>& connection) override {
        provider = connection;
        return transfer;
    }

    std::shared_ptr<FakeTransfer> transfer = std::make_shared<FakeTransfer>();
    std::shared_ptr<Tarnwick::OrvUpdate::IGetConnection> provider;
};

}  // namespace support
