// A node with its message service, for the targets that feed the topics of the update engine.
#pragma once

#include <atomic>
#include <charconv>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "MQ/EmbeddedBus.h"
#include "MQ/Frame.h"
#include "ManualClock.h"
#include "OrvVersion.h"
#include "Public/Base/File.h"
#include "Public/Base/Guid.h"
#include "Public/Base/Printer.h"
#include "Public/Base/System.h"
#include "Require.h"
#include "TWProtocol/TWProtoDeviceCmd.h"
#include "TWProtocol/TWProtoUpgrade.h"
#include "VersionRequest.h"

/// A server whose store lies deep in a directory of the process, so that a path which climbs out of the store ends in a
/// place that is looked at. It has no cloud; time stands still; no program is started. A peer joins the bus by itself
/// and sends frames that no engine has made.
class TopicSite {
public:
    using Topics = std::vector<const char*>;

    static TopicSite& shared() {
        static TopicSite site;
        return site;
    }

    /// Sends each step of the input to a fresh service. Steps are separated by the byte 1E. The first byte of a step
    /// chooses the topic, the form of the body and the addressee; the rest is the body, or the members of a chunk
    /// record, separated by the byte 1F.
    void run(const Topics& topics, std::string_view input) {
        makeNode();
        while (!input.empty()) {
            const size_t end = std::min(input.find('\x1E'), input.size());
            if (end > 0) send(topics, input.substr(0, end));
            input.remove_prefix(std::min(end + 1, input.size()));
        }
        for (const auto& version : mRequest->getVersions()) {
            const auto package = version->getPackageFile();
            FUZZ_REQUIRE(package.starts_with(mStore) && package.find("..") == std::string::npos);
        }
        mRequest.reset();
        mServer.reset();
        mBus->settle();
        checkFiles();
    }

private:
    using Frame = Tarnwick::MQ::Frame;

    TopicSite() {
        namespace base = Public::Base;
        base::setLogSink([](const base::LogEntry&) {});
        mRoot = std::filesystem::temp_directory_path() / ("orv-topics-" + base::Guid::createGuid().getStringStream());
        mStore = (mRoot / "a/b/c/d/store").generic_string();
        base::System::setSystemDirectory((mRoot / "system").generic_string());
        base::System::setProgramStarter([](const base::ProgramStart&) { return false; });
        base::File::setExcutableFileFullPath((mRoot / "program").generic_string());
        fillStore();
        Tarnwick::MQ::Bus::Endpoint endpoint;
        endpoint.onFrame = [this](const std::string&, const std::string& bytes) {
            const auto frame = Tarnwick::MQ::decodeFrame(bytes);
            FUZZ_REQUIRE(frame != nullptr);
            if (frame->kind == Tarnwick::MQ::FrameKind_Answer) ++mAnswers;
        };
        FUZZ_REQUIRE(mBus->join("peer", endpoint));
    }
    ~TopicSite() {
        mBus->leave("peer");
        std::error_code error;
        std::filesystem::remove_all(mRoot, error);
    }

    std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> entry(const char* version, int position, int role) const {
        using namespace Tarnwick::OrvUpdate;
        auto made = std::make_shared<OrvVersion>(nullptr, mStore, "peer");
        made->setVersion(version);
        made->setStoragePosition(static_cast<StoragePosition>(position));
        made->setVersionSource(VersionSource_Online);
        made->setSystemType(Public::Base::SystemType_Windows);
        made->setSystemBits(Public::Base::SystemBits_64);
        made->setVersionType(static_cast<VersionType>(role));
        return made;
    }
    Tarnwick::OrvUpdate::VersionSet catalogue() const {
        return {entry("1.0", 1, 1), entry("2.0", 1, 3), entry("3.0", 3, 1), entry("4.0", 2, 1)};
    }

