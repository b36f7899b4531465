#pragma once

#include "companions/doctor/init/init_report.h"
#include "companions/doctor/init/log_sample.h"

#include <vector>

// Fills the report's plan, for its scenario and the layout that is chosen there, from the lines of
// the logs: finds the session and the times, and adds what there is to say of them to the findings.
void plan_scenario(const std::vector<LogSample>& samples, InitReport& report);
