#pragma once

#include <string>

// The states in which this run leaves its results, noted on the main thread at the end of each, so
// that whoever changes one later, even before the end of the run, is found out.

// Notes the state of a result that is closed next and never written again.
void note_left_result(const char* name, int descriptor);

// The lines for a manifest of all that were noted.
std::string left_result_lines();
