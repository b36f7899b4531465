#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/observed_file.h"

#include <string>
#include <vector>

// What is said of a value that a reader takes as something else than it says.

// What can stand behind a keyword.
struct ValueHelp {
    std::string expected;           // what to write, as "0 for off or 1 for on"
    std::string otherwise;          // what anything else counts as, as "0, which is off"
    std::vector<std::string> words; // that are looked for, if any
};

// Adds what is odd about a value, if the remark is on one. `value`: the line, as far as it is told.
void add_value_finding(FileFindings& findings, int line, const std::string& value,
                       const LineRemark& remark, const ValueHelp& help);

// Adds that a line is longer than what is read at once, `longest` characters.
void add_cut_line_finding(FileFindings& findings, int line, size_t longest);

// "Write X." with the nearest of the words, or with what is expected when none is near.
std::string cure_by_words(const std::string& text, const ValueHelp& help);

// The text up to its first blank, tab, carriage return, '=' or ':'.
std::string first_word(const std::string& text);
