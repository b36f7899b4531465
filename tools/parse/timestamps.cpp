#include "tools/parse/timestamps.h"

#include "base/local_time.h"
#include "base/logs.h"
#include "base/tokenizers.h"
#include "tools/parse/replay_zone.h"
#include "tools/parse/zone_text.h"

#include <cstdlib>
#include <cstring>
#include <optional>

namespace {

constexpr const char* fname = "convert_into_second";
constexpr const char* fname_iis = "convert_into_second_iis";
constexpr const char* month_names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

int read_number(const char* text) {
    return static_cast<int>(std::strtol(text, nullptr, 10));
}

// Reads a fixed number of digits; the pattern's other characters must stand as they are.
class FixedShape {
  public:
    explicit FixedShape(const char* text) : text_(text) {}

    int digits(int from, int count) {
        int number = 0;
        for (int i = from; i < from + count; ++i) {
            const char c = text_[i];
            fits_ = fits_ && c >= '0' && c <= '9';
            number = number * 10 + (c - '0');
        }
        return number;
    }

    void expect(int at, char c) { fits_ = fits_ && text_[at] == c; }

    bool fits() const { return fits_; }

  private:
    const char* text_;
    bool fits_ = true;
};

// Three letters of a month name as one number, to find it without comparing texts.
constexpr uint32_t month_code(const char* name) {
    return static_cast<uint32_t>(static_cast<unsigned char>(name[0])) << 16 |
           static_cast<uint32_t>(static_cast<unsigned char>(name[1])) << 8 |
           static_cast<uint32_t>(static_cast<unsigned char>(name[2]));
}

int month_at(const char* text) {
    const uint32_t code = month_code(text);
    for (int month = 0; month < 12; ++month) {
        if (code == month_code(month_names[month])) {
            return month + 1;
        }
    }
    return 1;
}

constexpr size_t fixed_shape_size = 26;
constexpr size_t zone_at = 21; // in a text of the fixed shape

// The shape that servers write, dd/Mon/yyyy:hh:mm:ss +hhmm; anything else goes the general way.
bool read_fixed_shape(LineText timestring, CalendarTime& calendar, int64_t& log_offset) {
    if (timestring.size != fixed_shape_size) {
        return false;
    }
    const char* text = timestring.text;
    FixedShape shape(text);
    shape.expect(2, '/');
    shape.expect(6, '/');
    shape.expect(11, ':');
    shape.expect(14, ':');
    shape.expect(17, ':');
    shape.expect(20, ' ');
    calendar = {shape.digits(7, 4),  month_at(text + 3),  shape.digits(0, 2),
                shape.digits(12, 2), shape.digits(15, 2), shape.digits(18, 2)};
    log_offset = int64_t{3600} * shape.digits(22, 2) + int64_t{60} * shape.digits(24, 2);
    if (text[21] == '-') {
        log_offset = -log_offset;
    } else {
        shape.expect(21, '+');
    }
    const bool month_is_one_word =
        std::memchr(text + 3, '/', 3) == nullptr && std::memchr(text + 3, ':', 3) == nullptr;
    return shape.fits() && month_is_one_word;
}

// The texts of one minute of a log differ in their seconds only, so most of them need no more than
// a look at those.
class KnownMinute {
  public:
    // Whether `timestring` is of the minute remembered, with seconds from 00 to 59.
    bool has(LineText timestring) const {
        const char* text = timestring.text;
        return timestring.size == sizeof text_ && std::memcmp(text, text_, seconds_at) == 0 &&
               std::memcmp(text + seconds_end, text_ + seconds_end, sizeof text_ - seconds_end) ==
                   0 &&
               text[seconds_at] >= '0' && text[seconds_at] <= '5' && text[seconds_at + 1] >= '0' &&
               text[seconds_at + 1] <= '9';
    }

    time_t second(LineText timestring) const {
        const char* seconds = timestring.text + seconds_at;
        return start_ + time_t{10} * (seconds[0] - '0') + (seconds[1] - '0');
    }

    // `start` is what second 00 of the minute converts to.
    void remember(LineText timestring, time_t start) {
        std::memcpy(text_, timestring.text, sizeof text_);
        start_ = start;
    }

  private:
    static constexpr size_t seconds_at = 18;
    static constexpr size_t seconds_end = 20;

