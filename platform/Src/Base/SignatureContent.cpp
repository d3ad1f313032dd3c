#include "SignatureContent.h"

#include <algorithm>
#include <array>

#include "DerReader.h"

namespace Public::Base {
namespace {

using Bytes = SignedContent::Bytes;

constexpr size_t sLongestSignature = 16 * 1024 * 1024;

// Object identifiers by their DER content.
constexpr unsigned char sPeImageData[] = {0x2b, 0x06, 0x01, 0x04, 0x01, 0x82, 0x37, 0x02, 0x01, 0x0f};
constexpr unsigned char sSha1[] = {0x2b, 0x0e, 0x03, 0x02, 0x1a};
constexpr unsigned char sSha256[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x01};
constexpr unsigned char sSha384[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x02};
constexpr unsigned char sSha512[] = {0x60, 0x86, 0x48, 0x01, 0x65, 0x03, 0x04, 0x02, 0x03};

bool equal(Bytes a, Bytes b) { return std::equal(a.begin(), a.end(), b.begin(), b.end()); }

}  // namespace

std::string SignedContent::findMessage(Bytes entry, Bytes& message) {
    if (entry.size() > sLongestSignature) return "the signature is too long";
    DerReader outer(entry);
    Bytes ignored;
    if (!outer.take(DerReader::Sequence, ignored)) return sUnreadableSignature;
    message = entry.first(entry.size() - outer.rest().size());
    const Bytes padding = outer.rest();
    if (std::any_of(padding.begin(), padding.end(), [](unsigned char byte) { return byte != 0; }))
        return "there is something hidden behind the signature";
    return {};
}

std::string SignedContent::read(Bytes parts, SignedContent& content) {
    Bytes data, type, value, digestInfo, algorithm, algorithmId, none, digest;
    DerReader both(parts);
    if (!both.take(DerReader::Sequence, data) || !both.take(DerReader::Sequence, digestInfo) || !both.atEnd())
        return sUnreadableSignature;
    DerReader kind(data);
    if (!kind.take(DerReader::ObjectId, type)) return sUnreadableSignature;
    if (!equal(type, sPeImageData)) return "the signature is not one of a program";
    if (!kind.atEnd() && (!kind.take(DerReader::Sequence, value) || !kind.atEnd())) return sUnreadableSignature;

    DerReader info(digestInfo);
    if (!info.take(DerReader::Sequence, algorithm) || !info.take(DerReader::OctetString, digest) || !info.atEnd())
        return sUnreadableSignature;
    DerReader id(algorithm);
    if (!id.take(DerReader::ObjectId, algorithmId)) return sUnreadableSignature;
    if (!id.atEnd() && (!id.take(DerReader::Null, none) || !none.empty() || !id.atEnd())) return sUnreadableSignature;

    content.digest = digestOf(algorithmId);
    if (content.digest == Digest::None) return "the digest of the signature is neither SHA-1 nor SHA-2";
    if (digest.size() != static_cast<size_t>(content.digest)) return sUnreadableSignature;
    content.fileDigest.assign(digest.begin(), digest.end());
    return {};
}

SignedContent::Digest SignedContent::digestOf(Bytes objectId) {
    if (equal(objectId, sSha1)) return Digest::Sha1;
    if (equal(objectId, sSha256)) return Digest::Sha256;
    if (equal(objectId, sSha384)) return Digest::Sha384;
    if (equal(objectId, sSha512)) return Digest::Sha512;
    return Digest::None;
}

}  // namespace Public::Base
