// Judging the signature of a package, beside the bare digest of the same file.
#include <filesystem>

#include "Bench.h"
#include "Public/Base/Signature.h"
#include "Public/Base/StringEx.h"

namespace bench {

using Public::Base::Signature;
using Public::Base::StringEx;

namespace {

constexpr int kFileKib = 16384;  // noise and text: more than half of it stays after packing

/// A package signed by a publisher under an authority of our own. @return its path
std::string signedPackage(const std::string& root) {
    const std::string plain = dataPath("plain.exe");
    const std::string path = dataPath("signed.exe");
    if (std::filesystem::exists(path)) return path;
    const std::string rootKey = dataPath("root-key.pem");
    const std::string key = dataPath("publisher-key.pem");
    const std::string certificate = dataPath("publisher.pem");
    run("openssl req -x509 -newkey rsa:2048 -nodes -days 9000 -subj '/CN=Orv Bench Root' -keyout " +
        shellWord(rootKey) + " -out " + shellWord(root));
    run("openssl req -x509 -newkey rsa:2048 -nodes -days 9000 -subj '/CN=Orv Bench' -CA " + shellWord(root) +
        " -CAkey " + shellWord(rootKey) +
        " -addext basicConstraints=critical,CA:FALSE -addext keyUsage=digitalSignature" +
        " -addext extendedKeyUsage=codeSigning -keyout " + shellWord(key) + " -out " + shellWord(certificate));
    run(shellWord(ORV_BENCH_MAKE_PACKAGE) + " --compressor zlib --size " + std::to_string(kFileKib) + " " +
        shellWord(plain));
    run("osslsigncode sign -certs " + shellWord(certificate) + " -key " + shellWord(key) + " -h sha256 -in " +
        shellWord(plain) + " -out " + shellWord(path));
    return path;
}

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
    report(compare({.name = "verify signature",
                    .peer = "openssl dgst -sha256",
                    .ours = {[&] { verify(widePath); }},
                    .theirs = {[&] { run("openssl dgst -sha256 " + shellWord(path)); }},
                    .amount = static_cast<double>(std::filesystem::file_size(path)) / (1 << 20),
                    .unit = "MiB/s"}));
    Signature::setTrustedRoots("");
}

}  // namespace bench
