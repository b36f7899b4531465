#include "tools/config/scenario_file.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/input_file.h"
#include "base/line_observer.h"
#include "base/local_time.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/keyword_text.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"
#include "tools/config/value_remarks.h"

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

unsigned long start_time_stamp = 0;
unsigned long end_time_stamp = 0;
char time_filter_flag = 0;

namespace {

constexpr const char* fname = "read_scenario_file";

void remark_on_log_type(const LinePlace& place, std::string_view type) {
    if (type != "HTTP" && type != "HTTPS" && type != "POST") {
        observe_line(place, ObservedKind::value_unknown, type);
    }
}

void add_log_file(const LinePlace& place, LineText value) {
    constexpr int needed_fields = 4;
    constexpr int max_fields = 5;
    char* fields[max_fields];
    int count;
    get_tokens1(value.text, fields, " ", max_fields, &count);
    if (count < needed_fields) {
        observe_line(place, ObservedKind::too_few_columns, value.text);
        fail("Invalid entry in scenario file '%s' at line %d", place.file, place.line_num);
    }
    if (num_al_files == max_al_files) {
        observe_line(place, ObservedKind::too_many_logs, fields[0]);
        fail("More than %d log files in scenario file '%s' at line %d", max_al_files, place.file,
             place.line_num);
    }
    InputFileInfo& file = seq_file_path[num_al_files++];
    file.input_file = allocate_text(fname, "input_file", fields[0]);
    file.num_req = std::strtoul(fields[2], nullptr, 0);
    std::string_view type = fields[3];
    if (type.ends_with('\r')) {
        type.remove_suffix(1);
    }
    file.ssl_flag = type == "HTTPS";
    file.body_flag = type == "POST";
    remark_on_number(place, fields[2], 0, 0, LONG_MAX);
    remark_on_log_type(place, type);
    remark_on_columns(place, value, fields[count - 1], " ");
}

// Whether the date is one of the calendar's, not before the first second since the epoch.
bool is_in_range(const CalendarTime& time) {
    using namespace std::chrono;
    const auto is_within = [](int value, int low, int high) {
        return value >= low && value <= high;
    };
    return is_within(time.hours, 0, 23) && is_within(time.minutes, 0, 59) &&
           is_within(time.seconds, 0, 59) && is_within(time.year, 1970, 9999) &&
           is_within(time.month, 1, 12) && is_within(time.day, 1, 31) &&
           year_month_day(year(time.year), month(static_cast<unsigned>(time.month)),
                          day(static_cast<unsigned>(time.day)))
               .ok();
}

// Tells the line observer what is odd in the date that the text begins with, `size` characters
// long.
void remark_on_date(const LinePlace& place, const CalendarTime& time, const char* text, int size) {
    if (line_observer == nullptr) {
        return;
    }
    if (!is_in_range(time)) {
        observe_line(place, ObservedKind::date_out_of_range, text);
    }
    remark_on_rest(place, text + size);
}

unsigned long read_date(const LinePlace& place, const char* text) {
    CalendarTime time;
    int size = 0;
    const int count = std::sscanf(text, "%d/%d/%d %d:%d:%d%n", &time.month, &time.day, &time.year,
                                  &time.hours, &time.minutes, &time.seconds, &size);
    if (count < 6) {
        observe_line(place, ObservedKind::value_malformed, text);
        fail("Invalid format of date in REPLAY_PERIOD keyword in scenario file - '%s' at "
             "line - %d",
             place.file, place.line_num);
    }
    remark_on_date(place, time, text, size);
    return static_cast<unsigned long>(local_time_to_epoch(time));
}

// One end of the period, with the names that its debug lines give it.
struct PeriodEnd {
    std::string_view keyword;
    const char* date_name;
    const char* time_stamp_name;
    unsigned long& time_stamp;
};

const PeriodEnd period_ends[] = {
    {"START", "Start Date/time", "Start time stamp", start_time_stamp},
    {"END", "End date/time", "End time stamp", end_time_stamp},
};

// "NA" sets no bound.
void set_period_end(const PeriodEnd& end, const LinePlace& place, const char* date) {
    constexpr std::string_view no_bound = "NA";
    if (begins_with(date, no_bound)) {
        remark_on_rest(place, date + no_bound.size());
        observe_line(place, ObservedKind::value_kept, date);
        return;
    }
    DEBUG_LOG(3, fname, "%s: %s", end.date_name, date);
    end.time_stamp = read_date(place, date);
    DEBUG_LOG(3, fname, "%s - %lu", end.time_stamp_name, end.time_stamp);
    time_filter_flag = 1;
    observe_line(place, ObservedKind::value_set, date);
}

void set_period(const LinePlace& place, LineText value) {
    for (const PeriodEnd& end : period_ends) {
        if (begins_with(value.text, end.keyword)) {
            set_period_end(end, {place.file, place.line_num, end.keyword},
                           skip_blanks(value.text + end.keyword.size()));
            return;
        }
    }
    remark_on_unknown(place, value.text);
    observe_line(place, ObservedKind::value_kept, value.text);
}

struct ScenarioKeyword {
    std::string_view keyword;
    void (*apply)(const LinePlace& place, LineText value);
};

constexpr ScenarioKeyword scenario_keywords[] = {
    {log_file_keyword, add_log_file},
    {"REPLAY_PERIOD", set_period},
};

// The value without its leading blanks, of a line that begins with the keyword.
LineText value_of(LineText line, std::string_view keyword) {
    char* const value = skip_blanks(value_after(line, keyword));
    return {value, static_cast<size_t>(line.text + line.size - value)};
}

void apply_line(LinePlace place, LineText line) {
    for (const ScenarioKeyword& scenario_keyword : scenario_keywords) {
        if (begins_with(line.text, scenario_keyword.keyword)) {
            place.name = scenario_keyword.keyword;
            remark_on_separator(place, line.text + scenario_keyword.keyword.size());
            const LineText value = value_of(line, scenario_keyword.keyword);
            scenario_keyword.apply(place, value);
            observe_line(place, ObservedKind::taken, value.text);
            return;
        }
    }
    observe_line(place, ObservedKind::unknown_keyword, line.text);
}

} // namespace

void read_scenario_file(const std::string& scenario_file) {
    TextFile file(open_input_file(scenario_file.c_str()), scenario_file, scenario_line_size);
    LinePlace place = {scenario_file.c_str(), 0};
    if (!file.is_open()) {
        observe_line(place, ObservedKind::file_not_opened, "");
        fail("Failed to open scenario file '%s'", scenario_file.c_str());
    }
    LineText line;
    while (file.next(line)) {
        ++place.line_num;
        remark_on_length(place, line, scenario_line_size);
        if (!skip_comment(place, line)) {
            read_observed_line(place, [&] { apply_line(place, line); });
        }
    }
}
