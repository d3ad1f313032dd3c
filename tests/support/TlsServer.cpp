#include "TlsServer.h"

#include <stdexcept>

#include "FileText.h"
#include "HostTools.h"

namespace support {

namespace {

/// The port that the server names in a line like "ACCEPT 127.0.0.1:4711".
uint16_t readPort(sockets::Socket words) {
    std::string line;
    char byte = 0;
    while (sockets::receive(words, &byte, 1) > 0) {
        if (byte != '\n') {
            line += byte;
            continue;
        }
        const size_t colon = line.rfind(':');
        if (line.starts_with("ACCEPT") && colon != std::string::npos)
            return static_cast<uint16_t>(std::stoul(line.substr(colon + 1)));
        line.clear();
    }
    return 0;
}

}  // namespace

TlsServer::TlsServer(const Credential& credential) {
    writeText(mDirectory.path() + "/peer.pem", credential.certificate + credential.key);
    writeText(mDirectory.path() + "/page", "HTTP/1.0 200 OK\r\nContent-Length: 2\r\n\r\nok");
    uint16_t wordsPort = 0;
    const auto listener = sockets::listenOnLoopback(wordsPort);
    // It chooses its port itself, so the shell gives it a connection to here for what it says.
    const std::string serve =
        "exec openssl s_server -accept 127.0.0.1:0 -naccept 1 -HTTP -cert peer.pem > /dev/tcp/127.0.0.1/" +
        std::to_string(wordsPort) + " 2>&1";
    mServing = std::thread(
        [call = ToolCall{.words = {"bash", "-c", serve}, .directory = mDirectory.path()}] { runTool(call); });
    mWords = sockets::acceptPeer(listener);
    sockets::close(listener);
    mPort = readPort(mWords);
    if (mPort != 0) return;
    sockets::close(mWords);
    mServing.join();
    throw std::runtime_error("no TLS server");
}

TlsServer::~TlsServer() {
    // One connection is all that it waits for, whoever makes it.
    try {
        sockets::close(sockets::connectToLoopback(mPort));
    } catch (const std::exception&) {  // it has had its connection
    }
    char byte = 0;
    while (sockets::receive(mWords, &byte, 1) > 0) {
    }
    sockets::close(mWords);
    mServing.join();
}

}  // namespace support
