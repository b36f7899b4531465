#include "tools/parse/log_loader.h"

#include "base/line_reader.h"
#include "base/logs.h"
#include "tools/config/log_files.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/cookie_values.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/secondary_cookie_trace.h"

#include <string_view>

namespace {

constexpr const char* fname = "load_url_info";
constexpr size_t line_size = 102400; // of the line buffer whose limit lines are held to

enum class AfterRequest { go_on, stop_loading };

// What identifying a request's session needs to know of the file, the thread and the settings.
struct LoadingFile {
    ParsingThread& thread;
    RecordTable& al_info_array_t;
    UnaccountedRequests& unaccounted_url_t;
    const char* file_name;
    std::string_view session_cookie = cookie_name;
    std::string_view other_cookie = secondary_cookie;
};

LineParser* parser_of_log_type() {
    switch (al_type) {
    case AL_TYPE_APACHE:
        return parse_al_line;
    case AL_TYPE_IIS:
        return parse_al_line_iis;
    default:
        return parse_al_line_weblogic;
    }
}

// The value keeps the character after the name, the equals sign: it stays so in every value, so
// that they compare equal to one another.
bool get_secondary_cookie(const LoadingFile& file, const char* header, alInfo& record) {
    return secondary_cookie_enable != 0 &&
           get_cookie_value(header, file.other_cookie, file.other_cookie.size(), record.akaau_id);
}

bool get_session_cookie(const LoadingFile& file, const char* header, alInfo& record) {
    return get_cookie_value(header, file.session_cookie, file.session_cookie.size() + 1,
                            record.jsession_id);
}

// Returns whether a session cookie is missing from the header.
bool read_cookie_header(const LoadingFile& file, alInfo& record) {
    DEBUG_LOG(4, fname, "Going to get secondary cookie(akaau) format and jsession id from Cookie");
    if (get_secondary_cookie(file, record.cookies, record)) {
        DEBUG_LOG(4, fname,
                  "secondary cookie(akaau) found in Cookie. al_info_array_t[*seq_no].akaau_id = %s",
                  record.akaau_id);
    }
    if (!get_session_cookie(file, record.cookies, record)) {
        return true;
    }
    DEBUG_LOG(4, fname, "Session Cookie found in Cookie. al_info_array_t[*seq_no].jsession_id = %s",
              record.jsession_id);
    return false;
}

// Returns whether the header sets the session cookie; the requests that waited for it then have it.
bool read_set_cookie_header(LoadingFile& file, alInfo& record) {
    if (get_secondary_cookie(file, record.set_cookies, record)) {
        DEBUG_LOG(4, fname,
                  "akaau cookie found in Set-Cookie. al_info_array_t[*seq_no].akaau_id = %s",
                  record.akaau_id);
    }
    if (!get_session_cookie(file, record.set_cookies, record)) {
        return false;
    }
    DEBUG_LOG(4, fname, "Jsessionid found in Cookie. al_info_array_t[*seq_no].jsession_id = %s",
              record.jsession_id);
    if (record.akaau_id[0] != '\0') {
        trace_matched(record.akaau_id, record.jsession_id,
                      {file.thread.thread_idx, file.file_name, record.line_num});
        update_unaccounted_array(file.thread, file.al_info_array_t.records(), record.akaau_id,
                                 record.jsession_id, file.unaccounted_url_t);
    }
    return true;
}

AfterRequest wait_for_session(LoadingFile& file, const alInfo& record) {
    DEBUG_LOG(3, fname, "Jsession id not found adding request in unaccounted url list.");
    if (file.unaccounted_url_t.is_full()) {
        DEBUG_LOG(1, fname, "Max unaccounted URL limit reached. No new request will be processed.");
        trace_limit_reached(max_unaccounted_requests);
        return AfterRequest::stop_loading;
    }
    file.unaccounted_url_t.add(static_cast<int64_t>(record.seq), record.akaau_id);
    trace_added(record.akaau_id, {file.thread.thread_idx, file.file_name, record.line_num});
    return AfterRequest::go_on;
}

// Set-Cookie is read after Cookie, so what the server set counts for the very request.
AfterRequest identify_session(LoadingFile& file, alInfo& record) {
    bool jid_missing_flag = false;
    if (record.cookies != nullptr) {
        jid_missing_flag = read_cookie_header(file, record);
    }
    if (record.set_cookies != nullptr && read_set_cookie_header(file, record)) {
        jid_missing_flag = false;
    }
    if (jid_missing_flag && record.akaau_id[0] != '\0') {
        return wait_for_session(file, record);
    }
    return AfterRequest::go_on;
}

// They point into the line, which is about to go.
void forget_headers(alInfo& record) {
    record.cookies = nullptr;
    record.set_cookies = nullptr;
}

bool is_request(LineText line) {
    return line.size != 0 && line.text[0] != '#';
}

void remove_carriage_return(LineText& line) {
    if (line.size != 0 && line.text[line.size - 1] == '\r') {
        line.text[--line.size] = '\0';
    }
}

} // namespace

int load_url_info(ParsingThread& thread, RecordTable& al_info_array_t, int seq_file_idx,
                  FILE* al_file_fp, uint64_t* seq_no, UnaccountedRequests& unaccounted_url_t) {
    const InputFileInfo& input = seq_file_path[seq_file_idx];
    LoadingFile file = {.thread = thread,
                        .al_info_array_t = al_info_array_t,
                        .unaccounted_url_t = unaccounted_url_t,
                        .file_name = input.input_file};
    DEBUG_LOG(2, fname, "Method called, access log file = %s", file.file_name);
    LineParser* const parse_line = parser_of_log_type();
    LineReader lines(fileno(al_file_fp), line_size);
    LineText line;
    int64_t line_num = 0;
    while (static_cast<uint64_t>(line_num) < input.num_req && lines.next(line)) {
        ++line_num;
        remove_carriage_return(line);
        if (!is_request(line)) {
            continue;
        }
        ++thread.counters.total_req;
        al_info_array_t.make_room(*seq_no + 1);
        alInfo* const records = al_info_array_t.records();
        if (parse_line(thread, records, line, file.file_name, *seq_no, line_num) == -1) {
            continue;
        }
        alInfo& record = records[*seq_no];
        record.seq = *seq_no;
        record.line_num = line_num;
        record.seq_file_idx = seq_file_idx;
        if (session_mode != SESSION_MODE_CLIENT_IP &&
            identify_session(file, record) == AfterRequest::stop_loading) {
            return 1;
        }
        forget_headers(record);
        find_counted_url(record);
        thread.numbers.add(record);
        ++*seq_no;
    }
    lines.require_whole(file.file_name);
    return 0;
}
