#pragma once

#include <string>
#include <vector>

// Which of these files were changed after a result was, or put where they are; none when there is
// no result.
std::vector<std::string> files_newer_than(const std::string& result,
                                          const std::vector<std::string>& paths);
