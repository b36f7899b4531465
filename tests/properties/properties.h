#pragma once

#include "tests/unit_helpers.h"

// What has to hold whatever the input is: that code which takes a short cut does what its plain
// form does, and what readers and loaders promise. Unit tests try each property with choices from
// fixed seeds, the fuzz targets of the same names with choices that the fuzzer makes. Whatever does
// not hold is a failure of GoogleTest's.

void check_field_splitter(Choices& choices);
void check_client_address(Choices& choices);
void check_unaccounted_requests(Choices& choices);
void check_line_reader(Choices& choices);

// These leave settings behind that other tests do not expect.
void check_timestamps(Choices& choices);
void check_log_loader(Choices& choices);
void check_classification(Choices& choices);
void check_pattern_matching(Choices& choices);
void check_complete_url_list(Choices& choices);
void check_observed_lines(Choices& choices);

// Reads a settings file and its field layout as a run does that has read none before. Returns the
// message of the failure, empty when they are accepted.
std::string refusal_of_settings(const std::string& path);

// Makes `zone` the zone of the process and of the replay period.
void set_zone(const char* zone);

// Whether the library may take an anchor of the pattern for fulfilled where it is not, as it does
// in parts that it writes out more than once.
bool library_may_err(const std::string& encoded_pattern);

// Empty the tables of logs that a scenario named, of patterns and of unique URLs.
void forget_log_files();
void forget_patterns();
void forget_unique_urls();

// Reads complete_url.list in this directory and expects the same back once it is written again.
void expect_list_is_kept(const std::string& config_dir);
