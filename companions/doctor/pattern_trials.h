#pragma once

#include "tools/patterns/pattern_tables.h"

#include <cstdint>
#include <string>
#include <vector>

// How the patterns are tried on one URL.

// What the tool has in place of the URL of a request as it is logged: without its query, where the
// settings say that queries do not count, its separator followed by '*'.
std::string listed_url(const std::string& logged_url);

enum class TrialOutcome {
    decides,
    fits_too,     // but a pattern before it decides
    other_method, // covers the URL, but is for another method
    other_host,   // likewise
    covers_part,  // of the URL, where it has to cover all
    covers_nothing
};

struct PatternTrial {
    PatternKind kind;
    int32_t index; // into the kind's table
    TrialOutcome outcome;
    std::string part; // that it covers, the first one and the longest there
};

struct TriedUrl {
    std::string url;
    std::string method;
    std::string host;
};

// Of all entries of the pattern tables, in the order in which they decide. The tables must have
// been through sort_pattern_tables.
std::vector<PatternTrial> try_patterns(const TriedUrl& url);
