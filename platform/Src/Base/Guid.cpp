#include "Public/Base/Guid.h"

#include <atomic>
#include <chrono>
#include <exception>
#include <random>

namespace Public::Base {

namespace {

/// Random bits of the system; where it has none to give, bits that still differ between processes and calls.
uint32_t randomWord() {
    try {
        return std::random_device()();
    } catch (const std::exception&) {
        static std::atomic<uint32_t> calls{0};
        const auto now = static_cast<uint64_t>(std::chrono::system_clock::now().time_since_epoch().count());
        std::seed_seq seed{static_cast<uint32_t>(now), static_cast<uint32_t>(now >> 32), ++calls};
        return static_cast<uint32_t>(std::mt19937(seed)());
    }
}

}  // namespace

Guid Guid::createGuid() {
    Guid guid;
    for (size_t i = 0; i < guid.mBytes.size(); i += 4) {
        const uint32_t word = randomWord();
        for (size_t byte = 0; byte < 4; ++byte) guid.mBytes[i + byte] = static_cast<uint8_t>(word >> (8 * byte));
    }
    guid.mBytes[6] = static_cast<uint8_t>((guid.mBytes[6] & 0x0F) | 0x40);  // version 4
    guid.mBytes[8] = static_cast<uint8_t>((guid.mBytes[8] & 0x3F) | 0x80);  // the variant of RFC 4122
    return guid;
}

std::string Guid::getStringStream() const {
    static constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < mBytes.size(); ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += kDigits[mBytes[i] >> 4];
        text += kDigits[mBytes[i] & 15];
    }
    return text;
}

}  // namespace Public::Base
