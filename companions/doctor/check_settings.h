#pragma once

#include "companions/doctor/finding.h"

#include <map>
#include <string>
#include <vector>

// The settings of the replay profile, with the field layout that they make.

// Reads replay_settings.dat of the profile, whose directory is known, as a run does, and adds what
// is found. Afterwards the settings and the layout hold, as far as they could be read. Returns, by
// keyword, the line that sets it last.
std::map<std::string, int> check_settings(Findings& findings);

// Keywords of which check_settings can say what stands behind them: all, a test says.
std::vector<std::string> explained_keywords();
