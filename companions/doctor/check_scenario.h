#pragma once

#include "companions/doctor/check_log_files.h"
#include "companions/doctor/finding.h"

#include <vector>

// Reads the scenario's file as a run does, and adds what is found in it: the period, words that are
// not known, the logs as they are named. Returns the logs, in the order of their lines.
std::vector<NamedLog> check_scenario(Findings& findings);
