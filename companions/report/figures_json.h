#pragma once

#include "companions/report/scenario_figures.h"

#include <string>

// The figures as one JSON object in ASCII: what the page shows and `load --json` prints. Times are
// WallSeconds, beside them a text "2026-03-10 09:00:00"; shares are 0 to 1; what is not there is
// null. No "<" is in it, so that it can stand inside a page's script.
std::string figures_as_json(const ScenarioFigures& figures);
