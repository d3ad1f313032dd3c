#include "PackageSigner.h"

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "HostTools.h"
#include "KitPlace.h"
#include "OpenSslHandles.h"
#include "TempDir.h"

namespace fs = std::filesystem;

namespace support {
namespace {

std::string uniqueName() {
    std::random_device random;
    return std::to_string(random()) + "-" + std::to_string(random());
}

std::string load(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw std::runtime_error("cannot read " + path.string());
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void save(const fs::path& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(content.data(), static_cast<std::streamsize>(content.size()));
    if (!out.flush()) throw std::runtime_error("cannot write " + path.string());
}

std::string numberBytes(uint32_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) bytes += static_cast<char>(value >> (8 * i));
    return bytes;
}

std::string stamped(const std::string& signature, const TimeStamp& stamp) {
    const auto message = ssl::readMessage(signature);
    const auto* digest = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(message.get()), 0)->enc_digest;
    const std::string bytes(reinterpret_cast<const char*>(ASN1_STRING_get0_data(digest)),
                            static_cast<size_t>(ASN1_STRING_length(digest)));
    if (stamp.form == TimeStamp::Rfc3161)
        return addAttribute(signature, "1.3.6.1.4.1.311.3.3.1", makeTimeStampToken(stamp.authority, bytes, stamp.when));
    // The older form leaves its authority's certificate to the signature.
    const auto certificate = ssl::readCertificate(stamp.authority.certificate);
    ssl::require(PKCS7_add_certificate(message.get(), certificate.get()) == 1, "add a certificate");
    return addAttribute(ssl::toDer(message.get(), i2d_PKCS7), "1.2.840.113549.1.9.6",
                        makeCounterSignature(stamp.authority, bytes, stamp.when));
}

Credential keep(const fs::path& directory, const std::string& name, const Credential& credential) {
    save(directory / (name + ".pem"), credential.certificate);
    save(directory / (name + ".key"), credential.key);
    return credential;
}

Credential makeAuthority(const char* name, CertificateSpec::KeyKind keyKind, const Credential* issuer) {
    return makeCertificate({.commonName = name,
                            .notBefore = "20100101000000Z",
                            .authority = true,
                            .keyUsage = "critical,keyCertSign,cRLSign",
                            .keyKind = keyKind},
                           issuer);
}

/// All of a kit's certificates with their keys.
void makeCredentials(const fs::path& directory, const KitPlace& place) {
    const auto keys = place.authoritiesKeys;
    const Credential root = keep(directory, "root", makeAuthority("Orv Test Root", keys, nullptr));
    const Credential foreign = keep(directory, "foreign", makeAuthority("Orv Other Root", keys, nullptr));
    const Credential intermediate = makeAuthority("Orv Test Intermediate", keys, &root);

    CertificateSpec spec{.commonName = SigningKit::commonName(SigningKit::Publisher),
                         .organization = "Orv Test",
                         .keyUsage = "critical,digitalSignature",
                         .extendedKeyUsage = "codeSigning",
                         .key = place.signersKey};
    const Credential publisher = keep(directory, "publisher", makeCertificate(spec, &root));
    spec.key = publisher.key;
    spec.commonName = SigningKit::commonName(SigningKit::Untrusted);
    keep(directory, "untrusted", makeCertificate(spec, &foreign));
    spec.commonName = SigningKit::commonName(SigningKit::ViaIntermediate);
    Credential chained = makeCertificate(spec, &intermediate);
    chained.certificate += intermediate.certificate;
    keep(directory, "intermediate", chained);
    spec.commonName = SigningKit::commonName(SigningKit::WrongUsage);
    spec.extendedKeyUsage = "serverAuth";
    keep(directory, "wrongusage", makeCertificate(spec, &root));
    spec.commonName = SigningKit::commonName(SigningKit::Expired);
    spec.extendedKeyUsage = "codeSigning";
    spec.notBefore = "20150101000000Z";
    spec.notAfter = "20151231235959Z";
    keep(directory, "expired", makeCertificate(spec, &root));

    spec.notBefore = "20100101000000Z";
    spec.notAfter = "20491231000000Z";
    spec.extendedKeyUsage = "critical,timeStamping";
    spec.commonName = "Orv Test Time";
    keep(directory, "time", makeCertificate(spec, &root));
    spec.commonName = "Orv Other Time";
    keep(directory, "foreigntime", makeCertificate(spec, &foreign));
}

}  // namespace

void signFile(const Credential& signer, const std::string& in, const std::string& out, const SignOptions& options) {
    const TempDir directory;
    const fs::path work = directory.path();
    save(work / "certs.pem", signer.certificate);
    save(work / "key.pem", signer.key);
    const auto name = [](const fs::path& path) { return toolPath(path.string()); };
    std::vector<std::string> words = {"osslsigncode",         "sign", "-certs",    name(work / "certs.pem"), "-key",
                                      name(work / "key.pem"), "-h",   options.hash};
    if (options.nested) words.emplace_back("-nest");
    words.insert(words.end(), options.words.begin(), options.words.end());
    for (const std::string& word : {std::string("-in"), name(in), std::string("-out"), name(work / "out.exe")})
        words.push_back(word);
    const auto result = runTool({.words = words});
    if (result.code != 0) throw std::runtime_error("osslsigncode: " + result.output + result.errors);
    if (options.stamp) {
        auto signatures = readSignatures((work / "out.exe").string());
        signatures.at(0) = stamped(signatures.at(0), *options.stamp);
        writeSignatures((work / "out.exe").string(), signatures);
    }
    save(out, load(work / "out.exe"));
}

