#include "Base/SignatureSettings.h"

#include "Public/Base/Signature.h"

namespace {

using Public::Base::Signature;
using Public::Base::SignatureSettings;

class SignatureSettingsTest : public testing::Test {
protected:
    ~SignatureSettingsTest() override {
        Signature::setTrustedRoots({});
        Signature::setTrustedPublishers({});
    }
};

TEST_F(SignatureSettingsTest, NamesTheSystemsRootsByDefault) {
    EXPECT_EQ("/etc/orv/trusted.pem", SignatureSettings::current()->rootsFile);
}

TEST_F(SignatureSettingsTest, TakesAnotherRootsFileAndRestoresTheDefaultForAnEmptyText) {
    Signature::setTrustedRoots("/somewhere/roots.pem");
    EXPECT_EQ("/somewhere/roots.pem", SignatureSettings::current()->rootsFile);
    Signature::setTrustedRoots("");
    EXPECT_EQ("/etc/orv/trusted.pem", SignatureSettings::current()->rootsFile);
}

TEST_F(SignatureSettingsTest, AcceptsEveryPublisherWhileNoneIsListed) {
    EXPECT_TRUE(SignatureSettings::current()->acceptsPublisher("anyone"));
    EXPECT_TRUE(SignatureSettings::current()->acceptsPublisher(""));
}

TEST_F(SignatureSettingsTest, AcceptsOnlyListedPublishersToTheLetter) {
    Signature::setTrustedPublishers({"Orv", "Tarnwick"});
    const auto settings = SignatureSettings::current();
    EXPECT_TRUE(settings->acceptsPublisher("Orv"));
    EXPECT_TRUE(settings->acceptsPublisher("Tarnwick"));
    EXPECT_FALSE(settings->acceptsPublisher("orv"));
    EXPECT_FALSE(settings->acceptsPublisher("Orv "));
    EXPECT_FALSE(settings->acceptsPublisher(std::string("Orv\0x", 5)));
}

TEST_F(SignatureSettingsTest, NeverAcceptsANamelessPublisherOnceSomeAreListed) {
    Signature::setTrustedPublishers({""});
    EXPECT_FALSE(SignatureSettings::current()->acceptsPublisher(""));
}

TEST_F(SignatureSettingsTest, KeepsARecordInUseUnchanged) {
    const auto inUse = SignatureSettings::current();
    Signature::setTrustedPublishers({"Orv"});
    EXPECT_TRUE(inUse->publishers.empty());
}

TEST_F(SignatureSettingsTest, MayChangeWhileOthersRead) {
    std::atomic<bool> done{false};
    std::thread writer([&] {
        for (int i = 0; i < 500; ++i) {
            Signature::setTrustedRoots(i % 2 ? "/a.pem" : "");
            Signature::setTrustedPublishers({"Orv"});
        }
        done = true;
    });
    bool onlyWhatWasSet = true;
    while (!done) {
        const auto settings = SignatureSettings::current();
        onlyWhatWasSet =
            onlyWhatWasSet && (settings->rootsFile == "/a.pem" || settings->rootsFile == "/etc/orv/trusted.pem");
    }
    writer.join();
    EXPECT_TRUE(onlyWhatWasSet);
}

}  // namespace
