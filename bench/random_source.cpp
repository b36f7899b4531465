#include "random_source.h"

namespace bench {

namespace {

std::uint32_t as_threshold(double share) {
    constexpr double full = 4294967295.0;
    return share >= 1.0 ? 0xffffffffU : static_cast<std::uint32_t>(share * full);
}

std::vector<double> shares_of_ranks(std::size_t count) {
    double total = 0;
    for (std::size_t rank = 0; rank < count; ++rank)
        total += 1.0 / static_cast<double>(rank + 1);
    std::vector<double> shares(count);
    for (std::size_t rank = 0; rank < count; ++rank)
        shares[rank] = static_cast<double>(count) / (static_cast<double>(rank + 1) * total);
    return shares;
}

} // namespace

// Alias method: every slot is filled up to the mean by one rank that has more than its share.
ZipfDistribution::ZipfDistribution(std::size_t count) : slots_(count) {
    std::vector<double> shares = shares_of_ranks(count);
    std::vector<std::uint32_t> poor;
    std::vector<std::uint32_t> rich;
    for (std::uint32_t rank = 0; rank < count; ++rank)
        (shares[rank] < 1.0 ? poor : rich).push_back(rank);
    while (!poor.empty() && !rich.empty()) {
        const std::uint32_t low = poor.back();
        const std::uint32_t high = rich.back();
        poor.pop_back();
        slots_[low] = {as_threshold(shares[low]), high};
        shares[high] -= 1.0 - shares[low];
        if (shares[high] < 1.0) {
            rich.pop_back();
            poor.push_back(high);
        }
    }
    for (const std::uint32_t rank : rich)
        slots_[rank] = {0xffffffffU, rank};
    for (const std::uint32_t rank : poor)
        slots_[rank] = {0xffffffffU, rank};
}

} // namespace bench
