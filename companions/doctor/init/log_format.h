#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/log_layout.h"

#include <string_view>

// What a log format makes of a line, for the tool.
struct FormatReading {
    LogLayout layout;
    Findings findings; // what is missing or cannot be read; errors where the layout is of no use
};

// Reads a LogFormat of Apache or log_format of nginx, in the forms that read_format_text takes. The
// fields are those that the tool's own splitter makes of such a line.
FormatReading read_log_format(std::string_view argument);

// The id of a note on headers that would be of use, among them Location.
constexpr const char* headers_not_logged = "headers-not-logged";

// What a layout lacks that a run needs (errors) or would be better for having (a note).
Findings missing_fields(const LogLayout& layout);
