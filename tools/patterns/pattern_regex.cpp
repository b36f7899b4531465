#include "tools/patterns/pattern_regex.h"

#include "base/logs.h"

namespace {

constexpr size_t max_encoded_length = 2047;

} // namespace

std::string encode_stars(const char* pattern) {
    std::string encoded;
    for (const char* c = pattern; *c != '\0'; ++c) {
        if (*c == '*') {
            encoded += '.';
        }
        encoded += *c;
    }
    return encoded;
}

int zvr_compile_regex(const char* regex_string, int encode_flag, regex_t* out_regex) {
    constexpr const char* fname = "zvr_compile_regex";
    DEBUG_LOG(4, fname, "Method called, regex string = %s, encode flag = %d", regex_string,
              encode_flag);
    std::string pattern = regex_string;
    if (encode_flag != 0) {
        pattern = encode_stars(regex_string);
        DEBUG_LOG(4, fname, "regex pattern after encoding = %s", pattern.c_str());
    }
    const bool is_too_long = encode_flag != 0 && pattern.size() > max_encoded_length;
    if (is_too_long || regcomp(out_regex, pattern.c_str(), REG_EXTENDED) != 0) {
        DEBUG_LOG(2, fname, "Failed to compile regex pattern = '%s'", pattern.c_str());
        return 1;
    }
    return 0;
}

std::string why_not_compiled(const char* pattern) {
    const std::string encoded = encode_stars(pattern);
    if (encoded.size() > max_encoded_length) {
        return "longer than " + std::to_string(max_encoded_length) +
               " characters, each star counted as two";
    }
    regex_t regex;
    const int error = regcomp(&regex, encoded.c_str(), REG_EXTENDED);
    if (error == 0) {
        regfree(&regex);
        return "";
    }
    char words[256];
    regerror(error, &regex, words, sizeof words);
    return words;
}

int zvr_match_regex(const char* msg, const regex_t* comp_pattern, int32_t* s_o, int32_t* e_o) {
    constexpr const char* fname = "zvr_match_regex";
    DEBUG_LOG(4, fname, "Called zvr_match_regex");
    regmatch_t match;
    if (regexec(comp_pattern, msg, 1, &match, 0) != 0) {
        return -1;
    }
    *s_o = match.rm_so;
    *e_o = match.rm_eo;
    DEBUG_LOG(4, fname, "Method Exiting, start Offset = %d, End Offset = %d", *s_o, *e_o);
    return 0;
}
