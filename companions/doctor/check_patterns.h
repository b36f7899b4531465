#pragma once

#include "companions/doctor/check_hosts.h"
#include "companions/doctor/finding.h"

#include <vector>

// Reads both pattern files of the replay profile, whose settings are read, as a run does, and adds
// what is found. Afterwards the tables of patterns are in the order in which they decide. Returns
// the hosts that patterns name.
std::vector<HostOfPattern> check_patterns(Findings& findings);
