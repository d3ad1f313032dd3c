#include "Verdicts.h"

#include <algorithm>

#include "ForwardDownload.h"
#include "HttpDownload.h"
#include "LocalDownload.h"
#include "MQDownload.h"
#include "PostDownload.h"
#include "RemoteDownload.h"

namespace cluster {

using namespace Tarnwick::OrvUpdate;

namespace {

bool isLast(const std::string& detail) { return detail.ends_with(" last"); }

bool ended(IDownload& transfer) { return transfer.finish() || transfer.getError(); }

/// A push asks the cluster at its end. When a link refuses that, nobody tells.
bool waitsForTheQuery(IDownload& transfer, bool troubled) {
    float progress = 0;
    transfer.getProgress(progress);
    return troubled && !ended(transfer) && progress > 0.99F;
}

}  // namespace

std::string judgeQuestion(const Activity& activity, size_t lasts, bool mayStayOpen) {
    const auto answers = activity.details(kAnswer);
    const auto found = static_cast<size_t>(std::count_if(answers.begin(), answers.end(), isLast));
    if (found > lasts) return "its last call came " + std::to_string(found) + " times";
    for (size_t i = 0; i + found < answers.size(); ++i) {
        if (isLast(answers[i])) return "a call came after the last one";
    }
    if (found < lasts && !mayStayOpen && !activity.released()) return "its last call has never come";
    return {};
}

std::string judgeTransfer(const Activity& activity, const std::weak_ptr<IDownload>& weak, size_t mostCalls,
                          bool troubled) {
    const size_t calls = activity.calls(kDone);
    if (calls > mostCalls) return "its callback ran " + std::to_string(calls) + " times";
    const auto transfer = weak.lock();
    if (activity.released() || !transfer || calls > 0 || mostCalls == 0) return {};
    const auto kind = kindOf(*transfer);
    if ((kind == "push" || kind == "forward") && waitsForTheQuery(*transfer, troubled)) return {};
    if (!ended(*transfer)) return "it has never ended";
    // A callback under the key of nobody in particular is displaced by the next one.
    if (kind == "download") return {};
    return "it ended with " + std::to_string(transfer->getError().errorCode()) + " without a call";
}

std::string judgeInstallation(const Activity& activity) {
    for (const char* callback : {"error", "downloaded", "installing"}) {
        const size_t calls = activity.calls(callback);
        if (calls > 1) return std::string(callback) + " ran " + std::to_string(calls) + " times";
    }
    if (activity.calls("installing") > activity.calls("downloaded")) return "it was installed before it was there";
    return {};
}

std::string kindOf(IDownload& transfer) {
    if (dynamic_cast<MQDownload*>(&transfer)) return "pull";
    if (dynamic_cast<HttpDownload*>(&transfer)) return "download";
    if (dynamic_cast<LocalDownload*>(&transfer)) return "look on the disk";
    if (dynamic_cast<PostDownload*>(&transfer)) return "push";
    if (dynamic_cast<RemoteDownload*>(&transfer)) return "fetch on a peer";
    if (dynamic_cast<ForwardDownload*>(&transfer)) return "forward";
    return "transfer";
}

bool endedInSilence(IDownload& transfer) {
    const int code = transfer.getError().errorCode();
    return kindOf(transfer) == "pull" && (code == -1 || code == -200);
}

}  // namespace cluster
