#include "companions/doctor/rejected/rejected_output.h"

#include "companions/common/shown_text.h"
#include "companions/common/style.h"
#include "companions/common/text_table.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_settings.h"
#include "tools/load/request_table.h"
#include "tools/urls/request_selection.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <fmt/format.h>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

namespace {

struct Total {
    const char* name; // as the run's summary has it
    const char* key;  // in JSON
    uint64_t value;
};

// The counters of the run's summary that loading and the choice of requests set.
std::array<Total, 5> totals() {
    const uint64_t non_session = ignore_non_session_urls != 0 ? g_total_non_session_req : 0;
    return {{{"Total", "total", g_total_req},
             {"Redirected", "redirected", g_redirected_req},
             {"TimeBasedFiltered", "time_based_filtered", g_time_filtered_req},
             {"BadRequest", "bad_request", g_total_bad_req},
             {"NonSessionRequest", "non_session_request", non_session}}};
}

uint64_t counted_requests(const ExplainedLogs& logs) {
    uint64_t counted = 0;
    for (const RejectionCounts& counts : logs.counts) {
        counted += counts[static_cast<size_t>(Rejection::none)];
    }
    return counted;
}

// Calls `use` with each log, reason and count that is not 0, but for lines that count.
template <typename Use> void for_each_count(const ExplainedLogs& logs, const Use& use) {
    for (size_t log = 0; log < logs.counts.size(); ++log) {
        for (size_t why = 1; why < rejection_count; ++why) {
            if (logs.counts[log][why] != 0) {
                use(seq_file_path[log].input_file, text_of(static_cast<Rejection>(why)),
                    logs.counts[log][why]);
            }
        }
    }
}

ChosenLines chosen_lines(uint64_t limit, size_t text_width) {
    constexpr size_t bytes_a_character = 4; // at most
    const size_t most = std::numeric_limits<size_t>::max() / bytes_a_character - 1;
    return {limit, (std::min(text_width, most) + 1) * bytes_a_character};
}

using Names = std::vector<std::string>;

// Of the logs by index, made fit to be shown and then formed by `form`.
template <typename Form> Names names_of_logs(const Form& form) {
    Names names;
    for (int i = 0; i < num_al_files; ++i) {
        names.push_back(form(shown_text(seq_file_path[i].input_file)));
    }
    return names;
}

std::string text_of_line(const RejectedLine& line, size_t width) {
    return line.text.missing != nullptr ? line.text.missing : shown_text(line.text.text, width);
}

// ---------------------------------------------------------------------------- for people

struct ColumnWidths {
    size_t log = std::strlen("File");
    size_t line = std::strlen("Line");
    size_t reason = std::strlen("Reason");
};

ColumnWidths find_widths(const ExplainedLogs& logs) {
    ColumnWidths widths;
    for_each_count(logs, [&](const char* log, const RejectionText& why, uint64_t) {
        widths.log = std::max(widths.log, width_of(shown_text(log)));
        widths.reason = std::max(widths.reason, std::strlen(why.name));
    });
    for (const ExplainedPiece& piece : logs.pieces) {
        const auto last = static_cast<uint64_t>(piece.lines_before) + piece.line_count;
        widths.line = std::max(widths.line, fmt::formatted_size("{}", last));
    }
    return widths;
}

// The text takes what the terminal leaves to it, but is never cut to less than this.
size_t table_text_width(FILE* stream, const ColumnWidths& widths, size_t asked) {
    constexpr size_t least = 40;
    const size_t others = widths.log + widths.line + widths.reason + 6;
    const size_t terminal = terminal_width(stream, any_width);
    return terminal == any_width
               ? asked
               : std::min(asked, std::max(least, terminal - std::min(terminal, others)));
}

std::string padded(std::string text, size_t width) {
    text.append(width - std::min(width, width_of(text)), ' ');
    return text;
}

// By Rejection.
std::vector<std::string> padded_reasons(size_t width) {
    std::vector<std::string> reasons;
    for (size_t why = 0; why < rejection_count; ++why) {
        reasons.push_back(padded(text_of(static_cast<Rejection>(why)).name, width));
    }
    return reasons;
}

void write_line_table(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output) {
    constexpr const char* gap = "  ";
    const ColumnWidths widths = find_widths(logs);
    const size_t text_width = table_text_width(stream, widths, output.text_width);
    const Names names =
        names_of_logs([&](const std::string& name) { return padded(name, widths.log); });
    const std::vector<std::string> reasons = padded_reasons(widths.reason);
    const std::string headings = padded("File", widths.log) + gap +
                                 std::string(widths.line - std::strlen("Line"), ' ') + "Line" +
                                 gap + padded("Reason", widths.reason) + gap + "Text";
    write_output(stream, Style(stream).heading(headings) + "\n");
    const auto add_line = [&](std::string& text, const RejectedLine& line) {
        const fmt::format_int number(line.line_num);
        text.append(names[static_cast<size_t>(line.file)]).append(gap);
        text.append(widths.line - number.size(), ' ').append(number.data(), number.size());
        text.append(gap).append(reasons[static_cast<size_t>(line.why)]).append(gap);
        text.append(text_of_line(line, text_width)).append(1, '\n');
    };
    write_rejected_lines(stream, logs, chosen_lines(output.limit, text_width), add_line);
}

void write_count_table(FILE* stream, const ExplainedLogs& logs) {
    TextTable table(
        {{"File"}, {"Lines", Alignment::right}, {"Reason"}, {"In counter"}, {"Meaning"}});
    for_each_count(logs, [&](const char* log, const RejectionText& why, uint64_t count) {
        table.add_row({shown_text(log), std::to_string(count), why.name, why.counter, why.meaning});
    });
    write_output(stream, table.text() + "\n");
}

void write_totals(FILE* stream, const ExplainedLogs& logs) {
    std::string text = fmt::format("{} requests count of", counted_requests(logs));
    const char* separator = " ";
    for (const Total& total : totals()) {
        text += fmt::format("{}{}={}", separator, total.name, total.value);
        separator = ";";
    }
    write_output(stream, text + "\n");
}

void write_for_people(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output) {
    const uint64_t rejected = logs.rejected_lines();
    if (rejected != 0) {
        write_count_table(stream, logs);
        write_line_table(stream, logs, output);
        const std::string more = fmt::format(
            "{} of {} lines that do not count; --limit 0 lists all\n", output.limit, rejected);
        write_output(stream, (output.limit < rejected ? more : "") + "\n");
    }
    write_totals(stream, logs);
}

// --------------------------------------------------------------------------- for programs

void write_tsv(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output) {
    write_output(stream, "file\tline\treason\ttext\n");
    const Names names = names_of_logs([](const std::string& name) { return name + '\t'; });
    const auto add_line = [&](std::string& text, const RejectedLine& line) {
        const fmt::format_int number(line.line_num);
        text.append(names[static_cast<size_t>(line.file)]).append(number.data(), number.size());
        text.append(1, '\t').append(text_of(line.why).name).append(1, '\t');
        text.append(text_of_line(line, output.text_width)).append(1, '\n');
    };
    write_rejected_lines(stream, logs, chosen_lines(output.limit, output.text_width), add_line);
    std::string text;
    for_each_count(logs, [&](const char* log, const RejectionText& why, uint64_t count) {
        text +=
            fmt::format("#count\t{}\t{}\t{}\t{}\n", shown_text(log), why.name, why.counter, count);
    });
    text += fmt::format("#total\tCounted\t{}\n", counted_requests(logs));
    for (const Total& total : totals()) {
        text += fmt::format("#total\t{}\t{}\n", total.name, total.value);
    }
    write_output(stream, text);
}

// Adds a JSON string. The text is one that shown_text has made fit, without control characters.
void add_quoted(std::string& text, std::string_view shown) {
    const size_t begin = text.size();
    text.resize(begin + 2 * shown.size() + 2);
    char* end = text.data() + begin;
    *end++ = '"';
    for (const char character : shown) {
        if (character == '"' || character == '\\') {
            *end++ = '\\';
        }
        *end++ = character;
    }
    *end++ = '"';
    text.resize(static_cast<size_t>(end - text.data()));
}

std::string quoted(std::string_view shown) {
    std::string text;
    add_quoted(text, shown);
    return text;
}

void write_json(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output) {
    const Names names = names_of_logs([](const std::string& name) { return quoted(name); });
    const auto add_line = [&](std::string& text, const RejectedLine& line) {
        const fmt::format_int number(line.line_num);
        text.append(R"({"record":"line","file":)").append(names[static_cast<size_t>(line.file)]);
        text.append(R"(,"line":)").append(number.data(), number.size());
        text.append(R"(,"reason":")").append(text_of(line.why).name).append(R"(","text":)");
        add_quoted(text, text_of_line(line, output.text_width));
        text.append("}\n");
    };
    write_rejected_lines(stream, logs, chosen_lines(output.limit, output.text_width), add_line);
    std::string text;
    for_each_count(logs, [&](const char* log, const RejectionText& why, uint64_t count) {
        text +=
            fmt::format(R"({{"record":"count","file":{},"reason":"{}","counter":"{}","count":{}}})"
                        "\n",
                        quoted(shown_text(log)), why.name, why.counter, count);
    });
    text += fmt::format(R"({{"record":"totals","counted":{})", counted_requests(logs));
    for (const Total& total : totals()) {
        text += fmt::format(R"(,"{}":{})", total.key, total.value);
    }
    write_output(stream, text + "}\n");
}

} // namespace

void write_rejected(FILE* stream, const ExplainedLogs& logs, const RejectedOutput& output) {
    switch (output.form) {
    case RejectedOutput::Form::table:
        return write_for_people(stream, logs, output);
    case RejectedOutput::Form::tsv:
        return write_tsv(stream, logs, output);
    case RejectedOutput::Form::json:
        return write_json(stream, logs, output);
    }
}
