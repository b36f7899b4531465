#include "companions/report/distribution.h"

#include "tests/unit_helpers.h"

#include <algorithm>
#include <vector>

namespace {

// The least value that `percent` of a hundred values do not exceed, tried one after the other.
uint64_t plain_percentile(const std::vector<uint64_t>& values, size_t percent) {
    uint64_t least = UINT64_MAX;
    for (const uint64_t value : values) {
        const auto reached = static_cast<size_t>(
            std::count_if(values.begin(), values.end(), [&](uint64_t v) { return v <= value; }));
        if (reached * 100 >= percent * values.size()) {
            least = std::min(least, value);
        }
    }
    return least;
}

// Small ones, and some of any size.
uint64_t random_value(Choices& choices) {
    const uint64_t sizes[] = {1, 4, 100, 65'536, 70'000, uint64_t{1} << 40, UINT64_MAX};
    const uint64_t size = choices.of(sizes);
    return size == UINT64_MAX && choices.one_in(2) ? size : choices.below(size);
}

} // namespace

TEST(Distribution, AgreesWithSearchingAllValues) {
    Choices choices(1);
    for (int round = 0; round < 60; ++round) {
        std::vector<uint64_t> values(1 + choices.below(120));
        ValueCounts counts;
        for (uint64_t& value : values) {
            value = random_value(choices);
            counts.add(value);
        }
        const Distribution found = counts.distribution();
        EXPECT_EQ(found.count, values.size());
        EXPECT_EQ(found.median, plain_percentile(values, 50));
        EXPECT_EQ(found.p90, plain_percentile(values, 90));
        EXPECT_EQ(found.p99, plain_percentile(values, 99));
        EXPECT_EQ(found.largest, *std::max_element(values.begin(), values.end()));
        uint64_t next = found.bins.front().from;
        EXPECT_EQ(next, *std::min_element(values.begin(), values.end()));
        for (const Bin& bin : found.bins) {
            EXPECT_EQ(bin.from, next);
            next = bin.to + 1;
            const auto count = std::count_if(values.begin(), values.end(), [&](uint64_t value) {
                return bin.from <= value && value <= bin.to;
            });
            EXPECT_EQ(bin.count, static_cast<uint64_t>(count));
        }
        EXPECT_NE(found.bins.back().count, 0U);
    }
}

TEST(Distribution, OfNoValuesIsEmpty) {
    const Distribution none = ValueCounts().distribution();
    EXPECT_EQ(none.count, 0U);
    EXPECT_EQ(none.p99, 0U);
    EXPECT_TRUE(none.bins.empty());
}

TEST(Distribution, HasBinsThatPeopleCountBy) {
    ValueCounts counts;
    counts.add(4, 3);
    counts.add(30);
    const std::vector<Bin> bins = counts.distribution().bins;
    const std::vector<std::vector<uint64_t>> expected = {
        {4, 4, 3}, {5, 5, 0}, {6, 10, 0}, {11, 20, 0}, {21, 50, 1}};
    ASSERT_EQ(bins.size(), expected.size());
    for (size_t i = 0; i < bins.size(); ++i) {
        EXPECT_EQ((std::vector<uint64_t>{bins[i].from, bins[i].to, bins[i].count}), expected[i]);
    }
}
