#include "SignatureTableFixture.h"

// The rows in which the file, not the signer, is what is wrong.

namespace support {
namespace {

using Test = SignatureTableFixture;

constexpr const char* sChanged = "the file was changed after it was signed";
constexpr const char* sNotAtTheEnd = "the certificate table is not at the end of the file";
constexpr const char* sDamaged = "the certificate table is damaged";
constexpr const char* sNoTable = "the file has no certificate table";

size_t tableEntry(const Test& test) { return test.securityEntry(); }
size_t tableSize(const Test& test) { return test.securityEntry() + 4; }
size_t firstEntry(const Test& test) { return test.table(); }

const SignatureRow sContents[] = {
    {"Unsigned", [](Test& test) { std::filesystem::copy_file(test.unsignedPackage(), test.signedFile()); },
     Ours::Unsigned, sNoTable, Tool::Refuses},
    {"DosStub", [](Test& test) { test.signAndFlip([](const Test&) { return size_t{4}; }); }, Ours::Bad, sChanged,
     Tool::Refuses},
    {"HeadsTime", [](Test& test) { test.signAndFlip([](const Test& file) { return file.peHead() + 8; }); }, Ours::Bad,
     sChanged, Tool::Refuses},
    {"EntryPoint", [](Test& test) { test.signAndFlip([](const Test& file) { return file.peHead() + 24 + 16; }); },
     Ours::Bad, sChanged, Tool::Refuses},
    {"ByteBehindTheChecksum",
     [](Test& test) { test.signAndFlip([](const Test& file) { return file.peHead() + 24 + 68; }); }, Ours::Bad,
     sChanged, Tool::Refuses},
    {"ByteBeforeTheTablesEntry",
     [](Test& test) { test.signAndFlip([](const Test& file) { return file.securityEntry() - 1; }); }, Ours::Bad,
     sChanged, Tool::Refuses},
    {"ByteBehindTheTablesEntry",
     [](Test& test) { test.signAndFlip([](const Test& file) { return file.securityEntry() + 8; }); }, Ours::Bad,
     sChanged, Tool::Refuses},
    {"Body", [](Test& test) { test.signAndFlip([](const Test& file) { return file.bytes().size() / 2; }); }, Ours::Bad,
     sChanged, Tool::Refuses},
    {"LastByteBeforeTheTable", [](Test& test) { test.signAndFlip([](const Test& file) { return file.table() - 1; }); },
     Ours::Bad, sChanged, Tool::Refuses},
    {"Checksum", [](Test& test) { test.signAndFlip([](const Test& file) { return file.peHead() + 24 + 64; }); },
     Ours::Good, "", Tool::Accepts},
    {"SignatureOfAnotherFile",
     [](Test& test) {
         test.sign();
         const auto signatures = readSignatures(test.signedFile());
         std::filesystem::rename(test.anotherPackage(), test.signedFile());
         writeSignatures(test.signedFile(), signatures);
     },
     Ours::Bad, sChanged, Tool::Refuses},
    {"StampedThenChanged",
     [](Test& test) {
         test.sign(SigningKit::Publisher,
                   {.stamp = TimeStamp{TimeStamp::Rfc3161, 1600000000, test.kit().timeStamper()}});
         std::string bytes = test.bytes();
         bytes[bytes.size() / 2] ^= 1;
         test.setBytes(bytes);
     },
     Ours::Bad, sChanged, Tool::Refuses},
    {"SignedTwice",
     [](Test& test) {
         test.sign(SigningKit::Untrusted);
         std::filesystem::rename(test.signedFile(), test.file("once.exe"));
         test.kit().sign(test.file("once.exe"), test.signedFile());
     },
     Ours::Good, "", Tool::Accepts},
};

const SignatureRow sTables[] = {
    {"ByteAppended",
     [](Test& test) {
         test.sign();
         test.setBytes(test.bytes() + "x");
     },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"EightBytesAppended",
     [](Test& test) {
         test.sign();
         test.setBytes(test.bytes() + std::string(8, '\0'));
     },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"CutByAByte",
     [](Test& test) {
         test.sign();
         test.setBytes(test.bytes().substr(0, test.bytes().size() - 1));
     },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"CutInTheMiddle",
     [](Test& test) {
         test.sign();
         test.setBytes(test.bytes().substr(0, (test.table() + test.bytes().size()) / 2));
     },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"CutOff",
     [](Test& test) {
         test.sign();
         test.setBytes(test.bytes().substr(0, test.table()));
     },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"OutsideTheFile", [](Test& test) { test.signAndPut(tableEntry, [](const std::string&) { return 0x7ffffff8u; }); },
     Ours::Bad, sNotAtTheEnd, Tool::Refuses},
    {"PlaceAndLengthWrapAround",
     [](Test& test) { test.signAndPut(tableSize, [](const std::string&) { return 0xfffffff8u; }); }, Ours::Bad,
     sNotAtTheEnd, Tool::Refuses},
    {"InTheHead",
     [](Test& test) {
         test.sign();
         std::string bytes = test.bytes();
         Test::putNumber(bytes, test.securityEntry() + 4, static_cast<uint32_t>(bytes.size() - 64));
         Test::putNumber(bytes, test.securityEntry(), 64);
         test.setBytes(bytes);
     },
     Ours::Bad, "the certificate table lies in the head of the file", Tool::Refuses},
    {"OverTheBody",
     [](Test& test) {
         test.sign();
         std::string bytes = test.bytes();
         const auto begin = static_cast<uint32_t>(test.table() - 4096);
         Test::putNumber(bytes, test.securityEntry(), begin);
         Test::putNumber(bytes, test.securityEntry() + 4, static_cast<uint32_t>(bytes.size()) - begin);
         test.setBytes(bytes);
     },
     Ours::Bad, sDamaged, Tool::Refuses},
    {"OfNoLength", [](Test& test) { test.signAndPut(tableSize, [](const std::string&) { return 0u; }); },
     Ours::Unsigned, sNoTable, Tool::Refuses},
    {"WithoutPlace", [](Test& test) { test.signAndPut(tableEntry, [](const std::string&) { return 0u; }); },
     Ours::Unsigned, sNoTable, Tool::Refuses},
    {"Unaligned",
     [](Test& test) {
         test.sign();
         std::string bytes = test.bytes();
         bytes.insert(test.table(), "x");
         Test::putNumber(bytes, test.securityEntry(), static_cast<uint32_t>(test.table() + 1));
         test.setBytes(bytes);
     },
     Ours::Bad, sChanged, Tool::Refuses},
    {"EntryOfNoLength", [](Test& test) { test.signAndPut(firstEntry, [](const std::string&) { return 0u; }); },
     Ours::Bad, sDamaged, Tool::Refuses},
    {"EntryLongerThanTheTable",
     [](Test& test) { test.signAndPut(firstEntry, [](const std::string&) { return 0x00010000u; }); }, Ours::Bad,
     sDamaged, Tool::Refuses},
    {"EntryOfTheLargestLength",
     [](Test& test) { test.signAndPut(firstEntry, [](const std::string&) { return 0xffffffffu; }); }, Ours::Bad,
     sDamaged, Tool::Refuses},
    {"EntryOfAnotherKind",
     [](Test& test) {
         test.signAndPut([](const Test& file) { return file.table() + 4; },
                         [](const std::string&) { return 0x00010200u; });
     },
     Ours::Bad, "the certificate table holds no signature", Tool::Refuses},
    {"Garbage",
     [](Test& test) {
         test.sign();
         writeSignatures(test.signedFile(), {std::string(200, '\x30')});
     },
     Ours::Bad, "the signature cannot be read", Tool::Refuses},
    {"BytesHiddenBehindTheSignature",
     [](Test& test) {
         test.sign();
         writeSignatures(test.signedFile(), {readSignatures(test.signedFile()).at(0) + "payload"});
     },
     Ours::Bad, "there is something hidden behind the signature", Tool::Accepts, "no digest covers the bytes"},
    {"BlobInTheSignature", [](Test& test) { test.sign(SigningKit::Publisher, {.words = {"-addUnauthenticatedBlob"}}); },
     Ours::Good, "", Tool::Accepts},
};

void signNested(Test& test, SigningKit::Signer first, SigningKit::Signer second) {
    test.sign(first, {.hash = "sha1"});
    std::filesystem::rename(test.signedFile(), test.file("once.exe"));
    test.kit().sign(test.file("once.exe"), test.signedFile(), second, {.nested = true});
}

/// The table holds one entry after another.
void signInTwoEntries(Test& test, SigningKit::Signer first, SigningKit::Signer second) {
    test.sign(first);
    const auto entry = readSignatures(test.signedFile()).at(0);
    test.sign(second);
    writeSignatures(test.signedFile(), {entry, readSignatures(test.signedFile()).at(0)});
}

const SignatureRow sSeveral[] = {
    {"Nested", [](Test& test) { signNested(test, SigningKit::Publisher, SigningKit::ViaIntermediate); }, Ours::Good, "",
     Tool::Accepts},
    {"NestedBadWithinGood", [](Test& test) { signNested(test, SigningKit::Publisher, SigningKit::Untrusted); },
     Ours::Good, "", Tool::Accepts},
    {"NestedGoodWithinBad", [](Test& test) { signNested(test, SigningKit::Untrusted, SigningKit::Publisher); },
     Ours::Bad, "the certificate chain is not trusted: ", Tool::Accepts, "the outer signature speaks for the file"},
    {"TwoEntries", [](Test& test) { signInTwoEntries(test, SigningKit::Publisher, SigningKit::ViaIntermediate); },
     Ours::Good, "", Tool::Refuses, "the format allows several entries; the first speaks for the file"},
    {"GoodEntryThenBad", [](Test& test) { signInTwoEntries(test, SigningKit::Publisher, SigningKit::Untrusted); },
     Ours::Good, "", Tool::Refuses, "the format allows several entries; the first speaks for the file"},
    {"BadEntryThenGood", [](Test& test) { signInTwoEntries(test, SigningKit::Untrusted, SigningKit::Publisher); },
     Ours::Bad, "the certificate chain is not trusted: ", Tool::Refuses},
};

}  // namespace

INSTANTIATE_TEST_SUITE_P(Content, SignatureTable, testing::ValuesIn(sContents), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Table, SignatureTable, testing::ValuesIn(sTables), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Several, SignatureTable, testing::ValuesIn(sSeveral), nameOfRow);

}  // namespace support
