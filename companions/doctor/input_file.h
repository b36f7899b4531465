#pragma once

#include "companions/doctor/finding.h"

#include <string>

// What can be said of an input file before its reader sees it.

// What its form does to the lines that are read from it.
struct InputForm {
    bool is_readable;   // a regular file that can be opened
    bool is_utf16;      // no line means anything
    bool has_utf8_mark; // the first line begins with it
};

// Looks at a file of settings, a scenario or patterns, and adds what is found: it is not regular,
// cannot be read, has another encoding, a byte-order mark, or lines that end in a carriage return.
InputForm check_input_file(FileFindings& findings);
