#pragma once

#include <cstdint>
#include <regex.h>
#include <string>

// Patterns are extended regular expressions in which '*' stands for any text.

// The pattern as the library's engine has it: every '*' written as ".*".
std::string encode_stars(const char* pattern);

// Compiles `regex_string` into `*out_regex`; with `encode_flag`, its stars are first encoded.
// Returns 0; or 1 when it does not compile or is longer than 2,047 characters once encoded.
int zvr_compile_regex(const char* regex_string, int encode_flag, regex_t* out_regex);

// Why such a pattern, its stars still to be encoded, does not compile: the library's own words, or
// that it is too long. Empty when it compiles.
std::string why_not_compiled(const char* pattern);

// Finds the first match in `msg`. Returns 0 with its start and its end (exclusive) in `*s_o` and
// `*e_o`, or -1 when there is none.
int zvr_match_regex(const char* msg, const regex_t* comp_pattern, int32_t* s_o, int32_t* e_o);
