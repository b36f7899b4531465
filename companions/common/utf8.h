#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

// A character that a text begins with.
struct Utf8Character {
    uint32_t code; // its number
    size_t size;   // in bytes; 0: the text does not begin with valid UTF-8
};

// The first character of a text that is not empty. Overlong forms, surrogates and numbers beyond
// U+10FFFF are not valid.
Utf8Character first_character(std::string_view text);
