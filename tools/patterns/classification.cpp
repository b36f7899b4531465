#include "tools/patterns/classification.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/patterns/pattern_index.h"

#include <algorithm>
#include <cstring>

uint64_t total_inline_filtered = 0;

namespace {

constexpr const char* fname = "fill_pattern_index";

constexpr int32_t no_pattern = -1;

// A pattern table of one kind, with its index.
class SearchedTable {
  public:
    SearchedTable(const UPInfo* pattern_table, int pattern_count)
        : pattern_table_(pattern_table), pattern_count_(pattern_count),
          index_(pattern_table, debug_wanted(4) ? 0 : pattern_count) {}

    // The plain search writes debug lines for every pattern that it tries.
    int32_t find(const UrlInfo& entry) {
        return debug_wanted(4) ? get_url_pattern_idx(pattern_table_, pattern_count_, entry.url,
                                                     entry.method, entry.host_hdr)
                               : index_.find(entry.url, entry.method, entry.host_hdr);
    }

    const char* text_of(int32_t index) const { return pattern_table_[index].url_ptrn_string; }

  private:
    const UPInfo* pattern_table_;
    int pattern_count_;
    PatternIndex index_;
};

bool classify_as_filtered(UrlInfo& entry, SearchedTable& patterns) {
    const int32_t index = patterns.find(entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with filter url patterns '%s'", entry.url,
              patterns.text_of(index));
    entry.filter_flag = 1;
    entry.pattern_table_idx = index;
    return true;
}

bool classify_as_inline(UrlInfo& entry, SearchedTable& patterns) {
    const int32_t index = patterns.find(entry);
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
              entry.url, patterns.text_of(index));
    entry.ignore_flag = 1;
    total_inline_filtered += entry.count;
    return true;
}

bool classify_as_main(UrlInfo& entry, SearchedTable& patterns) {
    const int32_t index = patterns.find(entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with main url patterns '%s'", entry.url,
              patterns.text_of(index));
    entry.request_type = REQUEST_TYPE_MAIN;
    entry.pattern_table_idx = index;
    return true;
}

bool classify_as_main_without_tx(UrlInfo& entry, SearchedTable& patterns) {
    const int32_t index = patterns.find(entry);
    if (index == no_pattern) {
        return false;
    }
    DEBUG_LOG(4, fname, "Url '%s' matched with main url without transaction pattern '%s'",
              entry.url, patterns.text_of(index));
    entry.request_type = REQUEST_TYPE_MAIN_WITHOUT_TX;
    entry.pattern_table_idx = index;
    return true;
}

} // namespace

void fill_pattern_index() {
    SearchedTable filter(filter_url_pattern, total_filter_url_pattern);
    SearchedTable inlined(inline_url_pattern, total_inline_url_pattern);
    SearchedTable main(main_url_pattern, total_main_url_pattern);
    SearchedTable main_wotx(main_wotx_url_pattern, total_main_wotx_url_pattern);
    for (int i = 0; i < url_pattern_count; ++i) {
        UrlInfo& entry = url_pattern[i];
        if (classify_as_filtered(entry, filter) || classify_as_inline(entry, inlined) ||
            classify_as_main(entry, main) || classify_as_main_without_tx(entry, main_wotx)) {
            continue;
        }
        DEBUG_LOG(4, fname, "No pattern matched for url = '%s'", entry.url);
        entry.pattern_table_idx = no_pattern;
    }
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
