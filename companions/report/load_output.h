#pragma once

#include "companions/report/scenario_figures.h"

#include <cstdio>

// Writes the figures for a person, as wide as the terminal that the stream leads to.
void print_figures(FILE* stream, const ScenarioFigures& figures);
