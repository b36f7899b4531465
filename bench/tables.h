#pragma once

#include "workbench.h"

namespace bench {

// The tool and its competitors on the same files at each size, with the phase times of the tool
// and how the time of a line grows.
void run_size_table(const Workbench& bench, const BenchmarkOptions& options);

// Pairs of runs of which one is expected to cost a bounded multiple of the other.
void run_comparison_table(const Workbench& bench, const BenchmarkOptions& options);

// Every shape of log that could hurt, at one size and at twice that size.
void run_growth_table(const Workbench& bench, const BenchmarkOptions& options);

} // namespace bench
