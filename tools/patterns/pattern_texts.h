#pragma once

#include "tools/patterns/pattern_syntax.h"

#include <cstddef>
#include <string>
#include <vector>

// Texts that a URL must hold for a pattern to cover it, so that most URLs need not be read.

constexpr size_t shortest_required_text = 4;

// Texts of which every URL that the pattern covers holds one, and each of which has at least
// shortest_required_text characters. A null byte stands for the start of the URL, and for its end.
using RequiredTexts = std::vector<std::string>;

// What is known of the pattern: every URL that it covers holds a text of each element. None when it
// may cover any URL, as far as can be told.
std::vector<RequiredTexts> find_required_texts(const PatternSyntax& syntax);
