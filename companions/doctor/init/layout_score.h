#pragma once

#include "companions/doctor/init/known_layouts.h"
#include "companions/doctor/init/log_sample.h"
#include "tools/parse/line_outcome.h"

#include <map>
#include <string>
#include <vector>

// How well a layout does on the lines of one log or of several.
struct LayoutScore {
    LogLayout layout;
    int line_fields = 0; // see KnownLayout
    size_t line_count = 0;
    size_t fitting_count = 0;                 // requests that are plausible
    std::map<LineKind, size_t> rejected = {}; // by what became of them
    size_t implausible_count = 0;             // accepted by the parser, but no requests
    std::string refused_line = "";            // the first that does not fit

    double share() const { // 0 to 1
        return line_count == 0
                   ? 0.0
                   : static_cast<double>(fitting_count) / static_cast<double>(line_count);
    }
};

// The score of one layout on the lines of all samples.
LayoutScore score_layout(const KnownLayout& known, const std::vector<LogSample>& samples);

// The scores of all known layouts, the best first, and none twice that reads the same. Of layouts
// that do equally well, the one that tells more; of those that tell the same, the one whose lines
// have as many fields as these.
std::vector<LayoutScore> score_known_layouts(const std::vector<LogSample>& samples);

// Whether the best of the scores is good. No two of the known layouts are at once, as the fields
// that they look for stand in other places.
bool is_clear(const std::vector<LayoutScore>& scores);

// What became of most of the lines that do not fit, in words.
std::string main_reason(const LayoutScore& score);
