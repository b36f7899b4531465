#include "companions/doctor/init/w3c_fields.h"

#include "base/line_reader.h"
#include "companions/doctor/init/log_sample.h"

#include <algorithm>
#include <optional>
#include <strings.h>

namespace {

constexpr std::string_view blanks = " \t\r";

struct W3cName {
    std::string_view name;
    FieldKind kind;
};

constexpr W3cName w3c_names[] = {
    {"date", AL_DATE},
    {"time", AL_TIME},
    {"cs-method", AL_METHOD},
    {"cs-uri-stem", AL_URL},
    {"cs-uri-query", AL_QUERY_STRING},
    {"cs-uri", AL_URL_QUERY},
    {"sc-status", AL_STATUS_CODE},
    {"c-ip", AL_CLIENT_IP},
    {"cs(Cookie)", AL_REQUEST_COOKIE},
    {"sc(Set-Cookie)", AL_SET_COOKIE},
    {"cs-host", AL_HOST_HEADER},
    {"cs(Host)", AL_HOST_HEADER},
    {"sc(Location)", AL_LOCATION},
    {"time-taken", AL_RESPONSE_TIME},
};

bool is_same(std::string_view a, std::string_view b) {
    return a.size() == b.size() && strncasecmp(a.data(), b.data(), a.size()) == 0;
}

std::optional<FieldKind> kind_of(std::string_view name) {
    for (const W3cName& row : w3c_names) {
        if (is_same(row.name, name)) {
            return row.kind;
        }
    }
    return std::nullopt;
}

// Takes the first word off a text; empty at its end.
std::string_view take_word(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    const std::string_view word = text.substr(0, text.find_first_of(blanks));
    text.remove_prefix(word.size());
    return word;
}

// A URL without a field for its query is all that there is of it; of two ways to give it, one is
// enough.
void settle_url(LogLayout& layout) {
    const bool has_both = layout.has(AL_URL) && layout.has(AL_QUERY_STRING);
    if (!has_both && !layout.has(AL_URL_QUERY)) {
        layout.positions[AL_URL_QUERY] = layout.positions[AL_URL];
    }
    if (has_both) {
        layout.positions[AL_URL_QUERY] = 0;
    } else {
        layout.positions[AL_URL] = 0;
        layout.positions[AL_QUERY_STRING] = 0;
    }
}

bool begins_with(std::string_view line, std::string_view word) {
    return is_same(line.substr(0, word.size()), word);
}

// Servers repeat the line when they start again.
bool is_new_part(std::string_view names, const W3cLog& log) {
    constexpr size_t max_parts = 1000;
    return !names.empty() && log.parts.size() < max_parts &&
           (log.parts.empty() || log.parts.back().names != names);
}

void read_comment(std::string_view line, int64_t line_num, W3cLog& log) {
    const std::string_view names = w3c_field_names(line);
    if (is_new_part(names, log)) {
        log.parts.push_back({line_num, std::string(names), 0});
    } else if (begins_with(line, "#Software:")) {
        log.is_of_microsoft = line.find("Microsoft") != std::string_view::npos;
    }
}

} // namespace

std::string_view w3c_field_names(std::string_view line) {
    constexpr std::string_view directive = "#Fields:";
    if (!begins_with(line, directive)) {
        return {};
    }
    line.remove_prefix(directive.size());
    line.remove_prefix(std::min(line.find_first_not_of(blanks), line.size()));
    return line.substr(0, line.find_last_not_of(blanks) + 1);
}

LogLayout w3c_layout(std::string_view names, bool counts_milliseconds) {
    LogLayout layout = {"the log's own #Fields: line", counts_milliseconds ? "IIS" : "WEBLOGIC"};
    layout.logs_when_done = true;
    short position = 0;
    for (std::string_view word = take_word(names); !word.empty() && position < max_al_fields;
         word = take_word(names)) {
        ++position;
        const std::optional<FieldKind> kind = kind_of(word);
        if (kind && !layout.has(*kind)) {
            layout.positions[*kind] = position;
        }
    }
    if (counts_milliseconds) {
        layout.positions[AL_RESPONSE_TIME] = 0;
    }
    settle_url(layout);
    return layout;
}

W3cLog read_w3c_log(int descriptor, const std::string& path) {
    LineReader reader(descriptor, log_line_size);
    LineText line;
    W3cLog log;
    int64_t line_num = 0;
    while (reader.next(line)) {
        ++line_num;
        if (line.size != 0 && line.text[0] == '#') {
            read_comment({line.text, line.size}, line_num, log);
        } else if (line.size > 1 && !log.parts.empty()) {
            ++log.parts.back().request_count;
        }
    }
    reader.require_whole(path.c_str());
    return log;
}

LogLayout shared_layout(const std::vector<LogLayout>& layouts) {
    LogLayout shared = layouts.front();
    for (const LogLayout& layout : layouts) {
        for (size_t kind = 0; kind < shared.positions.size(); ++kind) {
            if (shared.positions[kind] != layout.positions[kind]) {
                shared.positions[kind] = 0;
            }
        }
    }
    return shared;
}
