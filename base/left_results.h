#pragma once

#include <map>
#include <string>

// The states in which this run leaves its results, noted on the main thread at the end of each, so
// that whoever changes one later, even before the end of the run, is found out.

// Notes the state of a result that is closed next and never written again.
void note_left_result(const char* name, int descriptor);

// All that were noted: states as file_state gives them, by name.
const std::map<std::string, std::string>& left_results();
