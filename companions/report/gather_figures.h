#pragma once

#include "companions/common/common_options.h"
#include "companions/report/scenario_figures.h"

#include <cstddef>

struct FigureOptions {
    size_t queries_per_url = 20; // the most frequent ones; 0: none is looked at
};

// Opens the scenario, reads its logs once, by the tool's own phases and on as many threads, and
// works its figures out. Writes no file. May be called once in a process. Fails as a run does; a
// failure while logs are read is reported on standard error and ends the process with
// failure_status, since other threads may wait for input that never comes.
ScenarioFigures gather_figures(const RunOptions& run, const FigureOptions& options);
