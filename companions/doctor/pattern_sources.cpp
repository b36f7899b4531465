#include "companions/doctor/pattern_sources.h"

#include <algorithm>

void PatternSources::note(const ObservedLine& line) {
    if (line.kind != ObservedKind::taken) {
        return;
    }
    for (size_t kind = 0; kind < taken_.size(); ++kind) {
        const auto total = static_cast<size_t>(pattern_tables[kind].total);
        if (taken_[kind].size() < total) { // the line's table has just grown
            const PatternSource source = {line.place.file, line.place.line_num};
            taken_[kind].push_back({std::string(line.text), source});
        }
    }
}

void PatternSources::sort() {
    for (std::vector<Taken>& taken : taken_) {
        std::stable_sort(taken.begin(), taken.end(),
                         [](const Taken& a, const Taken& b) { return a.pattern < b.pattern; });
    }
}
