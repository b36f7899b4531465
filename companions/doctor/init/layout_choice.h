#pragma once

#include "companions/doctor/finding.h"
#include "companions/doctor/init/layout_score.h"
#include "companions/doctor/init/log_layout.h"
#include "companions/doctor/init/log_sample.h"

#include <optional>
#include <string>
#include <vector>

struct LayoutChoice {
    std::optional<LogLayout> layout;      // none: no layout is clear
    std::string reason = "";              // for it, a sentence
    std::vector<LayoutScore> scores = {}; // of what was tried, the best first
    Findings findings = {};
};

// Finds the layout of the logs: from the server's `log_format` where it is given, else from their
// own "#Fields:" lines, else by trying the known ones. Takes the logs that do not fit out of
// `samples`, and tells of them.
LayoutChoice choose_layout(std::vector<LogSample>& samples, const std::string& log_format);
