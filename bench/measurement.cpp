#include "measurement.h"

#include "memory_warmup.h"

#include <algorithm>
#include <cstdio>
#include <numeric>
#include <stdexcept>

namespace bench {

namespace {

template <typename Value> double median_of(const Measurement& measurement, Value value) {
    std::vector<double> values;
    for (const ProcessResult& result : measurement.results)
        values.push_back(value(result));
    return median(std::move(values));
}

double outside_phases(const ProcessResult& result) {
    const PhaseSeconds phases = measure_phases(result.error_lines);
    const double inside =
        std::accumulate(phases.begin(), phases.end(), 0.0) - phases[counting_phase];
    return result.wall_seconds - inside;
}

[[noreturn]] void report_failure(const Measurement& measurement, const ProcessResult& result) {
    std::string message =
        measurement.label + " ended with status " + std::to_string(result.exit_status) + "\n ";
    for (const std::string& word : measurement.command.words)
        message += " " + word;
    const auto& lines = result.error_lines;
    for (std::size_t index = lines.size() > 5 ? lines.size() - 5 : 0; index < lines.size(); ++index)
        message += "\n  " + lines[index].text;
    throw std::runtime_error(message);
}

void run_once(Measurement& measurement) {
    std::fprintf(stderr, "  %s\n", measurement.label.c_str());
    ProcessResult result = run_process(measurement.command);
    if (measurement.clean_up)
        measurement.clean_up(result);
    if (result.exit_status != 0)
        report_failure(measurement, result);
    if (measurement.verify)
        measurement.verify(result);
    measurement.results.push_back(std::move(result));
}

} // namespace

double median(std::vector<double> values) {
    if (values.empty())
        return 0;
    std::sort(values.begin(), values.end());
    const std::size_t middle = values.size() / 2;
    return values.size() % 2 == 1 ? values[middle] : (values[middle - 1] + values[middle]) / 2;
}

double median_wall(const Measurement& measurement) {
    return median_of(measurement, [](const ProcessResult& result) { return result.wall_seconds; });
}

double median_processor(const Measurement& measurement) {
    return median_of(measurement,
                     [](const ProcessResult& result) { return result.processor_seconds; });
}

double median_peak(const Measurement& measurement) {
    return median_of(measurement, [](const ProcessResult& result) { return result.peak_bytes; });
}

double wall_spread(const Measurement& measurement) {
    const auto [low, high] = std::minmax_element(
        measurement.results.begin(), measurement.results.end(),
        [](const auto& a, const auto& b) { return a.wall_seconds < b.wall_seconds; });
    if (low == measurement.results.end())
        return 0;
    return (high->wall_seconds - low->wall_seconds) / median_wall(measurement);
}

PhaseSeconds median_phases(const Measurement& measurement) {
    PhaseSeconds medians{};
    for (std::size_t phase = 0; phase < medians.size(); ++phase)
        medians[phase] = median_of(measurement, [phase](const ProcessResult& result) {
            return measure_phases(result.error_lines)[phase];
        });
    return medians;
}

double median_outside_phases(const Measurement& measurement) {
    return median_of(measurement, outside_phases);
}

void run_interleaved(std::vector<Measurement>& measurements, unsigned runs,
                     std::size_t warm_memory) {
    for (unsigned run = 0; run < runs; ++run) {
        for (Measurement& measurement : measurements) {
            if (run >= measurement.most_runs)
                continue;
            touch_memory(warm_memory);
            run_once(measurement);
        }
    }
}

} // namespace bench
