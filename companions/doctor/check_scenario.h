#pragma once

#include "companions/doctor/finding.h"

// Lines of the scenario that set the replay period; 0: none does.
struct PeriodLines {
    int start = 0;
    int end = 0;
};

// Reads the scenario's file as a run does, and adds what is found in it: the period, words that are
// not known, the logs as they are named. Returns where the period stands.
PeriodLines check_scenario(Findings& findings);
