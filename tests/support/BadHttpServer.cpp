#include "BadHttpServer.h"

#include <cstdio>

namespace support {

namespace {

std::string head(int code, const std::string& fields) {
    return "HTTP/1.1 " + std::to_string(code) + " Status\r\n" + fields + "\r\n";
}

std::string lengthField(size_t length) { return "Content-Length: " + std::to_string(length) + "\r\n"; }

std::string chunks(const std::string& body, size_t chunkLength) {
    std::string out;
    for (size_t at = 0; at < body.size(); at += chunkLength) {
        const auto piece = body.substr(at, chunkLength);
        char size[32];
        std::snprintf(size, sizeof size, "%zx\r\n", piece.size());
        out += size + piece + "\r\n";
    }
    return out;
}

const std::string kChunkedField = "Transfer-Encoding: chunked\r\n";

}  // namespace

BadScript& BadScript::send(std::string bytes) {
    mSteps.emplace_back([bytes = std::move(bytes)](auto& connection, const auto&) { return connection.send(bytes); });
    return *this;
}

BadScript& BadScript::drip(std::string bytes, size_t pieceLength, std::chrono::milliseconds pauseLength) {
    mSteps.emplace_back([bytes = std::move(bytes), pieceLength, pauseLength](auto& connection, const auto& pause) {
        for (size_t at = 0; at < bytes.size(); at += pieceLength) {
            if (!pause(pauseLength) || !connection.send(std::string_view(bytes).substr(at, pieceLength))) return false;
        }
        return true;
    });
    return *this;
}

BadScript& BadScript::hang() {
    mSteps.emplace_back([](auto& connection, const auto&) {
        connection.waitForClose();
        return false;
    });
    return *this;
}

BadScript& BadScript::repeat(std::string bytes) {
    mSteps.emplace_back([bytes = std::move(bytes)](auto& connection, const auto&) {
        while (connection.send(bytes)) {
        }
        return false;
    });
    return *this;
}

BadScript& BadScript::reset() {
    mSteps.emplace_back([](auto& connection, const auto&) {
        connection.resetAtClose();
        return false;
    });
    return *this;
}

BadScript& BadScript::keepAlive() {
    mKeepAlive = true;
    return *this;
}

BadScript BadScript::status(int code, const std::string& body) {
    return BadScript().send(head(code, lengthField(body.size())) + body);
}

BadScript BadScript::noLength(const std::string& body) { return BadScript().send(head(200, {}) + body); }

BadScript BadScript::wrongLength(const std::string& body, size_t claimed) {
    return BadScript().send(head(200, lengthField(claimed)) + body);
}

BadScript BadScript::closeAt(const std::string& body, size_t offset) {
    return BadScript().send(head(200, lengthField(body.size())) + body.substr(0, offset));
}

BadScript BadScript::resetAt(const std::string& body, size_t offset) { return closeAt(body, offset).reset(); }

BadScript BadScript::slowDrip(const std::string& body, size_t pieceLength, std::chrono::milliseconds pause) {
    return BadScript().send(head(200, lengthField(body.size()))).drip(body, pieceLength, pause);
}

BadScript BadScript::hangBeforeHeaders() { return BadScript().hang(); }

BadScript BadScript::hangInHeaders() { return BadScript().send("HTTP/1.1 200 OK\r\nContent-Le").hang(); }

BadScript BadScript::hangInBody(const std::string& body, size_t offset) { return closeAt(body, offset).hang(); }

BadScript BadScript::redirect(const std::string& location, int code, const std::string& body) {
    return BadScript().send(head(code, "Location: " + location + "\r\n" + lengthField(body.size())) + body);
}

BadScript BadScript::endlessBody() { return BadScript().send(head(200, {})).repeat(std::string(65536, 'e')); }

BadScript BadScript::endlessHeaders() {
    return BadScript().send("HTTP/1.1 200 OK\r\n").repeat("X-Endless: " + std::string(1000, 'h') + "\r\n");
}

BadScript BadScript::garbage() { return BadScript().send(std::string("\x7f\x45LF\0\0 this is not HTTP\r\n\r\n", 26)); }

BadScript BadScript::hugeHeader(size_t length, const std::string& body) {
    return BadScript().send(head(200, "X-Huge: " + std::string(length, 'h') + "\r\n" + lengthField(body.size())) +
                            body);
}

BadScript BadScript::chunked(const std::string& body, size_t chunkLength) {
    return BadScript().send(head(200, kChunkedField) + chunks(body, chunkLength) + "0\r\n\r\n");
}

BadScript BadScript::chunkedCutShort(const std::string& body, size_t chunkLength) {
    return BadScript().send(head(200, kChunkedField) + chunks(body, chunkLength));
}

BadScript BadScript::interimFirst(const std::string& body) {
    return BadScript().send(
        "HTTP/1.1 100 Continue\r\nX-Interim: 1\r\n\r\nHTTP/1.1 103 Early Hints\r\nX-Interim: 2\r\n\r\n" +
        head(200, lengthField(body.size())) + body);
}

BadHttpServer::BadHttpServer() {
    begin([this](LoopbackConnection& connection) { answerAll(connection); });
}

BadHttpServer::~BadHttpServer() {
    {
        std::lock_guard lock(mScriptMutex);
        mClosing = true;
        mEnded.notify_all();
    }
    stop();
}

void BadHttpServer::script(const std::string& path, BadScript script) {
    std::lock_guard lock(mScriptMutex);
    mScripts[path] = std::move(script);
}

std::string BadHttpServer::redirectChain(const std::string& name, int length, const std::string& body) {
    const auto step = [&name](int number) { return "/" + name + "/" + std::to_string(number); };
    for (int number = 0; number < length; ++number) script(step(number), BadScript::redirect(step(number + 1)));
    script(step(length), BadScript::status(200, body));
    return step(0);
}

bool BadHttpServer::pause(std::chrono::milliseconds duration) {
    std::unique_lock lock(mScriptMutex);
    return !mEnded.wait_for(lock, duration, [this] { return mClosing; });
}

void BadHttpServer::answerAll(LoopbackConnection& connection) {
    HttpRequest request;
    while (connection.readRequest(request)) {
        record(request);
        BadScript script = BadScript::status(404, "no script");
        {
            std::lock_guard lock(mScriptMutex);
            const auto found = mScripts.find(request.path());
            if (found != mScripts.end()) script = found->second;
        }
        for (const auto& step : script.mSteps) {
            if (!step(connection, [this](std::chrono::milliseconds duration) { return pause(duration); })) return;
        }
        if (!script.mKeepAlive) return;
    }
}

}  // namespace support
