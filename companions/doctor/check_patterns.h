#pragma once

#include "companions/doctor/finding.h"

// Reads both pattern files of the replay profile, whose settings are read, as a run does, and adds
// what is found. Afterwards the tables of patterns are in the order in which they decide.
void check_patterns(Findings& findings);
