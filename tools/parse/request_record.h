#pragma once

#include "base/request_values.h"

#include <cstddef>
#include <cstdint>

constexpr int max_cookie_length = 64; // characters kept of a session id, with the terminator

// One accepted request, as a parser hands it over. A record is cleared before its first request
// only: what stands behind the terminator of an id may be left from another one. The texts are
// terminated and live until the thread that has read it reads its next line.
struct accessLogInfo {
    uint64_t time_stamp;                 // seconds, on the scale of tools/parse/timestamps.h
    char method[max_method_length + 1];  // HTTP method, zeros behind it
    char jsession_id[max_cookie_length]; // value of the session cookie; empty: none
    char akaau_id[max_cookie_length];    // value of the secondary cookie; empty: none
    char* cookies;                       // Cookie header; null when not in the layout
    char* set_cookies;                   // Set-Cookie header, likewise
    uint64_t seq;                        // not used: a request is known by its row
    char* redirect_url; // Location header, made absolute against the URL; null: none
    char* url;          // URL as logged; see counted_url.h
    int url_len; // length of url; once find_counted_url has looked at it, of the part that counts
    int response_code;     // HTTP status
    const char* host_ip;   // Host header, or na_string
    char request_type;     // classification that a new unique URL starts with; always 0
    int pattern_table_idx; // likewise
    int filter_flag;       // likewise
    char ignore_flag;      // not used: who takes no part in the unique URLs is left out
    uint32_t client_ip; // IPv4 address, first number in the highest byte; 0: not known or not used
    char ignore_query_flag; // 1: the part of url that counts ends at a query separator
    char query_last_char;   // not used: that part is known by its length, url is not cut
    int64_t line_num;       // not used: the loader knows the line
    int seq_file_idx;       // not used, likewise
};
using alInfo = accessLogInfo;

// The size shows in the allocation lines of the debug log.
static_assert(sizeof(alInfo) == 256);
static_assert(offsetof(alInfo, cookies) == 160 && offsetof(alInfo, line_num) == 240);
