#include "tools/parse/log_loader.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/parse/cookie_values.h"
#include "tools/parse/counted_url.h"
#include "tools/parse/line_parsers.h"
#include "tools/parse/own_texts.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>

void (*log_line_observer)(const ObservedLogLine& line) = nullptr;

namespace {

constexpr const char* fname = "load_url_info";

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

// Stores the value of a cookie whose name begins at `name`; the value does `skip` characters later.
// Returns it where it stands in the header.
std::string_view read_cookie(LineText header, const char* name, size_t skip, CookieValue& value) {
    const auto from_name = static_cast<size_t>(header.text + header.size - name);
    const size_t skipped = std::min(skip, from_name);
    const char* const start = name + skipped;
    return {start, store_cookie_value(start, from_name - skipped, value)};
}

// What tells the session of a request. The text stands in one of its headers.
struct Session {
    std::string_view text;
    bool is_missing_in_cookie = false;
    bool is_set_by_response = false;
};

// The value keeps the character after the name, the equals sign: it stays so in every value, so
// that they compare equal to one another. Returns whether there is one.
bool read_secondary_cookie(const CookieNames& names, LineText header, const CookiePlaces& places,
                           alInfo& record) {
    if (secondary_cookie_enable == 0 || places.secondary == nullptr) {
        return false;
    }
    read_cookie(header, places.secondary, names.secondary().size(), record.akaau_id);
    return true;
}

// Returns whether there is one.
bool read_session_cookie(const CookieNames& names, LineText header, const CookiePlaces& places,
                         alInfo& record, Session& session) {
    if (places.session == nullptr) {
        return false;
    }
    session.text =
        read_cookie(header, places.session, names.session().size() + 1, record.jsession_id);
    return true;
}

void read_cookie_header(const CookieNames& names, LineText header, alInfo& record,
                        Session& session) {
    DEBUG_LOG(4, fname, "Going to get secondary cookie(akaau) format and jsession id from Cookie");
    const CookiePlaces places = names.find(header);
    if (read_secondary_cookie(names, header, places, record)) {
        DEBUG_LOG(4, fname,
                  "secondary cookie(akaau) found in Cookie. al_info_array_t[*seq_no].akaau_id = %s",
                  record.akaau_id);
    }
    if (!read_session_cookie(names, header, places, record, session)) {
        session.is_missing_in_cookie = true;
        return;
    }
    DEBUG_LOG(4, fname, "Session Cookie found in Cookie. al_info_array_t[*seq_no].jsession_id = %s",
              record.jsession_id);
}

void read_set_cookie_header(const CookieNames& names, LineText header, alInfo& record,
                            Session& session) {
    const CookiePlaces places = names.find(header);
    if (read_secondary_cookie(names, header, places, record)) {
        DEBUG_LOG(4, fname,
                  "akaau cookie found in Set-Cookie. al_info_array_t[*seq_no].akaau_id = %s",
                  record.akaau_id);
    }
    if (!read_session_cookie(names, header, places, record, session)) {
        return;
    }
    session.is_set_by_response = true;
    DEBUG_LOG(4, fname, "Jsessionid found in Cookie. al_info_array_t[*seq_no].jsession_id = %s",
              record.jsession_id);
}

// Set-Cookie is read after Cookie, so what the server set counts for the very request.
Session identify_session(const CookieNames& names, const RequestFields& fields, alInfo& record) {
    Session session;
    if (fields.cookies.text != nullptr) {
        read_cookie_header(names, fields.cookies, record, session);
    }
    if (fields.set_cookies.text != nullptr) {
        read_set_cookie_header(names, fields.set_cookies, record, session);
    }
    return session;
}

// Only a request with a secondary cookie has to do with others' sessions.
void note_session_event(ParsingThread& thread, const Session& session, RequestBatch& batch) {
    const alInfo& record = thread.request;
    const bool waits_or_donates = session.is_missing_in_cookie || session.is_set_by_response;
    if (!waits_or_donates || record.akaau_id[0] == '\0') {
        return;
    }
    SessionEvent& event = batch.events.emplace_back();
    event.row = static_cast<uint32_t>(batch.rows.size());
    event.line_num = batch.line_count;
    std::memcpy(event.akaau_id, record.akaau_id, sizeof event.akaau_id);
    std::memcpy(event.jsession_id, record.jsession_id, sizeof event.jsession_id);
    event.waits = !session.is_set_by_response;
    event.url = nullptr;
    if (debug_wanted(3)) {
        event.url = thread.own_texts.copy("url", {record.url, static_cast<size_t>(record.url_len)});
    }
}

void add_request(ParsingThread& thread, const CookieNames& names, RequestBatch& batch) {
    alInfo& record = thread.request;
    Session session;
    AddressText address;
    if (session_mode == SESSION_MODE_CLIENT_IP) {
        address = address_text(record.client_ip);
        session.text = {address.data(), address.size()};
    } else {
        session = identify_session(names, thread.fields, record);
        note_session_event(thread, session, batch);
    }
    find_counted_url(record);
    RequestRow row = {};
    row.time_stamp = record.time_stamp;
    row.is_redirect = is_redirect(record);
    if (has_own_texts(record)) {
        row.own_texts = store_own_texts(thread.own_texts, record);
    }
    batch.rows.push_back(row);
    thread.interner.add(session.text,
                        {record.method, thread.fields.host_or_none(), counted_url(record)},
                        batch.rows);
}

bool is_request(LineText line) {
    return line.size != 0 && line.text[0] != '#';
}

bool has_session_cookie(const char* header) {
    return header != nullptr && std::strstr(header, cookie_name) != nullptr;
}

// Of the request whose row is the batch's last one.
SessionNote note_session(const alInfo& request, const RequestBatch& batch) {
    if (session_mode == SESSION_MODE_CLIENT_IP) {
        return request.client_ip != 0 ? SessionNote::known : SessionNote::no_client_address;
    }
    if (request.jsession_id[0] != '\0') {
        return SessionNote::known;
    }
    if (!batch.events.empty() && batch.events.back().row + 1 == batch.rows.size() &&
        batch.events.back().waits) {
        return SessionNote::waits;
    }
    const bool is_there =
        has_session_cookie(request.cookies) || has_session_cookie(request.set_cookies);
    return is_there ? SessionNote::session_cookie_empty : SessionNote::no_session_cookie;
}

// The line read last of a part of a log.
struct CurrentLine {
    const LogPart& part;
    const LineReader& lines;
    LineText text;
    const RequestFields& fields; // as far as it has been parsed
};

uint32_t offset_in_part(const CurrentLine& line) {
    const uint64_t offset = line.lines.offset_of(line.text) - line.part.begin;
    return static_cast<uint32_t>(std::min(offset, uint64_t{UINT32_MAX}));
}

// Kept out of the loop over lines: in a run of the tool, nobody asks.
[[gnu::noinline, gnu::cold]] void tell(const CurrentLine& line, RequestBatch& batch,
                                       const LineOutcome& outcome, const alInfo* request) {
    const LogPart& part = line.part;
    const SessionNote session =
        request == nullptr ? SessionNote::known : note_session(*request, batch);
    if (part.takes_notes) {
        batch.notes.push_back({outcome.kind, session, offset_in_part(line)});
    }
    if (batch.tally != nullptr) {
        batch.tally->add(outcome, line.fields);
    }
    if (log_line_observer != nullptr) {
        log_line_observer(
            {part.file_name, part.lines_before + batch.line_count, outcome, session, request});
    }
}

LineKind kind_of_no_request(LineText line) {
    return line.size == 0 ? LineKind::empty : LineKind::comment;
}

void remove_carriage_return(LineText& line) {
    if (line.size != 0 && line.text[line.size - 1] == '\r') {
        line.text[--line.size] = '\0';
    }
}

} // namespace

