#include <random>

#include "OpenSslHandles.h"
#include "SignatureFixture.h"
#include "SignatureParts.h"

namespace {

using support::examineEntry;
using support::SigningKit;

/// What is wrong with the entry by itself, before its chain and the file are looked at.
std::string flawOf(const std::string& entry) { return examineEntry(entry).flaw; }

constexpr const char* sUnreadable = "the signature cannot be read";
constexpr const char* sDoesNotFit = "the signature does not fit its certificate";

class SignatureCms : public support::SignatureFixture {
protected:
    /// The entry of a signed package, with its padding.
    std::string entry(const support::SignOptions& options = {}) {
        return support::readSignatures(signedPackage(SigningKit::Publisher, options)).at(0);
    }

    /// The message with something changed by way of the library.
    template <typename Change>
    std::string changed(Change change) {
        const auto message = support::ssl::readMessage(entry());
        change(message->d.sign, sk_PKCS7_SIGNER_INFO_value(message->d.sign->signer_info, 0));
        return support::ssl::toDer(message.get(), i2d_PKCS7);
    }

    std::string replaced(const std::string& from, const std::string& to) {
        std::string bytes = entry();
        return bytes.replace(bytes.find(from), from.size(), to);
    }
};

TEST_F(SignatureCms, TellsTheDigestOfTheFileAndTheSigner) {
    const auto verdict = examineEntry(entry());
    EXPECT_EQ("", verdict.flaw);
    EXPECT_EQ(32u, verdict.fileDigest.size());
    EXPECT_EQ("Orv Test Publisher", verdict.signer);
}

TEST_F(SignatureCms, RefusesAnEmptyEntry) { EXPECT_EQ(sUnreadable, flawOf("")); }

TEST_F(SignatureCms, RefusesGarbage) { EXPECT_EQ(sUnreadable, flawOf(std::string(1000, '\x5a'))); }

TEST_F(SignatureCms, RefusesAnotherKindOfMessage) {
    // A plain data message, as PKCS#7 has it.
    EXPECT_EQ(sUnreadable, flawOf(std::string("\x30\x0b\x06\x09\x2a\x86\x48\x86\xf7\x0d\x01\x07\x01", 13)));
}

TEST_F(SignatureCms, RefusesAnIndefiniteLength) {
    std::string bytes = entry();
    bytes.replace(0, 4, std::string("\x30\x80", 2));
    EXPECT_EQ(sUnreadable, flawOf(bytes + std::string(4, '\0')));
}

TEST_F(SignatureCms, AllowsOnlyZerosBehindTheMessage) {
    const std::string bytes = changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO*) {});
    EXPECT_EQ("", flawOf(bytes + std::string(20, '\0')));
    EXPECT_EQ("there is something hidden behind the signature", flawOf(bytes + std::string(20, '\0') + "x"));
}

TEST_F(SignatureCms, RefusesEveryCut) {
    const std::string bytes = changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO*) {});
    for (size_t length = 0; length < bytes.size(); ++length) ASSERT_NE("", flawOf(bytes.substr(0, length))) << length;
}

TEST_F(SignatureCms, RefusesAMessageWithoutSigner) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO*) {
        PKCS7_SIGNER_INFO_free(sk_PKCS7_SIGNER_INFO_pop(body->signer_info));
    });
    EXPECT_EQ("the signature has not exactly one signer", flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAMessageWithTwoSigners) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO* signer) {
        auto* copy = static_cast<PKCS7_SIGNER_INFO*>(ASN1_item_dup(ASN1_ITEM_rptr(PKCS7_SIGNER_INFO), signer));
        sk_PKCS7_SIGNER_INFO_push(body->signer_info, copy);
    });
    EXPECT_EQ("the signature has not exactly one signer", flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAMessageWithoutTheSignersCertificate) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO*) {
        while (X509* certificate = sk_X509_pop(body->cert)) X509_free(certificate);
    });
    EXPECT_EQ("the certificate of the signer is missing", flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAMessageWithoutAnyCertificates) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO*) {
        while (X509* certificate = sk_X509_pop(body->cert)) X509_free(certificate);
        sk_X509_free(body->cert);
        body->cert = nullptr;
    });
    EXPECT_EQ("the certificate of the signer is missing", flawOf(bytes));
}

TEST_F(SignatureCms, RefusesASignatureWithoutSignedAttributes) {
    const auto bytes = changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO* signer) {
        while (X509_ATTRIBUTE* attribute = sk_X509_ATTRIBUTE_pop(signer->auth_attr)) X509_ATTRIBUTE_free(attribute);
        sk_X509_ATTRIBUTE_free(signer->auth_attr);
        signer->auth_attr = nullptr;
    });
    EXPECT_EQ(sDoesNotFit, flawOf(bytes));
}

