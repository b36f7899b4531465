#pragma once

#include "tools/parse/request_record.h"

#include <string>
#include <string_view>

// What makes a URL unique, as one text: the method without regard to case, the host, and the part
// of the URL that counts.

// Writes the key of a request into `key`.
void write_url_key(const alInfo& request, std::string& key);

// The parts of a key; they live as long as its text.
struct UrlKey {
    explicit UrlKey(std::string_view key);

    std::string_view method; // in lower case, filled up with zeros
    const char* host;        // terminated
    std::string_view url;    // the part that counts

    // Whether the URL had a query, which does not count.
    bool has_ignored_query() const;
};

// Whether the method is spelt as standard_method spells it.
bool has_standard_spelling(const alInfo& request);

// Writes the method of a key as most write it, in capitals, with its terminator.
void standard_method(std::string_view key, char (&method)[max_method_length + 1]);
