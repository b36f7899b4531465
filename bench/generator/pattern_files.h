#pragma once

#include <cstdint>
#include <string>

// The post-data file that some patterns name, in the replay profile's directory.
inline constexpr const char* order_data_file = "order.json";

// The contents of the replay profile's two pattern files, with so many wildcard patterns in both
// together; with 0, 200 patterns of all kinds, 20 of them true regular expressions.
std::string url_patterns(uint64_t wildcards);
std::string filter_patterns(uint64_t wildcards);
