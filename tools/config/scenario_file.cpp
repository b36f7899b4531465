#include "tools/config/scenario_file.h"

#include "base/allocation.h"
#include "base/failure.h"
#include "base/local_time.h"
#include "base/logs.h"
#include "base/text_file.h"
#include "base/tokenizers.h"
#include "tools/config/keyword_text.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_period.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

unsigned long start_time_stamp = 0;
unsigned long end_time_stamp = 0;
char time_filter_flag = 0;

namespace {

constexpr const char* fname = "read_scenario_file";

// The line at work, for the messages about it.
struct LinePlace {
    const char* file;
    int line_num; // from 1
};

void add_log_file(char* value, const LinePlace& place) {
    constexpr int needed_fields = 4;
    constexpr int max_fields = 5;
    char* fields[max_fields];
    int count;
    get_tokens1(value, fields, " ", max_fields, &count);
    if (count < needed_fields) {
        fail("Invalid entry in scenario file '%s' at line %d", place.file, place.line_num);
    }
    if (num_al_files == max_al_files) {
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
}

unsigned long read_date(const char* text, const LinePlace& place) {
    int month, day, year, hours, minutes, seconds;
    const int count =
        std::sscanf(text, "%d/%d/%d %d:%d:%d", &month, &day, &year, &hours, &minutes, &seconds);
    if (count < 6) {
        fail("Invalid format of date in REPLAY_PERIOD keyword in scenario file - '%s' at "
             "line - %d",
             place.file, place.line_num);
    }
    return static_cast<unsigned long>(
        local_time_to_epoch({year, month, day, hours, minutes, seconds}));
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
void set_period_end(const PeriodEnd& end, const char* date, const LinePlace& place) {
    if (begins_with(date, "NA")) {
        return;
    }
    DEBUG_LOG(3, fname, "%s: %s", end.date_name, date);
    end.time_stamp = read_date(date, place);
    DEBUG_LOG(3, fname, "%s - %lu", end.time_stamp_name, end.time_stamp);
    time_filter_flag = 1;
}

void set_period(char* value, const LinePlace& place) {
    for (const PeriodEnd& end : period_ends) {
        if (begins_with(value, end.keyword)) {
            set_period_end(end, skip_blanks(value + end.keyword.size()), place);
            return;
        }
    }
}

struct ScenarioKeyword {
    std::string_view keyword;
    void (*apply)(char* value, const LinePlace& place);
};

constexpr ScenarioKeyword scenario_keywords[] = {
    {log_file_keyword, add_log_file},
    {"REPLAY_PERIOD", set_period},
};

void apply_line(LineText line, const LinePlace& place) {
    for (const ScenarioKeyword& scenario_keyword : scenario_keywords) {
        if (begins_with(line.text, scenario_keyword.keyword)) {
            char* value = value_after(line, scenario_keyword.keyword);
            scenario_keyword.apply(skip_blanks(value), place);
            return;
        }
    }
}

} // namespace

void read_scenario_file(const std::string& scenario_file) {
    TextFile file(scenario_file, scenario_line_size);
    if (!file.is_open()) {
        fail("Failed to open scenario file '%s'", scenario_file.c_str());
    }
    LineText line;
    LinePlace place = {scenario_file.c_str(), 0};
    while (file.next(line)) {
        ++place.line_num;
        if (line.text[0] != '#') {
            apply_line(line, place);
        }
    }
}
