#include "companions/report/export/url_list_rows.h"

#include "base/failure.h"
#include "base/result_names.h"
#include "tools/config/replay_settings.h"
#include "tools/results/url_list.h"

#include <array>
#include <charconv>

namespace {

constexpr size_t column_count = 10;

using Columns = std::array<std::string_view, column_count>;

std::optional<Columns> split(std::string_view line) {
    Columns columns;
    for (size_t i = 0; i < column_count; ++i) {
        const size_t end = line.find('|');
        if ((end == std::string_view::npos) != (i == column_count - 1)) {
            return std::nullopt; // too few columns, or too many
        }
        columns[i] = line.substr(0, end);
        line.remove_prefix(end == std::string_view::npos ? line.size() : end + 1);
    }
    return columns;
}

template <typename Number> bool read_number(std::string_view text, Number& number) {
    const char* const text_end = text.data() + text.size();
    const auto [end, error] = std::from_chars(text.data(), text_end, number);
    return error == std::errc() && end == text_end;
}

std::string_view text_or_none(std::string_view text) {
    return text == na_string ? std::string_view() : text;
}

} // namespace

std::optional<UrlListLine> read_url_list_line(std::string_view line) {
    const std::optional<Columns> columns = split(line);
    if (!columns) {
        return std::nullopt;
    }
    const auto& [filter, type, method, url, count, transaction, host, offset, body, pattern] =
        *columns;
    UrlListLine row = {.is_filtered = filter == "YES",
                       .method = method,
                       .url = url,
                       .count = 0,
                       .transaction = text_or_none(transaction),
                       .host = text_or_none(host),
                       .query_file_offset = -1,
                       .body_file = text_or_none(body)};
    const bool is_read =
        read_number(count, row.count) && read_number(offset, row.query_file_offset);
    return is_read ? std::optional(row) : std::nullopt;
}

UrlListRows::UrlListRows(const OwnDirectory& config_dir)
    : path_(config_dir.path() + url_list_name),
      file_(config_dir.open_file(url_list_name), path_, LineReader::unlimited) {
    if (!file_.is_open()) {
        fail("%s cannot be read", path_.c_str());
    }
    const LineText summary = read_head_line();
    const std::optional<uint64_t> count = row_count_in_summary({summary.text, summary.size});
    if (!count) {
        fail_incomplete();
    }
    rows_left_ = *count;
    read_head_line(); // the names of the columns
}

LineText UrlListRows::read_head_line() {
    LineText line;
    if (!file_.next(line)) {
        fail_incomplete();
    }
    return line;
}

std::optional<std::string_view> UrlListRows::next() {
    LineText line;
    if (file_.next(line) != (rows_left_ != 0)) {
        fail_incomplete();
    }
    if (rows_left_ == 0) {
        return std::nullopt;
    }
    --rows_left_;
    return std::string_view(line.text, line.size);
}

void UrlListRows::fail_incomplete() const {
    fail("%s is not complete", path_.c_str());
}
