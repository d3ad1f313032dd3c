// Signs packages for the tests, with authorities of their own.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

#include "CertificateMaker.h"
#include "TrustRoots.h"

namespace support {

/// The time-stamp that a signature gets.
struct TimeStamp {
    enum Form { Rfc3161, CounterSignature };
    Form form = Rfc3161;
    std::time_t when = 0;
    Credential authority = {};
};

struct SignOptions {
    std::string hash = "sha256";          ///< or another that the tool knows
    bool nested = false;                  ///< adds to the signature that the file has, instead of replacing it
    std::optional<TimeStamp> stamp = {};  ///< of the primary signature
    std::vector<std::string> words = {};  ///< further words for the signing tool
};

/// Signs the program file `in` into `out`, which is replaced. Throws std::runtime_error with the tool's words.
void signFile(const Credential& signer, const std::string& in, const std::string& out, const SignOptions& options = {});

/// The number of 32 bits, little end first, at a place of a program.
uint32_t readNumber(const std::string& program, size_t at);
/// Where a program's head holds the place and, behind it, the length of the certificate table.
size_t tableEntry(const std::string& program);

/// The entries of a file's certificate table, without their heads and with their padding; empty when there is none.
std::vector<std::string> readSignatures(const std::string& file);
/// Gives the file a certificate table of these entries, padded to eight bytes each, in the place of the one it has.
void writeSignatures(const std::string& file, const std::vector<std::string>& entries);

/// Adds an attribute that the signature (DER) does not sign itself. @param value DER of a sequence
std::string addAttribute(const std::string& signature, const std::string& objectId, const std::string& value);

/// A set of authorities and publishers, made once per build directory and shared by all test processes; on Windows once
/// per process.
class SigningKit {
public:
    enum Signer {
        Publisher,        ///< sound, straight under the root
        ViaIntermediate,  ///< sound, under an intermediate authority that comes with the signature
        Expired,          ///< valid in the year 2015 only
        WrongUsage,       ///< a web server's certificate
        Untrusted,        ///< sound, but under a root that is not in rootPem()
    };

    /// @param directory where the kit is kept, made when missing; empty for the one that all share
    explicit SigningKit(const std::string& directory = {});

    /// Path of the PEM file of the trusted root.
    std::string rootPem() const;
    /// Path of the PEM file of the root of Untrusted.
    std::string foreignRootPem() const;

    void sign(const std::string& in, const std::string& out, Signer signer = Publisher,
              const SignOptions& options = {}) const;

    Credential credential(Signer signer) const;
    Credential root() const;
    /// Time-stamp authorities under the root and under the other root.
    Credential timeStamper() const;
    Credential foreignTimeStamper() const;

    /// Common name of a signer's certificate.
    static std::string commonName(Signer signer);

private:
    Credential load(const std::string& name) const;
    std::string mDirectory;
};

}  // namespace support
