#include "checker/complete_list.h"

#include "base/line_reader.h"
#include "checker/file_contents.h"

namespace {

bool add_row(LineText line, CompleteList& list) {
    const std::optional<CompleteUrlRow> row = read_row_line(line);
    if (!row) {
        return false;
    }
    list.counted += row->count;
    list.query_line_count += row->query_url_offset >= 0 ? row->count : 0;
    if (!list.hosts.contains(row->host)) {
        list.hosts.emplace(row->host);
    }
    return true;
}

// Returns whether the line is one of the counters.
bool add_counter(LineText line, CompleteList& list) {
    const std::optional<CounterValue> read = read_counter_line(line);
    if (read) {
        list.counters[read->counter] = read->value;
    }
    return read.has_value();
}

} // namespace

bool CompleteList::accounted(bool non_session_counts) const {
    const uint64_t dropped = counters[COUNTER_REDIRECTED] + counters[COUNTER_TIME_FILTERED] +
                             counters[COUNTER_BAD] +
                             (non_session_counts ? 0 : counters[COUNTER_NON_SESSION]);
    return counted + dropped == counters[COUNTER_TOTAL];
}

std::optional<CompleteList> read_complete_list(const FileDescriptor& file) {
    CompleteList list;
    bool is_well_formed = true;
    int counter_lines = 0;
    const bool was_read = read_lines(file, LineReader::unlimited, [&](LineText line) {
        if (is_head_line(line)) {
            counter_lines += add_counter(line, list);
        } else {
            is_well_formed = add_row(line, list) && is_well_formed;
        }
    });
    if (!was_read || !is_well_formed || counter_lines != complete_url_counter_count) {
        return std::nullopt;
    }
    return list;
}
