// A bus that tells what passes.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "RunLog.h"
#include "Tarnwick/MQ/Bus.h"

namespace cluster {

/// Notes requests and answers as they are sent and as they arrive at nodes, so that what was lost on the way shows.
/// Presence is not noted.
class WatchedBus : public Tarnwick::MQ::Bus {
public:
    WatchedBus(std::shared_ptr<Tarnwick::MQ::Bus> bus, std::shared_ptr<RunLog> log);

    bool join(const std::string& id, const Endpoint& endpoint) override;
    void leave(const std::string& id) override { mBus->leave(id); }
    bool send(const std::string& from, const std::string& to, const std::string& frame) override {
        return sendParts(from, to, frame, {});
    }
    bool sendParts(const std::string& from, const std::string& to, const std::string& head,
                   const Public::Base::SharedBuffer& tail) override;
    bool linked(const std::string& from, const std::string& to) override { return mBus->linked(from, to); }
    std::vector<std::string> peers(const std::string& id) override { return mBus->peers(id); }
    size_t maxFrame() const override { return mBus->maxFrame(); }
    bool post(std::function<void()> task) override { return mBus->post(std::move(task)); }

private:
    const std::shared_ptr<Tarnwick::MQ::Bus> mBus;
    const std::shared_ptr<RunLog> mLog;
};

}  // namespace cluster
