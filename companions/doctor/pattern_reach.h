#pragma once

#include "tools/patterns/pattern_tables.h"

#include <vector>

// An entry of the pattern tables that decides no URL.
struct UnreachedEntry {
    const UPInfo* entry;
    const UPInfo* taker; // the earlier one of the same table that fits all its URLs
};

// Finds them as far as that can be decided in a fraction of a second. The tables must have been
// through sort_pattern_tables.
std::vector<UnreachedEntry> find_unreached_entries();
