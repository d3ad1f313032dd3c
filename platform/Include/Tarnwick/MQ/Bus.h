// Carries frames between the nodes of a cluster.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Public/Base/PlatformExport.h"
#include "Public/Base/SharedBuffer.h"
#include "Public/Network/NetAddr.h"

namespace Tarnwick::MQ {

/// Who a node is, as it tells the cluster.
struct NodeOptions {
    std::string
        id;  ///< unique in the cluster, compared byte for byte; on a bus that proves identities, what the key says
    std::string systemId;  ///< id of the cluster
    std::string serverId;  ///< client: the server of its link, empty for none. Server: its own id, `id` when empty
    std::string version;   ///< text form of the running version
    std::vector<Public::Network::NetAddr> addresses;  ///< where the node's HTTP service is reached
    bool ready = true;                                ///< takes part in elections and serves requests
};

/// Carries frames (bytes) from one node id to another; all else (message ids, time-outs, subscriptions, forwarding,
/// presence, master) is made once, above it. All operations may be called from any thread.
class ORV_PLATFORM_API Bus {
public:
    /// What a node gives to the bus when it joins. The functions run on the bus's threads, several at once, never under
    /// a lock of the bus.
    struct Endpoint {
        std::function<void(const std::string& from, std::string frame)> onFrame;
        /// A node went or a link was cut: frames to it will not arrive. Earlier than its silence would tell.
        std::function<void(const std::string& id)> onLost;
        /// A frame that was sent in two parts. May be empty: then onFrame gets both as one.
        std::function<void(const std::string& from, const std::string& head, const Public::Base::SharedBuffer& tail)>
            onParts = {};
    };

    virtual ~Bus() = default;

    /// Joins under that id. @return false when the id is taken or empty
    virtual bool join(const std::string& id, const Endpoint& endpoint) = 0;
    /// Leaves. After it returns no function of the endpoint begins, and none runs, except on the calling thread.
    virtual void leave(const std::string& id) = 0;
    /// Sends one frame. Frames from one node to another arrive in order, once, or not at all. @return false when it is
    /// known that the frame will not arrive: no such node, a cut link, a frame larger than maxFrame
    virtual bool send(const std::string& from, const std::string& to, const std::string& frame) = 0;
    /// The same for a frame whose end lies elsewhere; a bus that can does not copy it.
    virtual bool sendParts(const std::string& from, const std::string& to, const std::string& head,
                           const Public::Base::SharedBuffer& tail) {
        return send(from, to, head + tail.toStdString());
    }
    /// True while frames can be expected to pass.
    virtual bool linked(const std::string& from, const std::string& to) = 0;
    /// Ids of the other nodes that can be reached from that one.
    virtual std::vector<std::string> peers(const std::string& id) = 0;
    /// Largest frame in bytes.
    virtual size_t maxFrame() const = 0;
    /// Runs a task on the pool that also delivers frames. @return false when the bus has ended
    virtual bool post(std::function<void()> task) = 0;

    /// One process: for tests and demonstrations, and for hosts without a cluster.
    static std::shared_ptr<Bus> embedded();
};

}  // namespace Tarnwick::MQ
