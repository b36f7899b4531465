#include "tools/parse/line_tally.h"

#include "tests/unit_helpers.h"

#include <map>
#include <vector>

namespace {

using Counts = std::map<uint64_t, StatusCounts>;

Counts in_order(const StatusCountsOverTime& lines) {
    return {lines.steps().begin(), lines.steps().end()};
}

} // namespace

TEST(StatusCountsOverTime, CountsBySecondAndClass) {
    StatusCountsOverTime lines;
    for (const int code : {100, 199, 204, 301, 404, 599, 600, 0, 99, -5}) {
        lines.add(7, code);
    }
    lines.add(8, 200);
    lines.add(7, 200);
    EXPECT_EQ(in_order(lines), (Counts{{7, {2, 2, 1, 1, 1, 4}}, {8, {0, 1, 0, 0, 0, 0}}}));
}

TEST(StatusCountsOverTime, AddsUpFromPartsAsFromAll) {
    Choices choices(1);
    for (const uint64_t spread : {uint64_t{5}, uint64_t{400'000}, uint64_t{20'000'000}}) {
        StatusCountsOverTime all;
        StatusCountsOverTime sum;
        for (int part = 0; part < 4; ++part) {
            StatusCountsOverTime lines;
            for (int i = 0; i < 120'000; ++i) {
                const uint64_t time = choices.below(spread);
                all.add(time, 200);
                lines.add(time, 200);
            }
            sum.merge(lines);
        }
        EXPECT_EQ(all.step_seconds(), spread == 5 ? 1U : spread == 400'000 ? 60U : 3600U);
        EXPECT_EQ(sum.step_seconds(), all.step_seconds());
        EXPECT_EQ(in_order(sum), in_order(all));
    }
}

TEST(ResponseTimeCounts, KeepTheLeadingDigits) {
    std::vector<uint64_t> times = {0, 1, 255, 256, 257, 511, 512, 1'000'000, 2'147'483'647'999'999};
    Choices choices(2);
    for (int i = 0; i < 1000; ++i) {
        times.push_back(choices.below(size_t{1} << choices.below(52)));
    }
    for (const uint64_t time : times) {
        const uint64_t first =
            ResponseTimeCounts::first_number(ResponseTimeCounts::bucket_of(time));
        EXPECT_LE(first, time);
        EXPECT_LE(static_cast<double>(time - first), static_cast<double>(time) / 100) << time;
        EXPECT_EQ(ResponseTimeCounts::bucket_of(first), ResponseTimeCounts::bucket_of(time));
    }
    ResponseTimeCounts some;
    ResponseTimeCounts more;
    some.add(3);
    more.add(3);
    more.add(5);
    some.merge(more);
    EXPECT_EQ(some.counts(), (std::vector<uint64_t>{0, 0, 0, 2, 0, 1}));
}
