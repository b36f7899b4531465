#include "tools/patterns/classification.h"

#include "tools/config/replay_settings.h"
#include "tools/driver/logs.h"
#include "tools/patterns/pattern_regex.h"

#include <algorithm>
#include <cstring>
#include <strings.h>

uint64_t total_inline_filtered = 0;

namespace {

constexpr const char* fname = "fill_pattern_index";

constexpr int32_t no_pattern = -1;

bool covers_url(const UPInfo& pattern, const char* url, int32_t url_length) {
    int32_t start;
    int32_t end;
    return zvr_match_regex(url, &pattern.url_ptrn_regex, &start, &end) == 0 && start == 0 &&
           end == url_length;
}

bool fits_method(const UPInfo& pattern, const char* method) {
    return std::strcmp(pattern.method, na_string) == 0 || strcasecmp(pattern.method, method) == 0;
}

bool fits_host(const UPInfo& pattern, const char* host) {
    return std::strcmp(pattern.host, na_string) == 0 || std::strcmp(pattern.host, host) == 0;
}

int32_t find_pattern(const UPInfo* pattern_table, int pattern_count, const UrlInfo& entry) {
    return get_url_pattern_idx(pattern_table, pattern_count, entry.url, entry.method,
                               entry.host_hdr);
}

bool classify_as_filtered(UrlInfo& entry) {
    const int32_t index = find_pattern(filter_url_pattern, total_filter_url_pattern, entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with filter url patterns '%s'", entry.url,
              filter_url_pattern[index].url_ptrn_string);
    entry.filter_flag = 1;
    entry.pattern_table_idx = index;
    return true;
}

bool classify_as_inline(UrlInfo& entry) {
    const int32_t index = find_pattern(inline_url_pattern, total_inline_url_pattern, entry);
    if (index == no_pattern) {
        return false;
    }
    if (inline_mode == INLINE_MODE_AS_PER_LOG) {
        entry.request_type = REQUEST_TYPE_INLINE;
        entry.pattern_table_idx = index;
        return true;
    }
    DEBUG_LOG(3, fname,
              "Url '%s' matched with inline url pattern '%s' and mode is not "
              "INLINE_MODE_AS_PER_LOG, will be ignored",
              entry.url, inline_url_pattern[index].url_ptrn_string);
    entry.ignore_flag = 1;
    total_inline_filtered += entry.count;
    return true;
}

bool classify_as_main(UrlInfo& entry) {
    const int32_t index = find_pattern(main_url_pattern, total_main_url_pattern, entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with main url patterns '%s'", entry.url,
              main_url_pattern[index].url_ptrn_string);
    entry.request_type = REQUEST_TYPE_MAIN;
    entry.pattern_table_idx = index;
    return true;
}

bool classify_as_main_without_tx(UrlInfo& entry) {
    const int32_t index = find_pattern(main_wotx_url_pattern, total_main_wotx_url_pattern, entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with main url without transaction pattern '%s'",
              entry.url, main_wotx_url_pattern[index].url_ptrn_string);
    entry.request_type = REQUEST_TYPE_MAIN_WITHOUT_TX;
    entry.pattern_table_idx = index;
    return true;
}

} // namespace

void fill_pattern_index() {
    for (int i = 0; i < url_pattern_count; ++i) {
        UrlInfo& entry = url_pattern[i];
        if (classify_as_filtered(entry) || classify_as_inline(entry) || classify_as_main(entry) ||
            classify_as_main_without_tx(entry)) {
            continue;
        }
        DEBUG_LOG(4, fname, "No pattern matched for url = '%s'", entry.url);
        entry.pattern_table_idx = no_pattern;
    }
}

int32_t get_url_pattern_idx(const UPInfo* pattern_table, int pattern_count, const char* url,
                            const char* method, const char* host) {
    const auto url_length = static_cast<int32_t>(std::strlen(url));
    int cur_seq = -1;
    bool group_covers_url = false; // all entries with one parent_seq share the pattern's verdict
    for (int32_t i = 0; i < pattern_count; ++i) {
        const UPInfo& pattern = pattern_table[i];
        if (pattern.parent_seq != cur_seq) {
            cur_seq = pattern.parent_seq;
            group_covers_url = covers_url(pattern, url, url_length);
        }
        if (group_covers_url && fits_method(pattern, method) && fits_host(pattern, host)) {
            return i;
        }
    }
    return no_pattern;
}

int bring_main_url_first(const UrlInfo& a1, const UrlInfo& a2) {
    return static_cast<signed char>(a1.request_type) - static_cast<signed char>(a2.request_type);
}

void sort_by_request_type() {
    const auto comes_first = [](const UrlInfo& a, const UrlInfo& b) {
        return bring_main_url_first(a, b) < 0;
    };
    UrlInfo* const end = url_pattern + url_pattern_count;
    if (!std::is_sorted(url_pattern, end, comes_first)) {
        std::stable_sort(url_pattern, end, comes_first);
    }
}
