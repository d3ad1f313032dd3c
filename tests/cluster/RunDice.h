// Where a run's choices come from.
#pragma once

#include <cstdint>
#include <random>
#include <vector>

namespace cluster {

/// The same seed gives the same choices, on every system.
class RunDice {
public:
    explicit RunDice(uint64_t seed) : mRandom(seed) {}
    /// @return 0 to limit - 1
    size_t below(size_t limit) { return static_cast<size_t>(mRandom() % limit); }
    size_t between(size_t least, size_t most) { return least + below(most - least + 1); }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class T>
    T& pick(std::vector<T>& from) {
        return from[below(from.size())];
    }
    template <class T>
    const T& pick(const std::vector<T>& from) {
        return from[below(from.size())];
    }
    uint32_t seed() { return static_cast<uint32_t>(mRandom()); }

private:
    std::mt19937_64 mRandom;
};

}  // namespace cluster
