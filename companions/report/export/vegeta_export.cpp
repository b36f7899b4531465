#include "companions/report/export/export_formats.h"

#include <algorithm>
#include <fmt/core.h>

bool fits_vegeta(LoadTarget& target, ExportNotes& notes) {
    const bool is_in_capitals = std::all_of(target.method.begin(), target.method.end(),
                                            [](char c) { return c >= 'A' && c <= 'Z'; });
    if (!is_in_capitals) {
        notes.leave_out("whose method is not in capitals, as vegeta needs it", target.count);
    }
    return is_in_capitals;
}

// Without -lazy, vegeta would begin anew behind the last target.
void export_vegeta(const Targets& targets, FILE* out) {
    fmt::print(out,
               "# Each target once: vegeta attack -lazy -targets FILE -rate RATE > results\n\n");
    targets([out](const LoadTarget& target) {
        std::string text = fmt::format("{} {}\nHost: {}\n", target.method, target.url, target.host);
        if (!target.body_file.empty()) {
            text += fmt::format("Content-Type: {}\n@{}\n", body_content_type, target.body_file);
        }
        text += "\n";
        for (uint64_t i = 0; i < target.count; ++i) {
            std::fwrite(text.data(), 1, text.size(), out);
        }
    });
}
