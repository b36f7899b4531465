#pragma once

#include "phase_times.h"
#include "process_runner.h"

#include <functional>
#include <string>
#include <vector>

namespace bench {

// A command of the benchmark, the input it reads, and what its runs gave.
struct Measurement {
    std::string label;
    Command command;
    std::uint64_t lines = 0;
    std::uint64_t bytes = 0;
    // Runs of it, at most.
    unsigned most_runs = ~0U;
    // Called after each run, successful or not.
    std::function<void(const ProcessResult&)> clean_up;
    // Throws when a run that ended well did not do its work.
    std::function<void(const ProcessResult&)> verify;
    std::vector<ProcessResult> results;
};

double median(std::vector<double> values);

double median_wall(const Measurement& measurement);
double median_processor(const Measurement& measurement);
double median_peak(const Measurement& measurement);
// Largest less smallest wall time, as a share of the median.
double wall_spread(const Measurement& measurement);
PhaseSeconds median_phases(const Measurement& measurement);
// What no phase accounts for: start-up, backup, hosts, the end of the process.
double median_outside_phases(const Measurement& measurement);

// Runs every measurement `runs` times, one after the other in each round, so that a slow spell
// of the machine meets them all.
// Before each, that many bytes of memory are warmed up.
void run_interleaved(std::vector<Measurement>& measurements, unsigned runs,
                     std::size_t warm_memory = 0);

} // namespace bench
