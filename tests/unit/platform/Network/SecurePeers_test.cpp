// Which TLS peers are trusted.
#include "CertificateMaker.h"
#include "Fetch.h"
#include "HttpFileServer.h"
#include "TlsServer.h"

namespace {

using namespace support;

/// A root of the test's, and certificates of peers under it.
class SecurePeers : public testing::Test {
protected:
    ~SecurePeers() override { HTTPClient::setTrustedRoots({}); }

    static Credential makeRoot(const std::string& name) {
        return makeCertificate({.commonName = name, .authority = true, .keyUsage = "critical,keyCertSign"});
    }
    static CertificateSpec peer() {
        return {.commonName = "localhost",
                .keyUsage = "critical,digitalSignature,keyEncipherment",
                .extendedKeyUsage = "serverAuth",
                .alternativeName = "DNS:localhost"};
    }
    /// The status of a request to a peer with that certificate under mRoot.
    int statusOf(const CertificateSpec& spec) const {
        TlsServer server(makeCertificate(spec, &mRoot));
        Fetch fetch(server.url());
        fetch.run(IOWorker::create(1));
        return fetch.status();
    }

    const Credential mRoot = makeRoot("Orv Test Root");
};

TEST_F(SecurePeers, ThatSpeakNoTlsAreRefused) {
    HttpFileServer server;
    server.serve("/a", "ok");
    Fetch fetch("https://" + server.host() + "/a");
    fetch.timeout(300).run(IOWorker::create(1));
    EXPECT_NE(fetch.status(), 200);
    EXPECT_EQ(server.requests().size(), 0U);
}

TEST_F(SecurePeers, UnderATrustedRootAreTaken) {
    HTTPClient::setTrustedRoots(mRoot.certificate);
    EXPECT_EQ(statusOf(peer()), 200);
}

TEST_F(SecurePeers, UnderOneOfSeveralTrustedRootsAreTaken) {
    HTTPClient::setTrustedRoots(makeRoot("Orv Other Root").certificate + mRoot.certificate);
    EXPECT_EQ(statusOf(peer()), 200);
}

TEST_F(SecurePeers, UnderAnotherRootAreRefused) {
    HTTPClient::setTrustedRoots(makeRoot("Orv Other Root").certificate);
    EXPECT_EQ(statusOf(peer()), 0);
}

TEST_F(SecurePeers, OfAnotherNameAreRefused) {
    HTTPClient::setTrustedRoots(mRoot.certificate);
    auto spec = peer();
    spec.commonName = "update.orv.example";
    spec.alternativeName = "DNS:update.orv.example";
    EXPECT_EQ(statusOf(spec), 0);
}

TEST_F(SecurePeers, WithAnExpiredCertificateAreRefused) {
    HTTPClient::setTrustedRoots(mRoot.certificate);
    auto spec = peer();
    spec.notAfter = "20240101000000Z";
    EXPECT_EQ(statusOf(spec), 0);
}

TEST_F(SecurePeers, AreRefusedWhereTheTrustedRootsCannotBeRead) {
    HTTPClient::setTrustedRoots("no certificate");
    EXPECT_EQ(statusOf(peer()), 0);
}

TEST_F(SecurePeers, AreUnderTheSystemsRootsAgainOnceNoneAreSet) {
    HTTPClient::setTrustedRoots(mRoot.certificate);
    HTTPClient::setTrustedRoots({});
    EXPECT_EQ(statusOf(peer()), 0);
}

TEST_F(SecurePeers, WithACertificateOfNoTrustedRootAreRefused) {
    TlsServer server(makeCertificate({.commonName = "127.0.0.1"}));
    Fetch fetch(server.url("127.0.0.1"));
    fetch.run(IOWorker::create(1));
    EXPECT_EQ(fetch.status(), 0);
}

}  // namespace
