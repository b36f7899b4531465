#pragma once

#include <cstddef>

// The form of the two pattern files: columns separated by "|", of which those that are not named
// are not read.

constexpr size_t pattern_line_size = 4096; // of the buffer whose limit lines are held to

// replay_url_patterns.dat.
enum UrlPatternColumn {
    URL_PATTERN_STATUS = 0, // "active", or the line is not used
    URL_PATTERN_TYPE = 1,   // "main", "inline" or "MAIN_WITHOUT_TX"
    URL_PATTERN_METHOD = 2,
    URL_PATTERN_TXN_NAME = 4, // of a main pattern
    URL_PATTERN_HOST = 5,
    URL_PATTERN_POST_DATA_FILE = 7, // of a main pattern; "NA": none
    URL_PATTERN_PATTERN = 8,
    url_pattern_column_count = 9
};

constexpr const char* main_pattern_type = "main"; // type that alone may have a post-data file

// replay_url_filter_patterns.dat.
enum FilterPatternColumn {
    FILTER_PATTERN_STATUS = 0,
    FILTER_PATTERN_METHOD = 1,
    FILTER_PATTERN_HOST = 3,
    FILTER_PATTERN_PATTERN = 4,
    filter_pattern_column_count = 5
};
