#include "phase_times.h"

#include <algorithm>

namespace bench {

namespace {

struct OpenPhase {
    std::size_t phase;
    Clock::time_point start;
};

std::size_t phase_of(std::string_view line) {
    const auto name =
        std::find_if(phase_names.begin(), phase_names.end(), [line](const PhaseName& candidate) {
            return line.find(candidate.mark) != std::string_view::npos;
        });
    return static_cast<std::size_t>(name - phase_names.begin());
}

} // namespace

// An end line closes the phase that was started last: phases nest, and the end line of one of
// them is worded a little differently from its start line.
PhaseSeconds measure_phases(const std::vector<StampedLine>& progress) {
    PhaseSeconds seconds{};
    std::vector<OpenPhase> open;
    for (const StampedLine& stamped : progress) {
        std::string_view line = stamped.text;
        line.remove_prefix(std::min(line.find_first_not_of('\t'), line.size()));
        if (line.starts_with("Start ")) {
            open.push_back({phase_of(line), stamped.arrival});
        } else if (line.starts_with("End ") && !open.empty()) {
            const OpenPhase ended = open.back();
            open.pop_back();
            if (ended.phase < seconds.size())
                seconds[ended.phase] +=
                    std::chrono::duration<double>(stamped.arrival - ended.start).count();
        }
    }
    return seconds;
}

} // namespace bench
