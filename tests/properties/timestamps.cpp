#include "tools/parse/timestamps.h"
#include "tools/parse/replay_zone.h"

#include "base/tokenizers.h"
#include "tests/properties/properties.h"
#include "tests/support/fresh_mktime.h"

#include <algorithm>
#include <set>
#include <thread>

namespace {

constexpr const char* month_names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",  "Jul", "Aug",
                                       "Sep", "Oct", "Nov", "Dec", "oct", "Sept", "",    "J:n"};

// With daylight saving changes of an hour, half an hour, at midnight, in both hemispheres; none.
constexpr const char* zones[] = {"UTC0",
                                 "IST-5:30",
                                 "EST5EDT,M3.2.0,M11.1.0",
                                 "CET-1CEST,M3.5.0,M10.5.0/3",
                                 "<+1030>-10:30<+11>-11,M10.1.0,M4.1.0",
                                 "<-03>3<-02>,M10.3.0/0,M2.3.0/0"};

bool is_shown(time_t clock_time, time_t moment) {
    tm local = {};
    localtime_r(&moment, &local);
    return timegm(&local) == clock_time;
}

// Of a time that the clock shows once, that moment. For other times the library goes by what it
// converted before, so a process that has converted nothing is asked.
time_t plain_local_time(const tm& fields) {
    tm normalised = fields;
    const time_t clock_time = timegm(&normalised);
    std::set<time_t> moments;
    for (const time_t near : {clock_time - 86400, clock_time + 86400}) {
        tm local = {};
        localtime_r(&near, &local);
        const time_t moment = clock_time - local.tm_gmtoff;
        if (is_shown(clock_time, moment)) {
            moments.insert(moment);
        }
    }
    const bool is_plain = fields.tm_sec >= 0 && fields.tm_sec < 60 && moments.size() == 1;
    return is_plain ? *moments.begin() : fresh_mktime({fields}).front();
}

time_t plain_time(const char* year, int month, const char* day, char* const clock[], long offset) {
    tm fields = {};
    fields.tm_year = std::atoi(year) - 1900;
    fields.tm_mon = month - 1;
    fields.tm_mday = std::atoi(day);
    fields.tm_hour = std::atoi(clock[0]);
    fields.tm_min = std::atoi(clock[1]);
    fields.tm_sec = std::atoi(clock[2]);
    return plain_local_time(fields) - offset;
}

time_t plain_convert(std::string text) {
    char* parts[6];
    int count;
    get_tokens1(text.data(), parts, "/:", 6, &count);
    const size_t blank = count < 6 ? std::string::npos : std::string(parts[5]).find(' ');
    if (blank == std::string::npos) {
        return -1;
    }
    const auto found = std::find(month_names, month_names + 12, std::string(parts[1]));
    const int month = found == month_names + 12 ? 1 : static_cast<int>(found - month_names) + 1;
    char sign[2] = "";
    char hours[3] = "";
    char minutes[3] = "";
    std::sscanf(parts[5] + blank, "%1s%2s%2s", sign, hours, minutes);
    const long offset = std::atoi(hours) * 3600L + std::atoi(minutes) * 60L;
    return plain_time(parts[2], month, parts[0], parts + 3,
                      replay_timezone + (sign[0] == '-' ? -offset : offset));
}

time_t plain_convert_iis(std::string date, std::string time) {
    char* days[3];
    char* clock[3];
    int day_parts;
    int clock_parts;
    get_tokens1(date.data(), days, "-", 3, &day_parts);
    get_tokens1(time.data(), clock, ":", 3, &clock_parts);
    return day_parts < 3 || clock_parts < 3
               ? -1
               : plain_time(days[0], std::atoi(days[1]), days[2], clock, replay_timezone);
}

time_t convert(std::string text) {
    return convert_into_second({text.data(), text.size()});
}

time_t convert_iis(std::string date, std::string time) {
    return convert_into_second_iis({date.data(), date.size()}, {time.data(), time.size()});
}

std::string two_digits(size_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

std::string random_clock(Choices& choices) {
    const size_t hours = choices.one_in(2) ? choices.below(4) : choices.below(25);
    return two_digits(hours) + ":" + two_digits(choices.below(61)) + ":" +
           two_digits(choices.below(choices.one_in(10) ? 61 : 60));
}

std::string random_apache_time(Choices& choices) {
    const char* odd_zones[] = {"", " ", " 0530", " +5 30", " -07:00", "+0000", " -0", "\t+0100"};
    const std::string zone = (choices.one_in(2) ? " +" : " -") + two_digits(choices.below(15)) +
                             two_digits(choices.below(60));
    std::string text = two_digits(choices.below(33)) + "/" + choices.of(month_names) + "/" +
                       std::to_string(1970 + choices.below(68)) + ":" + random_clock(choices) +
                       (choices.one_in(10) ? choices.of(odd_zones) : zone);
    for (size_t edits = choices.one_in(3) ? 1 + choices.below(3) : 0; edits > 0; --edits) {
        choices.edit(text, "/: -+01234Ja");
    }
    return text;
}

void expect_time(time_t converted, time_t expected, const std::string& text) {
    EXPECT_EQ(converted, expected) << std::getenv("TZ") << ": '" << text << "'";
}

void expect_library_times(Choices& choices) {
    std::string text;
    for (int round = 0; round < 3000 && choices.any_left(); ++round) {
        if (choices.one_in(2) || text.empty()) {
            text = random_apache_time(choices);
        } else { // not far from the line before
            text[choices.below(text.size())] = choices.of(std::string_view("0123"));
        }
        const time_t converted = convert(text);
        expect_time(converted, plain_convert(text), text);

        std::string date = std::to_string(1970 + choices.below(68)) + "-" +
                           two_digits(choices.below(14)) + "-" + two_digits(choices.below(33));
        std::string clock = random_clock(choices);
        if (choices.one_in(4)) {
            choices.edit(choices.one_in(2) ? date : clock, "-: 0123x");
        }
        const time_t converted_iis = convert_iis(date, clock);
        expect_time(converted_iis, plain_convert_iis(date, clock), date + " " + clock);
    }
}

} // namespace

void set_zone(const char* zone) {
    setenv("TZ", zone, 1);
    tzset();
    replay_timezone = timezone;
}

void check_timestamps(Choices& choices) {
    set_zone(choices.of(zones));
    std::thread([&] { expect_library_times(choices); }).join(); // which has converted nothing yet
}
