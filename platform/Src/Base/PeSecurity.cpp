#include "PeSecurity.h"

namespace Public::Base {
namespace {

using Bytes = PeSecurity::Bytes;

constexpr size_t sEntryHead = 8;  // length, revision and type of a certificate table's entry
constexpr uint32_t sRevision2 = 0x0200;
constexpr uint32_t sPkcs7SignedData = 0x0002;

uint32_t little16(Bytes file, size_t at) { return static_cast<uint32_t>(file[at] | file[at + 1] << 8); }
uint32_t little32(Bytes file, size_t at) { return little16(file, at) | little16(file, at + 2) << 16; }

struct Head {
    size_t checksum = 0;  // where the file's checksum stands
    size_t securityEntry =
        0;  // where the place and size of the certificate table stand; 0: the head has no room for them
};

bool readHead(Bytes file, Head& head) {
    if (file.size() < 64 || file[0] != 'M' || file[1] != 'Z') return false;
    const size_t nt = little32(file, 60);
    const size_t optional = nt + 24;
    if (optional + 2 > file.size() || little32(file, nt) != 0x00004550) return false;
    const uint32_t magic = little16(file, optional);
    if (magic != 0x10b && magic != 0x20b) return false;

    const size_t directories = optional + (magic == 0x10b ? 96 : 112);
    const size_t entry = directories + 4 * 8;
    const size_t optionalEnd = optional + little16(file, nt + 20);
    if (entry + 8 > optionalEnd || entry + 8 > file.size() || little32(file, directories - 4) <= 4) return true;
    head.checksum = optional + 64;
    head.securityEntry = entry;
    return true;
}

/// Walks the whole table, so that a flaw behind the first signature is found too.
bool findSignature(Bytes table, Bytes& signature, std::string& flaw) {
    Bytes first;
    while (!table.empty()) {
        const size_t length = table.size() < sEntryHead ? 0 : little32(table, 0);
        if (length < sEntryHead || length > table.size()) {
            flaw = "the certificate table is damaged";
            return false;
        }
        const size_t padded = std::min((length + 7) / 8 * 8, table.size());
        if (!first.data() && little16(table, 4) == sRevision2 && little16(table, 6) == sPkcs7SignedData)
            first = table.subspan(sEntryHead, padded - sEntryHead);
        table = table.subspan(padded);
    }
    if (!first.data()) flaw = "the certificate table holds no signature";
    signature = first;
    return first.data() != nullptr;
}

PeSecurity answer(PeSecurity::State state, const char* flaw) {
    PeSecurity security;
    security.state = state;
    security.flaw = flaw;
    return security;
}

}  // namespace

PeSecurity PeSecurity::locate(Bytes file) {
    Head head;
    if (!readHead(file, head)) return answer(State::NotProgram, "not a program file");
    if (!head.securityEntry) return answer(State::Unsigned, "the file has no certificate table");
    const uint64_t begin = little32(file, head.securityEntry);
    const uint64_t size = little32(file, head.securityEntry + 4);
    if (!begin || !size) return answer(State::Unsigned, "the file has no certificate table");
    // Not unsigned: what is left of a signed package that was cut where its table began looks whole otherwise.
    if (begin + size != file.size())
        return answer(State::Damaged, "the certificate table is not at the end of the file");
    if (begin < head.securityEntry + 8)
        return answer(State::Damaged, "the certificate table lies in the head of the file");

    PeSecurity security;
    const bool found = findSignature(file.subspan(begin), security.signature, security.flaw);
    security.state = found ? State::Signed : State::Damaged;
    const size_t afterChecksum = head.checksum + 4, afterEntry = head.securityEntry + 8;
    security.covered = {file.first(head.checksum), file.subspan(afterChecksum, head.securityEntry - afterChecksum),
                        file.subspan(afterEntry, begin - afterEntry)};
    return security;
}

}  // namespace Public::Base
