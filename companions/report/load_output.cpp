#include "companions/report/load_output.h"

#include <fmt/core.h>

void print_figures(FILE* stream, const ScenarioFigures& figures) {
    fmt::print(stream, "{}\n", figures.funnel.summary);
}
