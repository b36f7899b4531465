#pragma once

#include <cstddef>
#include <string_view>

// The page as it was put together when the program was built: all but the figures, which stand
// between the two parts as JSON (figures_json.h). It names no other file and no address, and lets
// nothing be run but its own scripts.
std::string_view page_before_figures();
std::string_view page_after_figures();
