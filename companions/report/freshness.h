#pragma once

#include "companions/report/scenario_figures.h"

// How the results of the last run stand to the scenario, whose inputs are read (the list of logs
// included). Nothing of the results is read.
Freshness examine_results();