uint32_t readNumber(const std::string& bytes, size_t at) {
    if (at + 4 > bytes.size()) throw std::runtime_error("not a program file");
    uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[at + static_cast<size_t>(i)]);
    return value;
}

size_t tableEntry(const std::string& program) {
    const size_t optional = readNumber(program, 60) + 24u;
    return optional + ((readNumber(program, optional) & 0xffff) == 0x20b ? 144 : 128);
}

std::vector<std::string> readSignatures(const std::string& file) {
    const std::string program = load(file);
    const size_t entry = tableEntry(program);
    size_t at = readNumber(program, entry);
    const size_t end = at + readNumber(program, entry + 4);
    std::vector<std::string> signatures;
    while (at + 8 <= end) {
        const size_t length = readNumber(program, at);
        signatures.push_back(program.substr(at + 8, length - 8));
        at += (length + 7) / 8 * 8;
    }
    return signatures;
}

void writeSignatures(const std::string& file, const std::vector<std::string>& entries) {
    std::string program = load(file);
    const size_t entry = tableEntry(program);
    if (readNumber(program, entry)) program.resize(readNumber(program, entry));
    program.resize((program.size() + 7) / 8 * 8);
    const auto begin = static_cast<uint32_t>(program.size());
    for (const auto& signature : entries) {
        const auto length = static_cast<uint32_t>((signature.size() + 8 + 7) / 8 * 8);
        program += numberBytes(length) + std::string("\x00\x02\x02\x00", 4) + signature;
        program.resize((program.size() + 7) / 8 * 8);
    }
    const auto size = static_cast<uint32_t>(program.size()) - begin;
    program.replace(entry, 8, numberBytes(size ? begin : 0) + numberBytes(size));
    save(file, program);
}

std::string addAttribute(const std::string& signature, const std::string& objectId, const std::string& value) {
    const auto message = ssl::readMessage(signature);
    const ssl::Owned<X509_ATTRIBUTE, &X509_ATTRIBUTE_free> attribute(X509_ATTRIBUTE_create_by_txt(
        nullptr, objectId.c_str(), V_ASN1_SEQUENCE, reinterpret_cast<const unsigned char*>(value.data()),
        static_cast<int>(value.size())));
    PKCS7_SIGNER_INFO* signer = sk_PKCS7_SIGNER_INFO_value(PKCS7_get_signer_info(message.get()), 0);
    ssl::require(attribute && X509at_add1_attr(&signer->unauth_attr, attribute.get()), "add an attribute");
    return ssl::toDer(message.get(), i2d_PKCS7);
}

SigningKit::SigningKit(const std::string& directory) {
    KitPlace place = KitPlace::usual();
    if (!directory.empty()) place.directory = directory;
    mDirectory = place.directory;
    if (fs::exists(mDirectory)) return;
    // A finished kit appears under its name at once: a process that loses the race uses the winner's.
    const fs::path making = mDirectory + "." + uniqueName();
    fs::create_directories(making);
    makeCredentials(making, place);
    std::error_code lost;
    fs::rename(making, mDirectory, lost);
    if (!lost) return;
    fs::remove_all(making);
    if (!fs::exists(mDirectory)) throw std::runtime_error("cannot make " + mDirectory + ": " + lost.message());
}

std::string SigningKit::rootPem() const { return mDirectory + "/root.pem"; }
std::string SigningKit::foreignRootPem() const { return mDirectory + "/foreign.pem"; }

Credential SigningKit::load(const std::string& name) const {
    return {support::load(mDirectory + "/" + name + ".pem"), support::load(mDirectory + "/" + name + ".key")};
}

Credential SigningKit::credential(Signer signer) const {
    static const char* const names[] = {"publisher", "intermediate", "expired", "wrongusage", "untrusted"};
    return load(names[signer]);
}

Credential SigningKit::root() const { return load("root"); }
Credential SigningKit::timeStamper() const { return load("time"); }
Credential SigningKit::foreignTimeStamper() const { return load("foreigntime"); }

std::string SigningKit::commonName(Signer signer) {
    static const char* const names[] = {"Orv Test Publisher", "Orv Test Branch Publisher", "Orv Test Former Publisher",
                                        "Orv Test Web Server", "Orv Other Publisher"};
    return names[signer];
}

void SigningKit::sign(const std::string& in, const std::string& out, Signer signer, const SignOptions& options) const {
    signFile(credential(signer), in, out, options);
}

}  // namespace support
