// A pull whose peer is the test itself.
#pragma once

#include "FileText.h"
#include "LogRecorder.h"
#include "MQDownload.h"
#include "OpenFiles.h"
#include "ScriptedPeer.h"
#include "TempDir.h"

namespace support {

class PullFixture : public testing::Test {
protected:
    PullFixture() {
        mVersion->setVersion("1.2.3.4");
        mVersion->setDescribe("what is new");
        mVersion->setStoragePosition(Tarnwick::OrvUpdate::StoragePosition_Node);
        mProvider->direct = mPeer;
        mPath = mVersion->getPackageFile();
        mDownload = makeDownload();
    }
    std::shared_ptr<Tarnwick::OrvUpdate::MQDownload> makeDownload() const {
        return std::make_shared<Tarnwick::OrvUpdate::MQDownload>(mProvider, mVersion);
    }
    Public::Base::Function<void()> counting() {
        return [calls = mCalls] { ++*calls; };
    }
    int start() { return mDownload->start(counting()).errorCode(); }
    static TWProtoUpgradeInfo chunk(uint32_t fileSize, uint32_t position, const std::string& data) {
        TWProtoUpgradeInfo info;
        info.fileSize = fileSize;
        info.position = position;
        info.data = data;
        return info;
    }
    /// Answers the last request.
    void answer(uint32_t fileSize, uint32_t position, const std::string& data) const {
        mPeer->last().answer(chunk(fileSize, position, data));
    }
    /// Answers as the owner of `content` does, `most` bytes at a time, until nothing is asked any more.
    void serve(const std::string& content, size_t most) const {
        size_t asked = 0;
        do {
            asked = mPeer->count();
            const uint32_t position = mPeer->last().record.position;
            const auto data = position < content.size() ? content.substr(position, most) : std::string();
            answer(static_cast<uint32_t>(content.size()), position, data);
        } while (mPeer->count() > asked);
    }
    std::optional<std::string> content() const { return readText(mPath); }
    int calls() const { return *mCalls; }
    float progress() const {
        float value = -1;
        EXPECT_EQ(mDownload->getProgress(value).errorCode(), 0);
        return value;
    }
    int error() const { return mDownload->getError().errorCode(); }
    /// Level and text of what has been logged, one entry an element.
    std::vector<std::string> logged() const {
        std::vector<std::string> lines;
        for (const auto& entry : mLog.entries()) {
            EXPECT_EQ(entry.file, "OrvUpdate/Src/OrvDownload");
            lines.push_back(std::to_string(entry.level) + " " + entry.text);
        }
        return lines;
    }
    using Texts = std::vector<std::string>;

    TempDir mDir;
    LogRecorder mLog;
    std::shared_ptr<ScriptedConnection> mPeer = std::make_shared<ScriptedConnection>();
    std::shared_ptr<ScriptedProvider> mProvider = std::make_shared<ScriptedProvider>();
    std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> mVersion =
        std::make_shared<Tarnwick::OrvUpdate::OrvVersion>(nullptr, mDir.path() + "/store", std::string("S2"));
    std::string mPath;
    std::shared_ptr<std::atomic<int>> mCalls = std::make_shared<std::atomic<int>>(0);
    std::shared_ptr<Tarnwick::OrvUpdate::MQDownload> mDownload;
};

}  // namespace support
