#include "base/local_time.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace {

constexpr time_t day_seconds = 86400;

constexpr int64_t floor_quotient(int64_t number, int64_t divisor) {
    return number / divisor - (number % divisor < 0 ? 1 : 0);
}

// Days from 1970-01-01 to a day; `month` counts from 0. Years are taken to begin in March, so that
// the day that some of them have more is their last.
constexpr int64_t days_since_epoch(int64_t year, int64_t month, int64_t day) {
    constexpr int64_t days_from_march_of_year_0 = 719468;
    const int64_t months_from_march = year * 12 + month - 2;
    const int64_t march_year = floor_quotient(months_from_march, 12);
    const int64_t march_month = months_from_march - march_year * 12;
    const int64_t leap_days = floor_quotient(march_year, 4) - floor_quotient(march_year, 100) +
                              floor_quotient(march_year, 400);
    return march_year * 365 + leap_days + (march_month * 153 + 2) / 5 + day - 1 -
           days_from_march_of_year_0;
}

// Seconds from 1970-01-01 00:00:00 to this time on a clock that is never changed.
constexpr int64_t clock_seconds(const tm& fields) {
    const int64_t days =
        days_since_epoch(int64_t{fields.tm_year} + 1900, fields.tm_mon, fields.tm_mday);
    return days * day_seconds + int64_t{3600} * fields.tm_hour + int64_t{60} * fields.tm_min +
           fields.tm_sec;
}

int wrapped_difference(int a, int b) {
    return static_cast<int>(static_cast<unsigned>(a) - static_cast<unsigned>(b));
}

tm fields_of(const CalendarTime& time) {
    tm fields = {};
    fields.tm_year = wrapped_difference(time.year, 1900);
    fields.tm_mon = wrapped_difference(time.month, 1);
    fields.tm_mday = time.day;
    fields.tm_hour = time.hours;
    fields.tm_min = time.minutes;
    fields.tm_sec = time.seconds;
    return fields;
}

// Whatever the zone, its clock shows a year that `tm` can hold at these and between.
constexpr time_t earliest_guess =
    (days_since_epoch(int64_t{INT_MIN} + 1900, 0, 1) + 2) * day_seconds;
constexpr time_t latest_guess =
    (days_since_epoch(int64_t{INT_MAX} + 1900, 11, 31) - 2) * day_seconds;

// The moment at which the clock shows `wanted`, whose seconds are 0 to 59.
//
// mktime guesses and corrects each guess by what the clock shows then. It starts from the offset of
// its last answer, so that of two moments that show the same time it takes the one it comes by
// first. In a fresh process it starts from UTC, and so do we. Of a time that the clock never shows,
// the guesses change from one side of the gap to the other: the one in daylight saving is taken, or
// the earlier guess if that makes no difference.
std::optional<time_t> find_moment(int64_t wanted) {
    constexpr int most_guesses = 6;
    time_t guess = std::clamp(time_t{wanted}, earliest_guess, latest_guess);
    time_t last = guess;
    int last_is_daylight = 0;
    for (int i = 0; i < most_guesses; ++i) {
        tm shown;
        if (localtime_r(&guess, &shown) == nullptr) {
            return {};
        }
        const time_t next = guess + (wanted - clock_seconds(shown));
        if (next == guess) {
            const bool is_leap_second = shown.tm_sec == 60; // second 0 of `wanted` comes after it
            return is_leap_second ? guess + 1 : guess;
        }
        if (next == last) {
            return last_is_daylight >= shown.tm_isdst ? last : guess;
        }
        last = guess;
        last_is_daylight = shown.tm_isdst;
        guess = next;
    }
    return {};
}

bool can_be_shown(time_t moment) {
    tm shown;
    return localtime_r(&moment, &shown) != nullptr;
}

// Seconds out of range are counted from the end of the minute that they leave.
std::optional<time_t> convert(tm fields) {
    const int seconds = fields.tm_sec;
    fields.tm_sec = std::clamp(seconds, 0, 59);
    std::optional<time_t> moment = find_moment(clock_seconds(fields));
    if (moment && seconds != fields.tm_sec) {
        *moment += time_t{seconds} - fields.tm_sec;
        return can_be_shown(*moment) ? moment : std::nullopt;
    }
    return moment;
}

bool is_in_range(int number, int first, int last) {
    return number >= first && number <= last;
}

bool names_minute(const CalendarTime& time) {
    return is_in_range(time.month, 1, 12) && is_in_range(time.day, 1, 31) &&
           is_in_range(time.hours, 0, 23) && is_in_range(time.minutes, 0, 59);
}

// Different for any two minutes, one higher for the next of a day, and never 0.
int64_t number_of_minute(const CalendarTime& time) {
    const int64_t day = (int64_t{time.year} * 13 + time.month) * 32 + time.day;
    return (day * 24 + time.hours) * 60 + time.minutes;
}

struct KnownMinute {
    int64_t number; // 0 for none
    time_t start;
};

// A line of a log has the time at which its request came and is written when the request has been
// answered, so that minutes take turns. 17 hours in a row have a place each; as the number is
// prime, so has a minute that is some days older.
constexpr size_t known_minute_count = 1021;

} // namespace

std::optional<time_t> local_minute_to_epoch(const CalendarTime& time) {
    static thread_local KnownMinute known_minutes[known_minute_count] = {};
    if (!names_minute(time)) {
        return {};
    }
    const int64_t number = number_of_minute(time);
    KnownMinute& known = known_minutes[static_cast<uint64_t>(number) % known_minute_count];
    if (known.number != number) {
        tm fields = fields_of(time);
        fields.tm_sec = 0;
        const std::optional<time_t> start = convert(fields);
        fields.tm_sec = 59;
        const std::optional<time_t> end = convert(fields);
        if (!start || !end || *end - *start != 59) {
            return {};
        }
        known = {number, *start};
    }
    return known.start;
}

time_t local_time_to_epoch(const CalendarTime& time) {
    if (is_in_range(time.seconds, 0, 59)) {
        if (const std::optional<time_t> start = local_minute_to_epoch(time)) {
            return *start + time.seconds;
        }
    }
    return convert(fields_of(time)).value_or(-1);
}
