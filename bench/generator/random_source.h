#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

// Spreads the bits of a number: equal input gives equal output on every machine.
constexpr uint64_t mix_bits(uint64_t value) {
    value = (value ^ (value >> 30)) * 0xbf58476d1ce4e5b9U;
    value = (value ^ (value >> 27)) * 0x94d049bb133111ebU;
    return value ^ (value >> 31);
}

// Own generator, because the standard distributions differ between libraries and the input of
// the benchmark has to be the same everywhere.
class RandomSource {
  public:
    explicit RandomSource(uint64_t seed) : state_(seed) {}

    uint64_t next() { return mix_bits(state_ += 0x9e3779b97f4a7c15U); }

    // Evenly distributed over 0 to limit - 1; limit is at most 2^32.
    uint64_t below(uint64_t limit) { return ((next() >> 32) * limit) >> 32; }

    bool chance(uint64_t per_thousand) { return below(1000) < per_thousand; }

  private:
    uint64_t state_;
};

// Picks ranks 0 to count - 1, rank r with a frequency proportional to 1 / (r + 1).
class ZipfDistribution {
  public:
    explicit ZipfDistribution(size_t count);

    size_t pick(RandomSource& random) const {
        const size_t slot = random.below(slots_.size());
        return random.next() >> 32 < slots_[slot].threshold ? slot : slots_[slot].alias;
    }

  private:
    // A slot stands for its own rank below the threshold and for its alias from there on.
    struct Slot {
        uint32_t threshold;
        uint32_t alias;
    };
    std::vector<Slot> slots_;
};
