#pragma once

#include "base/line_text.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <strings.h>

// What the readers of keyword files share.

// Whether `text` begins with `word`, in any case.
inline bool begins_with(const char* text, std::string_view word) {
    return strncasecmp(text, word.data(), word.size()) == 0;
}

// The value of a line that begins with the keyword: it begins one character after that, whatever
// the character is.
inline char* value_after(LineText line, std::string_view keyword) {
    return line.text + std::min(line.size, keyword.size() + 1);
}

// The first character of `text` that is neither blank nor tab.
inline const char* skip_blanks(const char* text) {
    return text + std::strspn(text, " \t");
}
inline char* skip_blanks(char* text) {
    return text + std::strspn(text, " \t");
}