TEST_F(SignatureCms, RefusesADigestAttributeOfAnotherType) {
    const auto bytes = changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO* signer) {
        ASN1_TYPE* digest = PKCS7_get_signed_attribute(signer, NID_pkcs9_messageDigest);
        ASN1_TYPE_set(digest, V_ASN1_BOOLEAN, digest);
    });
    EXPECT_EQ(sDoesNotFit, flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAChangedSignature) {
    const auto bytes = changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO* signer) { signer->enc_digest->data[5] ^= 1; });
    EXPECT_EQ(sDoesNotFit, flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAChangedContent) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO*) {
        ASN1_STRING* content = body->contents->d.other->value.sequence;
        content->data[content->length - 1] ^= 1;
    });
    EXPECT_EQ(sDoesNotFit, flawOf(bytes));
}

TEST_F(SignatureCms, RefusesAMessageWithoutContent) {
    const auto bytes = changed([](PKCS7_SIGNED* body, PKCS7_SIGNER_INFO*) {
        ASN1_TYPE_free(body->contents->d.other);
        body->contents->d.other = nullptr;
    });
    EXPECT_EQ(sUnreadable, flawOf(bytes));
}

TEST_F(SignatureCms, RefusesASignatureOfAnotherDigestThanTheFiles) {
    const auto bytes =
        changed([](PKCS7_SIGNED*, PKCS7_SIGNER_INFO* signer) { X509_ALGOR_set_md(signer->digest_alg, EVP_sha1()); });
    EXPECT_EQ("the signature and the file have different digests", flawOf(bytes));
}

TEST_F(SignatureCms, RefusesASignatureOfAnotherKindOfFile) {
    const std::string program("\x2b\x06\x01\x04\x01\x82\x37\x02\x01\x0f", 10);
    const std::string cabinet("\x2b\x06\x01\x04\x01\x82\x37\x02\x01\x19", 10);
    EXPECT_EQ("the signature is not one of a program", flawOf(replaced(program, cabinet)));
}

TEST_F(SignatureCms, RefusesAMessageOverSomethingElse) {
    const std::string indirect("\x2b\x06\x01\x04\x01\x82\x37\x02\x01\x04", 10);
    const std::string catalogue("\x2b\x06\x01\x04\x01\x82\x37\x02\x01\x05", 10);
    EXPECT_EQ("the signature is not one of a program", flawOf(replaced(indirect, catalogue)));
}

/// The head of an element, with the length in three bytes.
std::string head(char tag, size_t length) {
    std::string bytes{tag, '\x83'};
    for (int shift = 16; shift >= 0; shift -= 8) bytes += static_cast<char>(length >> shift);
    return bytes;
}

TEST_F(SignatureCms, SurvivesDeepNestingOfSequences) {
    constexpr int levels = 20000;
    std::string bomb;
    for (int level = levels; level > 0; --level) bomb += head('\x30', static_cast<size_t>(level - 1) * 5);
    EXPECT_EQ(sUnreadable, flawOf(bomb));
}

TEST_F(SignatureCms, SurvivesDeepNestingOfEndlessElementsInItsContent) {
    std::string nest;
    for (int level = 0; level < 50000; ++level) nest += "\x30\x80";
    const std::string type("\x06\x03\x2a\x03\x04", 5);
    EXPECT_EQ(sUnreadable, flawOf(head('\x30', 10 + nest.size()) + type + head('\xa0', nest.size()) + nest));
}

TEST_F(SignatureCms, RefusesAMessageOfUnreasonableLength) {
    std::string huge("\x30\x84\x01\x10\x00\x00", 6);
    huge.resize(huge.size() + 0x1100000, '\0');
    EXPECT_EQ("the signature is too long", flawOf(huge));
}

class SignatureCmsMutation : public SignatureCms, public testing::WithParamInterface<unsigned> {};

TEST_P(SignatureCmsMutation, NeverCrashesAndNeverPassesOffOtherContent) {
    const auto form = GetParam() % 2 ? support::TimeStamp::Rfc3161 : support::TimeStamp::CounterSignature;
    const std::string bytes = entry({.stamp = support::TimeStamp{form, 1600000000, mKit.timeStamper()}});
    const auto original = examineEntry(bytes);
    ASSERT_EQ("", original.flaw);
    std::mt19937 random(GetParam());
    int refused = 0;
    for (int round = 0; round < 150; ++round) {
        std::string mutated = bytes;
        for (unsigned i = 0; i <= random() % 3; ++i) mutated[random() % mutated.size()] = static_cast<char>(random());
        const auto verdict = examineEntry(mutated, mKit.rootPem());
        if (!verdict.flaw.empty()) {
            ++refused;
            continue;
        }
        // What the message does not sign itself, such as a stamp, may have changed; what it says of the file may not.
        ASSERT_EQ(original.fileDigest, verdict.fileDigest) << "seed " << GetParam() << " round " << round;
    }
    EXPECT_GT(refused, 30);
}

INSTANTIATE_TEST_SUITE_P(Seeds, SignatureCmsMutation, testing::Range(1u, 9u));

}  // namespace
