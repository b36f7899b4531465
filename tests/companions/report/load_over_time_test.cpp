#include "companions/report/load_over_time.h"

#include "companions/report/wall_clock.h"
#include "tests/unit_helpers.h"

#include <cstdlib>
#include <ctime>
#include <numeric>

namespace {

constexpr uint64_t noon = 1'773'144'000; // 10 March 2026, UTC
constexpr uint64_t day = 86'400;

StatusCountsOverTime lines_every(uint64_t seconds, size_t count) {
    StatusCountsOverTime lines;
    for (size_t i = 0; i < count; ++i) {
        lines.add(noon + i * seconds, 200);
    }
    return lines;
}

uint64_t sum_of(const LoadOverTime& load) {
    uint64_t sum = load.before.lines + load.after.lines;
    for (const auto& series : load.responses) {
        sum += std::accumulate(series.begin(), series.end(), uint64_t{0});
    }
    return sum;
}

} // namespace

TEST(LoadOverTime, HasAsFineStepsAsFewEnoughCanBe) {
    const std::vector<std::array<uint64_t, 3>> cases = {
        // seconds between lines, lines, seconds of a step
        {1, 1, 1},        {1, 3000, 1},         {1, 3001, 60},         {60, 3000, 60},
        {60, 3001, 3600}, {3600, 3000, 3600},   {3600, 3001, day},     {day, 1, 1},
        {day, 3000, day}, {day, 3001, 2 * day}, {day, 10'000, 4 * day}};
    for (const auto& [between, count, step] : cases) {
        SCOPED_TRACE(std::to_string(between) + " " + std::to_string(count));
        const StatusCountsOverTime lines = lines_every(between, count);
        const TimeSteps steps(lines, {});
        EXPECT_EQ(steps.seconds(), step);
        EXPECT_LE(steps.count(), TimeSteps::most_steps + 1); // the first may begin before its line
        EXPECT_EQ(sum_of(responses_over_time(steps, lines)), count);
        EXPECT_EQ(steps.find(noon), (noon - steps.start()) / step);
        EXPECT_EQ(steps.find(steps.start() - 1), std::nullopt);
        EXPECT_EQ(steps.find(steps.start() + steps.count() * step), std::nullopt);
    }
}

TEST(LoadOverTime, LeavesOddTimesOut) {
    StatusCountsOverTime lines = lines_every(1, 2000);
    lines.add(0, 200);
    lines.add(noon - 40 * day, 200);
    lines.add(noon + 400 * day, 500);
    const TimeSteps steps(lines, {});
    EXPECT_EQ(steps.seconds(), 1U);
    EXPECT_EQ(steps.start(), noon);
    const LoadOverTime load = responses_over_time(steps, lines);
    EXPECT_EQ(load.before.lines, 2U);
    EXPECT_EQ(load.before.first, 0);
    EXPECT_EQ(load.before.last, static_cast<WallSeconds>(noon - 40 * day));
    EXPECT_EQ(load.after.lines, 1U);
    EXPECT_EQ(load.after.first, static_cast<WallSeconds>(noon + 400 * day));
    EXPECT_EQ(sum_of(load), 2003U);
}

TEST(LoadOverTime, ShowsThePeriodAndWhatAdjoinsIt) {
    StatusCountsOverTime lines = lines_every(600, 200); // more than a day
    lines.add(noon - 3 * day, 200);
    const TimeSteps steps(lines, {noon + 600 * 100, noon + 600 * 110});
    EXPECT_EQ(steps.start(), noon);
    EXPECT_EQ(steps.find(noon + 600 * 199), steps.count() - 1);
    const TimeSteps empty_period(lines, {noon + 30 * day, noon + 31 * day});
    EXPECT_NE(empty_period.count(), 0U);
}

TEST(LoadOverTime, HasNoStepsWithoutLines) {
    const TimeSteps steps(StatusCountsOverTime(), {});
    EXPECT_EQ(steps.count(), 0U);
    EXPECT_EQ(steps.find(noon), std::nullopt);
}

TEST(LoadOverTime, BeginsHoursAndDaysByTheClockThatPeopleSee) {
    run_in_child([] {
        setenv("TZ", "IST-5:30", 1); // half an hour beside the hours of UTC
        tzset();
        for (const auto& [between, step] :
             std::vector<std::pair<uint64_t, WallSeconds>>{{3600, 3600}, {day, 86'400}}) {
            const TimeSteps steps(lines_every(between, 2000), {});
            EXPECT_EQ(wall_seconds(steps.start()) % step, 0);
            EXPECT_LE(steps.start(), noon);
            EXPECT_EQ(steps.find(noon), 0U);
        }
        EXPECT_EQ(wall_text(wall_seconds(noon)), "2026-03-10 17:30:00");
    });
}
