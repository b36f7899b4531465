#pragma once

#include "companions/common/common_options.h"
#include "companions/doctor/finding.h"

// What command "check" of this program finds about the scenario. It runs in a process of its own,
// since a process reads a scenario's inputs once. An error where it cannot be run.
Findings findings_of_own_check(const RunOptions& options);
