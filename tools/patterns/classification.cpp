#include "tools/patterns/classification.h"

#include "base/logs.h"
#include "tools/config/replay_settings.h"
#include "tools/patterns/pattern_matcher.h"

#include <algorithm>

uint64_t total_inline_filtered = 0;

namespace {

constexpr const char* fname = "fill_pattern_index";

// What becomes of a URL that a pattern of a kind fits.
struct Verdict {
    int debug_level;
    const char* debug_line; // names the URL and the pattern; null: there is none
    void (*store)(UrlInfo& entry, int32_t index);
};

void mark_as_filtered(UrlInfo& entry, int32_t index) {
    entry.filter_flag = 1;
    entry.pattern_table_idx = index;
}

void leave_out(UrlInfo& entry, int32_t) {
    entry.ignore_flag = 1;
    total_inline_filtered += entry.count;
}

template <char request_type> void set_type(UrlInfo& entry, int32_t index) {
    entry.request_type = request_type;
    entry.pattern_table_idx = index;
}

// By kind.
constexpr Verdict verdicts[pattern_kind_count] = {
    {4, "Url '%s' matched with filter url patterns '%s'", mark_as_filtered},
    {3,
     "Url '%s' matched with inline url pattern '%s' and mode is not INLINE_MODE_AS_PER_LOG, will "
     "be ignored",
     leave_out},
    {4, "Url '%s' matched with main url patterns '%s'", set_type<REQUEST_TYPE_MAIN>},
    {4, "Url '%s' matched with main url without transaction pattern '%s'",
     set_type<REQUEST_TYPE_MAIN_WITHOUT_TX>},
};
constexpr Verdict kept_inline = {0, nullptr, set_type<REQUEST_TYPE_INLINE>};

const Verdict& verdict_of(PatternKind kind) {
    const bool is_kept = kind == PATTERN_INLINE && inline_mode == INLINE_MODE_AS_PER_LOG;
    return is_kept ? kept_inline : verdicts[kind];
}

// At level 4 every pattern that is tried has lines of its own, so all of them are tried.
DecidingEntry find_trying_all(PatternMatcher& matcher, const UrlInfo& entry) {
    for (int i = 0; i < pattern_kind_count; ++i) {
        const auto kind = static_cast<PatternKind>(i);
        const int32_t index =
            matcher.get_url_pattern_idx(kind, entry.url, entry.method, entry.host_hdr);
        if (index != no_pattern) {
            return {kind, index};
        }
    }
    return {pattern_kind_count, no_pattern};
}

void classify(UrlInfo& entry, PatternMatcher& matcher) {
    const auto [kind, index] = debug_wanted(4)
                                   ? find_trying_all(matcher, entry)
                                   : matcher.find(entry.url, entry.method, entry.host_hdr);
    if (index == no_pattern) {
        DEBUG_LOG(4, fname, "No pattern matched for url = '%s'", entry.url);
        entry.pattern_table_idx = no_pattern;
        return;
    }
    const Verdict& verdict = verdict_of(kind);
    if (verdict.debug_line != nullptr && debug_wanted(verdict.debug_level)) {
        debug_log(verdict.debug_level, fname, verdict.debug_line, entry.url,
                  pattern_tables[kind].entries[index].url_ptrn_string);
    }
    verdict.store(entry, index);
}

} // namespace

void fill_pattern_index() {
    const PatternIndex index;
    PatternMatcher matcher(index);
    for (int i = 0; i < url_pattern_count; ++i) {
        classify(url_pattern[i], matcher);
    }
}

const UPInfo* deciding_pattern(const UrlInfo& entry) {
    constexpr PatternKind kind_of_type[] = {PATTERN_MAIN, PATTERN_MAIN_WITHOUT_TX, PATTERN_INLINE};
    if (entry.pattern_table_idx == no_pattern) {
        return nullptr;
    }
    const PatternKind kind = entry.filter_flag != 0
                                 ? PATTERN_FILTER
                                 : kind_of_type[static_cast<unsigned char>(entry.request_type)];
    return &pattern_tables[kind].entries[entry.pattern_table_idx];
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
