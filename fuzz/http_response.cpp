// What a server may answer: the bytes of a response, in pieces, read by the real transfer over a socket whose other end
// is held here. No thread and no clock has a part in it, so that an input always takes the same way.
//
// The first byte of an input chooses the request and how the server ends (Plan); the rest is what the server sends, cut
// into pieces at each byte 0x1E. A piece is sent when the client has read the one before.
#include <curl/curl.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Network/Exchange.h"
#include "Network/Transfer.h"
#include "Require.h"
#include "StreamPair.h"

using namespace Public::Network;

namespace {

// libcurl does not count what it reaches; the fuzzing engine learns of it by these.
#if defined(__clang__)
__attribute__((section("__libfuzzer_extra_counters")))
#endif
uint8_t sTraces[2048];

/// Marks that this input has shown this number, of this kind.
enum class Trace : size_t { Result = 0, Status = 128, Pieces = 1152, Fields = 1216, Body = 1280, Transfers = 1344 };
void note(Trace kind, size_t number, size_t most) { sTraces[static_cast<size_t>(kind) + std::min(number, most)] = 1; }
size_t magnitude(size_t number) { return static_cast<size_t>(std::bit_width(number)); }

constexpr char kCut = 0x1E;
constexpr size_t kMostConnections = 8;

struct Plan {
    explicit Plan(uint8_t choice)
        : streams((choice & 1) != 0),
          head((choice & 2) != 0),
          posts((choice & 4) != 0),
          staysOpen((choice & 8) != 0),
          resets((choice & 16) != 0),
          endsAtPiece((choice & 32) != 0 ? 1 + (choice >> 6) : 0) {}

    bool streams;          ///< the body goes to the receive callback
    bool head, posts;      ///< method; GET otherwise
    bool staysOpen;        ///< the server falls silent, and the request times out
    bool resets;           ///< the server closes with the request unread
    unsigned endsAtPiece;  ///< the caller ends the exchange inside the callback for this piece; 0: it does not
};

/// The server's ends of the connections that the client makes; the newest is the one that is answered on.
class Server {
public:
    ~Server() {
        for (const streams::End end : mEnds) streams::close(end);
    }

    curl_socket_t connect() {
        streams::End here = streams::kNone;
        if (mEnds.size() == kMostConnections || !streams::makePair(here, mPeer)) return CURL_SOCKET_BAD;
        mEnds.push_back(here);
        return mPeer;
    }
    void send(std::string_view piece) {
        if (!mEnds.empty()) streams::send(mEnds.back(), mPeer, piece);
    }
    /// Whether the client has all that was sent. A connection that it has left counts as read.
    bool isRead() const { return mEnds.empty() || !streams::hasUnread(mPeer); }
    void finish(bool reset) {
        if (mEnds.empty()) return;
        if (!reset) streams::drain(mEnds.back());
        streams::closeBefore(mEnds.back(), mPeer);
        mEnds.pop_back();
    }

    static curl_socket_t onOpen(void* server, curlsocktype, curl_sockaddr*) noexcept {
        return static_cast<Server*>(server)->connect();
    }
    /// The client's end of a pair is connected from its making.
    static int onMade(void*, curl_socket_t, curlsocktype) noexcept { return CURL_SOCKOPT_ALREADY_CONNECTED; }

private:
    std::vector<streams::End> mEnds;
    streams::End mPeer = streams::kNone;
};

/// The caller of the request, who holds the client to its promises.
class Caller {
public:
    Caller(const Plan& plan, std::string_view sent) : mPlan(plan), mSent(sent) {}

    std::shared_ptr<Exchange> makeExchange() {
        const char* method = mPlan.head ? "HEAD" : mPlan.posts ? "POST" : "GET";
        const auto cache = mPlan.streams ? HTTPCacheType_Stream : HTTPCacheType_Memory;
        const auto request = std::make_shared<HTTPClientRequest>(method, Public::Base::URL("", false), cache);
        if (mPlan.posts) request->content()->write(Public::Base::SharedBuffer("asked"));
        if (mPlan.streams) {
            request->recvCallback() = [this](const auto&, const auto& header, const char* data, unsigned length) {
                receive(header, {data, length});
            };
        }
        const auto complete = [this](const auto&, const auto&, const auto& response) { finish(response); };
        mExchange =
            std::make_shared<Exchange>(std::weak_ptr<HTTPClient>(), request, complete, "http://127.0.0.1/a", "Fuzz");
        return mExchange;
    }

    void expect(CURLcode result) { mTimedOut = result == CURLE_OPERATION_TIMEDOUT; }
    /// After the exchange: the completion came exactly once, or not at all when the caller had ended it.
    void judge() const { FUZZ_REQUIRE(mCompletions == (mEnded ? 0U : 1U)); }

private:
    void receive(const std::shared_ptr<HTTPHeader>& header, std::string_view piece) {
        FUZZ_REQUIRE(mCompletions == 0 && !mEnded);
        FUZZ_REQUIRE(header && header->statuscode >= 100);
        FUZZ_REQUIRE(!mHeader || mHeader == header);
        mHeader = header;
        mBody.append(piece);
        if (++mPieces != mPlan.endsAtPiece) return;
        mEnded = true;
        mExchange->end();
    }

