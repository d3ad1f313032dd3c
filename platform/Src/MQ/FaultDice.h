// Chance that comes out the same each time.
#pragma once

#include <cstdint>
#include <string>

namespace Tarnwick::MQ {

/// What is drawn follows from the seed, the name and the number alone.
class FaultDice {
public:
    FaultDice(uint32_t seed, const std::string& name, uint64_t number) : mState(seed) {
        for (const unsigned char byte : name) mState = mix(mState ^ byte);
        mState = mix(mState ^ number);
    }
    bool chance(double share) { return static_cast<double>(draw() >> 11) < share * 0x1p53; }
    /// @return 0 to limit - 1
    uint64_t below(uint64_t limit) { return draw() % limit; }

private:
    uint64_t draw() { return mState = mix(mState); }
    /// Spreads every bit over all of them.
    static uint64_t mix(uint64_t value) {
        value += 0x9e3779b97f4a7c15ULL;
        value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9ULL;
        value = (value ^ (value >> 27)) * 0x94d049bb133111ebULL;
        return value ^ (value >> 31);
    }

    uint64_t mState;
};

}  // namespace Tarnwick::MQ
