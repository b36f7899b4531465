#include "tools/parse/log_loader.h"

#include "base/logs.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/parse/cookie_values.h"
#include "tools/parse/request_fields.h"

#include <cstring>
#include <vector>

namespace {

using Rows = std::vector<std::string>;

// By log type, in its default layout and with a response time; any text for '~'.
constexpr const char* line_shapes[] = {
    "10.0.0.~7 - - [1~/Mar/2026:1~:00:59 ~+0~000] - \"~GET /~ HTTP/1.1\" ~302 - - - - "
    "\"id=~; akaau=~\" \"~id=~;\" h~ ~/x ~3",
    "10.0.0.7~ 2026-03-1~ 1~:00:59 ~GET /~ ~- HTTP/1.1 ~200 - - - "
    "id=~;akaau=~ ~id=~ h~ ~/x ~3",
    "10.0.0.7~ 2026-03-1~ 1~:00:59 ~GET /~ /~?~ ~200 - - - id=~;akaau=~ ~akaau=~ h~ ~/x - ~3"};

std::string random_line(Choices& choices) {
    std::string line = line_shapes[static_cast<size_t>(al_type)];
    for (size_t at = 0; (at = line.find('~', at)) != std::string::npos;) {
        const std::string text = choices.one_in(4) ? choices.text("aZ09=?#;/. \\\"\t[]-", 70) : "";
        line.replace(at, 1, choices.one_in(3) ? text : text.substr(0, 1));
    }
    if (choices.one_in(4)) {
        choices.edit(line, std::string_view("\" \t-09a\0\xff\r", 10));
    }
    return line + "\n";
}

Rows describe(const std::vector<alInfo>& records) {
    Rows rows;
    for (const alInfo& record : records) {
        std::string& row = rows.emplace_back(record.method);
        for (const char* text :
             {static_cast<const char*>(record.url), record.host_ip,
              static_cast<const char*>(record.redirect_url), record.jsession_id, record.akaau_id}) {
            row += std::string(" ") + (text == nullptr ? "none" : text);
        }
        for (const auto number :
             {static_cast<int64_t>(record.time_stamp), static_cast<int64_t>(record.client_ip),
              record.line_num, int64_t{record.url_len}, int64_t{record.response_code}}) {
            row += " " + std::to_string(number);
        }
    }
    return rows;
}

// What later phases count on: texts that end in their blocks, and room behind a URL for two
// characters more.
void expect_sound(std::vector<alInfo>& records) {
    const auto length_in = [](const auto& block) { return strnlen(block, sizeof block); };
    for (const alInfo& record : records) {
        ASSERT_LE(length_in(record.method), max_method_length) << record.url;
        ASSERT_LT(length_in(record.jsession_id), max_cookie_length) << record.url;
        ASSERT_LT(length_in(record.akaau_id), max_cookie_length) << record.url;
    }
    const Rows expected = describe(records);
    for (alInfo& record : records) {
        std::strcat(record.url, "*");
    }
    for (alInfo& record : records) {
        ASSERT_LT(static_cast<size_t>(record.url_len), std::strlen(record.url)) << record.url;
        record.url[std::strlen(record.url) - 1] = '\0';
    }
    EXPECT_EQ(describe(records), expected) << "with stars behind the URLs";
}

// The records with their numbers, and the counters.
Rows load(const std::string& log, size_t line_count) {
    std::vector<alInfo> records(line_count);
    ParsingThread thread = {.thread_idx = 0};
    RecordTable table(records.data(), line_count);
    UnaccountedRequests waiting;
    uint64_t count = 0;
    FILE* file = file_of(log);
    EXPECT_EQ(load_url_info(thread, table, 0, file, &count, waiting), 0);
    std::fclose(file);
    records.resize(count);
    thread.numbers.finish();
    expect_sound(records);
    Rows rows = describe(records);
    for (uint32_t i = 0; i < count; ++i) {
        rows[i] += " " + std::string(thread.numbers.session_text(thread.numbers[i].session)) + " " +
                   std::to_string(thread.numbers[i].url);
    }
    const auto& [total, time_filtered, bad] = thread.counters;
    EXPECT_EQ(total, count + time_filtered + bad);
    rows.push_back(std::to_string(time_filtered) + " filtered, bad: " + std::to_string(bad));
    return rows;
}

void expect_plain_status_code(Choices& choices) {
    std::string text = choices.text("0129 -x", 4);
    RequestFields request;
    read_common_field({"test", "log", 1}, AL_STATUS_CODE, {text.data(), text.size()}, request);
    EXPECT_EQ(request.response_code, std::atoi(text.c_str())) << text;
}

void expect_plain_cookie_search(Choices& choices) {
    const std::string header = choices.text("-a=;", 3);
    const std::string name = choices.text("-a", 2);
    char value[max_cookie_length];
    EXPECT_EQ(get_cookie_value(header.c_str(), name, 0, value),
              header.find(name) != std::string::npos)
        << header << " " << name;
}

} // namespace

void check_log_loader(Choices& choices) {
    al_type = static_cast<char>(choices.below(std::size(line_shapes)));
    session_mode = static_cast<char>(choices.below(2));
    ignore_query_flag = choices.one_in(2);
    secondary_cookie_enable = !choices.one_in(4);
    std::strcpy(cookie_name, "id");
    start_time_stamp = choices.one_in(2) ? 0 : 1773309600; // the twelfth, 10:00
    consider_response_time = choices.one_in(2);
    set_default_field_positions();
    al_required_field_position[AL_RESPONSE_TIME] = consider_response_time != 0 ? 16 : 0;
    validate_al_format();
    expect_plain_status_code(choices);
    expect_plain_cookie_search(choices);
    std::string name = "access_log";
    std::string log;
    size_t line_count = 0;
    for (; line_count < 40 && choices.any_left(); ++line_count) {
        log += random_line(choices);
    }
    seq_file_path[0] = {name.data(), 0, 0, line_count, 0};
    const Rows rows = load(log, line_count);
    debug_fp = std::fopen("/dev/null", "w"); // every short cut leaves out debug lines
    debug_on = 1;
    debug_level = 4;
    EXPECT_EQ(load(log, line_count), rows) << log;
    close_debug_log();
}
