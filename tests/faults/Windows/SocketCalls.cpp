// Sockets that this program makes. They are handles like others, and their errors are numbers of the same kind.
#include "PathText.h"
#include "ReplacedImport.h"

ORV_IMPORT(socket)
ORV_IMPORT(closesocket)
ORV_IMPORT(connect)
ORV_IMPORT(accept)
ORV_IMPORT(send)
ORV_IMPORT(recv)
ORV_IMPORT(getsockopt)
ORV_IMPORT(WSAEventSelect)

namespace faults::replaced {

namespace {

Verdict judgeEnd(Call call, const char* name, SOCKET end) {
    const Verdict verdict = judgeHandle(call, name, static_cast<Handle>(end));
    passes(verdict);
    return verdict;
}

SOCKET WSAAPI socket(int family, int type, int protocol) {
    if (!passes(judgeSocket("socket"))) return INVALID_SOCKET;
    const SOCKET made = real::socket(family, type, protocol);
    if (made != INVALID_SOCKET) follow(static_cast<Handle>(made), true);
    return made;
}

int WSAAPI closesocket(SOCKET end) {
    forget(static_cast<Handle>(end));
    return real::closesocket(end);
}

int WSAAPI connect(SOCKET end, const struct sockaddr* address, int length) {
    return judgeEnd(Call::Connect, "connect", end).error ? SOCKET_ERROR : real::connect(end, address, length);
}

SOCKET WSAAPI accept(SOCKET listener, struct sockaddr* address, int* length) {
    const SOCKET made = real::accept(listener, address, length);
    const KeptError kept;
    if (made != INVALID_SOCKET) forget(static_cast<Handle>(made));
    return made;
}

int WSAAPI send(SOCKET end, const char* data, int length, int flags) {
    const Verdict verdict = judgeEnd(Call::Send, "send", end);
    if (verdict.error) return SOCKET_ERROR;
    return real::send(end, data, static_cast<int>(allowed(verdict, static_cast<size_t>(length))), flags);
}

int WSAAPI recv(SOCKET end, char* data, int length, int flags) {
    const Verdict verdict = judgeEnd(Call::Receive, "recv", end);
    if (verdict.error) return SOCKET_ERROR;
    constexpr int kLittle = 14;
    const int most =
        verdict.half ? static_cast<int>(allowed(verdict, static_cast<size_t>(std::min(length, kLittle)))) : length;
    return real::recv(end, data, most, flags);
}

int WSAAPI getsockopt(SOCKET end, int level, int option, char* value, int* length) {
    return judgeEnd(Call::SocketOption, "getsockopt", end).error ? SOCKET_ERROR
                                                                 : real::getsockopt(end, level, option, value, length);
}

/// What is asked for before every wait, as poll is elsewhere.
int WSAAPI WSAEventSelect(SOCKET end, WSAEVENT event, long wanted) {
    const bool isWait = event != nullptr && wanted != 0;
    return isWait && judgeEnd(Call::Poll, "WSAEventSelect", end).error ? SOCKET_ERROR
                                                                       : real::WSAEventSelect(end, event, wanted);
}

}  // namespace

}  // namespace faults::replaced

void faults::replaceSocketCalls() {
    ORV_REPLACE(socket);
    ORV_REPLACE(closesocket);
    ORV_REPLACE(connect);
    ORV_REPLACE(accept);
    ORV_REPLACE(send);
    ORV_REPLACE(recv);
    ORV_REPLACE(getsockopt);
    ORV_REPLACE(WSAEventSelect);
}
