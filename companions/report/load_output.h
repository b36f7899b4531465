#pragma once

#include "companions/common/style.h"
#include "companions/report/scenario_figures.h"

#include <cstddef>
#include <string>

// The figures for a person: lines of about `width` columns, as far as the bars go.
std::string figures_as_text(const ScenarioFigures& figures, const Style& style, size_t width);
