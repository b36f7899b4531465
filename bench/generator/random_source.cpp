#include "bench/generator/random_source.h"

namespace {

// Of each rank, with a mean of 1.
std::vector<double> shares_of_ranks(size_t count) {
    double total = 0;
    for (size_t rank = 0; rank < count; ++rank) {
        total += 1.0 / static_cast<double>(rank + 1);
    }
    std::vector<double> shares(count);
    for (size_t rank = 0; rank < count; ++rank) {
        shares[rank] = static_cast<double>(count) / (static_cast<double>(rank + 1) * total);
    }
    return shares;
}

} // namespace

// Alias method: every slot is filled up to the mean by one rank that has more than its share.
ZipfDistribution::ZipfDistribution(size_t count) {
    std::vector<double> shares = shares_of_ranks(count);
    std::vector<uint32_t> poor;
    std::vector<uint32_t> rich;
    for (uint32_t rank = 0; rank < count; ++rank) {
        slots_.push_back({UINT32_MAX, rank});
        (shares[rank] < 1.0 ? poor : rich).push_back(rank);
    }
    while (!poor.empty() && !rich.empty()) {
        const uint32_t low = poor.back();
        const uint32_t high = rich.back();
        poor.pop_back();
        slots_[low] = {static_cast<uint32_t>(shares[low] * UINT32_MAX), high};
        shares[high] -= 1.0 - shares[low];
        if (shares[high] < 1.0) {
            rich.pop_back();
            poor.push_back(high);
        }
    }
}
