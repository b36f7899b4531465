#pragma once

#include <string>

// The line as its parser sees it: the fields that the splitter makes of it, each with its number
// and the kind that the layout puts on it, and what the layout looks for and does not find. Of any
// characters.
std::string fields_as_seen(const std::string& line);
