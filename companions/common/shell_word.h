#pragma once

#include <string>

// The word as a shell takes it: in quotes where it has to be.
std::string shell_word(const std::string& word);
