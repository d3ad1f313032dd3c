// Receiving a package from a server on the loopback.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <future>

#include "Bench.h"
#include "HttpDownload.h"

namespace bench {

using namespace Tarnwick::OrvUpdate;

namespace {

constexpr uint64_t kBodyBytes = uint64_t{256} << 20;

/// Gives every connection the same body, one connection after another, until it ends.
class Server {
public:
    Server() : mListener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)), mPiece(1 << 20, 'x') {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t length = sizeof address;
        auto* any = reinterpret_cast<sockaddr*>(&address);
        require(::bind(mListener, any, length) == 0 && ::listen(mListener, 4) == 0 &&
                    ::getsockname(mListener, any, &length) == 0,
                "no server socket");
        mPort = ntohs(address.sin_port);
        mThread = std::thread([this] { serve(); });
    }
    ~Server() {
        ::shutdown(mListener, SHUT_RDWR);
        mThread.join();
        ::close(mListener);
    }
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    std::string url() const { return "http://127.0.0.1:" + std::to_string(mPort) + "/package.exe"; }

private:
    void serve() {
        for (int peer; (peer = ::accept4(mListener, nullptr, nullptr, SOCK_CLOEXEC)) >= 0;) {
            answer(peer);
            ::close(peer);
        }
    }

    void answer(int peer) {
        std::string head;
        for (char buffer[4096]; head.find("\r\n\r\n") == std::string::npos;) {
            const ssize_t got = ::recv(peer, buffer, sizeof buffer, 0);
            if (got <= 0) return;
            head.append(buffer, static_cast<size_t>(got));
        }
        if (!send(peer,
                  "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nConnection: close\r\n"
                  "Content-Length: " +
                      std::to_string(kBodyBytes) + "\r\n\r\n"))
            return;
        for (uint64_t sent = 0; sent < kBodyBytes; sent += mPiece.size()) {
            if (!send(peer, mPiece)) return;
        }
    }

    static bool send(int peer, const std::string& bytes) {
        for (size_t sent = 0; sent < bytes.size();) {
            const ssize_t done = ::send(peer, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (done <= 0) return false;
            sent += static_cast<size_t>(done);
        }
        return true;
    }

    const int mListener;
    const std::string mPiece;
    uint16_t mPort = 0;
    std::thread mThread;
};

void download(const std::shared_ptr<IOWorker>& worker, const std::string& store, const std::string& url) {
    const auto version = std::make_shared<OrvVersion>(worker, store, "server");
    JsonValue document;
    document["softversion"] = "1.0";
    document["description"] = "";
    document["url"] = url;
    require(!version->parseVersionFromHttp(document), "no version");
    const auto transfer = std::make_shared<HttpDownload>(worker, version);
    std::promise<void> ended;
    require(!transfer->start([&] { ended.set_value(); }), "the transfer does not start");
    ended.get_future().wait();
    require(transfer->finish() && std::filesystem::file_size(version->getPackageFile()) == kBodyBytes,
            "the transfer fails");
}

}  // namespace

void measureDownload(const Report& report) {
    const Server server;
    const auto worker = IOWorker::create(2);
    std::string target;
    const auto empty = [&] { target = freshDirectory("download"); };
    report(compare(
        {.name = "download 256 MiB, loopback",
         .peer = "curl -o",
         .ours = {[&] { download(worker, target, server.url()); }, empty},
         .theirs = {[&] { run("curl -sS -o " + shellWord(target + "/package.exe") + " " + server.url()); }, empty},
         .amount = static_cast<double>(kBodyBytes) / (1 << 20),
         .unit = "MiB/s"}));
    std::filesystem::remove_all(target);
}

}  // namespace bench
