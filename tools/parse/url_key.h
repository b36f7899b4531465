#pragma once

#include "tools/parse/request_record.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

// What makes a URL unique, as one text: the method without regard to case, the host, and the part
// of the URL that counts.

// What the key of a request is made of.
struct UrlParts {
    const char* method; // max_method_length characters, zeros behind it
    std::string_view host;
    std::string_view url; // the part that counts
};

// The host ends with a terminator.
inline size_t url_key_size(const UrlParts& parts) {
    return max_method_length + parts.host.size() + 1 + parts.url.size();
}

// Writes the key, url_key_size characters of it. Returns its hash_url_key.
uint64_t write_url_key(const UrlParts& parts, char* key);

uint64_t hash_url_key(std::string_view key);

// The parts of a key; they live as long as its text.
struct UrlKey {
    explicit UrlKey(std::string_view key);

    std::string_view method; // in lower case, filled up with zeros
    const char* host;        // terminated
    std::string_view url;    // the part that counts

    // Whether the URL had a query, which does not count.
    bool has_ignored_query() const;
};

// Whether the method is spelt as standard_method spells it. Mostly no character has the bit that
// tells small letters from capitals.
bool has_no_small_letter(const char* method);
inline bool has_standard_spelling(const alInfo& request) {
    constexpr uint64_t bit_of_small_letters = 0x2020202020202020;
    uint64_t words[max_method_length / sizeof(uint64_t)];
    std::memcpy(words, request.method, sizeof words);
    return ((words[0] | words[1]) & bit_of_small_letters) == 0 ||
           has_no_small_letter(request.method);
}

// Writes the method of a key as most write it, in capitals, with its terminator.
void standard_method(std::string_view key, char (&method)[max_method_length + 1]);
