#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

struct OptionRow {
    const char* name;                                    // without the dashes
    std::variant<bool*, uint64_t*, std::string*> target; // set by a switch, a number or a text
    const char* help;
};

// Sets what the options of the command line name. With --help the process ends with 0 after a list
// of the rows; with an unknown option or any other argument it ends with 2. Throws
// std::runtime_error where a number is none.
void read_options(int argc, char* argv[], const std::vector<OptionRow>& rows);
