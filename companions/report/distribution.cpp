#include "companions/report/distribution.h"

namespace {

// The end of the bin that a value belongs to.
uint64_t bin_end(uint64_t value) {
    constexpr uint64_t last_decade = UINT64_MAX / 10;
    if (value <= 5) {
        return value;
    }
    for (uint64_t decade = 1; decade <= last_decade; decade *= 10) {
        for (const uint64_t digit : {uint64_t{1}, uint64_t{2}, uint64_t{5}}) {
            if (value <= digit * decade) {
                return digit * decade;
            }
        }
    }
    return UINT64_MAX;
}

void add_to_bins(std::vector<Bin>& bins, uint64_t value, uint64_t count) {
    const uint64_t end = bin_end(value);
    if (bins.empty()) {
        bins.push_back({value, end, 0});
    }
    while (bins.back().to != end) {
        const uint64_t next = bins.back().to + 1;
        bins.push_back({next, bin_end(next), 0});
    }
    bins.back().count += count;
}

// Rank, from 1, of the value that `percent` of `count` values do not exceed.
uint64_t rank_of(uint64_t percent, uint64_t count) {
    return (count * percent + 99) / 100;
}

} // namespace

template <typename Use> void ValueCounts::for_each(const Use& use) const {
    for (uint64_t value = 0; value < dense_.size(); ++value) {
        if (dense_[value] != 0) {
            use(value, dense_[value]);
        }
    }
    for (const auto& [value, count] : sparse_) {
        use(value, count);
    }
}

Distribution ValueCounts::distribution() const {
    Distribution result;
    for_each([&](uint64_t, uint64_t count) { result.count += count; });
    uint64_t before = 0;
    for_each([&](uint64_t value, uint64_t count) {
        const auto take = [&](uint64_t percent, uint64_t& percentile) {
            const uint64_t rank = rank_of(percent, result.count);
            if (before < rank && rank <= before + count) {
                percentile = value;
            }
        };
        take(50, result.median);
        take(90, result.p90);
        take(99, result.p99);
        before += count;
        result.mean += static_cast<double>(value) * static_cast<double>(count) /
                       static_cast<double>(result.count);
        result.largest = value;
        add_to_bins(result.bins, value, count);
    });
    return result;
}
