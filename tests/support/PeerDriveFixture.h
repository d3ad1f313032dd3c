// A client on whose link a test answers for the peer.
#pragma once

#include "AnsweringLink.h"
#include "CatalogueEntries.h"
#include "LogRecorder.h"

namespace support {

class PeerDriveFixture : public testing::Test {
protected:
    PeerDriveFixture() { mClient->link = mLink; }

    /// The version document as it travels.
    std::string document() const {
        return mVersion->buildVersionInfo().toStyledString(Public::Base::WriteStyle_Indented).toStdString();
    }
    void expectRequest(const AnsweringLink::Request& request, const std::string& topic) const {
        EXPECT_EQ(request.to, "peer");
        EXPECT_EQ(request.topic, topic);
        EXPECT_EQ(request.body, document());
        EXPECT_FALSE(request.hasUser);
        EXPECT_EQ(request.level, 0);
        EXPECT_EQ(request.timeoutMs, 60000U);
    }
    size_t linesOf(const std::string& text) const {
        size_t lines = 0;
        for (const auto& entry : mLog.entries()) lines += entry.text == text ? 1 : 0;
        return lines;
    }

    LogRecorder mLog;
    std::shared_ptr<AnsweringLink> mLink = std::make_shared<AnsweringLink>();
    std::shared_ptr<FakeClient> mClient = std::make_shared<FakeClient>();
    std::shared_ptr<Tarnwick::OrvUpdate::OrvVersion> mVersion = entry("1.11.0.8");
};

/// A progress document and what a reader that knew 0.25, not finished, makes of it.
struct ProgressCase {
    const char* name;
    const char* document;
    float pos;
    bool finish;

    friend void PrintTo(const ProgressCase& one, std::ostream* out) { *out << one.name; }
};

/// Every readable document, well made or not.
inline std::vector<ProgressCase> progressCases() {
    constexpr float most = std::numeric_limits<float>::max();
    return {
        {"Whole", R"({"pos":0.5,"finish":true})", 0.5F, true},
        {"PosAlone", R"({"pos":0.5})", 0.5F, false},
        {"FinishAlone", R"({"finish":true})", 0.25F, true},
        {"NoMember", "{}", 0.25F, false},
        {"OtherMembers", R"({"position":0.5,"Finish":true})", 0.25F, false},
        {"FurtherMembers", R"({"pos":0.5,"finish":false,"speed":12})", 0.5F, false},
        {"MembersTwice", R"({"pos":0.1,"pos":0.5})", 0.5F, false},
        {"Array", "[0.5,true]", 0.25F, false},
        {"Number", "1", 0.25F, false},
        {"Text", R"("pos")", 0.25F, false},
        {"Null", "null", 0.25F, false},
        {"PosAsText", R"({"pos":"0.5"})", 0.5F, false},
        {"PosAsWords", R"({"pos":"half"})", 0.0F, false},
        {"PosNaN", R"({"pos":"NaN"})", 0.0F, false},
        {"PosInfinity", R"({"pos":"inf"})", 0.0F, false},
        {"PosHuge", R"({"pos":1e308})", most, false},
        {"PosHugeNegative", R"({"pos":-1e308})", -most, false},
        {"PosBeyondOne", R"({"pos":17})", 17.0F, false},
        {"PosTrue", R"({"pos":true})", 1.0F, false},
        {"PosNull", R"({"pos":null})", 0.0F, false},
        {"PosObject", R"({"pos":{"pos":0.5}})", 0.0F, false},
        {"FinishOne", R"({"finish":1})", 0.25F, true},
        {"FinishZero", R"({"finish":0})", 0.25F, false},
        {"FinishTextTrue", R"({"finish":"true"})", 0.25F, true},
        {"FinishOtherText", R"({"finish":"yes"})", 0.25F, false},
        {"FinishNull", R"({"finish":null})", 0.25F, false},
        {"FinishArray", R"({"finish":[true]})", 0.25F, false},
    };
}

/// An answer of code 0 that tells nothing.
struct BrokenAnswer {
    const char* name;
    std::function<std::shared_ptr<MQMessage>()> make;

    friend void PrintTo(const BrokenAnswer& one, std::ostream* out) { *out << one.name; }
};

inline std::vector<BrokenAnswer> brokenAnswers() {
    return {
        {"NoBody", [] { return peerAnswer(0); }},
        {"BodyOfAnotherRecord",
         [] {
             Tarnwick::Protocol::TWProtoUpgradeNotify notify;
             notify.body = R"({"pos":0.5})";
             return peerAnswer(0, &notify);
         }},
        {"EmptyText", [] { return peerDocument(""); }},
        {"NoJson", [] { return peerDocument("sorry"); }},
        {"CutJson", [] { return peerDocument(R"({"pos":0.5)"); }},
        {"TextBehindTheDocument", [] { return peerDocument(R"({"pos":0.5}})"); }},
        {"BareNaN", [] { return peerDocument(R"({"pos":NaN})"); }},
        {"NotUtf8", [] { return peerDocument("{\"pos\":0.5,\"x\":\"\xff\"}"); }},
        {"NestedTooDeep", [] { return peerDocument(std::string(100000, '[') + std::string(100000, ']')); }},
        {"LongerThan64MiB", [] { return peerDocument(std::string((64U << 20) + 1, ' ')); }},
    };
}

}  // namespace support
