#pragma once

#include <string>
#include <string_view>

// What a file holds, as far as its first bytes tell.
struct ContentForm {
    std::string packed_as; // "gzip" and the like, or an archive; empty: not packed
    bool is_utf16;         // with or without a byte-order mark
    bool has_utf8_mark;    // begins with the byte-order mark of UTF-8
};

constexpr size_t content_sample_size = 4096; // first bytes that are enough

ContentForm form_of_content(std::string_view first_bytes);

// The byte-order mark of UTF-8.
constexpr std::string_view utf8_mark = "\xef\xbb\xbf";
