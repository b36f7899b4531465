#include "tools/parse/log_loader.h"
#include "base/logs.h"
#include "tests/properties/properties.h"
#include "tools/config/field_layout.h"
#include "tools/config/replay_period.h"
#include "tools/config/replay_settings.h"
#include "tools/load/input_files.h"
#include "tools/load/load_phase.h"
#include "tools/load/log_pieces.h"
#include "tools/load/noted_pieces.h"
#include "tools/load/request_table.h"
#include "tools/load/tallied_lines.h"
#include "tools/parse/cookie_values.h"
#include "tools/parse/own_texts.h"
#include "tools/parse/request_fields.h"
#include "tools/parse/url_key.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

namespace {

using Rows = std::vector<std::string>;

// By log type, in its default layout and with a response time; any text for '~', cookies for '@'.
constexpr const char* line_shapes[] = {
    "10.0.0.~7 - - [1~/Mar/2026:1~:00:59 ~+0~000] - \"~GET /~ HTTP/1.1\" ~302 - - - - "
    "\"@\" \"@\" h~ ~/x ~3",
    "10.0.0.7~ 2026-03-1~ 1~:00:59 ~GET /~ ~- HTTP/1.1 ~200 - - - "
    "@ @ h~ ~/x ~3",
    "10.0.0.7~ 2026-03-1~ 1~:00:59 ~GET /~ /~?~ ~200 - - - id=~;akaau=~ ~akaau=~ h~ ~/x - ~3"};

// So that many requests wait for the sessions of others, in either header.
constexpr const char* cookie_headers[] = {
    "-",     "id=~;akaau=~", "akaau=k~",       "akaau=k",    "akaau=k2",
    "~id=~", "id=s;akaau=k", "akaau=k2;id=s2", "id=;akaau=k"};

std::string random_line(Choices& choices) {
    std::string line = line_shapes[static_cast<size_t>(al_type)];
    for (size_t at = 0; (at = line.find('@')) != std::string::npos;) {
        line.replace(at, 1, choices.of(cookie_headers));
    }
    for (size_t at = 0; (at = line.find('~', at)) != std::string::npos;) {
        const std::string text = choices.one_in(4) ? choices.text("aZ09=?#;/. \\\"\t[]-", 70) : "";
        line.replace(at, 1, choices.one_in(3) ? text : text.substr(0, 1));
    }
    if (choices.one_in(4)) {
        choices.edit(line, std::string_view("\" \t-09a\0\xff\r", 10));
    }
    return line + "\n";
}

// An access log of the run.
struct Log {
    std::string bytes;
    uint64_t line_budget;
    int instance;
};

Log random_log(Choices& choices, int instance) {
    Log log = {"", 0, instance};
    for (size_t count = 1 + choices.below(30); count > 0 && choices.any_left(); --count) {
        log.bytes += random_line(choices);
        if (choices.one_in(60)) { // longer than a line may be, so that it comes in pieces
            log.bytes.insert(log.bytes.size() - 1, 102'399 + choices.below(3), 'x');
        }
    }
    if (choices.one_in(3)) {
        log.bytes += random_line(choices);
        log.bytes.resize(log.bytes.size() - 1 - choices.below(3));
    }
    if (choices.one_in(3) || log.bytes.find('\n') == std::string::npos) {
        log.line_budget = 1 + choices.below(40);
    }
    return log;
}

std::string text_or_none(const char* text) {
    return text == nullptr ? "none" : text;
}

// The request table, with the texts that its ids stand for, and the counters.
Rows describe_loaded() {
    Rows rows;
    for (uint32_t i = 0; i < request_table.rows.size(); ++i) {
        const RequestRow& row = request_table.rows[i];
        const OwnTexts own = read_own_texts(row.own_texts);
        rows.push_back(std::to_string(row.time_stamp) + " " +
                       std::string(request_table.texts.sessions.text(row.session)) + " " +
                       std::string(request_table.texts.urls.text(row.url)) + " " +
                       std::to_string(row.is_redirect) + " " + text_or_none(own.location) + " " +
                       text_or_none(own.full_url) + " " + text_or_none(own.method) + " " +
                       std::to_string(own.has_secondary_cookie));
    }
    EXPECT_EQ(g_valid_request, rows.size());
    EXPECT_EQ(g_total_req, g_valid_request + g_time_filtered_req + g_total_bad_req);
    rows.push_back(std::to_string(g_time_filtered_req) +
                   " filtered, bad: " + std::to_string(g_total_bad_req));
    return rows;
}

std::string describe(LineKind kind, SessionNote session) {
    return std::to_string(static_cast<int>(kind)) + "." +
           std::to_string(static_cast<int>(session)) + " ";
}

// Takes the offset of the next line of a log, which starts at 0.
size_t next_line(const std::string& bytes, size_t& offset) {
    const size_t line_feed = std::min(bytes.find('\n', offset), bytes.size() - 1);
    return std::exchange(offset, std::min(line_feed + 1, offset + log_line_size - 1));
}

// A row for each log: what became of its lines.
Rows describe_notes(const std::vector<NotedPiece>& pieces, const std::vector<Log>& logs) {
    Rows rows(static_cast<size_t>(num_al_files));
    std::vector<size_t> offsets(rows.size());
    uint64_t accepted = 0;
    for (const auto& [piece, lines, has_line_pieces] : pieces) {
        const auto log = static_cast<size_t>(piece.file);
        for (const auto& [kind, session, offset] : lines) {
            rows[log] += describe(kind, session);
            accepted += kind == LineKind::accepted;
            EXPECT_EQ(piece.range.begin + offset, next_line(logs[log].bytes, offsets[log]));
        }
    }
    EXPECT_EQ(accepted, g_valid_request);
    return rows;
}

void expect_tally_of_notes(const LineTally& tally, const std::vector<NotedPiece>& pieces) {
    LineTally expected;
    for (const NotedPiece& piece : pieces) {
        for (const LineNote& note : piece.lines) {
            ++expected.lines_of(note.kind);
        }
    }
    for (size_t kind = 0; kind < line_kind_count; ++kind) {
        EXPECT_EQ(tally.lines_of(static_cast<LineKind>(kind)),
                  expected.lines_of(static_cast<LineKind>(kind)))
            << kind;
    }
}

// Lines by second and class of status, and response times.
std::string describe(const LineTally& tally) {
    std::string text;
    const auto& steps = tally.over_time().steps();
    for (const auto& [second, counts] : std::map(steps.begin(), steps.end())) {
        text += std::to_string(second) + ":";
        for (const uint32_t count : counts) {
            text += " " + std::to_string(count);
        }
        text += "; ";
    }
    for (const uint64_t count : tally.response_times().counts()) {
        text += " " + std::to_string(count);
    }
    return text;
}

Rows load(const std::vector<Log>& logs) {
    std::vector<NotedPiece> notes;
    noted_pieces = &notes;
    LineTally tally;
    line_tally = &tally;
    std::vector<FILE*> files;
    std::vector<std::string> names;
    for (const Log& log : logs) {
        files.push_back(file_of(log.bytes));
        names.push_back("/proc/self/fd/" + std::to_string(fileno(files.back())));
    }
    for (size_t i = 0; i < logs.size(); ++i) {
        seq_file_path[i] = {names[i].data(), 0, 0, logs[i].line_budget, logs[i].instance};
    }
    num_al_files = static_cast<int>(logs.size());
    g_num_instance = logs.back().instance + 1;
    g_valid_request = g_total_req = g_time_filtered_req = g_total_bad_req = 0;
    process_url_files();
    std::free(std::exchange(tc, nullptr));
    for (FILE* file : files) {
        std::fclose(file);
    }
    noted_pieces = nullptr;
    line_tally = nullptr;
    expect_tally_of_notes(tally, notes);
    Rows rows = describe_notes(notes, logs);
    rows.push_back(describe(tally));
    const Rows loaded = describe_loaded();
    rows.insert(rows.end(), loaded.begin(), loaded.end());
    return rows;
}

std::atomic<uint64_t> observed_requests; // lines that were no comment
std::atomic<uint64_t> accepted_requests;
std::map<std::string, std::string> observed_notes; // by log
std::mutex observed_notes_mutex;

void count_line(const ObservedLogLine& line) {
    const LineKind kind = line.outcome.kind;
    EXPECT_EQ(line.request != nullptr, kind == LineKind::accepted);
    EXPECT_GE(line.line_num, 1);
    observed_requests += kind != LineKind::empty && kind != LineKind::comment;
    accepted_requests += kind == LineKind::accepted;
    const std::lock_guard lock(observed_notes_mutex);
    observed_notes[line.file_name] += describe(kind, line.session);
}

// Line by line in the order of the logs, as the debug log shows it and an observer is told.
Rows load_in_order(const std::vector<Log>& logs) {
    log_piece_size = uint64_t{4} << 20;
    LineReader::block_size = size_t{256} << 10;
    LineReader::chunk_size = size_t{8} << 10;
    debug_fp = std::fopen("/dev/null", "w");
    debug_on = 1;
    debug_level = 4;
    observed_requests = accepted_requests = 0;
    observed_notes.clear();
    log_line_observer = count_line;
    const Rows rows = load(logs);
    log_line_observer = nullptr;
    close_debug_log();
    EXPECT_EQ(observed_requests, g_total_req);
    EXPECT_EQ(accepted_requests, g_valid_request);
    Rows noted(rows.begin(), rows.begin() + num_al_files);
    std::erase(noted, "");
    Rows observed;
    for (const auto& [name, notes] : observed_notes) {
        observed.push_back(notes);
    }
    std::sort(noted.begin(), noted.end());
    std::sort(observed.begin(), observed.end());
    EXPECT_EQ(noted, observed);
    return rows;
}

void expect_plain_status_code(Choices& choices) {
    std::string text = choices.text("0129 -x", 4);
    RequestFields request;
    read_common_field({"test", "log", 1}, AL_STATUS_CODE, {text.data(), text.size()}, request);
    EXPECT_EQ(request.response_code, std::atoi(text.c_str())) << text;
}

void expect_plain_cookie_search(Choices& choices) {
    std::string header = choices.text("-a=;", choices.one_in(2) ? 3 : 90);
    const std::string session = choices.one_in(4) ? header.substr(header.size() / 3, 40)
                                                  : choices.text("-a", choices.one_in(2) ? 2 : 20);
    const std::string secondary = choices.text("=a", choices.one_in(2) ? 4 : 9);
    const CookieNames names(session, secondary);
    header.reserve(header.size() + room_behind_line);
    const LineText text = {header.data(), header.size()};
    const CookiePlaces found = names.find(text);
    const CookiePlaces plainly_found = names.find_plainly(text);
    EXPECT_EQ(found.session, plainly_found.session) << header << " " << session;
    EXPECT_EQ(found.secondary, plainly_found.secondary) << header << " " << secondary;
    const size_t at = header.find(session);
    EXPECT_EQ(found.session, at == std::string::npos ? nullptr : header.data() + at);
}

void expect_plain_cookie_value(Choices& choices) {
    const std::string letters = choices.one_in(2) ? "ab;" : "ab";
    const std::string text = choices.text(letters, choices.one_in(2) ? 40 : 90);
    const std::vector<char> exact(text.begin(), text.end()); // nothing behind it may be read
    CookieValue value;
    CookieValue plain_value;
    const size_t size = copy_cookie_value(exact.data(), exact.size(), value);
    EXPECT_EQ(size, copy_cookie_value_plainly(exact.data(), exact.size(), plain_value)) << text;
    EXPECT_EQ(std::string(value, size), text.substr(0, size));
    EXPECT_EQ(std::string(plain_value, size), text.substr(0, size));
}

std::string in_case(std::string text, int (*change)(int)) {
    for (char& c : text) {
        c = static_cast<char>(change(static_cast<unsigned char>(c)));
    }
    return text;
}

// As a record, a key, and what is made of the key again.
void expect_plain_method(Choices& choices) {
    std::string method = choices.text("aAzZ@[`{\xe1\xff-", choices.one_in(2) ? 4 : 20);
    std::string url = "/";
    RequestFields fields;
    fields.method = {method.data(), method.size()};
    fields.url = {url.data(), url.size()};
    alInfo record = {};
    std::memset(record.method, 'x', sizeof record.method - 1);
    store_request(fields, record);
    method.resize(max_method_length);
    EXPECT_EQ(std::string(record.method, max_method_length), method);
    EXPECT_EQ(has_standard_spelling(record), in_case(method, std::toupper) == method) << method;
    const UrlParts parts = {record.method, "host", url};
    std::string key(url_key_size(parts), '\0');
    const uint64_t hash = write_url_key(parts, key.data());
    EXPECT_EQ(hash, hash_url_key(key));
    EXPECT_EQ(key, in_case(method, std::tolower) + "host" + '\0' + url);
    char standard[max_method_length + 1];
    standard_method(key, standard);
    EXPECT_EQ(std::string(standard, max_method_length), in_case(method, std::toupper));
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
    expect_plain_cookie_value(choices);
    expect_plain_method(choices);
    std::vector<Log> logs;
    for (size_t count = 1 + choices.below(4); count > 0; --count) {
        const int instance = logs.empty() ? 0 : logs.back().instance;
        logs.push_back(random_log(choices, instance + (logs.empty() ? 0 : choices.one_in(2))));
    }
    g_num_thread = static_cast<short>(1 + choices.below(4));
    const Rows rows = load_in_order(logs);
    size_t bytes = 0;
    for (const Log& log : logs) {
        bytes += log.bytes.size();
    }
    const size_t least = 1 + bytes / 5000; // each piece opens its file
    log_piece_size = choices.of(std::array{least, least + choices.below(300), size_t{100'000}});
    LineReader::block_size = 1 + choices.below(2 * log_piece_size);
    LineReader::chunk_size = 1 + choices.below(1000);
    EXPECT_EQ(load(logs), rows) << "in pieces of " << log_piece_size << " on " << g_num_thread;
}
