#pragma once

#include "tools/parse/line_tally.h"

// Where process_url_files adds up the tallies of all lines that were read. Null, as in the tool: no
// line is tallied. Set by a program before process_url_files.
extern LineTally* line_tally;
