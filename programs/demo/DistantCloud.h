// The update cloud of a demonstration that runs beside this one, perhaps on another system.
#pragma once

#include "UpdateCloud.h"

/// Tells a LocalCloud of another process what to serve. Throws std::runtime_error when that cannot be told.
class DistantCloud : public UpdateCloud {
public:
    /// @param address host and port
    explicit DistantCloud(std::string address) : mAddress(std::move(address)) {}

    std::string address() const override { return mAddress; }
    void offer(const Release& release, const std::string& packageBytes, size_t bytesPerSecond) override;
    void publish(const Release& release) override;

private:
    void tell(const std::string& what, const Release& release, size_t bytesPerSecond, const std::string& body) const;

    const std::string mAddress;
};
