#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/log_sample.h"

#include <vector>

struct W3cChoice {
    LogLayout layout;
    Findings findings; // where the fields change, and what that does
};

// Whether most of the logs say themselves what their fields are.
bool are_w3c_logs(const std::vector<LogSample>& samples);

// The layout of W3C logs, all of whose "#Fields:" lines are read. Where these differ, the fields
// that stand in one place in all of them, if they are enough; else the layout of most requests.
W3cChoice choose_w3c_layout(const std::vector<LogSample>& samples);
