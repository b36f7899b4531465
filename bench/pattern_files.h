#pragma once

#include "generator_options.h"

#include <string>
#include <string_view>

namespace bench {

// The post-data file that some patterns name, in the replay profile's directory.
inline constexpr std::string_view order_data_file = "order.json";

// The contents of the replay profile's two pattern files. By default they hold 200 patterns of
// all four kinds: literal URLs, wildcard patterns and 20 true regular expressions.
std::string url_patterns(const GeneratorOptions& options);
std::string filter_patterns(const GeneratorOptions& options);

} // namespace bench
