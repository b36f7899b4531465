#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

// Spreads the bits of a number: equal input gives equal output on every machine.
constexpr std::uint64_t mix_bits(std::uint64_t value) {
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31);
}

// Own generator, because the standard distributions differ between libraries and the input of
// the benchmark has to be the same everywhere.
class RandomSource {
  public:
    explicit RandomSource(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() { return mix_bits(state_ += 0x9e3779b97f4a7c15U); }

    // Evenly distributed over 0 to limit - 1; limit is at most 2^32.
    std::uint64_t below(std::uint64_t limit) { return ((next() >> 32) * limit) >> 32; }

    bool chance(std::uint64_t per_thousand) { return below(1000) < per_thousand; }

  private:
    std::uint64_t state_;
};

// Picks ranks 0 to count - 1, rank r with a frequency proportional to 1 / (r + 1).
class ZipfDistribution {
  public:
    explicit ZipfDistribution(std::size_t count);

    std::size_t pick(RandomSource& random) const {
        const std::size_t slot = random.below(slots_.size());
        const std::uint32_t draw = static_cast<std::uint32_t>(random.next() >> 32);
        return draw < slots_[slot].threshold ? slot : slots_[slot].alias;
    }

  private:
    // A slot stands for its own rank below the threshold and for its alias from there on.
    struct Slot {
        std::uint32_t threshold;
        std::uint32_t alias;
    };
    std::vector<Slot> slots_;
};

} // namespace bench
