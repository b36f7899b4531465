#include "companions/report/export/export_notes.h"

#include "companions/common/counted.h"

std::string ExportNotes::Amount::text() const {
    const std::string url_count = counted(urls, "URL");
    const bool is_known = requests != 0 || urls == 0;
    return is_known ? fmt::format("{} ({})", counted(requests, "request"), url_count) : url_count;
}

void ExportNotes::print(FILE* stream) const {
    fmt::print(stream, "Exported: {}\n", exported_.text());
    for (const auto& [why, amount] : left_out_) {
        fmt::print(stream, "Left out: {} {}\n", amount.text(), why);
    }
    for (const auto& [why, amount] : changed_) {
        fmt::print(stream, "Changed: {} {}\n", amount.text(), why);
    }
}