    void finish(const std::shared_ptr<HTTPClientResponse>& response) {
        FUZZ_REQUIRE(++mCompletions == 1 && !mEnded);
        FUZZ_REQUIRE(response && response->header() && response->content());
        const std::string gathered = response->content()->readAll().toStdString();
        const int status = response->header()->statuscode;
        note(Trace::Status, static_cast<size_t>(status), 1023);
        note(Trace::Pieces, mPieces, 63);
        note(Trace::Body, magnitude(gathered.size() + mBody.size()), 63);
        FUZZ_REQUIRE(!mTimedOut || status == 408);
        if (status == 0 || mTimedOut) {
            FUZZ_REQUIRE(gathered.empty());
            FUZZ_REQUIRE(response->header()->header("Content-Length", 0).isNull());
            return;
        }
        FUZZ_REQUIRE(status >= 100 && status <= 999);
        FUZZ_REQUIRE(!mPlan.streams || gathered.empty());
        FUZZ_REQUIRE(!mHeader || mHeader == response->header());
        requireBody(*response->header(), mPlan.streams ? mBody : gathered);
    }

    /// The body is what the server sent, and as long as it said.
    void requireBody(const HTTPHeader& header, const std::string& body) const {
        FUZZ_REQUIRE(!mPlan.head || body.empty());
        if (!header.header("Transfer-Encoding", 0).isNull()) return;
        const auto length = header.header("Content-Length", 0);
        if (mSent.find(kCut) == std::string_view::npos) FUZZ_REQUIRE(mSent.find(body) != std::string_view::npos);
        const bool bodiless = mPlan.head || header.statuscode == 204 || header.statuscode == 304;
        const std::string text = length.toString();
        if (bodiless || text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return;
        if (header.header("Content-Length", 1).isNull()) FUZZ_REQUIRE(body.size() == length.toUint64());
    }

    const Plan mPlan;
    const std::string_view mSent;
    std::shared_ptr<Exchange> mExchange;
    std::shared_ptr<HTTPHeader> mHeader;  // of the pieces
    std::string mBody;
    unsigned mPieces = 0;
    unsigned mCompletions = 0;
    bool mTimedOut = false;
    bool mEnded = false;
};

/// Drives one transfer, as a transfer loop does, but on this thread and with the server's every move in between.
class Run {
public:
    Run(Transfer& transfer, Server& server) : mTransfer(transfer), mServer(server), mMulti(curl_multi_init()) {
        // Wherever a redirect leads, it leads here: no name is looked up, and no other machine is asked.
        mHere = curl_slist_append(nullptr, "::127.0.0.1:80");
        CURL* const easy = transfer.easy();
        curl_easy_setopt(easy, CURLOPT_CONNECT_TO, mHere);
        curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, "http");
        curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &Server::onOpen);
        curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, &server);
        curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &Server::onMade);
        curl_multi_add_handle(mMulti, easy);
    }
    ~Run() {
        curl_multi_remove_handle(mMulti, mTransfer.easy());
        curl_multi_cleanup(mMulti);
        curl_slist_free_all(mHere);
    }

    void answer(std::string_view bytes) {
        for (size_t end = 0; end != std::string_view::npos && !mDone;) {
            end = bytes.find(kCut);
            mServer.send(bytes.substr(0, end));
            move();
            bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
        }
    }
    /// Lets the transfer take all that has come.
    void move() {
        constexpr int kMostSteps = 64;
        for (int step = 0; step < kMostSteps && !mDone && (step < 2 || !mServer.isRead()); ++step) {
            int running = 0;
            curl_multi_perform(mMulti, &running);
            int left = 0;
            while (const CURLMsg* message = curl_multi_info_read(mMulti, &left)) {
                mDone = true;
                mResult = message->data.result;
                noteTraces(message->easy_handle);
            }
        }
    }
    /// What is not done by now has had silence.
    CURLcode result() const { return mDone ? mResult : CURLE_OPERATION_TIMEDOUT; }

private:
    void noteTraces(CURL* easy) const {
        long redirects = 0, connects = 0;
        curl_easy_getinfo(easy, CURLINFO_REDIRECT_COUNT, &redirects);
        curl_easy_getinfo(easy, CURLINFO_NUM_CONNECTS, &connects);
        size_t fields = 0;
        for (curl_header* each = nullptr; (each = curl_easy_nextheader(easy, CURLH_HEADER, -1, each)) != nullptr;) {
            ++fields;
        }
        note(Trace::Result, mResult, 127);
        note(Trace::Fields, fields, 63);
        note(Trace::Transfers, static_cast<size_t>(redirects * 8 + connects), 255);
    }

    Transfer& mTransfer;
    Server& mServer;
    CURLM* mMulti;
    curl_slist* mHere = nullptr;
    bool mDone = false;
    CURLcode mResult = CURLE_OK;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const bool initialized = curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
    if (!initialized || size == 0) return 0;
    const Plan plan(data[0]);
    const std::string_view sent(reinterpret_cast<const char*>(data) + 1, size - 1);
    Caller caller(plan, sent);
    const auto exchange = caller.makeExchange();
    {
        Server server;
        Transfer transfer(exchange);
        FUZZ_REQUIRE(transfer.easy() != nullptr);
        Run run(transfer, server);
        run.move();
        run.answer(sent);
        if (!plan.staysOpen) server.finish(plan.resets);
        run.move();
        caller.expect(run.result());
        exchange->complete(transfer.response(run.result()));
    }
    exchange->complete(failedResponse(0));  // a second end finds the exchange ended
    caller.judge();
    return 0;
}
