#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/log_sample.h"

#include <vector>

// Finds by what they hold the fields that servers are told to log beside those of a known layout:
// the headers Cookie, Set-Cookie, Host and Location. Adds those that most lines have to an Apache
// layout, and tells of each what it was taken for, and of numbers that may be response times.
Findings add_further_fields(const std::vector<LogSample>& samples, LogLayout& layout);
