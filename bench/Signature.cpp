// Judging the signature of a package, beside a signing tool and the bare digest of the same file.
#include <filesystem>

#include "Bench.h"
#include "Content.h"
#include "Public/Base/Signature.h"
#include "Public/Base/StringEx.h"

namespace bench {

using Public::Base::Signature;
using Public::Base::StringEx;

namespace {

void verify(const std::wstring& path) {
    std::wstring signer;
    std::wstring detail;
    require(Signature::Verify(path, signer, detail), "not verified: " + StringEx::wstring2string(detail));
}

}  // namespace

void measureSignature(const Report& report) {
    const std::string root = dataPath("root.pem");
    const std::string path = signedPackage(root);
    Signature::setTrustedRoots(root);
    const std::wstring widePath = StringEx::string2wstring(path);
    const double megabytes = static_cast<double>(std::filesystem::file_size(path)) / kMegabyte;
    const auto beside = [&](const std::string& peer, const std::string& command, double target) {
        report(compare({.name = "verify signature, 300 MB",
                        .peer = peer,
                        .ours = {[&] { verify(widePath); }},
                        .theirs = {[&] { run(command); }},
                        .amount = megabytes,
                        .unit = "MB/s",
                        .target = target}));
    };
    beside("osslsigncode verify", "osslsigncode verify -CAfile " + shellWord(root) + " -in " + shellWord(path), 3);
    beside("openssl dgst -sha256", "openssl dgst -sha256 " + shellWord(path), 1 / 1.2);
    Signature::setTrustedRoots("");
}

}  // namespace bench
