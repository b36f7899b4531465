#pragma once

#include "tools/patterns/pattern_tables.h"
#include "tools/urls/unique_urls.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

// What the tester's patterns do with the unique URLs of a run.

struct Hits {
    uint64_t urls = 0;
    uint64_t requests = 0;

    void add(const UrlInfo& url) {
        ++urls;
        requests += url.count;
    }
};

constexpr size_t most_examples = 3;

// One entry of the pattern tables.
struct PatternUse {
    PatternKind kind;
    int32_t index;                        // into the kind's table
    Hits decided;                         // what it decides
    Hits lost;                            // what it fits, but an entry before it decides
    std::map<size_t, Hits> lost_to;       // of these, by the number of that entry's PatternUse
    std::vector<const UrlInfo*> examples; // of what it decides, most requests first
};

struct PatternReport {
    Hits all;                            // URLs that were looked at
    std::vector<PatternUse> patterns;    // of all tables, in the order in which they decide
    std::vector<const UrlInfo*> untaken; // URLs that no pattern fits
};

// Asks all patterns about all entries of url_pattern, to which the result points. The pattern
// tables must have been through sort_pattern_tables.
PatternReport examine_patterns();