    void makeNode() {
        using namespace Tarnwick::OrvUpdate;
        Tarnwick::MQ::NodeOptions options;
        options.id = "server";
        options.systemId = "site";
        mServer = TWMQSystemServer::create(mBus, options);
        FUZZ_REQUIRE(mServer != nullptr);
        mRequest = std::make_shared<VersionRequest>(nullptr, mServer, VersionType_Server);
        FUZZ_REQUIRE(!mRequest->start(Version("1.0", 0), {}, {}, mStore));
        mRequest->addVersions(catalogue());
    }

    void send(const Topics& topics, std::string_view step) {
        const auto choice = static_cast<unsigned char>(step.front());
        Frame frame;
        frame.kind = Tarnwick::MQ::FrameKind_Request;
        frame.messageId = ++mMessages;
        frame.token = 1;
        frame.sender = "peer";
        frame.waiter = "peer";
        frame.topic = topics[(choice & 0x0F) % topics.size()];
        frame.addressee = (choice & 0xC0) == 0x40 ? "far" : "server";
        frame.body = body(choice >> 4 & 3, step.substr(1));
        const size_t before = mAnswers;
        FUZZ_REQUIRE(mBus->send("peer", "server", Tarnwick::MQ::encodeFrame(frame)));
        mBus->settle();
        FUZZ_REQUIRE(mAnswers == before + 1);
    }

    static Public::Base::SharedBuffer body(int form, std::string_view text) {
        using namespace Tarnwick::Protocol;
        if (form == 0) return Public::Base::SharedBuffer(std::string(text));
        if (form == 1) {
            TWProtoUpgradePkt packet;
            packet.body = text;
            return TWPacket::serializeAsBytes(packet);
        }
        if (form == 2) {
            TWProtoUpgradeNotify notify;
            notify.body = text;
            return TWPacket::serializeAsBytes(notify);
        }
        TWProtoUpgradeInfo info;
        info.transferId = nextField(text);
        info.fileSize = number(nextField(text));
        info.position = number(nextField(text));
        info.versionInfo = nextField(text);
        info.data = text;
        return TWPacket::serializeAsBytes(info);
    }
    static std::string nextField(std::string_view& text) {
        const size_t end = std::min(text.find('\x1F'), text.size());
        const std::string field(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        return field;
    }
    static uint32_t number(const std::string& text) {
        uint32_t value = 0;
        std::from_chars(text.data(), text.data() + text.size(), value);
        return value;
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        for (const auto& file : std::filesystem::recursive_directory_iterator(mRoot)) {
            if (!file.is_directory()) names.insert(file.path().generic_string());
        }
        return names;
    }
    /// What was written lies in the store, under the name of a package. The store is as it was afterwards.
    void checkFiles() {
        const auto found = files();
        for (const auto& file : found) {
            FUZZ_REQUIRE(file.starts_with(mStore + "/"));
            FUZZ_REQUIRE(file.ends_with(".exe"));
        }
        if (found == mFilled) return;
        std::filesystem::remove_all(mStore);
        fillStore();
    }
    void fillStore() {
        for (const auto& version : catalogue()) {
            if (version->getStoragePosition() != Tarnwick::OrvUpdate::StoragePosition_Local) continue;
            const std::filesystem::path package = version->getPackageFile();
            std::filesystem::create_directories(package.parent_path());
            std::ofstream(package, std::ios::binary) << "MZ, but no package";
        }
        mFilled = files();
    }

    support::ManualClock mClock;
    std::shared_ptr<Tarnwick::MQ::EmbeddedBus> mBus = std::make_shared<Tarnwick::MQ::EmbeddedBus>();
    std::filesystem::path mRoot;
    std::string mStore;
    std::set<std::string> mFilled;
    std::shared_ptr<Tarnwick::MQ::TWMQSystemServer> mServer;
    std::shared_ptr<Tarnwick::OrvUpdate::VersionRequest> mRequest;
    std::atomic<size_t> mAnswers{0};
    uint32_t mMessages = 0;
};
