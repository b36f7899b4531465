#pragma once

#include "companions/doctor/pattern_sources.h"
#include "companions/doctor/pattern_trials.h"
#include "companions/doctor/pattern_use.h"
#include "companions/doctor/url_groups.h"

#include <nlohmann/json.hpp>
#include <string>

// What command "patterns" has found, for people and for programs.

struct ShownReport {
    PatternReport report;
    std::vector<UrlGroup> untaken_groups; // of the report's URLs that no pattern takes
};

// At most `limit` groups of URLs that no pattern takes are written.
std::string report_as_text(const ShownReport& shown, const PatternSources& sources, size_t limit);
nlohmann::json report_as_json(const ShownReport& shown, const PatternSources& sources,
                              size_t limit);

std::string trials_as_text(const TriedUrl& url, const std::vector<PatternTrial>& trials,
                           const PatternSources& sources);
nlohmann::json trials_as_json(const TriedUrl& url, const std::vector<PatternTrial>& trials,
                              const PatternSources& sources);
