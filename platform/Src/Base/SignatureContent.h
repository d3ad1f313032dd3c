// What the signature of a program holds, as far as no library is needed to read it.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace Public::Base {

constexpr const char* sUnreadableSignature = "the signature cannot be read";

/// What a signature says of the program that it belongs to.
struct SignedContent {
    using Bytes = std::span<const unsigned char>;

    /// The digests that a signature may have, by the length of what they give, in bytes.
    enum class Digest : size_t { None = 0, Sha1 = 20, Sha256 = 32, Sha384 = 48, Sha512 = 64 };

    Digest digest = Digest::None;
    std::string fileDigest;

    /// Finds the message in an entry of the certificate table: one element, then nothing but zeros.
    /// @param message stays empty when there is none   @return what is wrong, empty when nothing is
    static std::string findMessage(Bytes entry, Bytes& message);

    /// Reads the parts of an SpcIndirectDataContent: the kind of file, then its DigestInfo.
    /// @return what is wrong, empty when nothing is
    static std::string read(Bytes parts, SignedContent& content);

    /// @param objectId by its DER content   @return None for any digest that is not accepted
    static Digest digestOf(Bytes objectId);
};

}  // namespace Public::Base
