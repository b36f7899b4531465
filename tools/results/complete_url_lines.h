#pragma once

#include "base/line_text.h"

#include <cstdint>
#include <optional>
#include <string_view>

// The lines of complete_url.list: one for each counter, one with the names of the columns, and a
// row for each unique URL.

// The counters in the order of their lines.
enum CompleteUrlCounter {
    COUNTER_TOTAL,
    COUNTER_REDIRECTED,
    COUNTER_TIME_FILTERED,
    COUNTER_BAD,
    COUNTER_NON_SESSION,
    COUNTER_NON_SESSION_WITH_SECONDARY_COOKIE,
    complete_url_counter_count
};

// What their lines begin with.
constexpr std::string_view complete_url_counter_keys[complete_url_counter_count] = {
    "#TOTAL_URLS=", "#REDIRECTED_URLS=",  "#TIME_FILTERED_URLS=",
    "#BAD_URLS=",   "#NON_SESSION_URLS=", "#NON_SESSION_URLS_WITH_SECONDARY_COOKIE=",
};

constexpr std::string_view complete_url_column_line = "#Method|Host|Count|Query_Offset|Url";

// Whether a line is a counter's or the column names', not a row.
inline bool is_head_line(LineText line) {
    return line.size != 0 && line.text[0] == '#';
}

struct CounterValue {
    CompleteUrlCounter counter;
    uint64_t value;
};

// Reads a counter's line; nothing when it is none.
std::optional<CounterValue> read_counter_line(LineText line);

// A row; its texts are pieces of the line.
struct CompleteUrlRow {
    const char* method;
    const char* host;
    uint64_t count;
    int64_t query_url_offset;
    std::string_view url; // may hold separators
};

// Reads a row, into whose line it writes; nothing when it is malformed.
std::optional<CompleteUrlRow> read_row_line(LineText line);
