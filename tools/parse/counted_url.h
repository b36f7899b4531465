#pragma once

#include "tools/config/replay_settings.h"
#include "tools/parse/request_record.h"

#include <cstddef>
#include <string_view>

// The part of a request's URL that counts where requests are brought together by URL: all of it or,
// with queries ignored, what stands before its query, the separator included.

// Notes in a record that holds its URL and the whole URL's length which part counts.
void find_query(alInfo& request);
inline void find_counted_url(alInfo& request) {
    if (ignore_query_flag != 0) {
        find_query(request);
    }
}

// Whether a query begins with this character.
bool is_query_separator(char c);

inline std::string_view counted_url(const alInfo& request) {
    return {request.url, static_cast<size_t>(request.url_len)};
}

inline bool has_ignored_query(const alInfo& request) {
    return request.ignore_query_flag != 0;
}
