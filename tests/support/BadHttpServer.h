// An HTTP server on loopback that misbehaves as its script says.
#pragma once

#include <chrono>
#include <functional>
#include <map>

#include "LoopbackServer.h"

namespace support {

/// What is done with one request, step by step. After the last step the connection is closed, unless the script ends
/// with keepAlive.
class BadScript {
public:
    BadScript() = default;

    BadScript& send(std::string bytes);
    /// Sends the bytes in pieces, with a pause before each.
    BadScript& drip(std::string bytes, size_t pieceLength, std::chrono::milliseconds pause);
    /// Says nothing more until the peer closes.
    BadScript& hang();
    /// Sends the bytes over and over until the peer closes.
    BadScript& repeat(std::string bytes);
    /// The connection ends with a reset.
    BadScript& reset();
    /// Reads the next request on the same connection.
    BadScript& keepAlive();

    /// A whole response with the right length.
    static BadScript status(int code, const std::string& body);
    static BadScript empty(int code) { return status(code, {}); }
    /// No length: the body ends with the connection.
    static BadScript noLength(const std::string& body);
    /// Claims a length that is not the body's, then closes.
    static BadScript wrongLength(const std::string& body, size_t claimed);
    /// Right length, but the connection closes after `offset` bytes of the body.
    static BadScript closeAt(const std::string& body, size_t offset);
    static BadScript resetAt(const std::string& body, size_t offset);
    static BadScript slowDrip(const std::string& body, size_t pieceLength, std::chrono::milliseconds pause);
    static BadScript hangBeforeHeaders();
    static BadScript hangInHeaders();
    static BadScript hangInBody(const std::string& body, size_t offset);
    static BadScript closeAtOnce() { return {}; }
    static BadScript redirect(const std::string& location, int code = 302, const std::string& body = "moved");
    static BadScript endlessBody();
    static BadScript endlessHeaders();
    static BadScript garbage();
    /// A good response with a field of so many bytes.
    static BadScript hugeHeader(size_t length, const std::string& body);
    static BadScript chunked(const std::string& body, size_t chunkLength);
    /// The chunks stop before the last one.
    static BadScript chunkedCutShort(const std::string& body, size_t chunkLength);
    /// Interim responses before the real one.
    static BadScript interimFirst(const std::string& body);

private:
    friend class BadHttpServer;
    using Step = std::function<bool(LoopbackConnection&, const std::function<bool(std::chrono::milliseconds)>& pause)>;
    std::vector<Step> mSteps;
    bool mKeepAlive = false;
};

/// Scripts by path, without the query; a path that has none gets 404. All operations may be called from any thread.
class BadHttpServer : public LoopbackServer {
public:
    BadHttpServer();
    ~BadHttpServer() override;

    void script(const std::string& path, BadScript script);
    /// "/name/0" leads to "/name/1" and so on, `length` times, then comes the body. @return the first path
    std::string redirectChain(const std::string& name, int length, const std::string& body);

private:
    void answerAll(LoopbackConnection& connection);
    bool pause(std::chrono::milliseconds duration);

    std::mutex mScriptMutex;
    std::condition_variable mEnded;
    std::map<std::string, BadScript> mScripts;
    bool mClosing = false;
};

}  // namespace support
