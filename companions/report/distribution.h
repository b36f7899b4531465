#pragma once

#include <cstdint>
#include <map>
#include <vector>

// How often values occur, and what that says of them.

// Values from `from` to `to`, both included.
struct Bin {
    uint64_t from;
    uint64_t to;
    uint64_t count;
};

// All zero, and without bins, when there are no values. A percentile is the least value that so
// many of a hundred values, or more, do not exceed.
struct Distribution {
    uint64_t count = 0; // of values
    double mean = 0;
    uint64_t median = 0;
    uint64_t p90 = 0;
    uint64_t p99 = 0;
    uint64_t largest = 0;
    std::vector<Bin> bins; // that hold all values; ends at 1, 2, 5, 10, 20, 50 ...
};

// Counts values as they come: as many numbers as there are different values are kept.
class ValueCounts {
  public:
    void add(uint64_t value, uint64_t count = 1) {
        if (value < dense_size) {
            if (value >= dense_.size()) {
                dense_.resize(value + 1);
            }
            dense_[value] += count;
        } else {
            sparse_[value] += count;
        }
    }

    Distribution distribution() const;

  private:
    // Calls `use` with each value and its count, smallest first.
    template <typename Use> void for_each(const Use& use) const;

    static constexpr uint64_t dense_size = 65'536;

    std::vector<uint64_t> dense_; // by value
    std::map<uint64_t, uint64_t> sparse_;
};
