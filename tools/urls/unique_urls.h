#pragma once

#include "base/text_arena.h"
#include "tools/parse/request_record.h"
#include "tools/urls/query_list.h"
#include "tools/urls/request_collapse.h"
#include "tools/urls/session_order.h"

#include <cstdint>
#include <string_view>

// The unique URLs of the run: one entry for each combination of URL, method (ignoring case) and
// host.

struct UrlInfo {
    char method[max_method_length + 1]; // of the entry's first request
    uint64_t count;                     // requests behind the entry
    char* url;                          // one without its query ends with the separator and '*'
    char url_type;                      // not used
    int32_t
        pattern_table_idx; // entry of the pattern table that decided; -1: none. From classification
    char request_type;     // 0 main, 1 main without transaction, 2 inline. From classification
    char filter_flag;      // 1: fits a filter pattern. From classification
    const char* host_hdr;  // the first request's host text
    int64_t query_url_offset; // byte in query_url.list where its lines begin; -1: it has none there
    int32_t ignore_flag;      // 1: left out of url.list. From classification
};
static_assert(sizeof(UrlInfo) == 80);

// The table, in the order of URL, method and host until classification has sorted it anew. Filled
// by make_url_pattern_list or fill_url_pattern_from_cache, on the main thread.
extern UrlInfo* url_pattern;
extern int url_pattern_count; // entries in use
extern int max_url_pattern;   // entries allocated

// Index of a new entry at the end of url_pattern, which grows by 10240 entries at a time. The
// caller fills it.
int create_url_pattern();

// Adds the entry of a unique URL. `url_key` (tools/parse/url_key.h) is of its requests,
// `own_method` the spelling of the first one's method, null when it is standard_method's, `count`
// how many they are. The entry takes its host from the text of the key, which must outlive the
// table; `texts` gets the copy of its URL. Valid until the next entry is added.
UrlInfo& add_unique_url(TextArena& texts, std::string_view url_key, const char* own_method,
                        uint64_t count);

// Whether the full URLs of the requests with this key go into query_url.list. If they do, the entry
// keeps where they begin: the caller adds them, all at once, before those of another entry.
bool begin_queries(UrlInfo& entry, std::string_view url_key, const QueryList& query_list);

// Makes the table of collapsed requests, an entry for each of their URLs in that order, and writes
// the full URLs of those with an ignored query to `query_list` when it is open. Fails when that
// cannot be written.
void fill_url_patterns(const RequestTable& table, const CollapsedRequests& collapsed,
                       QueryList& query_list);

// The same from the request table, given its session order: selects the requests that count, and
// collapses them.
void make_url_pattern_list(const RequestTable& table, SessionOrder session_order,
                           QueryList& query_list);