void load_url_info(ParsingThread& thread, LineReader& lines, const LogPart& part,
                   RequestBatch& batch, const AfterLine& after_line) {
    LineParser* const parse_line = parser_of_log_type();
    const CookieNames names(cookie_name, secondary_cookie);
    const bool is_told = log_line_observer != nullptr || part.takes_notes || part.takes_tally;
    LineText line;
    thread.counters = {};
    thread.quotes = &lines.marks();
    if (part.takes_tally) {
        batch.tally = std::make_unique<LineTally>();
    }
    while (batch.line_count < part.max_lines && lines.next(line)) {
        if (!lines.is_terminated() && !part.ends_with_rest) {
            if (lines.is_last_rest()) {
                break;
            }
            batch.has_line_pieces = true;
        }
        ++batch.line_count;
        remove_carriage_return(line);
        if (!is_request(line)) {
            if (is_told) {
                tell({part, lines, line, {}}, batch, {kind_of_no_request(line)}, nullptr);
            }
            continue;
        }
        ++thread.counters.total_req;
        const int64_t line_num = part.lines_before + batch.line_count;
        const bool is_accepted =
            parse_line(thread, &thread.request, line, part.file_name, 0, line_num) == 0;
        if (is_accepted) {
            add_request(thread, names, batch);
        }
        if (is_told) {
            tell({part, lines, line, thread.fields}, batch, thread.outcome,
                 is_accepted ? &thread.request : nullptr);
        }
        if (after_line && !after_line()) {
            break;
        }
    }
    thread.interner.finish(batch.rows);
    batch.counters = thread.counters;
    lines.require_whole(part.file_name);
}
