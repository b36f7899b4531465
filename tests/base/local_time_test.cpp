#include "base/local_time.h"

#include "tests/support/fresh_mktime.h"
#include "tests/unit_helpers.h"

#include <algorithm>
#include <climits>
#include <compare>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <thread>

namespace fs = std::filesystem;

namespace {

constexpr const char* zone_database = "/usr/share/zoneinfo";

// A process under a sanitizer, which looks for other faults, takes 50 times as long to fork.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr size_t change_step = 25;
#else
constexpr size_t change_step = 1;
#endif

// Clocks that are changed by an hour, in what is called summer or winter, by half an hour, inside a
// minute, by days.
constexpr const char* other_zones[] = {
    "UTC0",
    "EST5EDT,M3.2.0,M11.1.0",
    "CET-1CEST,M3.5.0,M10.5.0/3",
    "IST-1GMT0,M10.5.0,M3.5.0/1",
    "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
    "AAA1:02:03BBB,M3.2.0,M11.1.0/2:00:07",
    "AAA-24:59:59BBB-167,M3.2.0/-100,M11.1.0/150",
    "right/Europe/London", // counts leap seconds; UTC when it is not there
};

std::string content_of(const fs::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

// A zone under several names is named once. Zones that count leap seconds are left out.
std::vector<std::string> zones_of_database() {
    std::vector<std::string> zones;
    std::set<std::string> known;
    std::error_code missing;
    for (fs::recursive_directory_iterator entry(zone_database, missing), end; entry != end;
         ++entry) {
        if (entry->path().filename() == "right") {
            entry.disable_recursion_pending();
        } else if (entry->is_regular_file()) {
            const std::string content = content_of(entry->path());
            if (content.starts_with("TZif") && known.insert(content).second) {
                zones.push_back(entry->path());
            }
        }
    }
    std::sort(zones.begin(), zones.end());
    return zones;
}

void set_local_zone(const std::string& zone) {
    setenv("TZ", zone.c_str(), 1);
    tzset();
}

// How the zone's clock is set.
struct ClockSetting {
    long offset; // east of UTC
    int is_daylight;
    auto operator<=>(const ClockSetting&) const = default;
};

ClockSetting setting_at(time_t moment) {
    tm local;
    localtime_r(&moment, &local);
    return {local.tm_gmtoff, local.tm_isdst};
}

struct Change {
    time_t moment; // the first with the new setting
    ClockSetting before;
    ClockSetting after;
    auto operator<=>(const Change&) const = default;
};

Change change_between(time_t before, time_t after) {
    const ClockSetting old_setting = setting_at(before);
    while (after - before > 1) {
        const time_t middle = (before + after) / 2;
        (setting_at(middle).offset == old_setting.offset ? before : after) = middle;
    }
    return {after, setting_at(before), setting_at(after)};
}

// The zone's changes of its offset, 1970 to 2037.
std::vector<Change> changes_of_zone() {
    constexpr time_t end = 2145916800; // 2038
    constexpr time_t step = 86400;
    std::vector<Change> changes;
    ClockSetting setting = setting_at(0);
    for (time_t before = 0; before < end; before += step) {
        const ClockSetting next = setting_at(before + step);
        if (next.offset != setting.offset) {
            changes.push_back(change_between(before, before + step));
        }
        setting = next;
    }
    return changes;
}

// Times, and what they convert to in a fresh process.
struct Conversions {
    std::vector<tm> times;
    std::vector<time_t> answers;

    void add(const Conversions& more) {
        times.insert(times.end(), more.times.begin(), more.times.end());
        answers.insert(answers.end(), more.answers.begin(), more.answers.end());
    }
};

// All of these times in one process.
Conversions conversions_of(const std::vector<time_t>& clock_times) {
    std::vector<tm> times(clock_times.size());
    std::transform(clock_times.begin(), clock_times.end(), times.begin(), [](time_t clock_time) {
        tm time;
        gmtime_r(&clock_time, &time);
        return time;
    });
    return {times, fresh_mktime(times)};
}

// What fresh processes make of the times at the changes of zones. What a clock shows twice or never
// depends on what was converted before, so each of these times gets a process to itself; zones that
// change alike are expected to answer alike. Those of the hours around share one process.
class ConversionsAtChanges {
  public:
    Conversions of_zone() {
        constexpr time_t hours_around = 2 * 3600;
        constexpr time_t step = 900;
        Conversions conversions;
        std::vector<time_t> around;
        const std::vector<Change> changes = changes_of_zone();
        for (size_t i = 0; i < changes.size(); i += change_step) {
            const Change& change = changes[i];
            const auto [low, high] = std::minmax({change.before.offset, change.after.offset});
            const time_t first = change.moment + low;
            const time_t end = change.moment + high;
            conversions.add(between(change, first, end - 1));
            for (time_t distance = 0; distance < hours_around; distance += step) {
                around.push_back(first - 1 - distance);
                around.push_back(end + distance);
            }
        }
        conversions.add(conversions_of(around));
        return conversions;
    }

  private:
    const Conversions& between(const Change& change, time_t first, time_t last) {
        Conversions& conversions = known_[change];
        if (conversions.times.empty()) {
            conversions.add(conversions_of({first}));
            conversions.add(conversions_of({last}));
        }
        return conversions;
    }

    std::map<Change, Conversions> known_;
};

// Times about a change of many zones and a leap second, some of their fields far from it.
Conversions odd_conversions() {
    constexpr int values[] = {INT_MIN, -100000, -61, -1, 0, 59, 60, 61, 100000, INT_MAX - 1900};
    constexpr int tm::*fields[] = {&tm::tm_year, &tm::tm_mon, &tm::tm_mday,
                                   &tm::tm_hour, &tm::tm_min, &tm::tm_sec};
    constexpr int bases[][std::size(fields)] = {{2024 - 1900, 9, 27, 2, 0, 0},
                                                {2017 - 1900, 0, 1, 0, 0, 0}};
    Choices choices(7);
    Conversions conversions;
    for (int round = 0; round < 80; ++round) {
        const auto& base = choices.of(bases);
        tm time = {};
        for (size_t i = 0; i < std::size(fields); ++i) {
            time.*fields[i] = choices.one_in(4) ? choices.of(values) : base[i];
        }
        conversions.add({{time}, fresh_mktime({time})});
    }
    return conversions;
}

// Each in a thread of its own, which remembers nothing yet.
void expect_answers(const Conversions& expected, const std::vector<std::vector<size_t>>& orders) {
    std::vector<std::thread> threads;
    for (const std::vector<size_t>& order : orders) {
        threads.emplace_back([&] {
            for (const size_t i : order) {
                const tm& time = expected.times[i];
                const time_t converted =
                    local_time_to_epoch({time.tm_year + 1900, time.tm_mon + 1, time.tm_mday,
                                         time.tm_hour, time.tm_min, time.tm_sec});
                EXPECT_EQ(converted, expected.answers[i])
                    << std::getenv("TZ") << ' ' << time.tm_year + 1900 << '-' << time.tm_mon + 1
                    << '-' << time.tm_mday << ' ' << time.tm_hour << ':' << time.tm_min << ':'
                    << time.tm_sec;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

// In opposite orders, at the same time.
void expect_answers_of_fresh_processes(const Conversions& expected) {
    std::vector<size_t> forward(expected.times.size());
    std::iota(forward.begin(), forward.end(), size_t{0});
    const std::vector<size_t> backward(forward.rbegin(), forward.rend());
    expect_answers(expected, {forward, backward});
}

} // namespace

TEST(LocalTime, IsThatOfAFreshProcessInEveryZoneOfTheDatabase) {
    const std::vector<std::string> zones = zones_of_database();
    if (zones.empty()) {
        GTEST_SKIP() << "no time zones in " << zone_database << ", see package tzdata";
    }
    run_in_child([&] {
        ConversionsAtChanges conversions;
        for (const std::string& zone : zones) {
            set_local_zone(zone);
            expect_answers_of_fresh_processes(conversions.of_zone());
        }
    });
}

TEST(LocalTime, IsThatOfAFreshProcessWhateverTheZoneAndTheFields) {
    run_in_child([] {
        for (const char* zone : other_zones) {
            set_local_zone(zone);
            ConversionsAtChanges conversions;
            expect_answers_of_fresh_processes(conversions.of_zone());
            expect_answers_of_fresh_processes(odd_conversions());
        }
    });
}
