#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>

// Text from outside (logs, files, names) made fit to be shown. Whoever writes such a text to a
// terminal, or into a message, takes it through here first, so that nobody's log can steer a
// terminal.

constexpr size_t any_width = std::numeric_limits<size_t>::max();

// The text on one line: control characters, escape sequences, characters that turn or hide what
// stands beside them, and bytes that are not UTF-8 become visible, as \r or \x1b. What is wider
// than `width` characters is cut, and ends in "...". A backslash stands as it is.
std::string shown_text(std::string_view text, size_t width = any_width);

// The same with line feeds left as they are, for messages of several lines.
std::string shown_lines(std::string_view text);

// The text with only those bytes made visible that are not UTF-8, for JSON.
std::string valid_utf8(std::string_view text);

// How many columns a text takes that has been made fit: one for each character.
size_t width_of(std::string_view shown);
