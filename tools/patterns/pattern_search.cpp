#include "tools/patterns/pattern_search.h"

#include "tools/patterns/pattern_regex.h"

#include <cstring>
#include <strings.h>

bool covers_whole_url(const UPInfo& pattern, const char* url, size_t length) {
    int32_t start;
    int32_t end;
    return zvr_match_regex(url, &pattern.url_ptrn_regex, &start, &end) == 0 && start == 0 &&
           static_cast<size_t>(end) == length;
}

bool fits_method_and_host(const UPInfo& pattern, const char* method, const char* host) {
    const bool fits_method =
        std::strcmp(pattern.method, na_string) == 0 || strcasecmp(pattern.method, method) == 0;
    return fits_method &&
           (std::strcmp(pattern.host, na_string) == 0 || std::strcmp(pattern.host, host) == 0);
}

int32_t get_url_pattern_idx(const UPInfo* pattern_table, int pattern_count, const char* url,
                            const char* method, const char* host) {
    const size_t url_length = std::strlen(url);
    int cur_seq = -1;
    bool group_covers_url = false; // all entries with one parent_seq share the pattern's verdict
    for (int32_t i = 0; i < pattern_count; ++i) {
        const UPInfo& pattern = pattern_table[i];
        if (pattern.parent_seq != cur_seq) {
            cur_seq = pattern.parent_seq;
            group_covers_url = covers_whole_url(pattern, url, url_length);
        }
        if (group_covers_url && fits_method_and_host(pattern, method, host)) {
            return i;
        }
    }
    return no_pattern;
}
