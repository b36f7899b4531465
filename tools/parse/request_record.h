#pragma once

#include "base/request_values.h"

#include <cstddef>
#include <cstdint>

constexpr int max_cookie_length = 64; // characters kept of a session id, with the terminator

// One accepted request. The texts are terminated and live to the end of the run.
struct accessLogInfo {
    uint64_t time_stamp;                 // seconds, on the scale of tools/parse/timestamps.h
    char method[max_method_length + 1];  // HTTP method, zeros behind it
    char jsession_id[max_cookie_length]; // value of the session cookie; empty: none
    char akaau_id[max_cookie_length];    // value of the secondary cookie; empty: none
    char* cookies;     // Cookie header, in the log line, until the ids are cut out of it; null when
                       // not in the layout
    char* set_cookies; // Set-Cookie header, likewise
    uint64_t seq;      // own index: in the thread's records, after the merge in the request table
    char* redirect_url;    // Location header, made absolute against the URL; null: none
    char* url;             // URL as logged, with room for two more characters; see counted_url.h
    int url_len;           // length of the part of url that counts
    int response_code;     // HTTP status
    const char* host_ip;   // Host header, or na_string
    char request_type;     // classification that a new unique URL starts with; always 0
    int pattern_table_idx; // likewise
    int filter_flag;       // likewise
    char ignore_flag;      // 1: takes no part in the unique URLs
    uint32_t client_ip; // IPv4 address, first number in the highest byte; 0: not known or not used
    char ignore_query_flag; // 1: the part of url that counts ends at a query separator
    char query_last_char;   // not used: that part is known by its length, url is not cut
    int64_t line_num;       // line in its file, from 1
    int seq_file_idx;       // index of its file in seq_file_path
};
using alInfo = accessLogInfo;

// The size shows in the allocation lines of the debug log.
static_assert(sizeof(alInfo) == 256);
static_assert(offsetof(alInfo, cookies) == 160 && offsetof(alInfo, line_num) == 240);
