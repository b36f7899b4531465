#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

// Which known word may be meant by one that is unknown.

// How many letters have to be put in, left out, exchanged, or swapped with the next one, to make
// one word of the other, in any case.
size_t edit_distance(std::string_view a, std::string_view b);

// The nearest of the words, the first of several; empty when none is so near that it is likely to
// be meant: one letter in three differs at the most.
std::string nearest_word(std::string_view word, const std::vector<std::string>& words);