    char text_[fixed_shape_size] =
        {}; // all NUL, which no log text is, until the first is remembered
    time_t start_ = 0;
};

bool read_fixed_shape_iis(LineText date, LineText time, CalendarTime& calendar) {
    constexpr size_t date_size = 10;
    constexpr size_t time_size = 8;
    if (date.size != date_size || time.size != time_size) {
        return false;
    }
    FixedShape date_shape(date.text);
    date_shape.expect(4, '-');
    date_shape.expect(7, '-');
    FixedShape time_shape(time.text);
    time_shape.expect(2, ':');
    time_shape.expect(5, ':');
    calendar = {date_shape.digits(0, 4), date_shape.digits(5, 2), date_shape.digits(8, 2),
                time_shape.digits(0, 2), time_shape.digits(3, 2), time_shape.digits(6, 2)};
    return date_shape.fits() && time_shape.fits();
}

void log_calendar(const char* function, const CalendarTime& calendar) {
    DEBUG_LOG(4, function, "Date: day: %d month: %d year: %d hours: %d minutes: %d secs: %d",
              calendar.day, calendar.month, calendar.year, calendar.hours, calendar.minutes,
              calendar.seconds);
}

void log_parts(int count) {
    DEBUG_LOG(4, "get_tokens1", "Total fields found : %d", count);
}

constexpr int part_count = 6;
constexpr int part_count_iis = 3; // of the date, and of the time

// What the general way writes about a text of the fixed shape.
void log_fixed_shape(LineText timestring, time_t time_secs) {
    CalendarTime calendar;
    int64_t log_offset;
    read_fixed_shape(timestring, calendar, log_offset);
    log_parts(part_count);
    log_calendar(fname, calendar);
    DEBUG_LOG(4, fname, "Access log Time zone = %s", timestring.text + zone_at);
    DEBUG_LOG(4, fname, "time_secs: %ld", time_secs);
}

void log_fixed_shape_iis(const CalendarTime& calendar) {
    log_parts(part_count_iis);
    log_parts(part_count_iis);
    log_calendar(fname_iis, calendar);
}

// Seconds on the scale of the logs' zone; nothing when the text is of another shape.
std::optional<time_t> convert_fixed_shape(LineText timestring, KnownMinute& known) {
    CalendarTime calendar;
    int64_t log_offset;
    if (!read_fixed_shape(timestring, calendar, log_offset)) {
        return {};
    }
    const std::optional<time_t> minute = local_minute_to_epoch(calendar);
    if (!minute) {
        return local_time_to_epoch(calendar) - log_offset;
    }
    const time_t start = *minute - log_offset;
    known.remember(timestring, start);
    return start + calendar.seconds; // 60 to 99 count on from the minute's end
}

// The general way: any text with the parts in their places.
time_t convert_any_shape(char* timestring) {
    char* parts[part_count];
    int count;
    get_tokens1(timestring, parts, "/:", part_count, &count);
    if (count < part_count) {
        return -1;
    }
    const CalendarTime calendar = {read_number(parts[2]), get_month(parts[1]),
                                   read_number(parts[0]), read_number(parts[3]),
                                   read_number(parts[4]), read_number(parts[5])};
    log_calendar(fname, calendar);
    const time_t local = local_time_to_epoch(calendar);
    const char* blank = std::strchr(parts[5], ' ');
    if (blank == nullptr) {
        return -1;
    }
    const ZoneText zone = read_zone(blank);
    DEBUG_LOG(4, fname, "Access log Time zone = %s%s%s", zone.sign, zone.hours, zone.minutes);
    const time_t time_secs = local - replay_timezone - zone_offset(zone);
    DEBUG_LOG(4, fname, "time_secs: %ld", time_secs);
    return time_secs;
}

time_t convert_any_shape_iis(char* date, char* time) {
    char* date_parts[part_count_iis];
    char* time_parts[part_count_iis];
    int count;
    get_tokens1(date, date_parts, "-", part_count_iis, &count);
    if (count < part_count_iis) {
        return -1;
    }
    get_tokens1(time, time_parts, ":", part_count_iis, &count);
    if (count < part_count_iis) {
        return -1;
    }
    const CalendarTime calendar = {read_number(date_parts[0]), read_number(date_parts[1]),
                                   read_number(date_parts[2]), read_number(time_parts[0]),
                                   read_number(time_parts[1]), read_number(time_parts[2])};
    log_calendar(fname_iis, calendar);
    return local_time_to_epoch(calendar) - replay_timezone;
}

// Not inlined: what it needs would be saved and restored for every time.
[[gnu::noinline]] time_t convert_unknown_minute(LineText timestring, KnownMinute& known) {
    const std::optional<time_t> time_stamp = convert_fixed_shape(timestring, known);
    if (!time_stamp) {
        return convert_any_shape(timestring.text);
    }
    const time_t time_secs = *time_stamp - replay_timezone;
    if (debug_wanted(4)) {
        log_fixed_shape(timestring, time_secs);
    }
    return time_secs;
}

} // namespace

int get_month(const char* month_name) {
    for (int month = 0; month < 12; ++month) {
        if (std::strcmp(month_name, month_names[month]) == 0) {
            return month + 1;
        }
    }
    return 1;
}

time_t convert_into_second(LineText timestring) {
    static thread_local KnownMinute known;
    if (known.has(timestring) && !debug_wanted(4)) {
        return known.second(timestring) - replay_timezone;
    }
    return convert_unknown_minute(timestring, known);
}

time_t convert_into_second_iis(LineText date, LineText time) {
    DEBUG_LOG(4, fname_iis, "Method Called. Date/time = %s %s", date.text, time.text);
    CalendarTime calendar;
    if (!read_fixed_shape_iis(date, time, calendar)) {
        return convert_any_shape_iis(date.text, time.text);
    }
    if (debug_wanted(4)) {
        log_fixed_shape_iis(calendar);
    }
    return local_time_to_epoch(calendar) - replay_timezone;
}
