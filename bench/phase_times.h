#pragma once

#include "process_runner.h"

#include <array>
#include <string_view>
#include <vector>

namespace bench {

struct PhaseName {
    // Found in the progress line that starts the phase.
    std::string_view mark;
    std::string_view label;
};

// The phases that the tool reports, in the order of a run. Counting is a part of loading.
inline constexpr std::array<PhaseName, 8> phase_names = {{
    {"Counting total number", "count"},
    {"processing access log", "load"},
    {"sorting of request", "session order"},
    {"creating unique pattern", "unique URLs"},
    {"dumping complete url", "complete list"},
    {"reading urls data", "read cache"},
    {"filling pattern type", "classify"},
    {"dumping url pattern", "URL list"},
}};

inline constexpr std::size_t counting_phase = 0;

// Seconds of each phase, by the arrival of its "Start" and "End" lines; 0 for one that did not
// take place.
using PhaseSeconds = std::array<double, phase_names.size()>;

PhaseSeconds measure_phases(const std::vector<StampedLine>& progress);

} // namespace bench
