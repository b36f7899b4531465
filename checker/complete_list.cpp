#include "checker/complete_list.h"

#include "base/line_reader.h"
#include "checker/file_state.h"

#include <charconv>
#include <string_view>

namespace {

// Cuts the text up to the next separator off a row.
bool next_column(std::string_view& row, std::string_view& column) {
    const size_t end = row.find('|');
    if (end == std::string_view::npos) {
        return false;
    }
    column = row.substr(0, end);
    row.remove_prefix(end + 1);
    return true;
}

template <typename Number> bool read_number(std::string_view text, Number& number) {
    const char* end = text.data() + text.size();
    return std::from_chars(text.data(), end, number).ptr == end && !text.empty();
}

bool add_row(std::string_view row, CompleteList& list) {
    std::string_view method, host, count_text, offset_text;
    uint64_t count = 0;
    int64_t offset = -1;
    const bool is_row = next_column(row, method) && next_column(row, host) &&
                        next_column(row, count_text) && next_column(row, offset_text) &&
                        read_number(count_text, count) && read_number(offset_text, offset);
    if (!is_row) {
        return false;
    }
    list.counted += count;
    list.query_line_count += offset >= 0 ? count : 0;
    if (!list.hosts.contains(std::string(host))) {
        list.hosts.emplace(host);
    }
    return true;
}

struct CounterKey {
    std::string_view key;
    uint64_t CompleteList::*counter;
};

constexpr CounterKey counter_keys[] = {
    {"#TOTAL_URLS=", &CompleteList::total},
    {"#REDIRECTED_URLS=", &CompleteList::redirected},
    {"#TIME_FILTERED_URLS=", &CompleteList::time_filtered},
    {"#BAD_URLS=", &CompleteList::bad},
    {"#NON_SESSION_URLS=", &CompleteList::non_session},
};

// Returns whether the line is one of the counters.
bool read_counter(std::string_view line, CompleteList& list) {
    for (const CounterKey& counter_key : counter_keys) {
        if (line.starts_with(counter_key.key)) {
            return read_number(line.substr(counter_key.key.size()), list.*counter_key.counter);
        }
    }
    return false;
}

} // namespace

bool CompleteList::accounted(bool non_session_counts) const {
    const uint64_t dropped =
        redirected + time_filtered + bad + (non_session_counts ? 0 : non_session);
    return counted + dropped == total;
}

std::optional<CompleteList> read_complete_list(const FileDescriptor& file) {
    CompleteList list;
    bool is_well_formed = true;
    size_t counters = 0;
    const bool was_read = read_lines(file, LineReader::unlimited, [&](LineText line) {
        const std::string_view text = {line.text, line.size};
        if (text.starts_with('#')) {
            counters += read_counter(text, list);
        } else {
            is_well_formed = add_row(text, list) && is_well_formed;
        }
    });
    if (!was_read || !is_well_formed || counters != std::size(counter_keys)) {
        return std::nullopt;
    }
    return list;
}
