#pragma once

#include "workbench.h"

namespace bench {

inline constexpr const char* floor_label = "wc -l";
inline constexpr const char* awk_hash_label = "awk hash";
inline constexpr const char* awk_sort_label = "awk, sort, uniq -c";
inline constexpr const char* goaccess_label = "GoAccess to JSON";

struct Competitors {
    std::vector<Measurement> measurements;
    // Why a competitor is missing, a sentence each.
    std::vector<std::string> left_out;
};

// What a user would take instead, on the installation's logs in the Apache layout.
Competitors make_competitors(const Workbench& bench, const BenchmarkOptions& options,
                             const Installation& installation);

} // namespace bench
