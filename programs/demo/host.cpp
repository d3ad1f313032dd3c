// A host program: asks the update cloud, and upgrades itself to the newest version that it finds there.
//   orvhost VERSION STORE INSTALL_DIR REPORT_FILE BACKUP_DIR SYSTEM_DIR [cancel] [elevated]
// Without "elevated" the installer is started with the rights that this program has.
// Exit status: 0 the installer was launched, 3 nothing newer, 4 refused or failed, 5 cancelled.
#include <algorithm>
#include <cstdio>
#include <future>
#include <string>

#include "OrvUpdate.h"
#include "Public/Base.h"
#include "Public/Network.h"
#include "Tarnwick/MQ.h"

using namespace Tarnwick::OrvUpdate;

namespace {

enum ExitStatus { Launched = 0, NothingNewer = 3, Failed = 4, Cancelled = 5 };
constexpr float kCancelAt = 0.3F;

void tell(const char* label, const std::string& text) {
    std::printf("   %-12s %s\n", label, text.c_str());
    std::fflush(stdout);
}

std::string reasonOf(const ErrorInfo& error) {
    switch (static_cast<int>(error.errorCode())) {
        case Public::Base::ErrorCode_PackageUnreadable:
            return "the package is damaged or its signature is bad";
        case Public::Base::ErrorCode_PackageIncomplete:
            return "the package lacks the client or the server";
        case Public::Base::ErrorCode_PackageMismatch:
            return "the package is of another version or word size";
        case Public::Base::ErrorCode_PackageInvalid:
            return "the package is missing or invalid";
        case Public::Base::ErrorCode_ArchiveError:
            return "the package's content is damaged";
        default:
            return error.errorMessage().empty() ? "the upgrade failed" : error.errorMessage();
    }
}

std::string withCode(const ErrorInfo& error) {
    return reasonOf(error) + " (error " + std::to_string(static_cast<int>(error.errorCode())) + ")";
}

/// Waits for the answer of a request that ends in a callback.
template <class Request>
ErrorInfo answerOf(Request request) {
    auto answered = std::make_shared<std::promise<ErrorInfo>>();
    auto answer = answered->get_future();
    request(Function<void(const ErrorInfo&)>([answered](const ErrorInfo& error) { answered->set_value(error); }));
    return answer.get();
}

/// Of the versions between the running one and the newest.
void showNotes(IVersionRequest& request, const Version& newest) {
    for (const auto& note : request.getReleaseHistory()) {
        const Version version = note->getVersion();
        if (version <= request.getCurVersion() || version > newest) continue;
        tell("note", version.toString() + ": " + note->getVersionInfo());
    }
}

/// Shows how far the transfer is until the installation has ended, or cancels it on the way.
void watch(IVersionRequest& request, const std::shared_ptr<IVersion>& version,
           const std::shared_ptr<IDownload>& transfer, std::future<int>& ended, bool cancel) {
    float shown = 0;
    while (ended.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout) {
        float progress = 0;
        transfer->getProgress(progress);
        if (progress - shown >= 0.25F && progress < 1.0F) {
            tell("fetched", std::to_string(static_cast<int>(progress * 100)) + " %");
            shown = progress;
        }
        if (cancel && progress >= kCancelAt) {
            tell("cancel",
                 "the user has thought better of it at " + std::to_string(static_cast<int>(progress * 100)) + " %");
            request.installCancel(version);
            return;
        }
    }
}

int upgradeTo(IVersionRequest& request, const std::shared_ptr<IVersionRequest>& shared,
              const std::shared_ptr<IVersion>& newest, const std::string& installDir, bool cancel,
              std::promise<int>& result, std::future<int>& ended) {
    const auto transfer = newest->getDownload(shared);
    if (!transfer) return Failed;
    request.install(
        newest, installDir, true,
        [&result](const ErrorInfo& error) {
            tell("refused", withCode(error));
            result.set_value(Failed);
        },
        [] { tell("fetched", "100 %, the package lies in the store"); },
        [] { tell("tested", "signature, size, content, version and word size are as they must be"); });
    watch(request, newest, transfer, ended, cancel);
    return cancel ? static_cast<int>(Cancelled) : ended.get();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> words = Public::Base::Process::arguments(argc, argv);
    if (words.size() < 7) {
        std::fprintf(stderr,
                     "usage: orvhost VERSION STORE INSTALL_DIR REPORT_FILE BACKUP_DIR SYSTEM_DIR [cancel] "
                     "[elevated]\n");
        return 2;
    }
    const Version running(words[1], 0);
    const std::string store = words[2], installDir = words[3], reportFile = words[4], backupDir = words[5];
    const auto wants = [&](const char* word) { return std::find(words.begin() + 7, words.end(), word) != words.end(); };
    const bool cancel = wants("cancel");
    Public::Base::System::setSystemDirectory(words[6]);
    Public::Base::setLogSink([](const Public::Base::LogEntry&) {});
    if (!wants("elevated")) {
        // Everything that the demonstration touches is its own, so that nobody need be asked for raised rights.
        Public::Base::System::setProgramStarter([](const Public::Base::ProgramStart& start) {
            Public::Base::System::setProgramStarter({});
            return Public::Base::System::startPlain(start);
        });
    }

    Tarnwick::MQ::NodeOptions node;
    node.id = node.serverId = "server-1";
    node.systemId = "site";
    node.version = running.toString();
    const auto server = TWMQSystemServer::create(Tarnwick::MQ::Bus::embedded(), node);
    const auto request = IVersionRequest::allocVersionRequest(IOWorker::create(2), server, VersionType_Server);

    std::promise<int> result;
    auto ended = result.get_future();
    const auto started = request->start(
        running,
        [&](const std::string& version, std::string& first, std::string& second) {
            tell("asked", "the host agrees to " + version);
            first = reportFile;
            second = backupDir;
            return true;
        },
        [&] {
            std::printf("\n");  // the engine has named the program that it starts
            tell("launched", "the installer runs; the host ends itself");
            result.set_value(Launched);
            return true;
        },
        store);
    if (started) return Failed;

    const ErrorInfo cloud = answerOf([&](const auto& done) { request->requestVersionFromHttp(done, true); });
    if (cloud) {
        tell("cloud", withCode(cloud));
        return Failed;
    }
    answerOf([&](const auto& done) { request->requestReleaseHistoryFromHttp(done, true); });
    const auto newest = request->queryNewestVersion(Public::Base::SystemType_Windows, Public::Base::SystemBits_64,
                                                    Public::Base::ProjectType_Unknown, VersionType_Server,
                                                    VersionSource_Unknown, running);
    if (!newest) {
        tell("newest", "nothing newer than " + running.toString());
        return NothingNewer;
    }
    tell("newest", running.toString() + " -> " + newest->getVersion().toString());
    showNotes(*request, newest->getVersion());
    return upgradeTo(*request, request, newest, installDir, cancel, result, ended);
}
