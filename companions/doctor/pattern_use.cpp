#include "companions/doctor/pattern_use.h"

#include "tools/patterns/pattern_index.h"
#include "tools/patterns/pattern_matcher.h"

#include <algorithm>
#include <array>

namespace {

// Of each kind the number of its first entry among the entries of all kinds.
using FirstNumbers = std::array<size_t, pattern_kind_count>;

FirstNumbers add_all_patterns(std::vector<PatternUse>& patterns) {
    FirstNumbers first = {};
    for (int kind = 0; kind < pattern_kind_count; ++kind) {
        first[static_cast<size_t>(kind)] = patterns.size();
        for (int32_t index = 0; index < pattern_tables[kind].total; ++index) {
            patterns.push_back({static_cast<PatternKind>(kind), index, {}, {}, {}, {}});
        }
    }
    return first;
}

bool has_more_requests(const UrlInfo* a, const UrlInfo* b) {
    return a->count > b->count;
}

void add_example(std::vector<const UrlInfo*>& examples, const UrlInfo& url) {
    examples.insert(std::upper_bound(examples.begin(), examples.end(), &url, has_more_requests),
                    &url);
    if (examples.size() > most_examples) {
        examples.pop_back();
    }
}

void add_decided(PatternUse& use, const UrlInfo& url) {
    use.decided.add(url);
    add_example(use.examples, url);
}

} // namespace

PatternReport examine_patterns() {
    const PatternIndex index;
    PatternMatcher matcher(index);
    PatternReport report;
    const FirstNumbers first = add_all_patterns(report.patterns);
    const auto number_of = [&](DecidingEntry entry) {
        return first[entry.kind] + static_cast<size_t>(entry.index);
    };
    for (int i = 0; i < url_pattern_count; ++i) {
        const UrlInfo& url = url_pattern[i];
        report.all.add(url);
        const auto fitting = matcher.find_all(url.url, url.method, url.host_hdr);
        if (fitting.empty()) {
            report.untaken.push_back(&url);
            continue;
        }
        const size_t deciding = number_of(fitting.front());
        add_decided(report.patterns[deciding], url);
        for (size_t later = 1; later < fitting.size(); ++later) {
            PatternUse& use = report.patterns[number_of(fitting[later])];
            use.lost.add(url);
            use.lost_to[deciding].add(url);
        }
    }
    return report;
}
